#include "support/fields/SelectionDesktop.h"

#include "support/desktop/Waiting.h"

#include <algorithm>
#include <stdexcept>

namespace veltrin {
namespace {

constexpr double startSeconds = 60;
constexpr int stepPixels = 12;

}  // namespace

SelectionDesktop::SelectionDesktop(RealDesktop& desktop)
    : text(desktop),
      settings(text.preferences, notifications, environment),
      policy(text.workspace, settings),
      taps(text.runLoop),
      poster(text.poster),
      copy(text.workspace, text.pasteboard, text.loan, poster, text.runLoop, text.guard),
      reader(text.accessibility, text.workspace, copy),
      trigger({text.runLoop, taps, text.screens, settings, policy, reader, surface}) {
    trigger.setupMouseSelectionMonitor();
}

QRect SelectionDesktop::placeOf(const FieldApplication& application, qint64 location, qint64 length) {
    std::optional<QRectF> place;
    const bool found = waitUntil(startSeconds, [&] {
        const AXElementRef element = focusedElement(text.accessibility, application.process());
        if (!element) return false;
        const auto bounds = text.accessibility.copyParameterizedAttributeValue(
            element, AXAttribute::boundsForRange, TextRange{location, length});
        const auto* rectangle = std::get_if<QRectF>(&bounds.value);
        if (bounds.ok() && rectangle && rectangle->width() > 10) place = *rectangle;
        return place.has_value();
    });
    if (!found) throw std::runtime_error("the text has no place on the screen");
    return place->toRect();
}

double dragThrough(Typist& typist, const QList<QPoint>& places, double stepSeconds) {
    double released = 0;
    typist.whileLoopRuns([&](Typist& hand) {
        hand.moveMouse(places.front());
        hand.pause(stepSeconds);
        hand.pressButton();
        for (qsizetype i = 1; i < places.size(); ++i) {
            const QPoint from = places[i - 1];
            const QPoint way = places[i] - from;
            const int steps = std::max(2, way.manhattanLength() / stepPixels);
            for (int step = 1; step <= steps; ++step) {
                hand.pause(stepSeconds);
                hand.moveMouse(from + way * step / steps);
            }
        }
        hand.pause(2 * stepSeconds);
        released = monotonicSeconds();
        hand.releaseButton();
    });
    return released;
}

int sizeOf(const AXTree& tree) {
    int all = 1;
    for (const AXTree& child : tree.children)
        all += sizeOf(child);
    return all;
}

}  // namespace veltrin
