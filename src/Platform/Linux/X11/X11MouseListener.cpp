#include "Platform/Linux/X11/X11MouseListener.h"

#include "Platform/Linux/X11/X11ServerTime.h"
#include "Platform/Linux/X11/X11Settings.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <utility>

namespace veltrin {
namespace {

constexpr std::uint64_t sampleInterval = 8'000'000;
constexpr std::uint64_t millisecond = 1'000'000;

template <typename T>
const T& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const T&>(event);
}

bool isWheel(std::uint8_t button) {
    return button >= 4 && button <= 7;
}

}  // namespace

std::unique_ptr<X11MouseListener> X11MouseListener::start(const QByteArray& display, Callbacks callbacks) {
    auto connection = X11Connection::open(display);
    if (!connection || !connection->hasXInput22() || !connection->hasXFixes()) return nullptr;
    std::unique_ptr<X11MouseListener> listener(
        new X11MouseListener(std::move(connection), std::move(callbacks)));
    if (listener->wake_ < 0) return nullptr;
    listener->thread_ = std::thread([raw = listener.get()] { raw->run(); });
    return listener;
}

X11MouseListener::X11MouseListener(std::unique_ptr<X11Connection> connection, Callbacks callbacks)
    : connection_(std::move(connection)),
      callbacks_(std::move(callbacks)),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    xcb_xfixes_select_selection_input(connection_->xcb(), connection_->root(),
                                      connection_->atom("XdndSelection"),
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    selectEvents(false);
    readButtonMap();
    // From here on no click is missed.
    connection_->roundTrip();
}

X11MouseListener::~X11MouseListener() {
    stopping_ = true;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wake_, &one, sizeof one);
    if (thread_.joinable()) thread_.join();
    if (wake_ >= 0) close(wake_);
}

void X11MouseListener::selectEvents(bool withMotion) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } wanted{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
             static_cast<std::uint32_t>(XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                                        XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE)};
    if (withMotion) wanted.mask |= static_cast<std::uint32_t>(XCB_INPUT_XI_EVENT_MASK_RAW_MOTION);
    xcb_input_xi_select_events(connection_->xcb(), connection_->root(), 1, &wanted.head);
    connection_->flush();
}

/// Raw events name the device's own buttons. Left-handed users have them change places.
void X11MouseListener::readButtonMap() {
    const X11Reply<xcb_get_pointer_mapping_reply_t> reply(xcb_get_pointer_mapping_reply(
        connection_->xcb(), xcb_get_pointer_mapping(connection_->xcb()), nullptr));
    if (!reply) return;
    const auto* map = xcb_get_pointer_mapping_map(reply.get());
    buttonMap_.assign(map, map + xcb_get_pointer_mapping_map_length(reply.get()));
}

bool X11MouseListener::isLeft(std::uint8_t button) const {
    if (button == 0 || button > buttonMap_.size()) return button == 1;
    return buttonMap_[button - 1U] == 1;
}

void X11MouseListener::run() {
    while (!stopping_ && !connection_->isLost()) {
        if (const X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_->xcb())}) {
            handle(*event);
            continue;
        }
        if (hasMoved_ && monotonicNow() >= nextSampleAt_)
            sampleMotion();
        else
            waitForMore();
    }
    if (!stopping_ && callbacks_.onLoss) callbacks_.onLoss();
}

void X11MouseListener::waitForMore() {
    int timeout = -1;
    if (hasMoved_) {
        const auto now = monotonicNow();
        timeout = now >= nextSampleAt_ ? 0 : static_cast<int>((nextSampleAt_ - now) / millisecond) + 1;
    }
    pollfd descriptors[] = {{xcb_get_file_descriptor(connection_->xcb()), POLLIN, 0}, {wake_, POLLIN, 0}};
    poll(descriptors, 2, timeout);
}

void X11MouseListener::handle(const xcb_generic_event_t& event) {
    const auto type = event.response_type & 0x7F;
    if (type == connection_->xfixesFirstEvent() + XCB_XFIXES_SELECTION_NOTIFY) {
        ++dragPasteboardChangeCount_;
        return;
    }
    if (type == XCB_MAPPING_NOTIFY && as<xcb_mapping_notify_event_t>(event).request == XCB_MAPPING_POINTER) {
        readButtonMap();
        return;
    }
    if (type != XCB_GE_GENERIC || as<xcb_ge_generic_event_t>(event).extension != connection_->xinputOpcode())
        return;
    const auto& raw = as<xcb_input_raw_button_press_event_t>(event);
    switch (as<xcb_ge_generic_event_t>(event).event_type) {
        case XCB_INPUT_RAW_BUTTON_PRESS:
            press(static_cast<std::uint8_t>(raw.detail), raw.time);
            break;
        case XCB_INPUT_RAW_BUTTON_RELEASE:
            release(static_cast<std::uint8_t>(raw.detail));
            break;
        case XCB_INPUT_RAW_MOTION:
            hasMoved_ = buttonDown_ != 0;
            break;
        default:
            break;
    }
}

void X11MouseListener::locate() {
    auto* xcb = connection_->xcb();
    const auto pointerAsked = xcb_query_pointer(xcb, connection_->root());
    const auto sizeAsked = xcb_get_geometry(xcb, connection_->root());
    const X11Reply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(xcb, pointerAsked, nullptr));
    const X11Reply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(xcb, sizeAsked, nullptr));
    if (pointer) location_ = {pointer->root_x, pointer->root_y};
    if (size) height_ = size->height;
}

void X11MouseListener::tell(MouseEventType type, int clickState) {
    MouseEvent event;
    event.type = type;
    event.location = location_;
    event.mouseLocation = {location_.x() * 1.0, height_ - location_.y()};
    event.clickState = clickState;
    event.dragPasteboardChangeCount = dragPasteboardChangeCount_;
    callbacks_.tell(event);
}

void X11MouseListener::press(std::uint8_t button, xcb_timestamp_t time) {
    if (isWheel(button)) return;
    if (!isLeft(button)) return clicks_.interrupt();
    // The motion from here on is worth knowing, and where it begins is looked at in the same moment.
    selectEvents(true);
    locate();
    buttonDown_ = button;
    hasMoved_ = false;
    nextSampleAt_ = monotonicNow() + sampleInterval;
    tell(MouseEventType::leftMouseDown, clicks_.press(time, location_, doubleClickOf(*connection_)));
}

void X11MouseListener::sampleMotion() {
    hasMoved_ = false;
    nextSampleAt_ = monotonicNow() + sampleInterval;
    const QPoint before = location_;
    locate();
    if (location_ != before) tell(MouseEventType::leftMouseDragged, 0);
}

void X11MouseListener::release(std::uint8_t button) {
    if (button != buttonDown_ || button == 0) return;
    selectEvents(false);
    // Without a motion since, it is the same place, wherever the pointer has gone after the release.
    if (hasMoved_) sampleMotion();
    buttonDown_ = 0;
    hasMoved_ = false;
    tell(MouseEventType::leftMouseUp, clicks_.count());
}

}  // namespace veltrin
