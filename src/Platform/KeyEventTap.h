#pragma once

#include "Platform/KeyCodes.h"

#include <functional>
#include <memory>
#include <vector>

namespace veltrin {

enum class KeyEventType { keyDown, keyUp, tapDisabledByTimeout, tapDisabledByUserInput };

/// One key event of any application. Modifier keys themselves are not reported.
struct KeyEvent {
    KeyEventType type = KeyEventType::keyDown;
    qint64 keyCode = KeyCode::unknown;
    quint64 flags = 0;          ///< KeyFlags held at the event; lock keys have no bit
    bool isAutoRepeat = false;  ///< a key-down made by the server because the key is held
    quint64 timestamp = 0;      ///< nanoseconds on RunLoop::now()'s clock, stamped by the event's source
};

/// A combination that may be swallowed right now.
struct ClaimableKey {
    qint64 keyCode = KeyCode::unknown;
    quint64 flags = 0;
    bool anyFlags =
        false;  ///< claimed when at least `flags` are held, whatever else is; else exactly `flags`
    friend bool operator==(const ClaimableKey&, const ClaimableKey&) = default;
};

/// A session-wide key event tap. Its handler runs on the main thread, once for every event of the mask, and
/// answers whether the event goes on (true) or is swallowed (false).
///
/// Only keys named by `setClaimable` can be swallowed; for every other key the handler is told after the fact
/// and its answer is void, so that listening never delays a key. A claimable key waits for the answer at most
/// 50 ms and is passed on without one. When the press of a key was swallowed, so are its repeats and its
/// release, whatever the handler answers to them; no application ever sees half a key.
///
/// Destroying the tap ends it; no key stays down and no grab stays behind.
class KeyEventTap {
public:
    using Handler = std::function<bool(const KeyEvent&)>;

    virtual ~KeyEventTap() = default;

    /// Puts the tap's source on the main run loop (and off it). A tap that is off the loop delivers nothing.
    virtual bool addToRunLoop() = 0;
    virtual void removeFromRunLoop() = 0;
    /// Switches the tap on or off. Off, it listens to nothing and claims nothing; events that came while it
    /// was off are never delivered, not even those still queued when it goes on again.
    virtual void setEnabled(bool enabled) = 0;
    /// Replaces the set of combinations that may be swallowed.
    virtual void setClaimable(std::vector<ClaimableKey> keys) = 0;
};

/// Which events a tap is told.
enum class KeyEventMask { keyDown = 0x400, keyDownAndKeyUp = 0xC00 };

class KeyEventTaps {
public:
    virtual ~KeyEventTaps() = default;

    /// A new tap, off the run loop and disabled; null when the desktop does not let us listen.
    virtual std::unique_ptr<KeyEventTap> create(KeyEventMask mask, KeyEventTap::Handler handler) = 0;
    /// Whether listening is possible at all, without asking anybody.
    virtual bool preflightListenEventAccess() const = 0;
    /// Asks for the right to listen where the desktop has such a question; true when it stands afterwards.
    virtual bool requestListenEventAccess() = 0;
};

}  // namespace veltrin
