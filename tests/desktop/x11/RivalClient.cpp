#include "desktop/x11/RivalClient.h"

#include "support/desktop/XDesktop.h"

#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <stdexcept>

namespace veltrin {
namespace {

constexpr quint32 keyEvents = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;

}  // namespace

RivalClient::RivalClient(RealDesktop& desktop)
    : connection_(xcb_connect(desktop.display().toLatin1().constData(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("the rival found no display");
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    const XReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        connection_, xcb_input_xi_query_version(connection_, 2, 2), nullptr));
    xkb_x11_setup_xkb_extension(connection_, 1, 0, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr,
                                nullptr, nullptr);
    keyboard_ = static_cast<quint16>(xkb_x11_get_core_keyboard_device_id(connection_));
}

RivalClient::~RivalClient() {
    xcb_disconnect(connection_);
}

void RivalClient::sync() {
    const XReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

bool RivalClient::take(quint8 key, quint16 modifiers) {
    const XReply<xcb_generic_error_t> error(
        xcb_request_check(connection_, xcb_grab_key_checked(connection_, 0, screen_->root, modifiers, key,
                                                            XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    return !error;
}

void RivalClient::giveBack(quint8 key, quint16 modifiers) {
    xcb_ungrab_key(connection_, key, screen_->root, modifiers);
    sync();
}

bool RivalClient::takeByXInput(quint8 key, quint32 modifiers) {
    const XReply<xcb_input_xi_passive_grab_device_reply_t> reply(xcb_input_xi_passive_grab_device_reply(
        connection_,
        xcb_input_xi_passive_grab_device(connection_, XCB_CURRENT_TIME, screen_->root, XCB_NONE, key,
                                         keyboard_, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                                         XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_GRAB_MODE_ASYNC, 0, &keyEvents,
                                         &modifiers),
        nullptr));
    return reply && reply->num_modifiers == 0;
}

void RivalClient::giveBackByXInput(quint8 key, quint32 modifiers) {
    xcb_input_xi_passive_ungrab_device(connection_, screen_->root, key, keyboard_, 1,
                                       XCB_INPUT_GRAB_TYPE_KEYCODE, &modifiers);
    sync();
}

bool RivalClient::holdKeyboard() {
    const XReply<xcb_grab_keyboard_reply_t> reply(
        xcb_grab_keyboard_reply(connection_,
                                xcb_grab_keyboard(connection_, 0, screen_->root, XCB_CURRENT_TIME,
                                                  XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
}

void RivalClient::freeKeyboard() {
    xcb_ungrab_keyboard(connection_, XCB_CURRENT_TIME);
    sync();
}

void RivalClient::coverScreen() {
    cover_ = xcb_generate_id(connection_);
    const quint32 values[] = {screen_->black_pixel, 1};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, cover_, screen_->root, 0, 0,
                      screen_->width_in_pixels, screen_->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      screen_->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(connection_, cover_);
    sync();
}

void RivalClient::uncoverScreen() {
    xcb_destroy_window(connection_, cover_);
    sync();
}

int RivalClient::presses() {
    sync();
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
        const auto type = event->response_type & 0x7F;
        if (type == XCB_KEY_PRESS) ++presses_;
        if (type == XCB_GE_GENERIC &&
            reinterpret_cast<const xcb_ge_generic_event_t&>(*event).event_type == XCB_INPUT_KEY_PRESS)
            ++presses_;
    }
    return presses_;
}

}  // namespace veltrin
