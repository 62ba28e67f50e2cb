#include "desktop/app/FocusWatch.h"

namespace veltrin {

FocusWatch::FocusWatch(RealDesktop& desktop, xcb_window_t window)
    : x_(desktop.display()), window_(window), active_(x_.atom("_NET_ACTIVE_WINDOW")) {
    // Qt gives the focus to a window inside its own.
    const XReply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(x_.connection(), xcb_get_input_focus(x_.connection()), nullptr));
    listen(window_, XCB_EVENT_MASK_FOCUS_CHANGE);
    if (focus && focus->focus > XCB_INPUT_FOCUS_POINTER_ROOT && focus->focus != window_)
        listen(focus->focus, XCB_EVENT_MASK_FOCUS_CHANGE);
    listen(x_.root(), XCB_EVENT_MASK_PROPERTY_CHANGE);
    x_.sync();
}

FocusWatch::~FocusWatch() = default;

void FocusWatch::listen(xcb_window_t window, uint32_t mask) {
    xcb_change_window_attributes(x_.connection(), window, XCB_CW_EVENT_MASK, &mask);
}

void FocusWatch::take(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
        case XCB_FOCUS_OUT: {
            const auto& focus = reinterpret_cast<const xcb_focus_out_event_t&>(event);
            const bool isGrab = focus.mode == XCB_NOTIFY_MODE_GRAB || focus.mode == XCB_NOTIFY_MODE_UNGRAB;
            const bool isInside =
                focus.detail == XCB_NOTIFY_DETAIL_INFERIOR || focus.detail == XCB_NOTIFY_DETAIL_POINTER;
            if (!isGrab && !isInside) {
                losses_ << QStringLiteral("focus out of %1, mode %2, detail %3")
                               .arg(focus.event)
                               .arg(focus.mode)
                               .arg(focus.detail);
            }
            break;
        }
        case XCB_PROPERTY_NOTIFY:
            if (reinterpret_cast<const xcb_property_notify_event_t&>(event).atom == active_) {
                const xcb_window_t active = x_.activeWindow();
                if (active != window_) losses_ << QStringLiteral("window %1 is active").arg(active);
            }
            break;
        default:
            break;
    }
}

QStringList FocusWatch::losses() {
    x_.sync();
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(x_.connection())})
        take(*event);
    return losses_;
}

}  // namespace veltrin
