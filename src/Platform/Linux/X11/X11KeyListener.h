#pragma once

#include "Platform/KeyEventTap.h"
#include "Platform/Linux/X11/KeyQuestions.h"
#include "Platform/Linux/X11/X11KeyGrabs.h"
#include "Platform/Linux/X11/X11KeyGuard.h"
#include "Platform/Linux/X11/X11KeyHold.h"
#include "Platform/Linux/X11/X11KeyRepeats.h"
#include "Platform/Linux/X11/X11KeyboardHolder.h"
#include "Platform/Linux/X11/X11Keymap.h"

#include <xcb/xinput.h>

#include <atomic>
#include <bitset>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace veltrin {

/// Listens to every key of the session on a thread and connection of its own, and swallows what may be
/// claimed and is. An ordinary key is never delayed; a claimable one waits for its answer at most
/// the given time. While plain text is typed, keys are told up to 9 ms after they were pressed, with the
/// time stamps of the moment: a listener that waits for each would cost every key the processor it wakes.
class X11KeyListener {
public:
    /// Null when the server has no XInput 2.2 or no XKB. `questions` outlives the listener. `onLoss` is
    /// called on the listening thread when the connection was lost; the listener is of no use then.
    static std::unique_ptr<X11KeyListener> start(const QByteArray& display, KeyQuestions& questions,
                                                 std::chrono::milliseconds answerLimit,
                                                 std::function<void()> onLoss);
    ~X11KeyListener();
    X11KeyListener(const X11KeyListener&) = delete;
    X11KeyListener& operator=(const X11KeyListener&) = delete;

    /// Replaces what may be claimed, and listens or does not. In force when it returns. Main thread.
    void configure(bool listening, const std::vector<ClaimableKey>& claimable);
    /// Waits, at most `limit`, until the user has let go of a swallowed key, then frees the keyboard for
    /// synthetic keys by force. Main thread.
    void letGo(std::chrono::milliseconds limit);

private:
    using Keycode = X11Keymap::Keycode;
    using DeviceEvent = xcb_input_key_press_event_t;

    X11KeyListener(std::unique_ptr<X11Connection> connection, std::uint16_t masterKeyboard,
                   KeyQuestions& questions, std::chrono::milliseconds answerLimit,
                   std::function<void()> onLoss);
    void run();
    void waitForMore();
    bool gathersKeys(std::uint64_t now);
    X11Reply<xcb_generic_event_t> nextEvent();
    void bringEvents();
    bool isGrabEvent(const xcb_generic_event_t& event) const;
    void handle(const xcb_generic_event_t& event);
    void handleXkb(const xcb_generic_event_t& event);
    void rawPress(Keycode key, xcb_timestamp_t time);
    void rawRelease(Keycode key, xcb_timestamp_t time);
    void tellOrdinary(const KeyEvent& event);
    void grabbedPress(const DeviceEvent& event);
    void grabbedRelease(const DeviceEvent& event);
    bool isForTheLockScreen(std::uint64_t when);
    void makeRepeat();
    void reloadKeymap();
    void selectEvents(bool listening);
    bool grabEventFollows(Keycode key, xcb_timestamp_t time);
    bool isClaimable(const KeyEvent& event);
    KeyEvent keyEvent(KeyEventType type, Keycode key, unsigned modifiers, std::uint64_t time) const;
    void poke();

    std::unique_ptr<X11Connection> connection_;
    KeyQuestions& questions_;
    std::chrono::milliseconds answerLimit_;
    std::function<void()> onLoss_;
    std::unique_ptr<X11KeyGuard> guard_;
    int wake_ = -1;
    std::atomic<bool> stopping_{false};
    bool isWatchedClosely_ = false;  ///< the main thread's

    // The listening thread's own.
    std::deque<X11Reply<xcb_generic_event_t>> pending_;
    X11KeyRepeats repeats_;
    unsigned modifiers_ = 0;
    std::optional<std::uint64_t> reloadAt_;
    X11KeyboardHolder holder_;
    std::bitset<256> silenced_;                ///< pressed while the screen was locked
    std::optional<std::uint64_t> lockedAt_;    ///< the last such press
    std::optional<std::uint64_t> unlockedAt_;  ///< when the screen was last looked at and was not locked
    Keycode toldKey_ = 0;                      ///< the press told last without a grab
    xcb_timestamp_t toldTime_ = 0;
    std::optional<std::uint64_t> typedAt_;  ///< when a key was told last, if it was not the space bar

    std::mutex mutex_;  ///< guards what follows, and the hold
    std::shared_ptr<const X11Keymap> keymap_;
    unsigned group_ = 0;
    std::vector<ClaimableKey> claimable_;
    bool listening_ = false;
    bool mayClaimPlainKeys_ = false;  ///< keys that go without a modifier, as while the choice is open
    X11KeyGrabs grabs_;
    X11KeyHold hold_;

    std::thread thread_;
};

}  // namespace veltrin
