#include "unit/Gesture/GestureFixture.h"

#include <QSet>

namespace veltrin {
namespace {

constexpr qint64 f1 = 122;

class CustomShortcutsTest : public GestureTest {
protected:
    void store(CustomShortcutAction action, const QString& value) {
        desktop.preferences.set(rawValue(action), value);
    }
    std::optional<CustomShortcutAction> match(qint64 keyCode, quint64 flags) const {
        return engine.matchingCustomShortcut(keyCode, flags);
    }
    bool claimable(qint64 keyCode, quint64 flags) {
        KeyEvent event;
        event.keyCode = keyCode;
        event.flags = flags;
        return tap().mayClaim(event);
    }
};

TEST_F(CustomShortcutsTest, withoutPreferencesOnlyOptionSpaceMatchesAsVoice) {
    EXPECT_EQ(match(KeyCode::space, KeyFlags::option), CustomShortcutAction::voice);
    EXPECT_EQ(tap().claimable, (std::vector<ClaimableKey>{{KeyCode::space, KeyFlags::option, false}}));
    for (qint64 code = 0; code < 130; ++code) {
        for (const quint64 flags : {quint64(0), KeyFlags::command, KeyFlags::all})
            EXPECT_FALSE(match(code, flags));
    }
}

TEST_F(CustomShortcutsTest, ofTwoActionsWithOneCombinationTheEarlierWins) {
    store(CustomShortcutAction::drag, QStringLiteral("⌥|Space"));
    EXPECT_EQ(match(KeyCode::space, KeyFlags::option), CustomShortcutAction::voice);
    store(CustomShortcutAction::smartSelect, QStringLiteral("⌥|Space"));
    EXPECT_EQ(match(KeyCode::space, KeyFlags::option), CustomShortcutAction::smartSelect);
    EXPECT_EQ(tap().claimable.size(), 1u);
}

TEST_F(CustomShortcutsTest, modifiersInTheWrongOrderNeverMatch) {
    store(CustomShortcutAction::optimize, QStringLiteral("⇧⌘|K"));
    EXPECT_FALSE(match(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift));
    EXPECT_FALSE(claimable(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift));
    store(CustomShortcutAction::optimize, QStringLiteral("⌘⇧|K"));
    EXPECT_EQ(match(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift), CustomShortcutAction::optimize);
    EXPECT_TRUE(claimable(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift));
}

TEST_F(CustomShortcutsTest, extraModifiersMakeAMismatchAndLockKeysDoNot) {
    store(CustomShortcutAction::optimize, QStringLiteral("⌘⇧|K"));
    EXPECT_FALSE(match(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift | KeyFlags::option));
    EXPECT_FALSE(match(FakeKeyCode::k, KeyFlags::command));
    constexpr quint64 capsLock = 0x10000;
    EXPECT_EQ(match(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift | capsLock),
              CustomShortcutAction::optimize);
}

TEST_F(CustomShortcutsTest, malformedValuesAreNoShortcuts) {
    for (const char* value : {"", "K", "|K", "⌘|K|", "⌘|K|L", "×|K", "⌘×|K", "||", "|"})
        EXPECT_FALSE(ParsedShortcut::parse(QString::fromUtf8(value))) << value;
    const QString noKey = QStringLiteral("⌘|");
    const auto parsed = ParsedShortcut::parse(noKey);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->expectedKeyCode(), -1);
    EXPECT_FALSE(parsed->claimableKey());
}

TEST_F(CustomShortcutsTest, aMalformedVoiceValueTurnsTheBuiltInOneOff) {
    store(CustomShortcutAction::voice, QStringLiteral("Space"));
    EXPECT_FALSE(match(KeyCode::space, KeyFlags::option));
    EXPECT_TRUE(tap().claimable.empty());
}

TEST_F(CustomShortcutsTest, removingTheVoiceValueBringsOptionSpaceBack) {
    store(CustomShortcutAction::voice, QStringLiteral("⌃|Space"));
    EXPECT_FALSE(match(KeyCode::space, KeyFlags::option));
    EXPECT_FALSE(claimable(KeyCode::space, KeyFlags::option));
    desktop.preferences.remove(rawValue(CustomShortcutAction::voice));
    EXPECT_EQ(match(KeyCode::space, KeyFlags::option), CustomShortcutAction::voice);
    EXPECT_TRUE(claimable(KeyCode::space, KeyFlags::option));
}

TEST_F(CustomShortcutsTest, keyNamesAreExactFirstAndUpperCasedThen) {
    const auto codeOf = [](const char* name) {
        const QString stored = QStringLiteral("⌘|") + QString::fromUtf8(name);
        return ParsedShortcut::parse(stored)->expectedKeyCode();
    };
    EXPECT_EQ(codeOf("Space"), 49);
    EXPECT_EQ(codeOf("space"), -1);
    EXPECT_EQ(codeOf("↩"), 36);
    EXPECT_EQ(codeOf("⇥"), 48);
    EXPECT_EQ(codeOf("⌫"), 51);
    EXPECT_EQ(codeOf("⎋"), 53);
    EXPECT_EQ(codeOf("F1"), 122);
    EXPECT_EQ(codeOf("F2"), 120);
    EXPECT_EQ(codeOf("F3"), 99);
    EXPECT_EQ(codeOf("F4"), 118);
    EXPECT_EQ(codeOf("F5"), 96);
    EXPECT_EQ(codeOf("F6"), -1);
    EXPECT_EQ(codeOf("k"), 40);
    EXPECT_EQ(codeOf("K"), 40);
    EXPECT_EQ(codeOf(","), 43);
    EXPECT_EQ(codeOf("5"), 22);
    EXPECT_EQ(codeOf("6"), 23);
    EXPECT_EQ(codeOf("="), 29);
    EXPECT_EQ(codeOf("?"), -1);
    EXPECT_EQ(codeOf("KK"), -1);
    EXPECT_EQ(codeOf("ß"), -1);
}

TEST_F(CustomShortcutsTest, theTableHas47KeysAndEveryCodeOnce) {
    QSet<qint64> codes;
    QSet<char16_t> names;
    for (const ShortcutKey& key : shortcutKeys) {
        codes.insert(key.keyCode);
        names.insert(key.name);
    }
    EXPECT_EQ(shortcutKeys.size(), 47u);
    EXPECT_EQ(codes.size(), 47);
    EXPECT_EQ(names.size(), 47);
}

TEST_F(CustomShortcutsTest, aShortcutIsSwallowedWholeAndRaisedOnce) {
    store(CustomShortcutAction::translation, QStringLiteral("⌘|F1"));
    verbose();
    desktop.keyboard.hold(f1, 0.8, KeyFlags::command);
    EXPECT_EQ(shortcuts, (std::vector<CustomShortcutAction>{CustomShortcutAction::translation}));
    EXPECT_TRUE(editor.received.empty());
    EXPECT_TRUE(logged(QStringLiteral("Custom shortcut consumed: shortcut_translation")));
}

TEST_F(CustomShortcutsTest, aChangedShortcutWorksFromTheNextKeyOn) {
    desktop.keyboard.chord(FakeKeyCode::k, KeyFlags::command);
    EXPECT_TRUE(shortcuts.empty());
    store(CustomShortcutAction::drag, QStringLiteral("⌘|K"));
    desktop.keyboard.chord(FakeKeyCode::k, KeyFlags::command);
    EXPECT_EQ(shortcuts.size(), 1u);
    EXPECT_EQ(editor.pressesOf(FakeKeyCode::k), 1);
}

TEST_F(CustomShortcutsTest, optionSpaceIsNoTapOfTheSpaceBar) {
    verbose();
    desktop.keyboard.chord(KeyCode::space, KeyFlags::option);
    EXPECT_FALSE(loggedStart(QStringLiteral("Space event: keyDown")));
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
    EXPECT_EQ(shortcuts.size(), 1u);
    EXPECT_EQ(field.value, QString());
}

TEST_F(CustomShortcutsTest, aShortcutWhileASpaceIsHeldEndsTheSequence) {
    store(CustomShortcutAction::optimize, QStringLiteral("⌘|K"));
    desktop.keyboard.tapSpace();
    desktop.advance(0.05);
    press(KeyCode::space);
    desktop.keyboard.chord(FakeKeyCode::k, KeyFlags::command);
    EXPECT_EQ(shortcuts.size(), 1u);
    release(KeyCode::space);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
}

TEST_F(CustomShortcutsTest, aShortcutIsNoTyping) {
    store(CustomShortcutAction::optimize, QStringLiteral("⌘|K"));
    desktop.keyboard.chord(FakeKeyCode::k, KeyFlags::command);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
}

TEST_F(CustomShortcutsTest, aShortcutWithoutAnActionBelongsToTheApplication) {
    engine.isActionAvailable = [](CustomShortcutAction action) {
        return action != CustomShortcutAction::voice;
    };
    engine.refreshClaimableKeys();
    EXPECT_TRUE(tap().claimable.empty());
    desktop.keyboard.chord(KeyCode::space, KeyFlags::option);
    EXPECT_TRUE(shortcuts.empty());
    EXPECT_EQ(editor.pressesOf(KeyCode::space), 1);
    store(CustomShortcutAction::drag, QStringLiteral("⌥|Space"));
    EXPECT_EQ(match(KeyCode::space, KeyFlags::option), CustomShortcutAction::drag);
}

TEST_F(CustomShortcutsTest, theClaimsOfAnInteractionStandBesideTheShortcuts) {
    const ClaimableKey escape{KeyCode::escape, 0, true};
    engine.setInteractionKeys({escape});
    EXPECT_EQ(tap().claimable.size(), 2u);
    store(CustomShortcutAction::optimize, QStringLiteral("⌘|K"));
    EXPECT_EQ(tap().claimable.size(), 3u);
    engine.stop();
    ASSERT_TRUE(engine.start());
    EXPECT_EQ(tap().claimable.size(), 3u);
    engine.setInteractionKeys({});
    EXPECT_EQ(tap().claimable.size(), 2u);
}

TEST_F(CustomShortcutsTest, aValueOfAnotherTypeIsNone) {
    desktop.preferences.set(QStringLiteral("shortcut_optimize"), 5.0);
    desktop.preferences.set(QStringLiteral("shortcut_voice"), true);
    EXPECT_EQ(match(KeyCode::space, KeyFlags::option), CustomShortcutAction::voice);
}

}  // namespace
}  // namespace veltrin
