#include "ChoiceFixture.h"

namespace veltrin {
namespace {

// MARK: The keys that choose

struct SlotKey {
    const char* name;
    qint64 keyCode;
    const char* title;
    int slot;
};
class ChoosingKey : public ChoiceTest, public testing::WithParamInterface<SlotKey> {};

TEST_P(ChoosingKey, runsTheActionOfItsSlotOnTheField) {
    openChoice();
    modelAnswers("Better.");
    desktop.keyboard.press(GetParam().keyCode);
    EXPECT_FALSE(isOpen());
    desktop.keyboard.release(GetParam().keyCode);
    const QString title = QString::fromUtf8(GetParam().title);
    EXPECT_TRUE(
        logged(QStringLiteral("Memory action selected: slot: %1 title: %2").arg(GetParam().slot).arg(title)));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Better."));
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_TRUE(log.lines().join(u'\n').contains(
        QStringLiteral("action: memoryAction(%1,slot:%2)").arg(title).arg(GetParam().slot)));
    EXPECT_TRUE(askedFor("Gut  en Tag"));  // the trigger's spaces are part of what is read
    EXPECT_EQ(desktop.keyEventTaps.swallowed, 2);
    ASSERT_EQ(veltrin.behaviors().recentBehaviors().size(), 1U);
    EXPECT_EQ(veltrin.behaviors().recentBehaviors().front().detail, title);
    EXPECT_EQ(remembered(), true);
}

INSTANTIATE_TEST_SUITE_P(Keys, ChoosingKey,
                         testing::Values(SlotKey{"one", KeyCode::one, "提示词优化", 1},
                                         SlotKey{"enter", KeyCode::returnKey, "提示词优化", 1},
                                         SlotKey{"space", KeyCode::space, "提示词优化", 1},
                                         SlotKey{"two", KeyCode::two, "添加表情", 2},
                                         SlotKey{"three", KeyCode::three, "更专业", 3},
                                         SlotKey{"four", KeyCode::four, "更简洁", 4}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(ChoiceTest, aSpaceIsAConfirmationAndNoThirdSpace) {
    openChoice();
    modelAnswers("Better.", 2);
    desktop.keyboard.tapSpace();
    EXPECT_EQ(field.value, QStringLiteral("Gut  en Tag"));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Better."));
}

TEST_F(ChoiceTest, aSecondDoubleTapChoosesTheFirstSlotWithItsFirstSpace) {
    openChoice();
    modelAnswers("Better.", 5);
    desktop.keyboard.tapSpaces(2);
    EXPECT_TRUE(logged(QStringLiteral("Memory action selected: slot: 1 title: 提示词优化")));
    EXPECT_FALSE(isOpen());
    desktop.advance(1);
    EXPECT_FALSE(isOpen());  // the second space alone is no gesture
    EXPECT_EQ(field.value, QStringLiteral("Gut   en Tag"));
    finish();
}

TEST_F(ChoiceTest, anAutoRepeatChoosesLikeAPress) {
    openChoice();
    modelAnswers("Better.");
    desktop.keyboard.repeat(KeyCode::two);
    desktop.keyboard.release(KeyCode::two);
    EXPECT_TRUE(logged(QStringLiteral("Memory action selected: slot: 2 title: 添加表情")));
    finish();
}

TEST_F(ChoiceTest, aKeyHeldAfterItsChoiceTypesNothing) {
    openChoice();
    modelAnswers("Better.", 3);
    desktop.keyboard.hold(KeyCode::one, 2);
    EXPECT_EQ(field.value, QStringLiteral("Gut  en Tag"));
    EXPECT_TRUE(keptFromEditor(KeyCode::one));
    finish();
    EXPECT_EQ(veltrin.model.prompts, 1);
}

TEST_F(ChoiceTest, aClickOnARowChoosesItsNumberOnALaterTurn) {
    openChoice();
    modelAnswers("Better.");
    EXPECT_TRUE(desktop.floatingPanels.clickRow(3));
    EXPECT_TRUE(isOpen());
    desktop.runLoop.runDue();
    EXPECT_FALSE(isOpen());
    finish();
    EXPECT_TRUE(logged(QStringLiteral("Memory action selected: slot: 3 title: 更专业")));
    EXPECT_EQ(field.value, QStringLiteral("Better."));
}

TEST_F(ChoiceTest, theFieldIsReadAfterThePanelHasLeft) {
    openChoice();
    modelAnswers("Better.");
    desktop.keyboard.press(KeyCode::one);
    desktop.keyboard.release(KeyCode::one);
    desktop.advance(0.04);
    EXPECT_FALSE(log.lines().contains(
        QStringLiteral("SpaceGestureEngine event tap suspended reason: external text read")));
    desktop.keyboard.press(KeyCode::a);
    desktop.keyboard.release(KeyCode::a);
    desktop.advance(0.02);
    EXPECT_TRUE(log.lines().contains(
        QStringLiteral("SpaceGestureEngine event tap suspended reason: external text read")));
    finish();
    EXPECT_TRUE(askedFor("Gut  aen Tag"));
}

TEST_F(ChoiceTest, thePillStandsWhereTheChoiceFoundTheCaret) {
    openChoice();
    modelAnswers("Better.", 3);
    press(KeyCode::one);
    desktop.advance(0.1);
    EXPECT_EQ(pill(), QStringLiteral("正在优化"));
    EXPECT_EQ(desktop.floatingPanels.last().origin, caret().center() - QPointF(36, 20));
    finish();
}

TEST_F(ChoiceTest, theProgramGoneBeforeTheReadReadsNothing) {
    openChoice();
    desktop.keyboard.press(KeyCode::one);
    desktop.keyboard.release(KeyCode::one);
    veltrin.destroy();
    desktop.advance(1);
    EXPECT_EQ(veltrin.model.prompts, 0);
    EXPECT_EQ(field.value, QStringLiteral("Gut  en Tag"));
}

// MARK: Slots and actions

TEST_F(ChoiceTest, aSlotWithoutAnActionIsOnlyLoggedAndItsKeySwallowed) {
    storeActions({1, 2, 3});
    openChoice();
    desktop.advance(1);
    const auto heard = soundsPlayed();
    press(KeyCode::four);
    EXPECT_TRUE(logged(QStringLiteral("Memory action slot missing: 4")));
    EXPECT_TRUE(isOpen());
    EXPECT_TRUE(keptFromEditor(KeyCode::four));
    desktop.advance(1);
    EXPECT_EQ(soundsPlayed(), heard);
    EXPECT_FALSE(message());
    press(KeyCode::escape);
    finish();
}

TEST_F(ChoiceTest, aSlotIsFoundByItsNumberFirstAndByItsPlaceElse) {
    storeActions({2, 4});
    openChoice();
    press(KeyCode::three);
    EXPECT_TRUE(logged(QStringLiteral("Memory action slot missing: 3")));
    modelAnswers("A");
    press(KeyCode::two);
    EXPECT_TRUE(logged(QStringLiteral("Memory action selected: slot: 2 title: Action2")));
    finish();
    veltrin.tapOptimize();
    modelAnswers("B");
    press(KeyCode::one);
    EXPECT_TRUE(logged(QStringLiteral("Memory action selected: slot: 1 title: Action2")));
    finish();
}

TEST_F(ChoiceTest, theActionsAreThoseOfTheMomentOfOpening) {
    openChoice();
    EXPECT_EQ(veltrin.data().memoryActions.quickActions().size(), 4U);
    veltrin.delegate().optimizeInteraction().beginPendingOptimize(0);
    veltrin.delegate().optimizeInteraction().beginPendingOptimize(-3);
    veltrin.delegate().optimizeInteraction().beginPendingOptimize(5);
    EXPECT_TRUE(isOpen());
    EXPECT_TRUE(logged(QStringLiteral("Memory action slot missing: 5")));
    press(KeyCode::escape);
    veltrin.delegate().optimizeInteraction().beginPendingOptimize(1);
    veltrin.delegate().optimizeInteraction().beginCommandRecommend();
    finish();
    EXPECT_EQ(veltrin.model.prompts, 0);
}

// MARK: The slash key

TEST_F(ChoiceTest, theSlashKeyAsksForCommands) {
    openChoice();
    modelAnswers(R"([{"command":"/review","category":"slash-command",)"
                 R"("explanation":"要合并了","confidence":"high"}])");
    press(KeyCode::slash);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(keptFromEditor(KeyCode::slash));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("★ /review — 要合并了"));
    ASSERT_EQ(veltrin.behaviors().recentBehaviors().size(), 1U);
    EXPECT_EQ(veltrin.behaviors().recentBehaviors().front().detail, QStringLiteral("/review"));
}

// MARK: Escape, and keys that pass

TEST_F(ChoiceTest, escapeClosesItWithASoundAndIsSwallowed) {
    openChoice();
    desktop.advance(1);
    const auto heard = soundsPlayed();
    press(KeyCode::escape);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(logged(QStringLiteral("Optimize panel dismissed by Escape")));
    EXPECT_TRUE(keptFromEditor(KeyCode::escape));
    EXPECT_GT(soundsPlayed(), heard);
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Gut  en Tag"));
    press(KeyCode::escape);
    EXPECT_TRUE(reachedEditor(KeyCode::escape));
}

TEST_F(ChoiceTest, aLetterReachesTheFieldAndThePanelStays) {
    openChoice();
    veltrin.type(QStringLiteral("a"));
    EXPECT_EQ(field.value, QStringLiteral("Gut  aen Tag"));
    EXPECT_TRUE(isOpen());
    press(KeyCode::escape);
}

TEST_F(ChoiceTest, aChordNeitherChoosesNorCloses) {
    openChoice();
    press(FakeKeyCode::z, KeyFlags::command);
    EXPECT_TRUE(reachedEditor(FakeKeyCode::z));
    press(KeyCode::one, KeyFlags::option);
    EXPECT_TRUE(reachedEditor(KeyCode::one));
    press(KeyCode::returnKey, KeyFlags::shift);
    EXPECT_TRUE(reachedEditor(KeyCode::returnKey));
    EXPECT_TRUE(isOpen());
    press(KeyCode::escape, KeyFlags::shift);  // Escape counts with any modifier
    EXPECT_FALSE(isOpen());
}

TEST_F(ChoiceTest, theKeypadTypes) {
    constexpr qint64 keypadOne = 83;
    constexpr qint64 keypadEnter = 76;
    openChoice();
    press(keypadOne);
    press(keypadEnter);
    EXPECT_TRUE(reachedEditor(keypadOne));
    EXPECT_TRUE(reachedEditor(keypadEnter));
    EXPECT_TRUE(isOpen());
    press(KeyCode::escape);
}

TEST_F(ChoiceTest, aKeyThatTheApplicationHasAlreadyChoosesNothing) {
    launch();
    field.placeCaret(3);
    desktop.advance(3);
    desktop.keyboard.tapSpaces(2);
    // Pressed while the program is still looking for the caret.
    field.readFaults[AXAttribute::selectedTextRange] = FakeAXFault::slow(0.2);
    desktop.later(0.3, [this] {
        desktop.keyboard.press(KeyCode::one);
        desktop.keyboard.release(KeyCode::one);
    });
    desktop.advance(1);
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(field.value, QStringLiteral("Gut  1en Tag"));
    press(KeyCode::escape);
}

TEST_F(ChoiceTest, aKeyThatIsAnsweredTooLateIsTypedAndChoosesNothing) {
    openChoice();
    field.readFaults[AXAttribute::selectedTextRange] = FakeAXFault::slow(0.3);
    desktop.later(0.2, [this] {
        desktop.keyboard.press(KeyCode::one);
        desktop.keyboard.release(KeyCode::one);
    });
    desktop.advance(1);
    EXPECT_EQ(field.value, QStringLiteral("Gut  1en Tag"));
    EXPECT_TRUE(isOpen());
    press(KeyCode::escape);
}

// MARK: Before the choice in the path of a key

TEST_F(ChoiceTest, escapeEndsADictationFirstAndTheChoiceOnlyThen) {
    openChoice();
    bool idle = false;
    QStringList ended;
    auto& voice = veltrin.delegate().activeInteraction().voice;
    voice.isIdle = [&] { return idle; };
    voice.isRecording = [] { return true; };
    voice.stopRecording = [&] { ended << QStringLiteral("stopped"); };
    voice.cancelVoiceInteraction = [&](const char* reason) {
        ended << QString::fromUtf8(reason);
        idle = true;
    };
    press(KeyCode::escape);
    EXPECT_EQ(ended, QStringList(QStringLiteral("escape")));
    EXPECT_TRUE(isOpen());
    press(KeyCode::escape);
    EXPECT_EQ(ended.size(), 1);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(keptFromEditor(KeyCode::escape));
}

TEST_F(ChoiceTest, aSpaceEndsADictationAndNeverChooses) {
    openChoice();
    bool recording = true;
    int stopped = 0;
    auto& voice = veltrin.delegate().activeInteraction().voice;
    voice.isIdle = [] { return false; };
    voice.isRecording = [&] { return recording; };
    voice.stopRecording = [&] { ++stopped; };
    voice.cancelVoiceInteraction = [](const char*) {};
    press(KeyCode::space);
    EXPECT_EQ(stopped, 1);
    EXPECT_TRUE(logged(QStringLiteral("Voice finish: space pressed")));
    recording = false;  // what was said is being transcribed
    press(KeyCode::space);
    EXPECT_EQ(stopped, 1);
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(field.value, QStringLiteral("Gut  en Tag"));
    EXPECT_EQ(veltrin.model.prompts, 0);
    voice = {};
    press(KeyCode::escape);
}

TEST_F(ChoiceTest, theReleaseOfASpaceDuringADictationIsSwallowedToo) {
    launch();
    auto& keys = veltrin.delegate().activeInteraction();
    EXPECT_FALSE(keys.handleKeyUp(KeyCode::space));
    bool idle = false;
    keys.voice.isIdle = [&] { return idle; };
    EXPECT_TRUE(keys.handleKeyUp(KeyCode::space));
    EXPECT_TRUE(keys.handleKeyUp(KeyCode::escape));
    EXPECT_FALSE(keys.handleKeyUp(KeyCode::a));
    idle = true;
    EXPECT_FALSE(keys.handleKeyUp(KeyCode::space));
}

TEST_F(ChoiceTest, escapeClosesADropOverlayBeforeAllElse) {
    openChoice();
    bool showing = true;
    auto& keys = veltrin.delegate().activeInteraction();
    keys.dropOverlay = {[&] { return showing; }, [&] { showing = false; }};
    bool cancelled = false;
    keys.voice.isIdle = [&] { return cancelled; };
    keys.voice.cancelVoiceInteraction = [&](const char*) { cancelled = true; };
    press(KeyCode::escape);
    EXPECT_FALSE(showing);
    EXPECT_FALSE(cancelled);
    EXPECT_TRUE(logged(QStringLiteral("Global drop overlay dismissed by Escape")));
    press(KeyCode::escape);
    EXPECT_TRUE(cancelled);
    EXPECT_TRUE(isOpen());
    press(KeyCode::escape);
    EXPECT_FALSE(isOpen());
}

}  // namespace
}  // namespace veltrin
