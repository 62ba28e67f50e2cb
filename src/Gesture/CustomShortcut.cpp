#include "Gesture/CustomShortcut.h"

#include <algorithm>

namespace veltrin {
namespace {

struct NamedKey {
    const char16_t* name;
    qint64 keyCode;
};
constexpr auto namedKeys = std::to_array<NamedKey>({
    {u"Space", KeyCode::space},
    {u"↩", KeyCode::returnKey},
    {u"⇥", KeyCode::tab},
    {u"⌫", KeyCode::backspace},
    {u"⎋", KeyCode::escape},
    {u"F1", 122},
    {u"F2", 120},
    {u"F3", 99},
    {u"F4", 118},
    {u"F5", 96},
});

/// The flags that the symbols stand for; none when they are not written in their order, each at most once.
std::optional<quint64> flagsOf(QStringView modifiers) {
    quint64 flags = 0;
    qsizetype next = 0;
    for (const ModifierSymbol& modifier : modifierSymbols) {
        if (next < modifiers.size() && modifiers[next] == modifier.symbol) {
            flags |= modifier.flag;
            ++next;
        }
    }
    return next == modifiers.size() ? std::optional<quint64>(flags) : std::nullopt;
}

}  // namespace

std::optional<ParsedShortcut> ParsedShortcut::parse(QStringView stored) {
    const qsizetype bar = stored.indexOf(u'|');
    if (bar <= 0 || stored.indexOf(u'|', bar + 1) >= 0) return std::nullopt;
    const ParsedShortcut shortcut{stored.left(bar), stored.mid(bar + 1)};
    if (shortcut.modifiers.contains(u'×')) return std::nullopt;
    return shortcut;
}

qint64 ParsedShortcut::expectedKeyCode() const {
    for (const NamedKey& named : namedKeys) {
        if (key == named.name) return named.keyCode;
    }
    if (key.size() != 1) return -1;
    const QChar upper = key.front().toUpper();
    const auto found =
        std::find_if(shortcutKeys.begin(), shortcutKeys.end(),
                     [upper](const ShortcutKey& candidate) { return upper == candidate.name; });
    return found == shortcutKeys.end() ? -1 : found->keyCode;
}

bool ParsedShortcut::matches(qint64 keyCode, quint64 flags) const {
    return expectedKeyCode() == keyCode && flagsOf(modifiers) == (flags & KeyFlags::all);
}

std::optional<ClaimableKey> ParsedShortcut::claimableKey() const {
    const qint64 keyCode = expectedKeyCode();
    const auto flags = flagsOf(modifiers);
    if (keyCode < 0 || !flags) return std::nullopt;
    return ClaimableKey{keyCode, *flags, false};
}

namespace CustomShortcuts {

const QString& preferenceKey(CustomShortcutAction action) {
    static const auto keys = [] {
        std::array<QString, caseCount<CustomShortcutAction>> made;
        for (const CustomShortcutAction each : allCases<CustomShortcutAction>())
            made[static_cast<std::size_t>(each)] = rawValue(each);
        return made;
    }();
    return keys[static_cast<std::size_t>(action)];
}

std::optional<QString> stored(const Preferences& preferences, CustomShortcutAction action) {
    static const QString optionSpace = QStringLiteral("⌥|Space");
    auto value = preferences.string(preferenceKey(action));
    if (!value && action == CustomShortcutAction::voice) return optionSpace;
    return value;
}

}  // namespace CustomShortcuts
}  // namespace veltrin
