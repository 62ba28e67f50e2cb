#include "ChoiceFixture.h"

namespace veltrin {
namespace {

// MARK: Following the caret

TEST_F(ChoiceTest, itFollowsTheWindowWithinAMoment) {
    openChoice();
    const QPointF before = *choice()->origin;
    field.frame.translate(100, -50);
    desktop.advance(0.181);
    EXPECT_EQ(*choice()->origin, before + QPointF(100, 50));
    EXPECT_EQ(desktop.floatingPanels.records.size(),
              static_cast<std::size_t>(desktop.floatingPanels.openCount() + 1));  // moved, not made anew
    press(KeyCode::escape);
}

TEST_F(ChoiceTest, itFollowsTheCaretOfAUserWhoGoesOnTyping) {
    openChoice();
    const QPointF before = *choice()->origin;
    veltrin.type(QStringLiteral("word"));
    desktop.advance(0.19);
    EXPECT_EQ(*choice()->origin, before + QPointF(4 * 8, 0));
    press(KeyCode::escape);
}

TEST_F(ChoiceTest, behindTheEndOfTheTextItStandsBelowTheField) {
    launch();
    veltrin.tapOptimize();
    EXPECT_EQ(choice()->origin, below(QRectF(700, 480, 600, 300)));
    press(KeyCode::escape);
}

TEST_F(ChoiceTest, whenTheCaretIsNowhereItStaysWhereItIs) {
    openChoice();
    const QPointF before = *choice()->origin;
    desktop.workspace.bringToFront(nullptr);
    desktop.advance(2);
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(*choice()->origin, before);
    press(KeyCode::escape);
}

TEST_F(ChoiceTest, theAnchorOfTheActionIsTheOneItFollowedTo) {
    openChoice();
    field.frame.translate(0, -60);
    desktop.advance(0.2);
    modelAnswers("Better.", 2);
    press(KeyCode::one);
    desktop.advance(0.1);
    EXPECT_EQ(desktop.floatingPanels.last().origin, caret().center() - QPointF(36, 20));
    finish();
}

TEST_F(ChoiceTest, anApplicationThatIsSlowToSayWhereItsCaretIsLeavesTimeForTheKeys) {
    openChoice();
    field.readFaults[AXAttribute::selectedTextRange] = FakeAXFault::slow(0.3);
    const double blocked = desktop.runLoop.blockedSeconds();
    desktop.advance(15);
    EXPECT_GT(desktop.runLoop.blockedSeconds(), blocked + 2);
    EXPECT_LT(desktop.runLoop.blockedSeconds(), blocked + 3.5);
    press(KeyCode::escape);
    desktop.advance(1);
    press(KeyCode::escape);
    EXPECT_FALSE(isOpen());
}

TEST_F(ChoiceTest, nothingIsAskedForAnyMoreOnceItIsClosed) {
    openChoice();
    desktop.advance(1);
    press(KeyCode::escape);
    EXPECT_TRUE(veltrin.runUntilIdle(2));
    const auto looks = log.lines().count(QStringLiteral("AX locator begin"));
    desktop.advance(1);
    EXPECT_EQ(log.lines().count(QStringLiteral("AX locator begin")), looks);
}

// MARK: What happens meanwhile

TEST_F(ChoiceTest, theApplicationClosedUnderItGetsNoTextFromIt) {
    openChoice();
    editor.quit();
    desktop.advance(1);
    EXPECT_TRUE(isOpen());
    press(KeyCode::one);
    finish();
    EXPECT_EQ(veltrin.model.prompts, 0);
    EXPECT_TRUE(
        logged(QStringLiteral("AI action skipped: no readable external text action: "
                              "memoryAction(提示词优化,slot:1)")));
}

TEST_F(ChoiceTest, theTextOfAnotherFieldIsReadWhenTheUserGoesThere) {
    openChoice();
    desktop.focus(address);
    modelAnswers("Better.");
    press(KeyCode::one);
    finish();
    EXPECT_EQ(address.value, QStringLiteral("Better."));
    EXPECT_EQ(field.value, QStringLiteral("Gut  en Tag"));
}

TEST_F(ChoiceTest, unreadableTextGetsItsCardWithoutASound) {
    field.value.clear();
    openChoice();
    field.value.clear();
    desktop.advance(1);
    const auto heard = soundsPlayed();
    press(KeyCode::one);
    desktop.advance(0.2);
    EXPECT_EQ(message(), QStringLiteral("没有读到可处理的文本\n请先选中或点进文本框"));
    EXPECT_EQ(soundsPlayed(), heard);
    finish();
}

TEST_F(ChoiceTest, thePillOfAnEarlierRunTakesItsPlaceAndItsKeysAreFreeAgain) {
    openChoice();
    modelAnswers("Good day.", 2);
    veltrin.pressTranslateShortcut();
    EXPECT_EQ(pill(), QStringLiteral("正在翻译"));
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(choiceKeysClaimed(), 0);
    veltrin.type(QStringLiteral("1"));
    EXPECT_EQ(field.value, QStringLiteral("Gut  1en Tag"));
    finish();
}

TEST_F(ChoiceTest, theEndOfAnEarlierRunSendsItAwayWithItsKeys) {
    launch();
    modelAnswers("Good day.", 4);
    veltrin.pressTranslateShortcut();
    veltrin.tapOptimize();
    EXPECT_TRUE(isOpen());
    desktop.advance(4);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(choiceKeysClaimed(), 0);
    finish();
}

TEST_F(ChoiceTest, openedAgainItIsReplacedAndWaitsOn) {
    store("shortcut_optimize", QStringLiteral("⌥|K"));
    openChoice();
    press(FakeKeyCode::k, KeyFlags::option);
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(choiceKeysClaimed(), 8);
    desktop.advance(1);
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(desktop.floatingPanels.shown().size(), 1U);
    press(KeyCode::escape);
    finish();
}

TEST_F(ChoiceTest, gesturesSwitchedOffLeaveItToTheMouse) {
    openChoice();
    veltrin.settings().spaceGesturesEnabled.set(false);
    desktop.runLoop.runDue();
    press(KeyCode::one);
    EXPECT_EQ(field.value, QStringLiteral("Gut  1en Tag"));
    modelAnswers("Better.");
    EXPECT_TRUE(desktop.floatingPanels.clickRow(1));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Better."));
}

TEST_F(ChoiceTest, aFailedRunLeavesTheTextAndSaysSo) {
    openChoice();
    veltrin.model.answers(Reply::failing(UrlError::timedOut, 0.2));
    press(KeyCode::one);
    desktop.advance(0.5);
    EXPECT_EQ(message(), QStringLiteral("优化失败\n请重试或切换模型"));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Gut  en Tag"));
}

TEST_F(ChoiceTest, theResultForAFieldThatWasLeftIsCopied) {
    openChoice();
    modelAnswers("Better.", 2);
    press(KeyCode::one);
    desktop.advance(0.5);
    desktop.focus(address);
    desktop.advance(2);
    EXPECT_EQ(message(), QStringLiteral("已复制\n优化后的内容：Better."));
    EXPECT_EQ(copied(), QStringLiteral("Better."));
    finish();
}

}  // namespace
}  // namespace veltrin
