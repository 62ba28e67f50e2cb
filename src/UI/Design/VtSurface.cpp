#include "UI/Design/VtSurface.h"

#include <QPainter>

namespace veltrin {

VtSurface::VtSurface(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &VtSurface::lookChanged, this, [this] { update(); });
}

void VtSurface::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color_);
    const QRectF card(0, 0, width(), height());
    painter->drawRoundedRect(card, radius_, radius_);
    if (stroke_.alpha() == 0) return;
    // On top of the fill, so that a translucent stroke tints the card and not what lies behind it.
    painter->setPen(QPen(stroke_, 1));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), radius_ - 0.5, radius_ - 0.5);
}

}  // namespace veltrin
