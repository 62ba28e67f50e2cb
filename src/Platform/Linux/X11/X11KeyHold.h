#pragma once

#include "Platform/Linux/X11/X11KeyGrabs.h"

#include <bitset>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>

namespace veltrin {

/// Decides what becomes of each event of the keyboard while one of our grabs holds it, so that no application
/// sees half a key: what belongs to a swallowed press (repeats, release) is swallowed, everything else is
/// replayed to where it was going.
///
/// Every event here arrives with the keyboard frozen, and every path answers it with exactly one thawing
/// request, but for the release that ends its grab by itself. All calls are the listening thread's but the
/// two that wait, which are for another one.
class X11KeyHold {
public:
    using Keycode = X11Keymap::Keycode;

    struct Event {
        Keycode key = 0;
        xcb_timestamp_t time = 0;
        bool isRepeat = false;
        bool isModifier = false;
        bool claimable = false;
        bool optionHeld = false;
    };
    /// `mutex` guards the grabs too. `anotherWaits` says, after a round trip, whether one of our grabs has
    /// delivered a further event that is not handled yet; it is called with the lock.
    X11KeyHold(const X11Connection& connection, X11KeyGrabs& grabs, std::mutex& mutex,
               std::function<bool()> anotherWaits)
        : connection_(connection), grabs_(grabs), mutex_(mutex), anotherWaits_(std::move(anotherWaits)) {}

    /// A press that a grab delivered. `ask` is called without the lock and only when the answer counts; it
    /// says whether the press goes on. `tell` is called when the event is to be known but is decided already.
    void press(const Event& event, const std::function<bool()>& ask, const std::function<void()>& tell);
    /// A release that a grab delivered. True when a swallowed key came up with Option still held:
    /// applications that saw Option alone would now open their menu.
    bool release(const Event& event);
    /// A release that was only listened to.
    void rawRelease(Keycode key);

    /// Waits until the user has let go of what was swallowed. False when that took too long; then `free` is
    /// wanted.
    bool waitUntilIdle(std::chrono::milliseconds limit);
    bool waitUntilFreed(std::chrono::milliseconds limit);
    bool isFreeingWanted();
    /// Takes the keyboard off our hands by force, so that synthetic keys reach the application. Repeats of a
    /// key still down are swallowed all the same. To be called with no event of ours waiting: the keyboard
    /// stands still for each, and freeing it would lose that one.
    void free();
    /// The end: frees everything at once.
    void drop();
    bool isActive() const { return active_; }

private:
    void allow(std::uint8_t mode);
    void replay(xcb_timestamp_t time);
    void hold(xcb_timestamp_t time);
    /// What is not down any more is not waited for.
    void forgetReleased(xcb_query_keymap_cookie_t asked);
    void ungrabDevice();
    bool isIdle() const { return !asking_ && swallowed_.none(); }

    const X11Connection& connection_;
    X11KeyGrabs& grabs_;
    std::mutex& mutex_;
    std::function<bool()> anotherWaits_;
    std::condition_variable released_;
    std::bitset<256> swallowed_;  ///< pressed, swallowed, and still down
    Keycode activator_ = 0;       ///< the key whose passive grab holds the keyboard; 0 when none does
    bool ownGrab_ = false;  ///< the keyboard is held by a grab that we made because a swallowed key is down
    bool asking_ = false;
    bool active_ = false;
    bool isFreeingWanted_ = false;
};

}  // namespace veltrin
