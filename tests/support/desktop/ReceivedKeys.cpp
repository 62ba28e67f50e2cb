#include "support/desktop/ReceivedKeys.h"

#include "support/desktop/RealDesktop.h"

#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon.h>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace veltrin {
namespace {

constexpr std::chrono::seconds patience{20};
constexpr quint8 typeMask = 0x7F;  // without the mark of a sent event

}  // namespace

ReceivedKeys::ReceivedKeys(RealDesktop& desktop)
    : control_(desktop.display()), listening_(desktop.display()) {
    xcb_connection_t* xcb = listening_.connection();
    const auto* extension = xcb_get_extension_data(xcb, &xcb_input_id);
    const XReply<xcb_input_xi_query_version_reply_t> version(
        xcb_input_xi_query_version_reply(xcb, xcb_input_xi_query_version(xcb, 2, 2), nullptr));
    if (extension == nullptr || extension->present == 0 || !version) throw std::runtime_error("no XInput 2");
    xinput_ = extension->major_opcode;
    marked_ = xcb_generate_id(xcb);
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, marked_, listening_.root(), -10, -10, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } const wanted{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS};
    xcb_input_xi_select_events(xcb, listening_.root(), 1, &wanted.head);
    listening_.sync();
    thread_ = std::thread([this] { run(); });
}

ReceivedKeys::~ReceivedKeys() {
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    mark();
    thread_.join();
}

void ReceivedKeys::run() {
    while (const XReply<xcb_generic_event_t> event{xcb_wait_for_event(listening_.connection())}) {
        if (!handle(*event)) return;
    }
}

/// False at the end.
bool ReceivedKeys::handle(const xcb_generic_event_t& event) {
    const quint8 type = event.response_type & typeMask;
    if (type == XCB_CLIENT_MESSAGE) {
        const std::lock_guard lock(mutex_);
        lastMark_ = reinterpret_cast<const xcb_client_message_event_t&>(event).data.data32[0];
        changed_.notify_all();
        return !ends_;
    }
    const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    if (type != XCB_GE_GENERIC || raw.extension != xinput_ || raw.event_type != XCB_INPUT_RAW_KEY_PRESS)
        return true;
    xcb_connection_t* xcb = listening_.connection();
    const XReply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
    const std::lock_guard lock(mutex_);
    presses_.append({focus ? focus->focus : xcb_window_t{0}, static_cast<xcb_keycode_t>(raw.detail)});
    return true;
}

void ReceivedKeys::mark() {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = marked_;
    message.type = XCB_ATOM_INTEGER;
    message.data.data32[0] = ++marks_;
    // Without a mask it comes to the window's maker, behind everything that the server has told him before.
    xcb_send_event(control_.connection(), 0, marked_, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
    control_.sync();
}

QList<ReceivedKeys::Press> ReceivedKeys::take() {
    mark();
    QList<Seen> seen;
    {
        std::unique_lock lock(mutex_);
        if (!changed_.wait_for(lock, patience, [this] { return lastMark_ == marks_; }))
            throw std::runtime_error("the X server tells nothing of its keys");
        seen = std::exchange(presses_, {});
    }
    QList<Press> presses;
    for (const Seen& press : seen)
        presses.append({press.window, nameOf(press.key)});
    return presses;
}

quint32 ReceivedKeys::clientOf(xcb_window_t window) const {
    return window & ~xcb_get_setup(control_.connection())->resource_id_mask;
}

QString ReceivedKeys::nameOf(xcb_keycode_t key) {
    xcb_connection_t* xcb = control_.connection();
    const XReply<xcb_get_keyboard_mapping_reply_t> reply(
        xcb_get_keyboard_mapping_reply(xcb, xcb_get_keyboard_mapping(xcb, key, 1), nullptr));
    char name[64] = {};
    if (reply && reply->keysyms_per_keycode > 0)
        xkb_keysym_get_name(xcb_get_keyboard_mapping_keysyms(reply.get())[0], name, sizeof name);
    return QString::fromLatin1(name);
}

}  // namespace veltrin
