#include "UI/Shortcuts/ShortcutCaptureModel.h"

#include "Platform/KeyCodes.h"

#include <QKeyEvent>

#include <algorithm>
#include <array>
#include <utility>

namespace veltrin {
namespace {

struct NamedKey {
    int key;
    qint64 code;
};
constexpr auto namedKeys = std::to_array<NamedKey>({
    {Qt::Key_Return, KeyCode::returnKey},
    {Qt::Key_Tab, KeyCode::tab},
    {Qt::Key_Backtab, KeyCode::tab},
    {Qt::Key_Space, KeyCode::space},
    {Qt::Key_Backspace, KeyCode::backspace},
    {Qt::Key_Escape, KeyCode::escape},
    {Qt::Key_F1, 122},
    {Qt::Key_F2, 120},
    {Qt::Key_F3, 99},
    {Qt::Key_F4, 118},
    {Qt::Key_F5, 96},
    {Qt::Key_Left, 123},
    {Qt::Key_Right, 124},
    {Qt::Key_Down, 125},
    {Qt::Key_Up, 126},
});

constexpr auto modifierKeys =
    std::to_array<int>({Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_AltGr, Qt::Key_Meta,
                        Qt::Key_Super_L, Qt::Key_Super_R, Qt::Key_Hyper_L, Qt::Key_Hyper_R, Qt::Key_CapsLock,
                        Qt::Key_NumLock, Qt::Key_ScrollLock});

quint64 flagsOf(Qt::KeyboardModifiers modifiers) {
    quint64 flags = 0;
    if (modifiers.testFlag(Qt::ControlModifier)) flags |= KeyFlags::command;
    if (modifiers.testFlag(Qt::AltModifier)) flags |= KeyFlags::option;
    if (modifiers.testFlag(Qt::MetaModifier)) flags |= KeyFlags::control;
    if (modifiers.testFlag(Qt::ShiftModifier)) flags |= KeyFlags::shift;
    return flags;
}

/// What stands on this desktop's keys for a symbol of the stored form.
QString wordOf(QChar symbol) {
    switch (symbol.unicode()) {
        case u'⌘':
            return QStringLiteral("Ctrl");
        case u'⌥':
            return QStringLiteral("Alt");
        case u'⌃':
            return QStringLiteral("Super");
        case u'⇧':
            return QStringLiteral("Shift");
        default:
            return symbol;
    }
}

}  // namespace

qint64 keyCodeByMeaning(const PressedKey& key) {
    const auto named = std::find_if(namedKeys.begin(), namedKeys.end(),
                                    [&](const NamedKey& candidate) { return candidate.key == key.key; });
    if (named != namedKeys.end()) return named->code;
    const auto written =
        std::find_if(shortcutKeys.begin(), shortcutKeys.end(),
                     [&](const ShortcutKey& candidate) { return candidate.name == key.key; });
    return written != shortcutKeys.end() ? written->keyCode : KeyCode::unknown;
}

ShortcutCaptureModel::ShortcutCaptureModel(Preferences& preferences, const ShortcutRow& row,
                                           KeyCodeOf keyCodeOf)
    : customizer_(preferences, row), keyCodeOf_(std::move(keyCodeOf)) {
    subscription_ = customizer_.changed.subscribe([this] { Q_EMIT changed(); });
}

QStringList ShortcutCaptureModel::keys() const {
    QStringList all;
    for (const QChar symbol : customizer_.modDisplay())
        all.append(wordOf(symbol));
    all.append(customizer_.keyDisplay().split(u' ', Qt::SkipEmptyParts));
    return all;
}

void ShortcutCaptureModel::keyDown(const PressedKey& key, Qt::KeyboardModifiers modifiers) {
    if (std::find(modifierKeys.begin(), modifierKeys.end(), key.key) != modifierKeys.end()) return;
    customizer_.keyDown(keyCodeOf_(key), flagsOf(modifiers));
}

// MARK: The item

void ShortcutKeyCatcher::setModel(ShortcutCaptureModel* model) {
    if (model_ == model) return;
    model_ = model;
    Q_EMIT modelChanged();
}

bool ShortcutKeyCatcher::event(QEvent* event) {
    // Before anybody's shortcut: all keys belong to the recording.
    if (event->type() == QEvent::ShortcutOverride && isRecording()) {
        event->accept();
        return true;
    }
    return QQuickItem::event(event);
}

void ShortcutKeyCatcher::keyPressEvent(QKeyEvent* event) {
    if (!isRecording()) return event->ignore();
    // The server puts the layout in use into its modifier state, as bits 13 and 14.
    model_->keyDown({event->key(), event->nativeScanCode(), (event->nativeModifiers() >> 13U) & 3U},
                    event->modifiers());
    event->accept();
}

void ShortcutKeyCatcher::focusOutEvent(QFocusEvent* event) {
    if (isRecording()) model_->endCapture();
    QQuickItem::focusOutEvent(event);
}

}  // namespace veltrin
