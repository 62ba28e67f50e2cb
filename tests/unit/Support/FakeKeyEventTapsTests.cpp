#include "support/fake/FakeDesktop.h"
#include "support/fake/FakeKeyCodes.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class FakeKeyEventTapsTest : public testing::Test {
protected:
    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), std::nullopt);
    FakeTextField& field = editor.addField();
    std::vector<KeyEvent> told;
    bool passes = true;
    double handlerCost = 0;
    std::unique_ptr<KeyEventTap> tap =
        desktop.keyEventTaps.create(KeyEventMask::keyDownAndKeyUp, [this](const KeyEvent& event) {
            told.push_back(event);
            desktop.runLoop.sleepFor(handlerCost);
            return passes;
        });

    void SetUp() override {
        desktop.focus(field);
        tap->addToRunLoop();
        tap->setEnabled(true);
    }
    static ClaimableKey exactly(qint64 keyCode, quint64 flags = 0) { return {keyCode, flags, false}; }
};

TEST_F(FakeKeyEventTapsTest, anUnclaimableKeyIsToldAfterItsApplicationHasIt) {
    passes = false;
    QString seen;
    const auto watcher = desktop.keyEventTaps.create(KeyEventMask::keyDown, [&](const KeyEvent&) {
        seen = field.value;
        return false;
    });
    watcher->addToRunLoop();
    watcher->setEnabled(true);
    desktop.keyboard.type(QStringLiteral("k"));
    EXPECT_EQ(field.value, QStringLiteral("k"));
    EXPECT_EQ(seen, QStringLiteral("k"));
    EXPECT_EQ(told.size(), 2u);
}

TEST_F(FakeKeyEventTapsTest, aSwallowedPressTakesItsRepeatsAndItsReleaseAlong) {
    tap->setClaimable({exactly(FakeKeyCode::k)});
    passes = false;
    desktop.keyboard.press(FakeKeyCode::k);
    passes = true;
    desktop.keyboard.repeat(FakeKeyCode::k);
    tap->setClaimable({});
    desktop.keyboard.release(FakeKeyCode::k);
    EXPECT_EQ(told.size(), 3u);
    EXPECT_TRUE(editor.received.empty());
    desktop.keyboard.type(QStringLiteral("k"));
    EXPECT_EQ(field.value, QStringLiteral("k"));
    EXPECT_EQ(editor.pressesOf(FakeKeyCode::k), editor.releasesOf(FakeKeyCode::k));
}

TEST_F(FakeKeyEventTapsTest, aPressThatWentThroughKeepsItsRelease) {
    desktop.keyboard.press(FakeKeyCode::k);
    tap->setClaimable({exactly(FakeKeyCode::k)});
    passes = false;
    desktop.keyboard.repeat(FakeKeyCode::k);
    desktop.keyboard.release(FakeKeyCode::k);
    EXPECT_EQ(field.value, QStringLiteral("k"));
    EXPECT_EQ(editor.releasesOf(FakeKeyCode::k), 1);
}

TEST_F(FakeKeyEventTapsTest, modifiersMustBeThoseOfTheClaimUnlessAnyWillDo) {
    passes = false;
    tap->setClaimable({exactly(FakeKeyCode::k, KeyFlags::command), {KeyCode::q, KeyFlags::command, true}});
    desktop.keyboard.chord(FakeKeyCode::k, KeyFlags::command | KeyFlags::shift);
    EXPECT_EQ(editor.pressesOf(FakeKeyCode::k), 1);
    desktop.keyboard.chord(FakeKeyCode::k, KeyFlags::command);
    EXPECT_EQ(editor.pressesOf(FakeKeyCode::k), 1);
    desktop.keyboard.chord(KeyCode::q, KeyFlags::command | KeyFlags::option);
    EXPECT_EQ(editor.pressesOf(KeyCode::q), 0);
}

TEST_F(FakeKeyEventTapsTest, aLateAnswerIsVoid) {
    tap->setClaimable({exactly(FakeKeyCode::k)});
    passes = false;
    handlerCost = 0.06;
    desktop.keyboard.type(QStringLiteral("k"));
    EXPECT_EQ(field.value, QStringLiteral("k"));
    EXPECT_EQ(editor.releasesOf(FakeKeyCode::k), 1);
}

TEST_F(FakeKeyEventTapsTest, whatPassesWhileTheTapIsOffIsNeverTold) {
    tap->setEnabled(false);
    desktop.keyboard.type(QStringLiteral("a"));
    tap->setEnabled(true);
    desktop.advance(1);
    EXPECT_TRUE(told.empty());
    tap->removeFromRunLoop();
    desktop.keyboard.type(QStringLiteral("b"));
    EXPECT_TRUE(told.empty());
}

TEST_F(FakeKeyEventTapsTest, keysOfABlockedProgramReachTheirApplicationAndAreToldAfterwards) {
    desktop.later(0.1, [&] { desktop.keyboard.press(FakeKeyCode::k); });
    desktop.runLoop.sleepFor(0.2);
    EXPECT_EQ(field.value, QStringLiteral("k"));
    EXPECT_TRUE(told.empty());
    desktop.runLoop.runDue();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_NEAR(static_cast<double>(told.front().timestamp) * 1e-9, desktop.now() - 0.1, 1e-6);
}

TEST_F(FakeKeyEventTapsTest, keysQueuedWhileTheTapWasOffAreDroppedThoughItIsOnAgain) {
    desktop.later(0.1, [&] { desktop.keyboard.press(FakeKeyCode::k); });
    tap->setEnabled(false);
    desktop.runLoop.sleepFor(0.2);
    tap->setEnabled(true);
    desktop.advance(1);
    EXPECT_TRUE(told.empty());
}

TEST_F(FakeKeyEventTapsTest, aClaimableKeyOfABlockedProgramIsPassedOnAndNeverActedOn) {
    tap->setClaimable({exactly(FakeKeyCode::k)});
    passes = false;
    desktop.later(0.1, [&] { desktop.keyboard.press(FakeKeyCode::k); });
    desktop.runLoop.sleepFor(0.12);
    EXPECT_EQ(field.value, QString());
    desktop.runLoop.sleepFor(0.08);
    EXPECT_EQ(field.value, QStringLiteral("k"));
    desktop.advance(1);
    EXPECT_TRUE(told.empty());
}

TEST_F(FakeKeyEventTapsTest, listeningCanBeRefusedAndAskedFor) {
    desktop.keyEventTaps.granted = false;
    EXPECT_EQ(desktop.keyEventTaps.create(KeyEventMask::keyDown, [](const KeyEvent&) { return true; }),
              nullptr);
    EXPECT_FALSE(desktop.keyEventTaps.requestListenEventAccess());
    desktop.keyEventTaps.grantedOnRequest = true;
    EXPECT_TRUE(desktop.keyEventTaps.requestListenEventAccess());
    EXPECT_TRUE(desktop.keyEventTaps.preflightListenEventAccess());
}

TEST_F(FakeKeyEventTapsTest, aHeldKeyRepeatsAsAKeyboardDoes) {
    desktop.keyboard.hold(FakeKeyCode::k, 0.8);
    int repeats = 0;
    for (const KeyEvent& event : told)
        repeats += event.isAutoRepeat ? 1 : 0;
    EXPECT_EQ(repeats, 4);
    EXPECT_EQ(field.value, QStringLiteral("kkkkk"));
}

TEST_F(FakeKeyEventTapsTest, theSystemCanTurnATapOffAndSaysSo) {
    desktop.keyEventTaps.disableByTimeout();
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told.front().type, KeyEventType::tapDisabledByTimeout);
    desktop.keyboard.type(QStringLiteral("k"));
    EXPECT_EQ(told.size(), 1u);
}

}  // namespace
}  // namespace veltrin
