#include "UI/Design/VtIcon.h"

#include "UI/Icons/IconSet.h"

#include <QPainter>

#include <algorithm>

namespace veltrin {
namespace {

constexpr double ordinarySize = 16;

}  // namespace

VtIcon::VtIcon(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    setImplicitSize(ordinarySize, ordinarySize);
    connect(this, &VtIcon::lookChanged, this, [this] { update(); });
}

void VtIcon::paint(QPainter* painter) {
    if (symbol_.isEmpty()) return;
    const double side = std::min(width(), height());
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate((width() - side) / 2, (height() - side) / 2);
    painter->scale(side / IconSet::unit, side / IconSet::unit);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(color_, weight_, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->drawPath(IconSet::shared().path(symbol_));
}

}  // namespace veltrin
