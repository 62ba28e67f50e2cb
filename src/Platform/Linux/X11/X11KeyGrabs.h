#pragma once

#include "Platform/KeyEventTap.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11Keymap.h"

#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace veltrin {

/// The passive grabs of the combinations that may be swallowed, on the master keyboard. Not thread-safe: its
/// owner locks. Requests are buffered; the owner flushes.
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
    void disarm();
    /// Whether a press of the key may be answered by a grab event, whatever the modifiers.
    bool covers(Keycode key) const { return covered_.contains(key) || guarded_.contains(key); }

    /// Also grabs these keys with whatever modifiers, until `unguard`: the repeats of a key whose press was
    /// swallowed.
    void guard(Keycode key);
    void unguard(Keycode key);
    bool isGuarded(Keycode key) const { return guarded_.contains(key); }

    std::uint16_t device() const { return device_; }

private:
    /// The server's modifier masks by key.
    using Combinations = std::map<Keycode, std::set<std::uint32_t>>;

    void grab(Keycode key, const std::set<std::uint32_t>& modifiers);
    void ungrab(Keycode key, const std::set<std::uint32_t>& modifiers);

    const X11Connection& connection_;
    std::uint16_t device_;
    Combinations armed_;
    std::set<Keycode> covered_;
    std::set<Keycode> guarded_;
};

}  // namespace veltrin
