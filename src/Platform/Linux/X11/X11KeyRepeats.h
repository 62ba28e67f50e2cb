#pragma once

#include "Platform/Linux/X11/X11Connection.h"

#include <array>
#include <cstdint>
#include <optional>

namespace veltrin {

/// Makes the repeats of a held key, which listening never shows, from the server's own repeat settings. The
/// server repeats the key pressed last; a repeat seen for real puts the made ones off. Times are nanoseconds.
class X11KeyRepeats {
public:
    using Keycode = std::uint8_t;

    /// Reads the delay, the interval and which keys repeat.
    void readSettings(const X11Connection& connection);

    void pressed(Keycode key, std::uint64_t time);
    void released(Keycode key) {
        if (key_ == key) key_ = 0;
    }
    void repeatSeen(Keycode key, std::uint64_t time);
    void stop() { key_ = 0; }

    /// When the next repeat is due; none when no repeating key is held.
    std::optional<std::uint64_t> due() const { return key_ == 0 ? std::nullopt : std::optional(next_); }
    /// The key whose repeat is due; counts it as made.
    std::optional<Keycode> take(std::uint64_t now);

private:
    Keycode key_ = 0;
    std::uint64_t next_ = 0;
    std::uint64_t delay_ = 660'000'000;
    std::uint64_t interval_ = 40'000'000;
    bool enabled_ = true;
    std::array<std::uint8_t, 32> repeating_{};
};

}  // namespace veltrin
