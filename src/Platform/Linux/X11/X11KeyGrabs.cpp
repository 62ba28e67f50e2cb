#include "Platform/Linux/X11/X11KeyGrabs.h"

#include <xcb/xinput.h>

#include <algorithm>

namespace veltrin {
namespace {

constexpr std::uint32_t anyModifier = XCB_INPUT_MODIFIER_MASK_ANY;

/// Every mask of real modifiers that means the wanted combination: the locks (Caps Lock, Num Lock) never
/// matter, and where more may be held than named, nothing else matters either.
std::set<std::uint32_t> masksOf(const ClaimableKey& key, const X11Keymap& keymap) {
    if (key.anyFlags && key.flags == 0) return {anyModifier};
    const unsigned wanted = keymap.modifiers(key.flags);
    const unsigned free = key.anyFlags
                              ? 0xFFU & ~wanted
                              : (XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2) & ~keymap.modifiers(KeyFlags::all);
    std::set<std::uint32_t> masks;
    for (unsigned extra = 0; extra <= 0xFFU; ++extra) {
        if ((extra & ~free) == 0) masks.insert(wanted | extra);
    }
    return masks;
}

}  // namespace

void X11KeyGrabs::grab(Keycode key, const std::set<std::uint32_t>& modifiers) {
    if (modifiers.empty()) return;
    const std::vector<std::uint32_t> list(modifiers.begin(), modifiers.end());
    const std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const auto cookie = xcb_input_xi_passive_grab_device(
        connection_.xcb(), XCB_CURRENT_TIME, connection_.root(), XCB_NONE, key, device_,
        static_cast<std::uint16_t>(list.size()), 1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_SYNC,
        XCB_GRAB_MODE_ASYNC, 0, &events, list.data());
    // A combination that another client took first stays theirs: it is then only listened to, never
    // swallowed.
    xcb_discard_reply(connection_.xcb(), cookie.sequence);
}

void X11KeyGrabs::ungrab(Keycode key, const std::set<std::uint32_t>& modifiers) {
    if (modifiers.empty()) return;
    const std::vector<std::uint32_t> list(modifiers.begin(), modifiers.end());
    xcb_input_xi_passive_ungrab_device(connection_.xcb(), connection_.root(), key, device_,
                                       static_cast<std::uint16_t>(list.size()), XCB_INPUT_GRAB_TYPE_KEYCODE,
                                       list.data());
}

void X11KeyGrabs::arm(const std::vector<ClaimableKey>& keys, const X11Keymap& keymap, unsigned group) {
    Combinations wanted;
    for (const auto& key : keys) {
        const auto masks = masksOf(key, keymap);
        for (const Keycode code : keymap.keys(key.keyCode, group))
            wanted[code].insert(masks.begin(), masks.end());
    }
    for (auto& [code, masks] : wanted) {
        if (masks.contains(anyModifier)) masks = {anyModifier};
    }
    for (const auto& [code, masks] : armed_) {
        const auto found = wanted.find(code);
        if (found == wanted.end()) {
            ungrab(code, masks);
        } else if (found->second != masks) {
            // Taking away "any modifier" takes every combination of the key with it, so the key starts anew.
            ungrab(code, masks);
            grab(code, found->second);
        }
    }
    for (const auto& [code, masks] : wanted) {
        if (!armed_.contains(code)) grab(code, masks);
    }
    armed_ = std::move(wanted);
    covered_.clear();
    for (const auto& [code, masks] : armed_)
        covered_.insert(code);
}

void X11KeyGrabs::rearm() {
    for (const auto& [code, masks] : armed_)
        grab(code, masks);
    for (const Keycode code : guarded_)
        grab(code, {anyModifier});
}

void X11KeyGrabs::disarm() {
    for (const auto& [code, masks] : armed_)
        ungrab(code, masks);
    armed_.clear();
    covered_.clear();
    for (const Keycode code : guarded_)
        ungrab(code, {anyModifier});
    guarded_.clear();
}

void X11KeyGrabs::guard(Keycode key) {
    if (guarded_.insert(key).second) grab(key, {anyModifier});
}

void X11KeyGrabs::unguard(Keycode key) {
    if (guarded_.erase(key) == 0) return;
    ungrab(key, {anyModifier});
    if (const auto found = armed_.find(key); found != armed_.end()) grab(key, found->second);
}

}  // namespace veltrin
