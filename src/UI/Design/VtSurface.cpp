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
    const double half = strokeWidth_ / 2;
    painter->setPen(QPen(stroke_, strokeWidth_));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(card.adjusted(half, half, -half, -half), radius_ - half, radius_ - half);
}

}  // namespace veltrin
