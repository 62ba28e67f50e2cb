#include "unit/Gesture/GestureFixture.h"

namespace veltrin {
namespace {

class EventTap : public GestureTest {
protected:
    std::vector<qint64> asked;
    bool claims = false;

    void setHooks() {
        engine.onKeyDownEvent = [this](qint64 code, bool) {
            asked.push_back(code);
            return claims;
        };
    }
    static QString reason() { return QStringLiteral("external text read"); }
};

TEST_F(EventTap, startingTwiceKeepsTheTap) {
    EXPECT_TRUE(engine.start());
    EXPECT_EQ(desktop.keyEventTaps.taps.size(), 1u);
    EXPECT_TRUE(logged(QStringLiteral("SpaceGestureEngine already running")));
    EXPECT_TRUE(logged(QStringLiteral("CGEventTap runloop source added")));
}

TEST_F(EventTap, theTapListensToPressesAndReleases) {
    EXPECT_EQ(tap().mask, KeyEventMask::keyDownAndKeyUp);
    EXPECT_TRUE(tap().isRunning());
}

TEST_F(EventTap, withoutTheRightToListenTheStartFailsWithAHintAndAsksOnce) {
    engine.stop();
    desktop.keyEventTaps.granted = false;
    EXPECT_FALSE(engine.start());
    EXPECT_FALSE(engine.isRunning());
    EXPECT_EQ(hints, 1);
    EXPECT_EQ(desktop.keyEventTaps.requests, 1);
    EXPECT_TRUE(logged(QStringLiteral("CGRequestListenEventAccess returned: false")));
    EXPECT_TRUE(logged(QStringLiteral("CGEventTap retry failed")));
    desktop.advance(600);
    EXPECT_EQ(desktop.keyEventTaps.requests, 1);  // nothing retries by itself
    desktop.keyEventTaps.grantedOnRequest = true;
    EXPECT_TRUE(engine.start());
    EXPECT_TRUE(engine.isRunning());
}

TEST_F(EventTap, suspensionsNest) {
    engine.setEventTapEnabled(false, reason());
    engine.setEventTapEnabled(false, reason());
    engine.setEventTapEnabled(true, reason());
    EXPECT_FALSE(tap().enabled);
    EXPECT_EQ(engine.eventTapSuspendCount(), 1);
    engine.setEventTapEnabled(true, reason());
    EXPECT_TRUE(tap().enabled);
    EXPECT_EQ(engine.eventTapSuspendCount(), 0);
    EXPECT_EQ(tap().disableCalls, 1);
    EXPECT_TRUE(logged(QStringLiteral("SpaceGestureEngine event tap suspended reason: external text read")));
}

TEST_F(EventTap, oneResumeTooManyIsHarmless) {
    engine.setEventTapEnabled(true, reason());
    EXPECT_EQ(engine.eventTapSuspendCount(), 0);
    EXPECT_TRUE(tap().enabled);
    engine.setEventTapEnabled(false, reason());
    EXPECT_FALSE(tap().enabled);
}

TEST_F(EventTap, withoutATapSuspensionDoesNothing) {
    engine.stop();
    engine.setEventTapEnabled(false, reason());
    EXPECT_EQ(engine.eventTapSuspendCount(), 0);
    engine.start();
    EXPECT_TRUE(tap().enabled);
}

TEST_F(EventTap, whatTheSystemTurnsOffIsTurnedOnAgain) {
    desktop.keyEventTaps.disableByTimeout();
    EXPECT_TRUE(tap().enabled);
    EXPECT_TRUE(logged(QStringLiteral("CGEventTap disabled; re-enabling: 4294967294")));
    desktop.keyEventTaps.disableByUserInput();
    EXPECT_TRUE(tap().enabled);
    EXPECT_TRUE(logged(QStringLiteral("CGEventTap disabled; re-enabling: 4294967295")));
}

TEST_F(EventTap, whatTheSystemTurnsOffWhileSuspendedStaysOff) {
    verbose();
    engine.setEventTapEnabled(false, reason());
    desktop.keyEventTaps.disableByTimeout();
    EXPECT_FALSE(tap().enabled);
    EXPECT_TRUE(logged(QStringLiteral("CGEventTap disabled while suspended: 4294967294")));
    engine.setEventTapEnabled(true, reason());
    EXPECT_TRUE(tap().enabled);
}

TEST_F(EventTap, stoppingForgetsTheSequenceAndTheSuspensions) {
    press(KeyCode::space);
    engine.setEventTapEnabled(false, reason());
    engine.stop();
    EXPECT_FALSE(tap().exists);
    EXPECT_EQ(engine.eventTapSuspendCount(), 0);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
    release(KeyCode::space);
    ASSERT_TRUE(engine.start());
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);  // the press before the stop was 0.0 s ago: its time is kept
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
}

TEST_F(EventTap, theTimeOfTheLastKeySurvivesARestart) {
    press(FakeKeyCode::k);
    release(FakeKeyCode::k);
    engine.stop();
    ASSERT_TRUE(engine.start());
    desktop.advance(0.2);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    EXPECT_TRUE(
        loggedStart(QStringLiteral("Double space safety gate: allowed: false interval: 0.15 "
                                   "idleBeforeFirst: 0.2 ")));
}

TEST_F(EventTap, stoppingWhileADoubleIsPendingRaisesNothing) {
    desktop.keyboard.tapSpaces(2);
    engine.stop();
    desktop.advance(2);
    EXPECT_EQ(doubles, 0);
}

TEST_F(EventTap, aTimerThatOutlivesTheEngineDoesNothing) {
    {
        SpaceGestureEngine other(desktop.runLoop, desktop.keyEventTaps, desktop.preferences,
                                 desktop.pasteboard);
        other.onDouble = [this] { doubles += 100; };
        ASSERT_TRUE(other.start());
        desktop.keyboard.tapSpaces(2);
    }
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);
    desktop.preferences.set(QStringLiteral("shortcut_drag"), QStringLiteral("⌘|K"));
}

TEST_F(EventTap, escapeReachesTheHooksWithAnyModifiersOtherKeysOnlyWithout) {
    setHooks();
    desktop.keyboard.chord(KeyCode::escape, KeyFlags::command | KeyFlags::shift);
    desktop.keyboard.chord(KeyCode::a, KeyFlags::command);
    desktop.keyboard.chord(KeyCode::space, KeyFlags::shift);
    desktop.keyboard.chord(KeyCode::returnKey);
    EXPECT_EQ(asked, (std::vector<qint64>{KeyCode::escape, KeyCode::returnKey}));
}

TEST_F(EventTap, aKeyThatAnInteractionClaimsReachesNobodyAndLeavesTheSequenceAlone) {
    setHooks();
    claims = true;
    engine.setInteractionKeys({{KeyCode::escape, 0, true}, {FakeKeyCode::k, 0, false}});
    desktop.keyboard.chord(FakeKeyCode::k);
    desktop.keyboard.chord(KeyCode::escape, KeyFlags::shift);
    EXPECT_TRUE(editor.received.empty());
    engine.setInteractionKeys({});
    claims = false;
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 1);  // a consumed key is no typing
}

TEST_F(EventTap, aKeyPressedBeforeAnInteractionOpenedIsNoneOfItsKeys) {
    setHooks();
    claims = true;
    // The program is busy opening when the key comes; it hears of the key only afterwards.
    desktop.later(0.1, [this] { press(FakeKeyCode::k); });
    desktop.runLoop.post([this] {
        desktop.runLoop.sleepFor(0.2);
        engine.setInteractionKeys({{FakeKeyCode::k, 0, false}});
    });
    desktop.advance(1);
    EXPECT_TRUE(asked.empty());
    EXPECT_EQ(editor.pressesOf(FakeKeyCode::k), 1);
    desktop.keyboard.repeat(FakeKeyCode::k);
    EXPECT_EQ(asked, (std::vector<qint64>{FakeKeyCode::k}));
}

TEST_F(EventTap, theSecondHookIsAskedWhenTheFirstDeclines) {
    setHooks();
    verbose();
    int second = 0;
    engine.onKeyDown = [&](qint64) {
        ++second;
        return true;
    };
    engine.setInteractionKeys({{FakeKeyCode::k, 0, false}});
    press(FakeKeyCode::k);
    EXPECT_EQ(second, 1);
    EXPECT_TRUE(logged(QStringLiteral("Event consumed by active interaction: keyCode: 40")));
    claims = true;
    press(FakeKeyCode::k);
    EXPECT_EQ(second, 1);
    EXPECT_TRUE(logged(QStringLiteral("Event consumed by active interaction: keyCode: 40 repeat: false")));
    EXPECT_TRUE(editor.received.empty());
}

TEST_F(EventTap, aClaimedReleaseIsNoRelease) {
    verbose();
    engine.onKeyUpEvent = [](qint64 code) { return code == KeyCode::space; };
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    EXPECT_EQ(doubles, 0);
    EXPECT_TRUE(logged(QStringLiteral("KeyUp consumed by active interaction: keyCode: 49")));
    EXPECT_EQ(editor.releasesOf(KeyCode::space), 2);  // the application saw the presses
}

TEST_F(EventTap, theCopyHintCountsTheUsersCopiesAndTakesNoKeyAway) {
    press(KeyCode::c);
    release(KeyCode::c);
    EXPECT_TRUE(copyHints.empty());
    desktop.advance(0.1);
    const auto count = desktop.pasteboard.changeCount();
    press(KeyCode::c, KeyFlags::command | KeyFlags::shift);
    desktop.keyboard.repeat(KeyCode::c, KeyFlags::command);
    release(KeyCode::c, KeyFlags::command);
    EXPECT_EQ(copyHints, (std::vector<qint64>{count}));
    EXPECT_EQ(editor.pressesOf(KeyCode::c), 2);
}

TEST_F(EventTap, theCopyHintCountsWhatWasThereBeforeTheKeyHoweverFastTheApplicationCopies) {
    desktop.pasteboard.put(QStringLiteral("before"));
    desktop.advance(0.1);
    const auto count = desktop.pasteboard.changeCount();
    // The application may have copied before the key is told to us.
    KeyEvent key;
    key.keyCode = KeyCode::c;
    key.flags = KeyFlags::command;
    key.timestamp = static_cast<quint64>(std::llround(desktop.now() * 1e9));
    desktop.pasteboard.copyFrom(editor.pid, QStringLiteral("copied"));
    desktop.advance(0.02);
    tap().handler(key);
    EXPECT_EQ(copyHints, (std::vector<qint64>{count}));
}

TEST_F(EventTap, theCopyHintComesAlsoWhenTheKeyIsAShortcut) {
    desktop.preferences.set(QStringLiteral("shortcut_drag"), QStringLiteral("⌘|C"));
    desktop.keyboard.copy();
    EXPECT_EQ(copyHints.size(), 1u);
    EXPECT_EQ(shortcuts, (std::vector<CustomShortcutAction>{CustomShortcutAction::drag}));
}

TEST_F(EventTap, quietLogsHoldNoKeyAndVerboseOnesDo) {
    desktop.keyboard.type(QStringLiteral("k "));
    for (const QString& line : log.lines())
        EXPECT_FALSE(line.contains(QStringLiteral("keyCode"))) << qPrintable(line);
    verbose();
    desktop.keyboard.type(QStringLiteral("k "));
    EXPECT_TRUE(loggedStart(QStringLiteral("Event callback: keyDown keyCode: 40 timestamp: ")));
    EXPECT_TRUE(loggedStart(QStringLiteral("Event callback: keyUp keyCode: 40 timestamp: ")));
    EXPECT_TRUE(loggedStart(QStringLiteral("Space event: keyDown keyCode: 49 timestamp: ")));
    EXPECT_TRUE(loggedStart(QStringLiteral("Space event: keyUp keyCode: 49 timestamp: ")));
}

TEST_F(EventTap, absentCallbacksAreSkipped) {
    SpaceGestureEngine bare(desktop.runLoop, desktop.keyEventTaps, desktop.preferences, desktop.pasteboard);
    engine.stop();
    ASSERT_TRUE(bare.start());
    desktop.keyboard.copy();
    desktop.keyboard.chord(KeyCode::space, KeyFlags::option);
    desktop.advance(1);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(1);
    desktop.keyboard.tapSpaces(3);
    desktop.keyEventTaps.granted = false;
    bare.stop();
    EXPECT_FALSE(bare.start());
    EXPECT_EQ(field.value, QStringLiteral("     "));
}

}  // namespace
}  // namespace veltrin
