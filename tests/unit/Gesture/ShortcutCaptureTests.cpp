#include "Gesture/ShortcutCapture.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/FakeKeyCodes.h"
#include "unit/Gesture/GestureFixture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using Outcome = ShortcutCapture::Outcome;

constexpr quint64 capsLock = 0x10000;

TEST(ShortcutCapture, namesTheKeysAsTheirSymbols) {
    EXPECT_EQ(ShortcutCapture::keyString(36), QStringLiteral("↩"));
    EXPECT_EQ(ShortcutCapture::keyString(48), QStringLiteral("⇥"));
    EXPECT_EQ(ShortcutCapture::keyString(49), QStringLiteral("Space"));
    EXPECT_EQ(ShortcutCapture::keyString(51), QStringLiteral("⌫"));
    EXPECT_EQ(ShortcutCapture::keyString(53), QStringLiteral("⎋"));
    EXPECT_EQ(ShortcutCapture::keyString(40), QStringLiteral("K"));
    EXPECT_EQ(ShortcutCapture::keyString(50), QStringLiteral("`"));
    EXPECT_EQ(ShortcutCapture::keyString(KeyCode::unknown), QStringLiteral("?"));
    EXPECT_EQ(ShortcutCapture::keyString(-1), QStringLiteral("?"));
}

TEST(ShortcutCapture, everyPrintableNameIsCapturedAndMatchedByTheSameCode) {
    for (const ShortcutKey& key : shortcutKeys) {
        const QString stored = QStringLiteral("⌘|") + ShortcutCapture::keyString(key.keyCode);
        const auto parsed = ParsedShortcut::parse(stored);
        ASSERT_TRUE(parsed);
        EXPECT_EQ(parsed->expectedKeyCode(), key.keyCode);
    }
    EXPECT_EQ(shortcutKeys.size(), 47U);
}

// Meant so: the arrow keys bear the names of function keys, and the true ones have none.
TEST(ShortcutCapture, ofTheFunctionKeysOnlyTheFirstIsCapturedAndMatched) {
    const char* names[] = {"F1", "F2", "F3", "F4", "F5"};
    for (qint64 code = 122; code <= 126; ++code) {
        const QString name = QString::fromLatin1(names[code - 122]);
        EXPECT_EQ(ShortcutCapture::keyString(code), name);
        const QString stored = QStringLiteral("⌘|") + name;
        EXPECT_EQ(ParsedShortcut::parse(stored)->expectedKeyCode() == code, code == 122);
    }
    for (const qint64 code : {120, 99, 118, 96})
        EXPECT_EQ(ShortcutCapture::keyString(code), QStringLiteral("?"));
    EXPECT_EQ(ParsedShortcut::parse(u"⌘|?")->expectedKeyCode(), -1);
}

TEST(ShortcutCapture, writesModifiersInTheStoredOrderAndLockKeysNotAtAll) {
    EXPECT_EQ(ShortcutCapture::modifierString(KeyFlags::all | capsLock), QStringLiteral("⌘⌥⌃⇧"));
    EXPECT_EQ(ShortcutCapture::modifierString(KeyFlags::shift | KeyFlags::command), QStringLiteral("⌘⇧"));
    EXPECT_EQ(ShortcutCapture::modifierString(capsLock), QString());
}

TEST(ShortcutCapture, escapeCancelsWhateverIsHeld) {
    EXPECT_EQ(ShortcutCapture::keyDown(53, 0, std::nullopt).outcome, Outcome::cancelled);
    EXPECT_EQ(ShortcutCapture::keyDown(53, KeyFlags::all, QStringLiteral("Space")).outcome,
              Outcome::cancelled);
}

TEST(ShortcutCapture, withoutAFixedKeyWhateverIsPressedIsTaken) {
    const auto bare = ShortcutCapture::keyDown(40, 0, std::nullopt);
    EXPECT_EQ(bare.outcome, Outcome::captured);
    EXPECT_EQ(bare.captured, (ShortcutCapture::Captured{QStringLiteral("K"), QString()}));
    const auto chord = ShortcutCapture::keyDown(40, KeyFlags::command | KeyFlags::shift, std::nullopt);
    EXPECT_EQ(chord.captured, (ShortcutCapture::Captured{QStringLiteral("K"), QStringLiteral("⌘⇧")}));
    EXPECT_EQ(ShortcutCapture::keyDown(KeyCode::unknown, 0, std::nullopt).captured.key, QStringLiteral("?"));
}

TEST(ShortcutCapture, withAFixedKeyOnlyItsModifiersCanBeChanged) {
    const QString space = QStringLiteral("Space");
    EXPECT_EQ(ShortcutCapture::keyDown(40, KeyFlags::command, space).outcome, Outcome::ignored);
    EXPECT_EQ(ShortcutCapture::keyDown(49, 0, space).outcome, Outcome::ignored);
    EXPECT_EQ(ShortcutCapture::keyDown(49, capsLock, space).outcome, Outcome::ignored);
    EXPECT_EQ(ShortcutCapture::keyDown(49, KeyFlags::control, space).captured,
              (ShortcutCapture::Captured{space, QStringLiteral("⌃")}));
}

class ShortcutCustomizerTest : public GestureTest {
protected:
    ShortcutCustomizer customizer(CustomShortcutAction action) {
        return ShortcutCustomizer(desktop.preferences, *ShortcutCustomizer::row(action));
    }
    std::optional<QString> stored(const char* key) {
        return desktop.preferences.string(QString::fromLatin1(key));
    }
};

TEST_F(ShortcutCustomizerTest, rowsStandForTheThreeActionsThatHaveOne) {
    const auto optimize = customizer(CustomShortcutAction::optimize);
    EXPECT_EQ(optimize.row().storageKey, QStringLiteral("shortcut_optimize"));
    EXPECT_EQ(optimize.keyDisplay(), QStringLiteral("Space Space"));
    EXPECT_EQ(optimize.modDisplay(), QString());
    EXPECT_EQ(customizer(CustomShortcutAction::translation).keyDisplay(),
              QStringLiteral("Space Space Space"));
    const auto voice = customizer(CustomShortcutAction::voice);
    EXPECT_EQ(voice.keyDisplay(), QStringLiteral("Space"));
    EXPECT_EQ(voice.modDisplay(), QStringLiteral("⌥"));
    EXPECT_EQ(voice.row().fixedKey, QStringLiteral("Space"));
    EXPECT_EQ(voice.row().captureHint, QStringLiteral("按修饰键 + Space"));
    EXPECT_FALSE(ShortcutCustomizer::row(CustomShortcutAction::smartSelect));
    EXPECT_FALSE(ShortcutCustomizer::row(CustomShortcutAction::drag));
}

TEST_F(ShortcutCustomizerTest, startsWithWhatIsStored) {
    desktop.preferences.set(QStringLiteral("shortcut_optimize"), QStringLiteral("⌘⇧|K"));
    EXPECT_EQ(customizer(CustomShortcutAction::optimize).modDisplay(), QStringLiteral("⌘⇧"));
    EXPECT_EQ(customizer(CustomShortcutAction::optimize).keyDisplay(), QStringLiteral("K"));
    desktop.preferences.set(QStringLiteral("shortcut_optimize"), QStringLiteral("⌘|"));
    EXPECT_EQ(customizer(CustomShortcutAction::optimize).modDisplay(), QStringLiteral("⌘"));
    EXPECT_EQ(customizer(CustomShortcutAction::optimize).keyDisplay(), QStringLiteral("Space Space"));
    desktop.preferences.set(QStringLiteral("shortcut_optimize"), QStringLiteral("no bar"));
    EXPECT_EQ(customizer(CustomShortcutAction::optimize).keyDisplay(), QStringLiteral("Space Space"));
    desktop.preferences.set(QStringLiteral("shortcut_optimize"), 7.0);
    EXPECT_EQ(customizer(CustomShortcutAction::optimize).modDisplay(), QString());
}

TEST_F(ShortcutCustomizerTest, aCaptureIsStoredAndCountsFromTheNextKey) {
    auto row = customizer(CustomShortcutAction::translation);
    int told = 0;
    const auto subscription = row.changed.subscribe([&told] { ++told; });
    row.keyDown(FakeKeyCode::k, KeyFlags::command);
    EXPECT_FALSE(stored("shortcut_translation"));  // not recording yet
    row.beginRecording();
    EXPECT_TRUE(row.isRecording());
    row.keyDown(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift);
    EXPECT_FALSE(row.isRecording());
    EXPECT_EQ(told, 2);
    EXPECT_EQ(stored("shortcut_translation"), QStringLiteral("⌘⇧|K"));
    EXPECT_EQ(row.keyDisplay(), QStringLiteral("K"));
    EXPECT_EQ(row.modDisplay(), QStringLiteral("⌘⇧"));
    EXPECT_EQ(engine.matchingCustomShortcut(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift),
              CustomShortcutAction::translation);
}

TEST_F(ShortcutCustomizerTest, escapeEndsTheRecordingAndChangesNothing) {
    auto row = customizer(CustomShortcutAction::translation);
    row.beginRecording();
    row.keyDown(KeyCode::escape, KeyFlags::command);
    EXPECT_FALSE(row.isRecording());
    EXPECT_FALSE(stored("shortcut_translation"));
    EXPECT_EQ(row.keyDisplay(), QStringLiteral("Space Space Space"));
}

TEST_F(ShortcutCustomizerTest, aKeyThatIsNotTakenLetsTheRecordingGoOn) {
    auto row = customizer(CustomShortcutAction::voice);
    row.beginRecording();
    row.keyDown(FakeKeyCode::k, KeyFlags::command);
    EXPECT_TRUE(row.isRecording());
    row.keyDown(KeyCode::space, KeyFlags::control);
    EXPECT_FALSE(row.isRecording());
    EXPECT_EQ(stored("shortcut_voice"), QStringLiteral("⌃|Space"));
    EXPECT_FALSE(engine.matchingCustomShortcut(KeyCode::space, KeyFlags::option));
}

TEST_F(ShortcutCustomizerTest, restoringTheVoiceRowPutsOptionSpaceInForceAgain) {
    desktop.preferences.set(QStringLiteral("shortcut_voice"), QStringLiteral("⌃|Space"));
    auto row = customizer(CustomShortcutAction::voice);
    row.beginRecording();
    row.restoreDefaults();
    EXPECT_FALSE(row.isRecording());
    EXPECT_FALSE(stored("shortcut_voice"));
    EXPECT_EQ(row.modDisplay(), QStringLiteral("⌥"));
    EXPECT_EQ(row.keyDisplay(), QStringLiteral("Space"));
    EXPECT_EQ(engine.matchingCustomShortcut(KeyCode::space, KeyFlags::option), CustomShortcutAction::voice);
}

// Accepted: a captured key without modifiers is stored and never matches.
TEST_F(ShortcutCustomizerTest, aCaptureWithoutModifiersMatchesNothing) {
    auto row = customizer(CustomShortcutAction::optimize);
    row.beginRecording();
    row.keyDown(FakeKeyCode::k, 0);
    EXPECT_EQ(stored("shortcut_optimize"), QStringLiteral("|K"));
    EXPECT_FALSE(engine.matchingCustomShortcut(FakeKeyCode::k, 0));
}

}  // namespace
}  // namespace veltrin
