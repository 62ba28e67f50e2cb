#pragma once

#include "Gesture/CustomShortcut.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace veltrin {

/// What a captured key is called, and which keys a capture takes. The view gives it the program's own
/// key-downs while it has the focus, and swallows every one of them. Stateless.
struct ShortcutCapture {
    ShortcutCapture() = delete;

    struct Captured {
        QString key;        ///< key name
        QString modifiers;  ///< symbols in the stored order; may be empty
        friend bool operator==(const Captured&, const Captured&) = default;
    };
    enum class Outcome { cancelled, ignored, captured };
    struct Answer {
        Outcome outcome = Outcome::ignored;
        Captured captured;
        friend bool operator==(const Answer&, const Answer&) = default;
    };

    /// The name a capture gives a key; "?" for one that has none.
    static QString keyString(qint64 keyCode);
    /// What stands on a key of the US keyboard; "?" for every other key.
    static QString keyCodeToChar(qint64 keyCode);
    /// The symbols of the modifiers held; lock keys have none.
    static QString modifierString(quint64 flags);

    /// Escape cancels. Without `fixedKey` whatever is pressed is taken, also without modifiers; with it only
    /// that key with at least one modifier.
    static Answer keyDown(qint64 keyCode, quint64 flags, const std::optional<QString>& fixedKey);
};

/// A row of the settings with one combination: which preference it writes and what it shows without one.
struct ShortcutRow {
    QString storageKey;
    QStringList defaultKeys;
    QString defaultMods;
    std::optional<QString> fixedKey;
    std::optional<QString> captureHint;
};

/// The state behind such a row. A capture writes the preference, a restore removes it; both count from the
/// next key on. Nothing refuses a combination that is taken already: the order of the actions decides.
class ShortcutCustomizer {
public:
    ShortcutCustomizer(Preferences& preferences, ShortcutRow row);

    /// The row of an action; none for smart select and drag, whose combinations no row writes.
    static std::optional<ShortcutRow> row(CustomShortcutAction action);

    const ShortcutRow& row() const { return row_; }
    const QString& keyDisplay() const { return keyDisplay_; }
    const QString& modDisplay() const { return modDisplay_; }
    bool isRecording() const { return recording_; }

    void beginRecording();
    void endRecording();
    /// A key-down of the program's own while it is recording; nothing otherwise.
    void keyDown(qint64 keyCode, quint64 flags);
    void restoreDefaults();

    /// Told after a display or the recording has changed.
    Observers<> changed;

private:
    void showDefaults();

    Preferences& preferences_;
    ShortcutRow row_;
    QString keyDisplay_;
    QString modDisplay_;
    bool recording_ = false;
};

}  // namespace veltrin
