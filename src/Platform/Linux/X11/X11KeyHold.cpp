#include "Platform/Linux/X11/X11KeyHold.h"

#include <xcb/xinput.h>

namespace veltrin {

void X11KeyHold::allow(std::uint8_t mode) {
    xcb_input_xi_allow_events(connection_.xcb(), XCB_CURRENT_TIME, grabs_.device(), mode, 0, XCB_NONE);
    connection_.flush();
}

/// Ends our grab and gives the frozen event to the application it was meant for.
void X11KeyHold::replay(xcb_timestamp_t time) {
    allow(XCB_INPUT_EVENT_MODE_REPLAY_DEVICE);
    activator_ = 0;
    ownGrab_ = false;
    hold(time);
}

/// Takes the keyboard again when no passive grab has it any more but a swallowed key is still down, whose
/// release must not reach an application. `time` is that of the event decided last.
void X11KeyHold::hold(xcb_timestamp_t time) {
    active_ = activator_ != 0 || ownGrab_;
    if (swallowed_.none() || active_) return;
    auto* xcb = connection_.xcb();
    // Keys that were typed while the keyboard stood still are played as soon as it is set free, and one of
    // them may have stopped it again. To grab over that would lose it; its own turn comes next. A release of
    // a swallowed key among them has gone to the application: nothing on X11 can keep that one.
    const auto whatIsDown = [&] { return xcb_query_keymap(xcb); };
    if (anotherWaits_()) return forgetReleased(whatIsDown());
    const std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const auto cookie = xcb_input_xi_grab_device(xcb, connection_.root(), time, XCB_NONE, grabs_.device(),
                                                 XCB_GRAB_MODE_SYNC, XCB_GRAB_MODE_ASYNC, 0, 1, &events);
    const auto down = whatIsDown();
    const X11Reply<xcb_input_xi_grab_device_reply_t> reply(
        xcb_input_xi_grab_device_reply(xcb, cookie, nullptr));
    forgetReleased(down);
    if (!reply || reply->status != XCB_GRAB_STATUS_SUCCESS) {
        // A key that came in between has stopped the keyboard for us: the grab is refused by its time. Else
        // somebody else holds the keyboard, and the release goes to them.
        if (!anotherWaits_()) swallowed_.reset();
        return;
    }
    if (swallowed_.none()) {
        ungrabDevice();
        return;
    }
    ownGrab_ = true;
    active_ = true;
    allow(XCB_INPUT_EVENT_MODE_SYNC_DEVICE);
}

void X11KeyHold::forgetReleased(xcb_query_keymap_cookie_t asked) {
    const X11Reply<xcb_query_keymap_reply_t> down(xcb_query_keymap_reply(connection_.xcb(), asked, nullptr));
    for (unsigned key = 8; key < 256; ++key) {
        if (!down || (down->keys[key / 8] & (1U << (key % 8))) == 0) swallowed_.reset(key);
    }
}

void X11KeyHold::ungrabDevice() {
    xcb_input_xi_ungrab_device(connection_.xcb(), XCB_CURRENT_TIME, grabs_.device());
    connection_.flush();
    activator_ = 0;
    ownGrab_ = false;
    active_ = false;
}

void X11KeyHold::press(const Event& event, const std::function<bool()>& ask,
                       const std::function<void()>& tell) {
    std::unique_lock lock(mutex_);
    if (grabs_.isGuarded(event.key)) {
        if (event.isRepeat) {
            // A repeat of a swallowed key that the keyboard was taken from: eaten without holding anything.
            ungrabDevice();
            lock.unlock();
            tell();
            return;
        }
        // Pressed anew: its release came while nobody told us of it.
        grabs_.unguard(event.key);
    }
    if (!active_) {
        activator_ = event.key;
        active_ = true;
    }
    // A fresh press of a key that counts as down: its release was taken from us, and this is a new decision.
    if (!event.isRepeat) swallowed_.reset(event.key);
    if (swallowed_.test(event.key)) {
        allow(XCB_INPUT_EVENT_MODE_SYNC_DEVICE);
        lock.unlock();
        tell();
        return;
    }
    if (!event.claimable) {
        replay(event.time);
        lock.unlock();
        if (!event.isModifier) tell();
        return;
    }
    asking_ = true;
    lock.unlock();
    const bool passes = ask();
    lock.lock();
    asking_ = false;
    if (passes) {
        replay(event.time);
    } else if (!event.isRepeat) {
        swallowed_.set(event.key);
        allow(XCB_INPUT_EVENT_MODE_SYNC_DEVICE);
    } else if (swallowed_.any()) {
        allow(XCB_INPUT_EVENT_MODE_SYNC_DEVICE);
    } else {
        // A swallowed repeat of a press that went on is swallowed alone. The grab must end at once, or its
        // end with the release of the key would keep that release from the application.
        ungrabDevice();
    }
    if (isIdle()) released_.notify_all();
}

bool X11KeyHold::release(const Event& event) {
    const std::lock_guard lock(mutex_);
    // Sent to us just before the keyboard was let go: no raw event of it follows.
    grabs_.unguard(event.key);
    if (swallowed_.test(event.key)) {
        swallowed_.reset(event.key);
        if (event.key == activator_) {
            // The server ends a passive grab with the release of the key that began it, and sets the keyboard
            // free. To ask for that here would set free the next key that has stopped it meanwhile.
            activator_ = 0;
            hold(event.time);
        } else if (ownGrab_ && swallowed_.none()) {
            ungrabDevice();
        } else {
            allow(XCB_INPUT_EVENT_MODE_SYNC_DEVICE);
        }
        if (isIdle()) released_.notify_all();
        return swallowed_.none() && event.optionHeld;
    }
    // A modifier let go while a swallowed key is down is eaten: Alt without a key in between would open a
    // menu, and applications know their modifiers from the state of each event.
    if (event.isModifier && swallowed_.any())
        allow(XCB_INPUT_EVENT_MODE_SYNC_DEVICE);
    else
        replay(event.time);
    return false;
}

void X11KeyHold::rawRelease(Keycode key) {
    const std::lock_guard lock(mutex_);
    if (!grabs_.isGuarded(key)) return;
    grabs_.unguard(key);
    connection_.flush();
}

bool X11KeyHold::waitUntilIdle(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    if (released_.wait_for(lock, limit, [this] { return isIdle(); })) return true;
    isFreeingWanted_ = true;
    return false;
}

bool X11KeyHold::waitUntilFreed(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    return released_.wait_for(lock, limit, [this] { return !isFreeingWanted_; });
}

bool X11KeyHold::isFreeingWanted() {
    const std::lock_guard lock(mutex_);
    return isFreeingWanted_;
}

void X11KeyHold::free() {
    const std::lock_guard lock(mutex_);
    for (unsigned key = 8; key < 256; ++key) {
        if (swallowed_.test(key)) grabs_.guard(static_cast<Keycode>(key));
    }
    swallowed_.reset();
    ungrabDevice();
    connection_.roundTrip();
    isFreeingWanted_ = false;
    released_.notify_all();
}

void X11KeyHold::drop() {
    const std::lock_guard lock(mutex_);
    grabs_.disarm();
    // A key that nobody decided about goes to its application. What belongs to a swallowed one does not.
    if (swallowed_.none()) allow(XCB_INPUT_EVENT_MODE_REPLAY_DEVICE);
    swallowed_.reset();
    ungrabDevice();
    connection_.roundTrip();
    isFreeingWanted_ = false;
    released_.notify_all();
}

}  // namespace veltrin
