#include "UI/Design/VtShimmer.h"

#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

namespace veltrin {
namespace {

constexpr double barHeight = 8;
constexpr double barDistance = 18;  // that of lines of small text
/// As the lines of a paragraph end.
constexpr double lengths[] = {0.94, 1.0, 0.86, 0.97, 0.55};
/// How wide the light is, and how much later it comes to each next line; parts of the width.
constexpr double lightWidth = 0.42;
constexpr double delay = 0.07;

}  // namespace

VtShimmer::VtShimmer(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &VtShimmer::lookChanged, this, [this] { update(); });
}

void VtShimmer::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    const int room = static_cast<int>((height() - barHeight) / barDistance) + 1;
    const int lines = std::clamp(room, 1, static_cast<int>(std::size(lengths)));
    const double way = 1 + 2 * lightWidth + delay * lines;
    for (int line = 0; line < lines; ++line) {
        // The last line that fits is the short one.
        const double length =
            lengths[line == lines - 1 ? std::size(lengths) - 1 : static_cast<std::size_t>(line)];
        const double middle = phase_ * way - lightWidth - delay * line;
        QLinearGradient gradient((middle - lightWidth) * width(), 0, (middle + lightWidth) * width(), 0);
        gradient.setColorAt(0, color_);
        gradient.setColorAt(0.5, light_);
        gradient.setColorAt(1, color_);
        painter->setBrush(gradient);
        painter->drawRoundedRect(QRectF(0, line * barDistance, width() * length, barHeight), barHeight / 2,
                                 barHeight / 2);
    }
}

}  // namespace veltrin
