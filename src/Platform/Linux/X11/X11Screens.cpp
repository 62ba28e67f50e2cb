#include "Platform/Linux/X11/X11Screens.h"

#include "Platform/Linux/X11/X11Connection.h"

#include <algorithm>
#include <cstdlib>
#include <xcb/randr.h>

namespace veltrin {
namespace {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

/// The lowest edge of all monitors, from which the windowing layer counts upwards.
template <typename Monitors>
double desktopHeight(const Monitors& monitors) {
    double height = 0;
    for (const auto& monitor : monitors) height = std::max(height, monitor.frame.y() + monitor.frame.height());
    return height;
}

QRectF flipped(const QRectF& rect, double desktopHeight) {
    return {rect.x(), desktopHeight - rect.y() - rect.height(), rect.width(), rect.height()};
}

}  // namespace

std::vector<X11Screens::Monitor> X11Screens::monitors() const {
    std::vector<Monitor> found;
    if (connection_.hasRandr15()) {
        const Reply<xcb_randr_get_monitors_reply_t> reply(xcb_randr_get_monitors_reply(
            connection_.xcb(), xcb_randr_get_monitors(connection_.xcb(), connection_.root(), 1), nullptr));
        if (reply) {
            for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
                 xcb_randr_monitor_info_next(&it)) {
                if (it.data->width == 0 || it.data->height == 0) continue;
                found.push_back({QRectF(it.data->x, it.data->y, it.data->width, it.data->height),
                                 it.data->primary != 0});
            }
            // A server that speaks of monitors and has none has lost its last screen.
            return found;
        }
    }
    const Reply<xcb_get_geometry_reply_t> root(xcb_get_geometry_reply(
        connection_.xcb(), xcb_get_geometry(connection_.xcb(), connection_.root()), nullptr));
    if (root) found.push_back({QRectF(0, 0, root->width, root->height), true});
    return found;
}

std::optional<QRectF> X11Screens::workArea() const {
    const auto property =
        connection_.property(connection_.root(), connection_.atom("_NET_WORKAREA"), XCB_ATOM_CARDINAL);
    if (!property) return std::nullopt;
    const auto words = property->words();
    if (words.size() < 4) return std::nullopt;
    const QRectF area(words[0], words[1], words[2], words[3]);
    return area.isEmpty() ? std::nullopt : std::optional<QRectF>(area);
}

std::vector<Screen> X11Screens::screens() const {
    const auto found = monitors();
    const double height = desktopHeight(found);
    const auto area = workArea();
    std::vector<Screen> result;
    result.reserve(found.size());
    for (const Monitor& monitor : found) {
        // The work area is one rectangle for all monitors; what it leaves of a monitor is that one's own.
        const QRectF visible = area ? monitor.frame.intersected(*area) : monitor.frame;
        result.push_back(
            {flipped(monitor.frame, height), flipped(visible.isEmpty() ? monitor.frame : visible, height)});
    }
    return result;
}

std::optional<Screen> X11Screens::mainScreen() const {
    const auto found = monitors();
    const auto all = screens();
    if (all.empty()) return std::nullopt;
    for (std::size_t i = 0; i < std::min(found.size(), all.size()); ++i) {
        if (found[i].primary) return all[i];
    }
    return all.front();
}

QPointF X11Screens::mouseLocation() const {
    const Reply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(
        connection_.xcb(), xcb_query_pointer(connection_.xcb(), connection_.root()), nullptr));
    if (!pointer) return {};
    return {static_cast<double>(pointer->root_x), desktopHeight(monitors()) - pointer->root_y};
}

}  // namespace veltrin
