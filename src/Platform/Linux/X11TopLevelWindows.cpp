#include "Platform/Linux/X11TopLevelWindows.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace veltrin {
namespace {

constexpr quint32 longestTitle = 1024;  // in 32-bit words
constexpr quint32 mostWindows = 4096;

template <typename T>
struct Freed {
    void operator()(T* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Freed<T>>;

struct Requests {
    xcb_get_property_cookie_t process{}, netName{}, name{}, frameExtents{}, shadowExtents{};
    xcb_get_geometry_cookie_t geometry{};
    xcb_translate_coordinates_cookie_t origin{};
};

}  // namespace

X11TopLevelWindows::X11TopLevelWindows(const QByteArray& display) {
    int screenNumber = 0;
    connection_ = xcb_connect(display.isEmpty() ? nullptr : display.constData(), &screenNumber);
    if (!isUsable()) return;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (; screens.rem > 1 && screenNumber > 0; --screenNumber)
        xcb_screen_next(&screens);
    root_ = screens.data->root;

    constexpr std::string_view names[atomCount] = {
        "_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST_STACKING", "_NET_CLIENT_LIST",   "_NET_WM_PID",
        "_NET_WM_NAME",       "_NET_FRAME_EXTENTS",        "_GTK_FRAME_EXTENTS",
    };
    xcb_intern_atom_cookie_t cookies[atomCount];
    for (int i = 0; i < atomCount; ++i) {
        cookies[i] = xcb_intern_atom(connection_, 0, static_cast<uint16_t>(names[i].size()), names[i].data());
    }
    for (int i = 0; i < atomCount; ++i) {
        const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookies[i], nullptr));
        if (reply) atoms_[i] = reply->atom;
    }
}

X11TopLevelWindows::~X11TopLevelWindows() {
    xcb_disconnect(connection_);
}

bool X11TopLevelWindows::isUsable() const {
    return connection_ && xcb_connection_has_error(connection_) == 0;
}

xcb_get_property_cookie_t X11TopLevelWindows::request(xcb_window_t window, xcb_atom_t property,
                                                      quint32 words) const {
    return xcb_get_property(connection_, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, words);
}

std::vector<quint32> X11TopLevelWindows::numbers(xcb_get_property_cookie_t cookie) const {
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply || reply->format != 32) return {};
    const auto* first = static_cast<const quint32*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

std::optional<TopLevelWindow> X11TopLevelWindows::activeWindow(qint32 processIdentifier) {
    if (!isUsable()) return {};
    const auto active = numbers(request(root_, atoms_[activeWindowAtom], 1));
    if (active.empty() || active.front() == 0) return {};
    const auto found = described(active, processIdentifier);
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<TopLevelWindow> X11TopLevelWindows::windows(qint32 processIdentifier) {
    if (!isUsable()) return {};
    auto ids = numbers(request(root_, atoms_[clientListStackingAtom], mostWindows));
    if (ids.empty()) ids = numbers(request(root_, atoms_[clientListAtom], mostWindows));
    std::reverse(ids.begin(), ids.end());  // the property lists the bottom window first
    return described(ids, processIdentifier);
}

std::optional<TopLevelWindow> X11TopLevelWindows::window(quint32 id) {
    if (!isUsable()) return {};
    const auto found = described({id}, 0);
    return found.empty() ? std::nullopt : std::optional(found.front());
}

/// The windows among `ids` that exist and belong to the process; 0 takes any. One round trip in all.
std::vector<TopLevelWindow> X11TopLevelWindows::described(const std::vector<quint32>& ids,
                                                          qint32 processIdentifier) const {
    std::vector<Requests> asked;
    asked.reserve(ids.size());
    for (const quint32 id : ids) {
        Requests requests;
        requests.process = request(id, atoms_[processAtom], 1);
        requests.netName = request(id, atoms_[netNameAtom], longestTitle);
        requests.name = request(id, XCB_ATOM_WM_NAME, longestTitle);
        requests.frameExtents = request(id, atoms_[frameExtentsAtom], 4);
        requests.shadowExtents = request(id, atoms_[shadowExtentsAtom], 4);
        requests.geometry = xcb_get_geometry(connection_, id);
        requests.origin = xcb_translate_coordinates(connection_, id, root_, 0, 0);
        asked.push_back(requests);
    }
    const auto text = [this](xcb_get_property_cookie_t cookie, bool latin1WhenString) {
        const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
        if (!reply || reply->format != 8) return QString();
        const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
        const int length = xcb_get_property_value_length(reply.get());
        return latin1WhenString && reply->type == XCB_ATOM_STRING ? QString::fromLatin1(bytes, length)
                                                                  : QString::fromUtf8(bytes, length);
    };
    std::vector<TopLevelWindow> found;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const Requests& requests = asked[i];
        // Every reply is fetched, also of windows that are not wanted, so that none is left in the queue.
        const auto process = numbers(requests.process);
        const QString netName = text(requests.netName, false);
        const QString name = text(requests.name, true);
        const auto border = numbers(requests.frameExtents);
        const auto shadow = numbers(requests.shadowExtents);
        const Reply<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(connection_, requests.geometry, nullptr));
        const Reply<xcb_translate_coordinates_reply_t> origin(
            xcb_translate_coordinates_reply(connection_, requests.origin, nullptr));
        if (!geometry || !origin) continue;
        const bool isOfProcess =
            !process.empty() && process.front() == static_cast<quint32>(processIdentifier);
        if (processIdentifier != 0 && !isOfProcess) continue;

        TopLevelWindow window;
        window.id = ids[i];
        window.title = netName.isEmpty() ? name : netName;
        // Extents are left, right, top, bottom. A border lies outside the client's window, a shadow inside
        // it.
        const auto extent = [](const std::vector<quint32>& extents, std::size_t side) {
            return extents.size() == 4 ? static_cast<double>(extents[side]) : 0.0;
        };
        const QRectF client(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
        const auto grown = [&extent](const QRectF& rect, const std::vector<quint32>& extents, double sign) {
            return rect.adjusted(-sign * extent(extents, 0), -sign * extent(extents, 2),
                                 sign * extent(extents, 1), sign * extent(extents, 3));
        };
        window.client = grown(client, shadow, -1);
        window.frame = grown(window.client, border, 1);
        found.push_back(window);
    }
    return found;
}

}  // namespace veltrin
