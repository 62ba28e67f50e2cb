#include "ChoiceFixture.h"

namespace veltrin {
namespace {

// MARK: Opening

TEST_F(ChoiceTest, twoTapsOpenTheChoiceBelowTheCaretWithoutReadingAnything) {
    openChoice();
    EXPECT_TRUE(logged(QStringLiteral("Double Space Triggered")));
    EXPECT_EQ(field.value, QStringLiteral("Gut  en Tag"));
    EXPECT_EQ(choice()->spec.choice.agents.size(), 4U);
    EXPECT_EQ(choice()->spec.choice.presets.size(), 4U);
    EXPECT_EQ(choice()->spec.choice.presets[0].title, QStringLiteral("提示词优化"));
    for (const ChoiceRow& row : choice()->spec.choice.agents)
        EXPECT_FALSE(row.isVacant);  // each slot has been given an agent
    EXPECT_EQ(choice()->origin, below(caret()));
    EXPECT_GT(soundsPlayed(), 0U);
    EXPECT_EQ(veltrin.model.prompts, 0);
    EXPECT_FALSE(log.lines().join(u'\n').contains(u"event tap suspended"));
}

TEST_F(ChoiceTest, theShortcutOpensItAndIsSwallowed) {
    store("shortcut_optimize", QStringLiteral("⌥|K"));
    launch();
    press(FakeKeyCode::k, KeyFlags::option);
    EXPECT_TRUE(isOpen());
    EXPECT_TRUE(keptFromEditor(FakeKeyCode::k));
    EXPECT_FALSE(logged(QStringLiteral("Double Space Triggered")));
}

TEST_F(ChoiceTest, theSwitchOfTheDoubleTapGatesTheShortcutAsWell) {
    store("shortcut_optimize", QStringLiteral("⌥|K"));
    store("gesture_double_space", false);
    launch();
    veltrin.tapOptimize();
    press(FakeKeyCode::k, KeyFlags::option);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(logged(QStringLiteral("Double Space Triggered but ignored by settings")));
    EXPECT_TRUE(logged(QStringLiteral("Custom optimize shortcut ignored by settings")));
}

TEST_F(ChoiceTest, withoutAnAnchorItStandsAboveThePointerAndFollowsNothing) {
    desktop.accessibility.trusted = false;
    openChoice();
    EXPECT_EQ(choice()->origin, QPointF(960 - 155, 564));
    desktop.advance(1);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 1U);  // the look at the clipboard
    desktop.accessibility.trusted = true;
    desktop.advance(1);
    EXPECT_EQ(choice()->origin, QPointF(960 - 155, 564));
}

TEST_F(ChoiceTest, itStaysForAsLongAsNobodyChooses) {
    openChoice();
    desktop.advance(3600);
    EXPECT_TRUE(isOpen());
}

TEST_F(ChoiceTest, itsKeysAreClaimedOnlyWhileItIsOpen) {
    launch();
    EXPECT_EQ(choiceKeysClaimed(), 0);
    veltrin.tapOptimize();
    EXPECT_EQ(choiceKeysClaimed(), 8);
    press(KeyCode::escape);
    EXPECT_EQ(choiceKeysClaimed(), 0);
    veltrin.tapOptimize();
    modelAnswers("Better.");
    press(KeyCode::one);
    EXPECT_EQ(choiceKeysClaimed(), 0);
    finish();
    veltrin.tapOptimize();
    press(KeyCode::slash);
    EXPECT_EQ(choiceKeysClaimed(), 0);
    finish();
}

TEST_F(ChoiceTest, whereNoWindowCanBeShownNothingWaits) {
    launch();
    desktop.floatingPanels.available = false;
    veltrin.tapOptimize();
    EXPECT_FALSE(isWaiting());
    EXPECT_EQ(choiceKeysClaimed(), 0);
}

}  // namespace
}  // namespace veltrin
