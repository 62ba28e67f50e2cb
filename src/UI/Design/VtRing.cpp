#include "UI/Design/VtRing.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

constexpr double unitsOfATurn = 16 * 360;  // as the painter counts angles
constexpr double top = unitsOfATurn / 4;

}  // namespace

VtRing::VtRing(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &VtRing::lookChanged, this, [this] { update(); });
}

void VtRing::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    const double half = thickness_ / 2;
    const QRectF ring = QRectF(0, 0, width(), height()).adjusted(half, half, -half, -half);
    if (track_.alpha() > 0) {
        painter->setPen(QPen(track_, thickness_));
        painter->drawEllipse(ring);
    }
    const double length = std::clamp(length_, 0.0, 1.0);
    if (length == 0) return;
    painter->setPen(QPen(color_, thickness_, Qt::SolidLine, Qt::RoundCap));
    painter->drawArc(ring, static_cast<int>(std::lround(top - start_ * unitsOfATurn)),
                     static_cast<int>(std::lround(-length * unitsOfATurn)));
}

}  // namespace veltrin
