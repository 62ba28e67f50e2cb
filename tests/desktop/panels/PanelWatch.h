#pragma once

#include "support/desktop/RealDesktop.h"

#include <xcb/res.h>

namespace veltrin {

/// The focus of a window as the window itself is told of it, grabs of keys left out.
class FocusWatch {
public:
    FocusWatch(RealDesktop& desktop, xcb_window_t window)
        : connection_(xcb_connect(desktop.display().toLatin1().constData(), nullptr)) {
        const quint32 mask = XCB_EVENT_MASK_FOCUS_CHANGE;
        xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, &mask);
        drain();
    }
    ~FocusWatch() { xcb_disconnect(connection_); }
    FocusWatch(const FocusWatch&) = delete;
    FocusWatch& operator=(const FocusWatch&) = delete;

    int losses() {
        drain();
        return losses_;
    }

private:
    void drain() {
        // A round trip brings every event up to now.
        const XReply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
            if ((event->response_type & 0x7F) != XCB_FOCUS_OUT) continue;
            const auto* out = reinterpret_cast<const xcb_focus_out_event_t*>(event.get());
            if (out->mode == XCB_NOTIFY_MODE_NORMAL || out->mode == XCB_NOTIFY_MODE_WHILE_GRABBED) ++losses_;
        }
    }

    xcb_connection_t* connection_;
    int losses_ = 0;
};

/// Everything that a client holds in the server, counted.
inline quint32 resourcesOf(XDesktop& x, xcb_window_t window) {
    const XReply<xcb_res_query_client_resources_reply_t> reply(xcb_res_query_client_resources_reply(
        x.connection(), xcb_res_query_client_resources(x.connection(), window), nullptr));
    quint32 count = 0;
    if (!reply) return count;
    for (auto type = xcb_res_query_client_resources_types_iterator(reply.get()); type.rem > 0;
         xcb_res_type_next(&type))
        count += type.data->count;
    return count;
}

}  // namespace veltrin
