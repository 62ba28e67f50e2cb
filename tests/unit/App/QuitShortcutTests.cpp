#include "App/QuitShortcut.h"
#include "support/fake/FakeDesktop.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class QuitShortcutTest : public testing::Test {
protected:
    QuitShortcutTest() { desktop.focus(editor.addField()); }

    int terminations() const { return desktop.processControl.terminations; }

    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
    QuitShortcut shortcut{desktop.keyEventTaps, desktop.runLoop, desktop.processControl};
};

TEST_F(QuitShortcutTest, commandQEndsTheProgramOnALaterTurnAndReachesNobody) {
    shortcut.start();
    desktop.keyboard.press(KeyCode::q, KeyFlags::command);
    EXPECT_EQ(terminations(), 0);  // the key's path is not held up by the end of the program
    desktop.runLoop.runDue();
    EXPECT_EQ(terminations(), 1);
    desktop.keyboard.release(KeyCode::q, KeyFlags::command);
    EXPECT_EQ(editor.pressesOf(KeyCode::q), 0);
    EXPECT_EQ(editor.releasesOf(KeyCode::q), 0);
}

TEST_F(QuitShortcutTest, everyFurtherModifierIsCaughtToo) {
    shortcut.start();
    int expected = 0;
    for (const quint64 more :
         {KeyFlags::shift, KeyFlags::option, KeyFlags::control, KeyFlags::shift | KeyFlags::option,
          KeyFlags::shift | KeyFlags::option | KeyFlags::control}) {
        desktop.keyboard.chord(KeyCode::q, KeyFlags::command | more);
        EXPECT_EQ(terminations(), ++expected);
    }
    EXPECT_TRUE(editor.received.empty());
}

TEST_F(QuitShortcutTest, otherKeysGoTheirWay) {
    shortcut.start();
    desktop.keyboard.chord(KeyCode::q);
    desktop.keyboard.chord(KeyCode::q, KeyFlags::shift);
    desktop.keyboard.chord(KeyCode::q, KeyFlags::option | KeyFlags::control);
    desktop.keyboard.chord(KeyCode::a, KeyFlags::command);
    EXPECT_EQ(terminations(), 0);
    EXPECT_EQ(editor.pressesOf(KeyCode::q), 3);
    EXPECT_EQ(editor.pressesOf(KeyCode::a), 1);
    EXPECT_EQ(desktop.keyEventTaps.swallowed, 0);
}

TEST_F(QuitShortcutTest, whateverIsInFront) {
    shortcut.start();
    desktop.workspace.bringToFront(nullptr);
    desktop.keyboard.chord(KeyCode::q, KeyFlags::command);
    desktop.workspace.bringToFront(&desktop.workspace.program());
    desktop.keyboard.chord(KeyCode::q, KeyFlags::command);
    EXPECT_EQ(terminations(), 2);
}

TEST_F(QuitShortcutTest, withoutTheRightToListenThereIsNoTapAndNobodyIsAsked) {
    desktop.keyEventTaps.granted = false;
    shortcut.start();
    EXPECT_FALSE(shortcut.isRunning());
    EXPECT_EQ(desktop.keyEventTaps.requests, 0);
    desktop.keyboard.chord(KeyCode::q, KeyFlags::command);
    EXPECT_EQ(terminations(), 0);
    EXPECT_EQ(editor.pressesOf(KeyCode::q), 1);
}

TEST_F(QuitShortcutTest, aTapThatWasSwitchedOffStaysOff) {
    shortcut.start();
    desktop.keyEventTaps.disableByTimeout();
    desktop.keyboard.chord(KeyCode::q, KeyFlags::command);
    EXPECT_EQ(terminations(), 0);
    EXPECT_EQ(editor.pressesOf(KeyCode::q), 1);
}

TEST_F(QuitShortcutTest, stoppedItListensNoLongerAndStartsOnlyOnce) {
    shortcut.start();
    shortcut.start();
    EXPECT_EQ(desktop.keyEventTaps.taps.size(), 1u);
    shortcut.stop();
    EXPECT_FALSE(shortcut.isRunning());
    desktop.keyboard.chord(KeyCode::q, KeyFlags::command);
    EXPECT_EQ(terminations(), 0);
}

TEST(QuitShortcutEndTest, aKeyThatIsQueuedWhenItsOwnerGoesEndsNothing) {
    FakeDesktop desktop;
    {
        QuitShortcut shortcut(desktop.keyEventTaps, desktop.runLoop, desktop.processControl);
        shortcut.start();
        desktop.keyboard.press(KeyCode::q, KeyFlags::command);
    }
    desktop.runLoop.runDue();
    EXPECT_EQ(desktop.processControl.terminations, 0);
}

}  // namespace
}  // namespace veltrin
