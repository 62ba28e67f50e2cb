#include "support/fields/PassageOnScreen.h"

#include "support/desktop/Pictures.h"
#include "support/desktop/Waiting.h"

#include <utility>

namespace veltrin {
namespace {

constexpr double paintSeconds = 5;

/// What was painted last may still be under way: two pictures alike, or there is something that moves.
QImage stillPicture(XDesktop& x, const QRect& area) {
    QImage last = x.image(area);
    waitUntil(paintSeconds, [&] {
        runEventLoopFor(0.03);
        const QImage now = x.image(area);
        return std::exchange(last, now) == now;
    });
    return last;
}

}  // namespace

QRectF passageOnScreen(XDesktop& x, const QRect& area, FieldDriver& field, qsizetype start, qsizetype end) {
    field.select(start, start);
    const QImage before = stillPicture(x, area);
    field.select(start, end);
    QRect changed;
    waitUntil(paintSeconds, [&] {
        changed = difference(before, stillPicture(x, area));
        return changed.width() > 3;
    });
    return changed.isEmpty() ? QRectF() : QRectF(changed.translated(area.topLeft()));
}

}  // namespace veltrin
