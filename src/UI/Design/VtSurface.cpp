#include "UI/Design/VtSurface.h"

#include <QPainter>

namespace veltrin {

VtSurface::VtSurface(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &VtSurface::lookChanged, this, [this] { update(); });
}

void VtSurface::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(color_);
    painter->setPen(stroke_.alpha() > 0 ? QPen(stroke_, 1) : QPen(Qt::NoPen));
    painter->drawRoundedRect(QRectF(0, 0, width(), height()).adjusted(0.5, 0.5, -0.5, -0.5), radius_,
                             radius_);
}

}  // namespace veltrin
