#include "Platform/Linux/X11/X11KeyRepeats.h"

#include <algorithm>

namespace veltrin {

void X11KeyRepeats::readSettings(const X11Connection& connection) {
    const X11Reply<xcb_xkb_get_controls_reply_t> reply(xcb_xkb_get_controls_reply(
        connection.xcb(), xcb_xkb_get_controls(connection.xcb(), XCB_XKB_ID_USE_CORE_KBD), nullptr));
    if (!reply) return;
    delay_ = std::max<std::uint64_t>(1, reply->repeatDelay) * 1'000'000;
    interval_ = std::max<std::uint64_t>(1, reply->repeatInterval) * 1'000'000;
    enabled_ = (reply->enabledControls & XCB_XKB_BOOL_CTRL_REPEAT_KEYS) != 0;
    std::copy(std::begin(reply->perKeyRepeat), std::end(reply->perKeyRepeat), repeating_.begin());
    if (!enabled_) key_ = 0;
}

void X11KeyRepeats::pressed(Keycode key, std::uint64_t time) {
    const bool repeats = enabled_ && (repeating_[key / 8] & (1U << (key % 8))) != 0;
    if (!repeats) return;  // the key held before goes on repeating, as the server has it
    key_ = key;
    next_ = time + delay_;
}

void X11KeyRepeats::repeatSeen(Keycode key, std::uint64_t time) {
    // Half an interval more, so that the real one that follows is seen before one is made in its place.
    if (key_ == key) next_ = time + interval_ + interval_ / 2;
}

std::optional<X11KeyRepeats::Keycode> X11KeyRepeats::take(std::uint64_t now) {
    if (key_ == 0 || now < next_) return std::nullopt;
    // A thread that was late does not make up for repeats it missed.
    next_ = std::max(next_ + interval_, now);
    return key_;
}

}  // namespace veltrin
