#pragma once

#include "Foundation/RawValues.h"
#include "Platform/KeyEventTap.h"
#include "Platform/Preferences.h"

#include <array>
#include <optional>

namespace veltrin {

/// What a global key combination can start. The order of the cases is the order of matching; a case's raw
/// value is also the preference key of its stored combination.
enum class CustomShortcutAction { optimize, translation, smartSelect, voice, drag };
template <>
inline constexpr auto rawValuesOf<CustomShortcutAction> =
    std::to_array<const char*>({"shortcut_optimize", "shortcut_translation", "shortcut_smart_select",
                                "shortcut_voice", "shortcut_drag"});

/// How a modifier is written in a stored combination.
struct ModifierSymbol {
    quint64 flag;
    char16_t symbol;
};
/// The order is part of the stored format: a value written in another order matches nothing.
inline constexpr auto modifierSymbols = std::to_array<ModifierSymbol>({
    {KeyFlags::command, u'⌘'},
    {KeyFlags::option, u'⌥'},
    {KeyFlags::control, u'⌃'},
    {KeyFlags::shift, u'⇧'},
});

/// The keys of the US keyboard that a combination can name by what stands on them, with their virtual key
/// codes.
struct ShortcutKey {
    char16_t name;
    qint64 keyCode;
};
inline constexpr auto shortcutKeys = std::to_array<ShortcutKey>({
    {u'A', 0},  {u'S', 1},   {u'D', 2},  {u'F', 3},  {u'H', 4},  {u'G', 5},   {u'Z', 6},  {u'X', 7},
    {u'C', 8},  {u'V', 9},   {u'B', 11}, {u'Q', 12}, {u'W', 13}, {u'E', 14},  {u'R', 15}, {u'Y', 16},
    {u'T', 17}, {u'O', 31},  {u'U', 32}, {u'I', 34}, {u'P', 35}, {u'L', 37},  {u'J', 38}, {u'K', 40},
    {u'N', 45}, {u'M', 46},  {u'1', 18}, {u'2', 19}, {u'3', 20}, {u'4', 21},  {u'5', 22}, {u'6', 23},
    {u'7', 24}, {u'8', 25},  {u'9', 26}, {u'0', 27}, {u'-', 28}, {u'=', 29},  {u'[', 33}, {u']', 30},
    {u';', 41}, {u'\'', 39}, {u',', 43}, {u'.', 47}, {u'/', 44}, {u'\\', 42}, {u'`', 50},
});

/// A stored combination taken apart: modifier symbols, a vertical bar, a key name. Refers into the string it
/// was parsed from.
struct ParsedShortcut {
    QStringView modifiers;
    QStringView key;

    /// None unless there are exactly two parts, the first is not empty and holds no "×". The key may be empty
    /// or unknown; it then matches no key.
    static std::optional<ParsedShortcut> parse(QStringView stored);

    /// The virtual key code of `key`; -1 for an unknown name.
    qint64 expectedKeyCode() const;
    /// True when exactly these modifiers are held; other bits than the four modifiers do not count. Symbols
    /// in another order than Command, Option, Control, Shift never match.
    bool matches(qint64 keyCode, quint64 flags) const;
    /// The combination for the tap; none when no key can ever match.
    std::optional<ClaimableKey> claimableKey() const;
};

namespace CustomShortcuts {

/// The stored combination of an action, or the built-in one: only `voice` has one, Option-Space.
std::optional<QString> stored(const Preferences& preferences, CustomShortcutAction action);
/// The preference key of an action, made once.
const QString& preferenceKey(CustomShortcutAction action);

}  // namespace CustomShortcuts
}  // namespace veltrin
