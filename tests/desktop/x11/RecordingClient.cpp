#include "desktop/x11/RecordingClient.h"

#include "support/desktop/Waiting.h"

#include <poll.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <cstring>
#include <stdexcept>

namespace veltrin {

RecordingClient::RecordingClient(RealDesktop& desktop) : RecordingClient(desktop, Options()) {
}

RecordingClient::RecordingClient(RealDesktop& desktop, const Options& options)
    : desktop_(desktop), options_(options) {
    connection_ = xcb_connect(desktop.display().toLatin1().constData(), nullptr);
    if (xcb_connection_has_error(connection_) != 0)
        throw std::runtime_error("the test client found no display");
    const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    window_ = xcb_generate_id(connection_);
    const quint32 events[] = {XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                              XCB_EVENT_MASK_PROPERTY_CHANGE};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, 40, 40, 300, 200, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, XCB_CW_EVENT_MASK, events);
    auto& x = desktop.x();
    protocols_ = x.atom("WM_PROTOCOLS");
    ping_ = x.atom("_NET_WM_PING");
    const QByteArray name = options.instance + '\0' + options.windowClass + '\0';
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                        static_cast<quint32>(name.size()), name.constData());
    if (options.saysProcess) {
        const quint32 pid = static_cast<quint32>(options.process != 0 ? options.process : getpid());
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, x.atom("_NET_WM_PID"),
                            XCB_ATOM_CARDINAL, 32, 1, &pid);
    }
    if (options.answersPing) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, protocols_, XCB_ATOM_ATOM, 32, 1,
                            &ping_);
    }
    xcb_map_window(connection_, window_);
    xcb_flush(connection_);
    thread_ = std::thread([this] { run(); });
    waitUntil(5, [&] { return x.isViewable(window_) && x.windows().contains(window_); });
    if (!x.activate(window_)) throw std::runtime_error("the test client's window did not become active");
    // The input focus follows the window manager's word a moment later.
    waitUntil(5, [&] {
        const XReply<xcb_get_input_focus_reply_t> focus(
            xcb_get_input_focus_reply(x.connection(), xcb_get_input_focus(x.connection()), nullptr));
        return focus && focus->focus == window_;
    });
}

RecordingClient::~RecordingClient() {
    stopping_ = true;
    thread_.join();
    xcb_disconnect(connection_);
}

void RecordingClient::run() {
    while (!stopping_ && xcb_connection_has_error(connection_) == 0) {
        pollfd descriptor{xcb_get_file_descriptor(connection_), POLLIN, 0};
        poll(&descriptor, 1, 20);
        if (hung_) continue;
        while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
            const auto type = event->response_type & 0x7F;
            if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE) {
                const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(*event);
                const std::lock_guard guard(mutex_);
                keys_.push_back({type == XCB_KEY_PRESS, key.detail, key.state, key.time, monotonicSeconds()});
            } else if (type == XCB_CLIENT_MESSAGE) {
                auto message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
                if (message.type != protocols_ || message.data.data32[0] != ping_) continue;
                message.window = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
                xcb_send_event(connection_, 0, message.window,
                               XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                               reinterpret_cast<const char*>(&message));
                xcb_flush(connection_);
            }
        }
    }
}

std::vector<RecordingClient::Key> RecordingClient::keys() const {
    const std::lock_guard guard(mutex_);
    return keys_;
}

std::string RecordingClient::text() const {
    auto* connection = desktop_.x().connection();
    xkb_x11_setup_xkb_extension(connection, 1, 0, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr,
                                nullptr, nullptr);
    xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    xkb_keymap* keymap = xkb_x11_keymap_new_from_device(
        context, connection, xkb_x11_get_core_keyboard_device_id(connection), XKB_KEYMAP_COMPILE_NO_FLAGS);
    std::string result;
    for (const auto& key : keys()) {
        const xkb_keysym_t* symbols = nullptr;
        const int count = xkb_keymap_key_get_syms_by_level(keymap, key.code, 0, 0, &symbols);
        char name[64] = "?";
        if (count > 0) xkb_keysym_get_name(symbols[0], name, sizeof name);
        if (!result.empty()) result += ' ';
        result += key.isPress ? '+' : '-';
        result += name;
    }
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return result;
}

int RecordingClient::presses() const {
    int count = 0;
    for (const auto& key : keys())
        count += key.isPress ? 1 : 0;
    return count;
}

void RecordingClient::clear() {
    const std::lock_guard guard(mutex_);
    keys_.clear();
}

bool RecordingClient::waitForKeys(std::size_t count, double seconds) const {
    return waitUntil(seconds, [&] { return keys().size() >= count; });
}

}  // namespace veltrin
