#pragma once

#include "Platform/KeyCodes.h"

#include <QtGlobal>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

struct xkb_keymap;

namespace veltrin {

class X11Connection;

/// What the keys of the keyboard mean in the product's numbering, for each group (layout) of a keymap.
/// Immutable.
///
/// A key is known by the Latin letter, digit or punctuation it has in the group; a group without Latin
/// letters (Russian, Greek) takes those of the first group that has them, as toolkits do for Ctrl+letter. A
/// key that has none is known by its position, unless another key already has that code.
class X11Keymap {
public:
    using Keycode = std::uint8_t;

    explicit X11Keymap(xkb_keymap* keymap);
    /// The keymap of the server's core keyboard; null when it cannot be had.
    static std::shared_ptr<const X11Keymap> load(const X11Connection& connection);

    /// KeyCode::unknown for a key without a code.
    qint64 virtualCode(Keycode key, unsigned group) const;
    /// Every key that has the code in the group; the first is the one to post.
    std::vector<Keycode> keys(qint64 virtualCode, unsigned group) const;
    /// Shift, Control, locks and the like, which are never reported.
    bool isModifier(Keycode key) const { return modifiers_[key]; }
    /// A key that means nothing in any group: a tap of it disturbs nobody.
    std::optional<Keycode> silentKey() const { return silent_; }

    /// KeyFlags of the server's real modifiers, and back. Locks and third-level shifts have no flag.
    quint64 flags(unsigned modifiers) const;
    unsigned modifiers(quint64 flags) const;
    /// False when no group has Latin letters: then a letter is known by its position alone, and applications
    /// do not take it for one.
    bool hasLatinLetters() const { return hasLatinLetters_; }
    /// The key that produces one flag's modifier.
    std::optional<Keycode> modifierKey(quint64 flag) const;

private:
    struct Flag {
        quint64 flag = 0;
        unsigned mask = 0;
        std::optional<Keycode> key;
    };
    using Table = std::array<qint64, 256>;

    std::vector<Table> groups_;
    std::array<bool, 256> modifiers_{};
    std::optional<Keycode> silent_;
    std::array<Flag, 4> flags_{};
    bool hasLatinLetters_ = false;
};

}  // namespace veltrin
