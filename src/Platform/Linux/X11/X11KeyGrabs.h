#pragma once

#include "Platform/KeyEventTap.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11Keymap.h"

#include <xcb/xinput.h>

#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace veltrin {

/// The passive grabs of the combinations that may be swallowed, on the master keyboard. Not thread-safe: its
/// owner locks.
///
/// Of two clients that grab a combination by XInput the first keeps it, so ours may be refused: such a
/// combination is only listened to until `retryRefused` gets it. Against grabs by the core protocol, which
/// most window managers make, the newest wins.
class X11KeyGrabs {
public:
    using Keycode = X11Keymap::Keycode;

    X11KeyGrabs(const X11Connection& connection, std::uint16_t masterKeyboard)
        : connection_(connection), device_(masterKeyboard) {}

    /// Makes the grabs those of `keys` under this keymap, taking away and adding only what differs.
    void arm(const std::vector<ClaimableKey>& keys, const X11Keymap& keymap, unsigned group);
    /// Grabs everything once more. The newest grab of a combination wins over those of other clients, so this
    /// takes back what one of them took; there is no moment without a grab.
    void rearm();
    /// The same for one key, when a press with these modifiers should have been ours.
    void renew(Keycode key, std::uint32_t modifiers);
    void disarm();
    /// Asks again for what other clients had.
    void retryRefused();
    bool hasRefused() const { return !refused_.empty(); }
    /// Whether a press of the key may be answered by a grab event, whatever the modifiers.
    bool covers(Keycode key) const { return armed_.contains(key) || guarded_.contains(key); }

    /// Also grabs these keys with whatever modifiers, until `unguard`: the repeats of a key whose press was
    /// swallowed.
    void guard(Keycode key);
    void unguard(Keycode key);
    bool isGuarded(Keycode key) const { return guarded_.contains(key); }

    std::uint16_t device() const { return device_; }

private:
    /// The server's modifier masks by key.
    using Combinations = std::map<Keycode, std::set<std::uint32_t>>;

    struct Asked {
        Keycode key = 0;
        std::set<std::uint32_t> modifiers;
        xcb_input_xi_passive_grab_device_cookie_t cookie{};
    };
    void grab(Keycode key, const std::set<std::uint32_t>& modifiers);
    void ungrab(Keycode key, const std::set<std::uint32_t>& modifiers);
    void readAnswers();

    const X11Connection& connection_;
    std::uint16_t device_;
    Combinations armed_;
    Combinations refused_;      ///< of the armed ones, those that another client has
    std::vector<Asked> asked_;  ///< grabs whose answers are to be read
    bool refusalSaid_ = false;
    std::set<Keycode> guarded_;
};

}  // namespace veltrin
