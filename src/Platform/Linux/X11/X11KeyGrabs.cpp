#include "Platform/Linux/X11/X11KeyGrabs.h"

#include "Foundation/MVPLog.h"

#include <algorithm>
#include <utility>

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

std::set<std::uint32_t> allMasks() {
    std::set<std::uint32_t> masks;
    for (std::uint32_t mask = 0; mask <= 0xFFU; ++mask)
        masks.insert(mask);
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
    asked_.push_back({key, modifiers, cookie});
}

void X11KeyGrabs::ungrab(Keycode key, const std::set<std::uint32_t>& modifiers) {
    if (modifiers.empty()) return;
    const std::vector<std::uint32_t> list(modifiers.begin(), modifiers.end());
    xcb_input_xi_passive_ungrab_device(connection_.xcb(), connection_.root(), key, device_,
                                       static_cast<std::uint16_t>(list.size()), XCB_INPUT_GRAB_TYPE_KEYCODE,
                                       list.data());
}

/// Reads what became of the grabs asked for. "Any modifier" is refused whole when another client has but one
/// combination of the key; then each combination is asked for by itself.
void X11KeyGrabs::readAnswers() {
    while (!asked_.empty()) {
        for (auto& asked : std::exchange(asked_, {})) {
            const X11Reply<xcb_input_xi_passive_grab_device_reply_t> reply(
                xcb_input_xi_passive_grab_device_reply(connection_.xcb(), asked.cookie, nullptr));
            if (const auto found = refused_.find(asked.key); found != refused_.end()) {
                for (const auto mask : asked.modifiers)
                    found->second.erase(mask);
                if (found->second.empty()) refused_.erase(found);
            }
            if (!reply || reply->num_modifiers == 0) continue;
            if (asked.modifiers.contains(anyModifier)) {
                grab(asked.key, allMasks());
                continue;
            }
            const auto* infos = xcb_input_xi_passive_grab_device_modifiers(reply.get());
            for (int i = 0; i < xcb_input_xi_passive_grab_device_modifiers_length(reply.get()); ++i) {
                if (infos[i].status != XCB_GRAB_STATUS_SUCCESS)
                    refused_[asked.key].insert(infos[i].modifiers);
            }
        }
    }
    if (refused_.empty() || refusalSaid_) return;
    refusalSaid_ = true;
    MVPLog::write("A key combination is held by another program; it is listened to until it is free");
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
        if (found != wanted.end() && found->second == masks) continue;
        // Whatever was asked for, so that a key never keeps a part of what it had; it starts anew.
        ungrab(code, {anyModifier});
        refused_.erase(code);
        if (found != wanted.end()) grab(code, found->second);
        if (guarded_.contains(code)) grab(code, {anyModifier});
    }
    for (const auto& [code, masks] : wanted) {
        if (!armed_.contains(code)) grab(code, masks);
    }
    armed_ = std::move(wanted);
    readAnswers();
}

void X11KeyGrabs::rearm() {
    for (const auto& [code, masks] : armed_)
        grab(code, masks);
    for (const Keycode code : guarded_)
        grab(code, {anyModifier});
    readAnswers();
}

void X11KeyGrabs::renew(Keycode key, std::uint32_t modifiers) {
    const auto found = armed_.find(key);
    if (found == armed_.end()) return;
    if (!found->second.contains(anyModifier) && !found->second.contains(modifiers)) return;
    grab(key, found->second);
    readAnswers();
}

void X11KeyGrabs::retryRefused() {
    for (const auto& [code, masks] : refused_)
        grab(code, masks);
    readAnswers();
}

void X11KeyGrabs::disarm() {
    for (const auto& [code, masks] : armed_)
        ungrab(code, {anyModifier});
    armed_.clear();
    refused_.clear();
    for (const Keycode code : guarded_)
        ungrab(code, {anyModifier});
    guarded_.clear();
}

void X11KeyGrabs::guard(Keycode key) {
    if (!guarded_.insert(key).second) return;
    grab(key, {anyModifier});
    readAnswers();
}

void X11KeyGrabs::unguard(Keycode key) {
    if (guarded_.erase(key) == 0) return;
    ungrab(key, {anyModifier});
    refused_.erase(key);
    if (const auto found = armed_.find(key); found != armed_.end()) grab(key, found->second);
    readAnswers();
}

}  // namespace veltrin
