#include "RoadFixture.h"
#include "support/fake/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>

namespace veltrin {
namespace {

/// Two taps, the choice beside the caret, and one key.
class ChoiceTest : public RoadTest {
protected:
    ChoiceTest() {
        field.frame = QRectF(700, 300, 600, 300);  // away from the edges of the screen
    }
    std::size_t soundsPlayed() const { return desktop.soundOutput.played.size(); }

    /// The program runs, and the choice is open. The caret stands in the text: behind its end is no character
    /// whose place could be asked for, and the choice would stand below the whole field.
    void openChoice() {
        launch();
        field.placeCaret(3);
        veltrin.tapOptimize();
        ASSERT_TRUE(isOpen());
    }
    bool isWaiting() { return veltrin.delegate().optimizeInteraction().isWaiting(); }
    /// Waiting and shown are one.
    bool isOpen() {
        const bool shown = choice() != nullptr;
        EXPECT_EQ(shown, isWaiting());
        return shown;
    }
    const FakeFloatingPanels::Record* choice() const {
        const auto shown = desktop.floatingPanels.shown();
        const auto found = std::find_if(shown.begin(), shown.end(), [](const auto* record) {
            return record->spec.kind == PanelKind::choice;
        });
        return found == shown.end() ? nullptr : *found;
    }
    void press(qint64 keyCode, quint64 flags = 0) {
        desktop.keyboard.chord(keyCode, flags);
        desktop.runLoop.runDue();
    }
    /// Where the character after the caret stands, from the bottom left.
    QRectF caret() const {
        const QRectF rect = field.boundsOf({field.selection.location, 1});
        return {rect.x(), 1080 - rect.bottom(), rect.width(), rect.height()};
    }
    /// Where a choice stands below a rectangle, away from the edges.
    static QPointF below(const QRectF& rect) {
        return {rect.x() + rect.width() / 2 - 155, rect.y() - 248 - 10};
    }
    bool logged(const QString& line) const { return log.lines().contains(line); }
    /// The prompt asks for what an action says.
    bool askedFor(const char* words) const {
        return veltrin.model.lastPrompt.contains(QString::fromUtf8(words));
    }
    /// The key went to the application, whole.
    bool reachedEditor(qint64 keyCode) const {
        return editor.pressesOf(keyCode) == 1 && editor.releasesOf(keyCode) == 1;
    }
    bool keptFromEditor(qint64 keyCode) const {
        return editor.pressesOf(keyCode) == 0 && editor.releasesOf(keyCode) == 0;
    }
    /// The claims of the running taps but those of shortcuts.
    int choiceKeysClaimed() const {
        int count = 0;
        for (const auto& tap : desktop.keyEventTaps.taps) {
            for (const ClaimableKey& key : tap->claimable)
                count += tap->isRunning() && (key.flags == 0) ? 1 : 0;
        }
        return count;
    }
    /// Quick actions of these slots, named after them.
    void storeActions(const std::vector<int>& slots) {
        veltrin.dataFolder = folder.path();
        std::vector<MemoryActionPreset> actions;
        for (const int slot : slots) {
            MemoryActionPreset action;
            action.id = QUuid::createUuid();
            action.title = QStringLiteral("Action%1").arg(slot);
            action.description = action.title;
            action.instruction = QStringLiteral("Write it shorter.");
            action.isQuickAction = true;
            action.shortcutSlot = slot;
            actions.push_back(action);
        }
        QFile file(folder.filePath(QStringLiteral("memory_actions.json")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(*writeRecords(actions));
    }

    LogCapture log;
    QTemporaryDir folder;
};

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
