#include "Gesture/ShortcutCapture.h"

#include <algorithm>
#include <array>
#include <utility>

namespace veltrin {
namespace {

/// Names by position: 123 to 126 are the arrow keys, which are captured as "F2" to "F5", while the codes that
/// those names stand for are the true ones. Only F1 can be captured and matched. Meant so.
constexpr qint64 firstPositionalKey = 122;
constexpr auto positionalNames = std::to_array<const char*>({"F1", "F2", "F3", "F4", "F5"});

const QString unnamed = QStringLiteral("?");

}  // namespace

QString ShortcutCapture::keyCodeToChar(qint64 keyCode) {
    const auto found = std::find_if(shortcutKeys.begin(), shortcutKeys.end(),
                                    [keyCode](const ShortcutKey& key) { return key.keyCode == keyCode; });
    return found == shortcutKeys.end() ? unnamed : QString(QChar(found->name));
}

QString ShortcutCapture::keyString(qint64 keyCode) {
    switch (keyCode) {
        case KeyCode::returnKey:
            return QStringLiteral("↩");
        case KeyCode::tab:
            return QStringLiteral("⇥");
        case KeyCode::space:
            return QStringLiteral("Space");
        case KeyCode::backspace:
            return QStringLiteral("⌫");
        case KeyCode::escape:
            return QStringLiteral("⎋");
        default:
            break;
    }
    const qint64 position = keyCode - firstPositionalKey;
    if (position >= 0 && position < static_cast<qint64>(positionalNames.size()))
        return QString::fromLatin1(positionalNames[static_cast<std::size_t>(position)]);
    return keyCodeToChar(keyCode).toUpper();
}

QString ShortcutCapture::modifierString(quint64 flags) {
    QString symbols;
    for (const ModifierSymbol& modifier : modifierSymbols) {
        if ((flags & modifier.flag) != 0) symbols += QChar(modifier.symbol);
    }
    return symbols;
}

ShortcutCapture::Answer ShortcutCapture::keyDown(qint64 keyCode, quint64 flags,
                                                 const std::optional<QString>& fixedKey) {
    if (keyCode == KeyCode::escape) return {Outcome::cancelled, {}};
    Captured captured{keyString(keyCode), modifierString(flags)};
    if (fixedKey && (captured.key != *fixedKey || captured.modifiers.isEmpty())) return {};
    return {Outcome::captured, std::move(captured)};
}

// MARK: A row of the settings

ShortcutCustomizer::ShortcutCustomizer(Preferences& preferences, ShortcutRow row)
    : preferences_(preferences), row_(std::move(row)) {
    showDefaults();
    const auto stored = preferences_.string(row_.storageKey);
    if (!stored || !stored->contains(u'|')) return;
    const QStringList parts = stored->split(u'|');
    modDisplay_ = parts[0];
    if (!parts[1].isEmpty()) keyDisplay_ = parts[1];
}

std::optional<ShortcutRow> ShortcutCustomizer::row(CustomShortcutAction action) {
    const QString space = QStringLiteral("Space");
    const QString& key = CustomShortcuts::preferenceKey(action);
    switch (action) {
        case CustomShortcutAction::optimize:
            return ShortcutRow{key, {space, space}, {}, std::nullopt, std::nullopt};
        case CustomShortcutAction::translation:
            return ShortcutRow{key, {space, space, space}, {}, std::nullopt, std::nullopt};
        case CustomShortcutAction::voice:
            return ShortcutRow{key, {space}, QStringLiteral("⌥"), space, QStringLiteral("按修饰键 + Space")};
        case CustomShortcutAction::smartSelect:
        case CustomShortcutAction::drag:
            break;
    }
    return std::nullopt;
}

void ShortcutCustomizer::showDefaults() {
    keyDisplay_ = row_.defaultKeys.join(u' ');
    modDisplay_ = row_.defaultMods;
}

void ShortcutCustomizer::beginRecording() {
    if (std::exchange(recording_, true)) return;
    changed.notify();
}

void ShortcutCustomizer::endRecording() {
    if (!std::exchange(recording_, false)) return;
    changed.notify();
}

void ShortcutCustomizer::keyDown(qint64 keyCode, quint64 flags) {
    if (!recording_) return;
    const auto answer = ShortcutCapture::keyDown(keyCode, flags, row_.fixedKey);
    if (answer.outcome == ShortcutCapture::Outcome::ignored) return;
    if (answer.outcome == ShortcutCapture::Outcome::captured) {
        keyDisplay_ = answer.captured.key;
        modDisplay_ = answer.captured.modifiers;
        preferences_.set(row_.storageKey, modDisplay_ + u'|' + keyDisplay_);
    }
    endRecording();
}

void ShortcutCustomizer::restoreDefaults() {
    showDefaults();
    preferences_.remove(row_.storageKey);
    recording_ = false;
    changed.notify();
}

}  // namespace veltrin
