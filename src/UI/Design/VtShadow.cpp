#include "UI/Design/VtShadow.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace veltrin {

VtShadow::VtShadow(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &VtShadow::lookChanged, this, [this] { update(); });
}

void VtShadow::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    const QRectF card = QRectF(0, 0, width(), height()).adjusted(spread_, spread_, -spread_, -spread_);
    QPainterPath inside;
    inside.addRoundedRect(card, radius_, radius_);
    QPainterPath around;
    around.addRect(QRectF(0, 0, width(), height()));
    painter->setClipPath(around.subtracted(inside));
    // One thin shell a pixel from the outside in; together they fall off like a blur, for the price of a few
    // fills.
    const int shells = std::max(1, static_cast<int>(std::lround(spread_ - drop_)));
    double reached = 0;
    for (int shell = 0; shell < shells; ++shell) {
        const double nearness = (shell + 1.0) / shells;
        const double wanted = color_.alphaF() * std::pow(nearness, 2.6);
        // What this shell must add so that all so far come to what is wanted.
        const double alpha = (wanted - reached) / (1 - reached);
        reached = wanted;
        QColor color = color_;
        color.setAlphaF(static_cast<float>(alpha));
        const double out = shells - shell - 1;
        painter->setBrush(color);
        painter->drawRoundedRect(card.adjusted(-out, -out + drop_, out, out + drop_), radius_ + out,
                                 radius_ + out);
    }
}

}  // namespace veltrin
