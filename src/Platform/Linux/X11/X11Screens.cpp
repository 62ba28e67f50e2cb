#include "Platform/Linux/X11/X11Screens.h"

#include <xcb/randr.h>

#include <algorithm>

namespace veltrin {
namespace {

/// Turns a rectangle of the server into one with the origin at the bottom left of a desktop of this height.
QRectF turned(const QRectF& rectangle, double height) {
    return {rectangle.x(), height - rectangle.y() - rectangle.height(), rectangle.width(),
            rectangle.height()};
}

QRectF rectangleAt(const std::vector<std::uint32_t>& words, std::size_t index) {
    if (words.size() < index + 4) return {};
    const auto signedAt = [&](std::size_t i) {
        return static_cast<double>(static_cast<std::int32_t>(words[i]));
    };
    return {signedAt(index), signedAt(index + 1), signedAt(index + 2), signedAt(index + 3)};
}

/// The part of a monitor that bars and docks leave. The work area is one rectangle for the whole desktop, so
/// it counts only where it leaves most of the monitor.
QRectF visiblePart(const QRectF& monitor, const QRectF& workArea) {
    const QRectF both = monitor.intersected(workArea);
    return both.width() * both.height() >= 0.5 * monitor.width() * monitor.height() ? both : monitor;
}

}  // namespace

double X11Screens::height() const {
    const X11Reply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(
        connection_.xcb(), xcb_get_geometry(connection_.xcb(), connection_.root()), nullptr));
    // The size at the connection's beginning, should the server not answer any more.
    return geometry ? geometry->height : connection_.screen().height_in_pixels;
}

std::vector<Screen> X11Screens::screens() const {
    connection_.discardEvents();
    auto* xcb = connection_.xcb();
    const double desktopHeight = height();
    std::vector<std::pair<bool, QRectF>> monitors;
    if (connection_.hasRandr15()) {
        const X11Reply<xcb_randr_get_monitors_reply_t> reply(
            xcb_randr_get_monitors_reply(xcb, xcb_randr_get_monitors(xcb, connection_.root(), 1), nullptr));
        if (reply) {
            for (auto list = xcb_randr_get_monitors_monitors_iterator(reply.get()); list.rem > 0;
                 xcb_randr_monitor_info_next(&list)) {
                const auto& monitor = *list.data;
                if (monitor.width == 0 || monitor.height == 0) continue;
                monitors.emplace_back(monitor.primary != 0,
                                      QRectF(monitor.x, monitor.y, monitor.width, monitor.height));
            }
        }
    }
    if (monitors.empty() && !connection_.isLost()) {
        monitors.emplace_back(true, QRectF(0, 0, connection_.screen().width_in_pixels, desktopHeight));
    }
    std::stable_sort(monitors.begin(), monitors.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });

    const auto areas =
        connection_.property(connection_.root(), connection_.atom("_NET_WORKAREA"), XCB_ATOM_CARDINAL);
    const auto desktop =
        connection_.word(connection_.root(), connection_.atom("_NET_CURRENT_DESKTOP"), XCB_ATOM_CARDINAL);
    const auto words = areas ? areas->words() : std::vector<std::uint32_t>();
    QRectF workArea = rectangleAt(words, static_cast<std::size_t>(desktop.value_or(0)) * 4);
    if (workArea.isEmpty()) workArea = rectangleAt(words, 0);

    std::vector<Screen> result;
    result.reserve(monitors.size());
    for (const auto& [primary, frame] : monitors) {
        result.push_back({turned(frame, desktopHeight), turned(visiblePart(frame, workArea), desktopHeight)});
    }
    return result;
}

std::optional<Screen> X11Screens::mainScreen() const {
    const auto all = screens();
    return all.empty() ? std::nullopt : std::optional(all.front());
}

QPointF X11Screens::mouseLocation() const {
    const X11Reply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(
        connection_.xcb(), xcb_query_pointer(connection_.xcb(), connection_.root()), nullptr));
    if (!pointer) return {};
    return {static_cast<double>(pointer->root_x), height() - pointer->root_y};
}

}  // namespace veltrin
