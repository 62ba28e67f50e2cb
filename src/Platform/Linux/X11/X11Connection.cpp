#include "Platform/Linux/X11/X11Connection.h"

#include "Foundation/MVPLog.h"

#include <poll.h>
#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <cstring>

namespace veltrin {

std::unique_ptr<X11Connection> X11Connection::open(const QByteArray& display) {
    int screenNumber = 0;
    const QByteArray name = display.isEmpty() ? qgetenv("DISPLAY") : display;
    if (name.isEmpty()) return nullptr;
    xcb_connection_t* connection = xcb_connect(name.constData(), &screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::unique_ptr<X11Connection>(new X11Connection(connection, name, screenNumber));
}

X11Connection::X11Connection(xcb_connection_t* connection, const QByteArray& display, int screenNumber)
    : connection_(connection), display_(display) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    screen_ = screens.data;
    askForExtensions();
}

X11Connection::~X11Connection() {
    xcb_disconnect(connection_);
}

void X11Connection::askForExtensions() {
    xcb_extension_t* const extensions[] = {&xcb_input_id, &xcb_xkb_id,   &xcb_xfixes_id,
                                           &xcb_test_id,  &xcb_randr_id, &xcb_res_id};
    for (auto* extension : extensions)
        xcb_prefetch_extension_data(connection_, extension);
    const auto present = [this](xcb_extension_t* extension) -> const xcb_query_extension_reply_t* {
        const auto* data = xcb_get_extension_data(connection_, extension);
        return data != nullptr && data->present != 0 ? data : nullptr;
    };
    if (const auto* data = present(&xcb_input_id)) {
        const X11Reply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
            connection_, xcb_input_xi_query_version(connection_, 2, 2), nullptr));
        hasXInput22_ = version && (version->major_version > 2 ||
                                   (version->major_version == 2 && version->minor_version >= 2));
        xinputOpcode_ = data->major_opcode;
    }
    if (const auto* data = present(&xcb_xkb_id)) {
        const X11Reply<xcb_xkb_use_extension_reply_t> use(
            xcb_xkb_use_extension_reply(connection_, xcb_xkb_use_extension(connection_, 1, 0), nullptr));
        if (use && use->supported != 0) xkbFirstEvent_ = data->first_event;
    }
    if (const auto* data = present(&xcb_xfixes_id)) {
        const X11Reply<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
            connection_, xcb_xfixes_query_version(connection_, 5, 0), nullptr));
        if (version) xfixesFirstEvent_ = data->first_event;
    }
    if (present(&xcb_test_id) != nullptr) {
        const X11Reply<xcb_test_get_version_reply_t> version(
            xcb_test_get_version_reply(connection_, xcb_test_get_version(connection_, 2, 2), nullptr));
        hasXTest_ = version != nullptr;
    }
    if (present(&xcb_randr_id) != nullptr) {
        const X11Reply<xcb_randr_query_version_reply_t> version(
            xcb_randr_query_version_reply(connection_, xcb_randr_query_version(connection_, 1, 5), nullptr));
        hasRandr15_ = version && (version->major_version > 1 ||
                                  (version->major_version == 1 && version->minor_version >= 5));
    }
    if (present(&xcb_res_id) != nullptr) {
        const X11Reply<xcb_res_query_version_reply_t> version(
            xcb_res_query_version_reply(connection_, xcb_res_query_version(connection_, 1, 2), nullptr));
        hasResource_ = version && (version->server_major > 1 || version->server_minor >= 2);
    }
}

bool X11Connection::isLost() const {
    const int error = xcb_connection_has_error(connection_);
    if (error == 0) return false;
    const std::lock_guard guard(mutex_);
    if (!lossSaid_) {
        lossSaid_ = true;
        MVPLog::write("X11 connection lost:", error);
    }
    return true;
}

xcb_atom_t X11Connection::atom(const std::string& name) const {
    {
        const std::lock_guard guard(mutex_);
        if (const auto found = atoms_.find(name); found != atoms_.end()) return found->second;
    }
    const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection_, xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr));
    if (!reply) return XCB_ATOM_NONE;
    const std::lock_guard guard(mutex_);
    return atoms_[name] = reply->atom;
}

std::vector<std::uint32_t> X11Connection::Property::words() const {
    if (format != 32) return {};
    std::vector<std::uint32_t> result(static_cast<std::size_t>(bytes.size()) / 4);
    if (!result.empty()) std::memcpy(result.data(), bytes.constData(), result.size() * 4);
    return result;
}

xcb_get_property_cookie_t X11Connection::requestProperty(xcb_window_t window, xcb_atom_t name,
                                                         xcb_atom_t type, std::uint32_t maximumBytes) const {
    return xcb_get_property(connection_, 0, window, name, type, 0, (maximumBytes + 3) / 4);
}

std::optional<X11Connection::Property> X11Connection::property(xcb_get_property_cookie_t cookie) const {
    const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE) return std::nullopt;
    Property result;
    result.type = reply->type;
    result.format = reply->format;
    result.bytes = QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                              xcb_get_property_value_length(reply.get()));
    return result;
}

std::optional<std::uint32_t> X11Connection::word(xcb_window_t window, xcb_atom_t name,
                                                 xcb_atom_t type) const {
    const auto found = property(window, name, type, 4);
    if (!found) return std::nullopt;
    const auto words = found->words();
    return words.empty() ? std::nullopt : std::optional(words.front());
}

bool X11Connection::roundTrip() const {
    const X11Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    return reply != nullptr;
}

void X11Connection::discardEvents() const {
    while (X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
    }
}

bool X11Connection::waitForEvent(std::chrono::milliseconds limit,
                                 const std::function<bool(const xcb_generic_event_t&)>& take) const {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + limit;
    xcb_flush(connection_);
    for (;;) {
        while (const X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
            if (take(*event)) return true;
        }
        if (isLost()) return false;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return false;
        pollfd descriptor{xcb_get_file_descriptor(connection_), POLLIN, 0};
        poll(&descriptor, 1, static_cast<int>(left.count()));
    }
}

}  // namespace veltrin
