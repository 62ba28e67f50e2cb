#include "Gesture/SpaceGesturePolicy.h"
#include "support/fake/LogCapture.h"
#include "support/fake/RecordingSurface.h"
#include "support/fake/SimulatedVeltrin.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr double dragDelay = 0.5;
constexpr double multiClickDelay = 0.25;
constexpr double step = 0.01;

/// The whole program, with a surface that keeps what it is asked for, beside an editor in which words are
/// selected.
class SmartSelectTriggerTest : public testing::Test {
protected:
    SmartSelectTriggerTest() {
        desktop.focus(field);
        desktop.pasteboard.put(u"user's"_s);
        field.select(0, 5);
        veltrin.smartSelectSurface = &surface;
    }
    ~SmartSelectTriggerTest() override { SpaceGestureAppPolicy::bypassSelfBlacklist = false; }

    void launch() {
        veltrin.launch();
        desktop.advance(10);
    }
    void dragAcross() { desktop.mouse.drag({{200, 300}, {260, 300}, {320, 304}}); }
    /// Beyond a double click of an earlier step.
    void doubleClick(QPointF at = {700, 400}) { desktop.mouse.click(at, 2); }
    void wait(double seconds = dragDelay + step) { desktop.advance(seconds); }
    int count(const QString& line) const { return static_cast<int>(log.lines().count(line)); }
    /// The looks at the selection that were taken.
    int reads() const { return count(u"SmartSelect read begin: app: Editor bundle: org.example.Editor"_s); }
    SmartSelectTrigger& trigger() { return veltrin.delegate().smartSelectTrigger(); }

    LogCapture log;
    RecordingSurface surface;
    SimulatedVeltrin veltrin;
    FakeDesktop& desktop = veltrin.desktop;
    FakeApplication& editor = desktop.launch(u"Editor"_s, u"org.example.Editor"_s);
    FakeTextField& field = editor.addField(u"Hallo Welt"_s);
};

TEST_F(SmartSelectTriggerTest, aDragOverATextShowsAnIconAtTheSelectionsEnd) {
    launch();
    EXPECT_TRUE(log.has(u"SmartSelect mouse event tap created"_s));
    dragAcross();
    EXPECT_TRUE(
        log.has(u"SmartSelect trigger: reason: drag clickState: 1 dx: 120 dy: 4 anchor: (320, 776)"_s));
    wait(dragDelay - step);
    EXPECT_TRUE(surface.shown.empty());
    wait(2 * step);
    ASSERT_EQ(surface.texts(), QStringList(u"Hallo"_s));
    const QRectF selected = field.boundsOf({0, 5});
    EXPECT_EQ(surface.shown[0].point, QPointF(selected.right(), selected.top())) << "taken as it is";
    EXPECT_TRUE(
        log.has(u"SmartSelect show: reason: drag source: AXFocusedSelectedText app: Editor bundle: "
                u"org.example.Editor length: 5"_s));
    EXPECT_EQ(editor.pressesOf(KeyCode::c), 0);
}

TEST_F(SmartSelectTriggerTest, withoutASelectionsPlaceTheIconIsAtTheMouse) {
    field.readFaults[AXAttribute::boundsForRange] = FakeAXFault::refused(AXError::failure);
    launch();
    dragAcross();
    wait();
    ASSERT_EQ(surface.shown.size(), 1U);
    EXPECT_EQ(surface.shown[0].point, QPointF(320, 776));
}

TEST_F(SmartSelectTriggerTest, aDragThatReturnsToItsStartStillCounts) {
    launch();
    desktop.mouse.drag({{200, 300}, {209, 300}, {200, 300}});
    wait();
    EXPECT_EQ(surface.texts(), QStringList(u"Hallo"_s));
    EXPECT_TRUE(log.has(u"SmartSelect trigger: reason: drag clickState: 1 dx: 0 dy: 0 anchor: (200, 780)"_s));
}

TEST_F(SmartSelectTriggerTest, aDragOfExactlyEightOnBothAxesIsAClick) {
    launch();
    desktop.mouse.drag({{200, 300}, {208, 292}});
    wait();
    EXPECT_EQ(reads(), 0);
    EXPECT_FALSE(log.hasStartingWith(u"SmartSelect trigger"_s));
    desktop.advance(1);
    desktop.mouse.drag({{200, 300}, {200, 308.5}});
    wait();
    EXPECT_EQ(reads(), 1);
}

TEST_F(SmartSelectTriggerTest, aPlainClickIsSilent) {
    launch();
    desktop.mouse.click({200, 300});
    wait();
    EXPECT_EQ(reads(), 0);
    EXPECT_TRUE(surface.shown.empty());
}

TEST_F(SmartSelectTriggerTest, multipleClicksHaveTheShorterDelay) {
    launch();
    doubleClick();
    EXPECT_TRUE(
        log.has(u"SmartSelect trigger: reason: multiClick clickState: 2 dx: 0 dy: 0 anchor: (700, 680)"_s));
    wait(multiClickDelay - step);
    EXPECT_EQ(reads(), 0);
    wait(2 * step);
    EXPECT_EQ(surface.texts(), QStringList(u"Hallo"_s));
}

TEST_F(SmartSelectTriggerTest, aTripleClickIsAMultiClickTooAndReadsOnce) {
    launch();
    desktop.mouse.click({700, 400}, 3);
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect trigger: reason: multiClick clickState: 3"_s));
    field.select(0, 10);
    wait(multiClickDelay + step);
    EXPECT_EQ(reads(), 1);
    EXPECT_EQ(surface.texts(), QStringList(u"Hallo Welt"_s));
}

TEST_F(SmartSelectTriggerTest, aDoubleClickThatMovesIsAMultiClick) {
    launch();
    desktop.mouse.click({700, 400});
    desktop.advance(0.1);
    desktop.mouse.drag({{700, 400}, {760, 400}});
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect trigger: reason: multiClick clickState: 2 dx: 60"_s));
}

TEST_F(SmartSelectTriggerTest, draggingAFileIsNoSelectionHoweverFarItGoes) {
    launch();
    desktop.mouse.dragSomething({{200, 300}, {900, 700}});
    wait();
    EXPECT_TRUE(log.has(u"SmartSelect ignored: drag pasteboard changed"_s));
    EXPECT_EQ(reads(), 0);
    desktop.advance(1);
    dragAcross();
    wait();
    EXPECT_EQ(reads(), 1) << "only that gesture counted";
}

TEST_F(SmartSelectTriggerTest, theSecondOfTwoQuickSelectionsIsDroppedAndTheFirstGoesOn) {
    launch();
    const auto select = [this] {
        trigger().handlePotentialSmartSelection(SmartSelectTriggerReason::drag, {1, 2});
    };
    select();
    desktop.advance(0.25);
    select();
    EXPECT_TRUE(log.has(u"SmartSelect ignored: debounce"_s));
    wait(0.25 + step);
    EXPECT_EQ(reads(), 1);
}

TEST_F(SmartSelectTriggerTest, aLaterSelectionReplacesAPendingOne) {
    launch();
    dragAcross();
    desktop.advance(0.3);
    doubleClick();
    wait(0.4);
    EXPECT_EQ(reads(), 1);
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect show: reason: multiClick"_s));
}

TEST_F(SmartSelectTriggerTest, theSameSelectionAgainGivesNoIconWithin800Milliseconds) {
    launch();
    const auto shown = [this] {
        trigger().handlePotentialSmartSelection(SmartSelectTriggerReason::multiClick, {1, 2});
        wait(multiClickDelay + step);
        surface.dismissIcon();
        return surface.shown.size();
    };
    EXPECT_EQ(shown(), 1U);
    EXPECT_EQ(shown(), 1U);
    EXPECT_TRUE(log.has(u"SmartSelect duplicate ignored: AXFocusedSelectedText"_s));
    // The duplicate does not prolong the time.
    EXPECT_EQ(shown(), 1U);
    EXPECT_EQ(shown(), 1U);
    EXPECT_EQ(shown(), 2U);

    field.select(6, 4);
    EXPECT_EQ(shown(), 3U) << "another text";
    field.readFaults[AXAttribute::selectedText] = FakeAXFault::refused(AXError::failure);
    EXPECT_EQ(shown(), 4U) << "the same by another way";
    editor.bundleIdentifier = u"org.example.Other"_s;
    EXPECT_EQ(shown(), 5U) << "the same in another application";
}

TEST_F(SmartSelectTriggerTest, ofALongTextTheFirst120CharactersTellItFromAnother) {
    launch();
    field.value = QString(120, u'x') + u"abc"_s;
    const auto select = [this](qint64 length) {
        field.select(0, length);
        trigger().handlePotentialSmartSelection(SmartSelectTriggerReason::multiClick, {1, 2});
        wait(multiClickDelay + step);
        surface.dismissIcon();
        return surface.shown.size();
    };
    EXPECT_EQ(select(121), 1U);
    EXPECT_EQ(select(123), 1U);
    EXPECT_EQ(select(119), 2U);
}

TEST_F(SmartSelectTriggerTest, whileSomethingShowsSelectionsAreIgnoredUntilAClickOutsideClosesIt) {
    launch();
    dragAcross();
    wait();
    ASSERT_EQ(surface.shown.size(), 1U);
    desktop.advance(1);
    // Inside the icon, a press closes nothing.
    const QPointF icon = surface.icon->center();
    desktop.mouse.moveTo({icon.x(), 1080 - icon.y()});
    desktop.mouse.press();
    desktop.runLoop.runDue();
    EXPECT_EQ(surface.dismissals, 1) << "the press before the icon";
    desktop.mouse.moveTo({icon.x() + 30, 1080 - icon.y()});
    desktop.mouse.release();
    wait();
    EXPECT_TRUE(log.has(u"SmartSelect ignored: overlay already showing"_s));
    EXPECT_EQ(surface.shown.size(), 1U);

    surface.popup = surface.icon;
    surface.icon.reset();
    trigger().handlePotentialSmartSelection(SmartSelectTriggerReason::drag, {1, 2});
    wait();
    EXPECT_EQ(count(u"SmartSelect ignored: overlay already showing"_s), 2);

    desktop.mouse.moveTo({1500, 900});
    desktop.mouse.press();
    EXPECT_TRUE(surface.popup);
    desktop.runLoop.runDue();
    EXPECT_FALSE(surface.popup) << "on the press, before any release";
    EXPECT_FALSE(surface.icon);
    desktop.mouse.release();
    desktop.advance(1);
    dragAcross();
    wait();
    EXPECT_EQ(surface.shown.size(), 2U);
}

TEST_F(SmartSelectTriggerTest, theSettingAndBothBlacklistsSayNo) {
    launch();
    veltrin.settings().smartSelectEnabled.set(false);
    dragAcross();
    EXPECT_TRUE(log.has(u"SmartSelect ignored: disabled by settings"_s));
    veltrin.settings().smartSelectEnabled.set(true);
    for (auto* list : {&veltrin.settings().smartSelectBlacklistedBundleIDsText,
                       &veltrin.settings().gestureBlacklistedBundleIDsText}) {
        list->set(u"org.other, org.example.Editor"_s);
        desktop.advance(1);
        dragAcross();
        list->set(QString());
    }
    EXPECT_EQ(count(u"SmartSelect ignored: frontmost app blacklisted"_s), 2);
    wait();
    EXPECT_EQ(reads(), 0);
    // A refusal leaves no trace in the debounce.
    dragAcross();
    wait();
    EXPECT_EQ(reads(), 1);
}

TEST_F(SmartSelectTriggerTest, theMasterSwitchOfTheGesturesLeavesTheMouseAlone) {
    launch();
    veltrin.settings().spaceGesturesEnabled.set(false);
    desktop.advance(3);
    dragAcross();
    wait();
    EXPECT_EQ(surface.shown.size(), 1U);
}

TEST_F(SmartSelectTriggerTest, nothingSelectedIsSaidAndNothingShown) {
    field.placeCaret(3);
    launch();
    dragAcross();
    wait(3);
    EXPECT_TRUE(log.has(u"SmartSelect no selected text: reason: drag"_s));
    EXPECT_TRUE(surface.shown.empty());
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectTriggerTest, aBlankSelectionIsNone) {
    field.value = u" \n\t "_s;
    field.selectAll();
    launch();
    dragAcross();
    wait();
    EXPECT_TRUE(log.has(u"SmartSelect no selected text: reason: drag"_s));
    EXPECT_EQ(editor.pressesOf(KeyCode::c), 0) << "it was read, so it is not copied";
}

TEST_F(SmartSelectTriggerTest, ourOwnWindowIsReadDuringThePracticeOnly) {
    launch();
    FakeTextField& own = desktop.workspace.program().addField(u"practice text"_s);
    own.selectAll();
    desktop.focus(own);
    dragAcross();
    wait();
    EXPECT_TRUE(surface.shown.empty());
    EXPECT_TRUE(log.has(u"SmartSelect no selected text: reason: drag"_s));
    SpaceGestureAppPolicy::bypassSelfBlacklist = true;
    desktop.advance(1);
    dragAcross();
    wait();
    EXPECT_EQ(surface.texts(), QStringList(u"practice text"_s));
    own.placeCaret(0);
    surface.dismissIcon();
    dragAcross();
    wait(3);
    EXPECT_EQ(desktop.keyPoster.records.size(), 0U);
}

// MARK: The copy key on the whole desktop

TEST_F(SmartSelectTriggerTest, aBrowserThatTellsNothingIsCopiedFromWhileEverythingGoesOn) {
    editor.name = u"Chromium"_s;
    editor.accessible = false;
    launch();
    dragAcross();
    const double blocked = desktop.runLoop.blockedSeconds();
    wait(dragDelay + 0.3);
    EXPECT_EQ(surface.texts(), QStringList(u"Hallo"_s));
    EXPECT_EQ(surface.shown[0].point, QPointF(320, 776));
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
    EXPECT_EQ(desktop.runLoop.blockedSeconds(), blocked);
}

TEST_F(SmartSelectTriggerTest, aClickWhileTheTextIsCopiedLeavesNoIcon) {
    editor.name = u"Chromium"_s;
    editor.accessible = false;
    launch();
    dragAcross();
    wait(dragDelay + 0.05);
    desktop.mouse.click({1500, 900});
    wait(1);
    EXPECT_TRUE(log.has(u"SmartSelect ignored: clicked meanwhile"_s));
    EXPECT_TRUE(surface.shown.empty());
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectTriggerTest, oneThatHasBegunRunsOnAndTheNextComesAfterIt) {
    editor.name = u"WeChat"_s;
    editor.accessible = false;
    field.placeCaret(0);
    launch();
    dragAcross();
    wait(dragDelay + 0.1);
    doubleClick();
    wait(1);
    EXPECT_EQ(editor.pressesOf(KeyCode::c), 1);
    field.select(0, 5);
    wait(3);
    EXPECT_EQ(surface.texts(), QStringList(u"Hallo"_s));
    EXPECT_TRUE(log.has(u"SmartSelect ignored: clicked meanwhile"_s));
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect show: reason: multiClick"_s));
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectTriggerTest, aFloodOfSelectionsReadsOneAfterTheOther) {
    editor.name = u"Chromium"_s;
    editor.accessible = false;
    launch();
    int borrowed = 0;
    for (int i = 0; i < 300; ++i) {
        trigger().handlePotentialSmartSelection(
            i % 2 == 0 ? SmartSelectTriggerReason::drag : SmartSelectTriggerReason::multiClick, {1, 2});
        desktop.advance(0.03);
        surface.dismissIcon();
        borrowed += desktop.pasteboard.peek() == u"user's" ? 0 : 1;
    }
    wait(3);
    EXPECT_GT(borrowed, 0);
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
    EXPECT_EQ(editor.pressesOf(KeyCode::c), desktop.keyPoster.postedCount);
    EXPECT_LE(desktop.keyPoster.postedCount, 36) << "never more than the debounce lets through";
}

TEST_F(SmartSelectTriggerTest, whatIsCopiedForAMomentIsNoHistory) {
    editor.name = u"Chromium"_s;
    editor.accessible = false;
    launch();
    for (int i = 0; i < 40; ++i) {
        surface.dismissIcon();
        field.select(i % 5, 4);
        dragAcross();
        wait(0.9 + 0.013 * i);
    }
    EXPECT_GT(surface.shown.size(), 30U);
    EXPECT_TRUE(veltrin.data().clipboard.entries().empty());
    desktop.pasteboard.put(u"user's newer"_s);
    desktop.advance(2);
    ASSERT_EQ(veltrin.data().clipboard.entries().size(), 1U);
    EXPECT_EQ(veltrin.data().clipboard.entries().front().text, u"user's newer");
}

TEST_F(SmartSelectTriggerTest, aCopyOfTheUsersThatWasNotYetSeenIsNotLostToTheHistory) {
    editor.name = u"Chromium"_s;
    editor.accessible = false;
    launch();
    dragAcross();
    wait(0.4);
    desktop.pasteboard.put(u"user's newer"_s);
    wait(3);
    ASSERT_EQ(veltrin.data().clipboard.entries().size(), 1U);
    EXPECT_EQ(veltrin.data().clipboard.entries().front().text, u"user's newer");
}

TEST_F(SmartSelectTriggerTest, aTranslationWhileTheTextIsCopiedFindsTheUsersPasteboard) {
    editor.name = u"WeChat"_s;
    field.value = u"Hallo"_s;
    field.placeCaret(5);
    editor.accessible = false;
    launch();
    veltrin.model.answers(SimulatedModel::Reply::text(u"Hello."_s));
    dragAcross();
    wait(dragDelay + 0.4);
    ASSERT_NE(desktop.pasteboard.peek(), u"user's");
    veltrin.pressTranslateShortcut();
    EXPECT_TRUE(veltrin.runUntilIdle());
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectTriggerTest, anApplicationThatHangsCostsABoundedWait) {
    launch();
    editor.hang();
    dragAcross();
    wait(3);
    EXPECT_TRUE(surface.shown.empty());
    EXPECT_LE(desktop.runLoop.blockedSeconds(), 0.6);
}

TEST_F(SmartSelectTriggerTest, aSelectionThatVanishesGivesNothing) {
    launch();
    dragAcross();
    wait(0.3);
    editor.quit();
    wait(3);
    EXPECT_TRUE(surface.shown.empty());
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectTriggerTest, aTextOfManyMegabytesIsShownWhole) {
    field.value = QString(25'000'000, u'x');
    field.selectAll();
    launch();
    dragAcross();
    wait();
    ASSERT_EQ(surface.shown.size(), 1U);
    EXPECT_EQ(surface.shown[0].text.size(), 25'000'000);
    for (const QString& line : log.lines())
        EXPECT_LT(line.size(), 1000) << "none of it in the log";
}

// MARK: The tap

TEST_F(SmartSelectTriggerTest, aTapThatWasTurnedOffIsTurnedOnAgain) {
    launch();
    desktop.mouseEventTaps.disable(MouseEventType::tapDisabledByTimeout);
    desktop.runLoop.runDue();
    EXPECT_TRUE(log.has(u"SmartSelect mouse event tap re-enabled: -2"_s));
    desktop.mouseEventTaps.disable(MouseEventType::tapDisabledByUserInput);
    desktop.runLoop.runDue();
    EXPECT_TRUE(log.has(u"SmartSelect mouse event tap re-enabled: -1"_s));
    EXPECT_EQ(desktop.mouseEventTaps.running(), 1);
    dragAcross();
    wait();
    EXPECT_EQ(surface.shown.size(), 1U);
}

TEST_F(SmartSelectTriggerTest, withoutTheRightToListenTheProgramGoesOn) {
    desktop.mouseEventTaps.granted = false;
    launch();
    EXPECT_TRUE(log.has(u"SmartSelect: CGEventTap creation FAILED"_s));
    dragAcross();
    wait();
    EXPECT_TRUE(surface.shown.empty());
}

TEST_F(SmartSelectTriggerTest, theTapComesUpBetweenTheReadyPanelAndTheGesturesAndGoesFirst) {
    launch();
    const QStringList lines = log.lines();
    const auto at = [&](const QString& line) { return lines.indexOf(line); };
    EXPECT_LT(at(u"UI showPanel requested: Veltrin Ready anchor: nil visible frame: (0, 0, 1920, 1050)"_s),
              at(u"SmartSelect mouse event tap created"_s));
    EXPECT_LT(at(u"SmartSelect mouse event tap created"_s), at(u"SpaceGestureEngine starting"_s));
    dragAcross();
    EXPECT_TRUE(veltrin.delegate().applicationShouldTerminate());
    EXPECT_EQ(desktop.mouseEventTaps.running(), 0);
    wait();
    EXPECT_EQ(reads(), 0) << "what was pending is given up";
}

TEST_F(SmartSelectTriggerTest, theEndOfTheProgramGivesThePasteboardBack) {
    editor.name = u"Chromium"_s;
    editor.accessible = false;
    field.placeCaret(0);
    launch();
    dragAcross();
    wait(dragDelay + 0.3);
    ASSERT_NE(desktop.pasteboard.peek(), u"user's");
    veltrin.quit();
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectTriggerTest, theProgramMayVanishInEveryMoment) {
    editor.name = u"Chromium"_s;
    editor.accessible = false;
    field.placeCaret(0);
    launch();
    dragAcross();
    wait(dragDelay + 0.3);
    veltrin.destroy();
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
    desktop.advance(5);
    EXPECT_EQ(desktop.mouseEventTaps.running(), 0);
}

TEST_F(SmartSelectTriggerTest, theProgramsOwnIconAppearsAndAClickElsewhereClosesIt) {
    veltrin.smartSelectSurface = nullptr;
    field.readFaults[AXAttribute::boundsForRange] = FakeAXFault::refused(AXError::failure);
    launch();
    SmartSelectOverlay& overlay = veltrin.delegate().smartSelectOverlay();
    dragAcross();
    EXPECT_FALSE(overlay.iconFrame());
    wait();
    ASSERT_TRUE(overlay.iconFrame());
    dragAcross();
    desktop.advance(0.1);
    EXPECT_FALSE(overlay.iconFrame()) << "closed by the press";
    wait(3);
    desktop.mouse.click({1500, 900});
    desktop.advance(1);
    EXPECT_FALSE(overlay.iconFrame());
}

// MARK: The shortcut and the overlay for drops

TEST_F(SmartSelectTriggerTest, theShortcutReadsBesideTheMouseWithTheShorterDelay) {
    desktop.preferences.values.insert_or_assign(u"shortcut_smart_select"_s, u"⌥|S"_s);
    field.readFaults[AXAttribute::boundsForRange] = FakeAXFault::refused(AXError::failure);
    launch();
    desktop.mouse.moveTo({50, 80});
    desktop.keyboard.chord(1, KeyFlags::option);
    desktop.runLoop.runDue();
    wait(multiClickDelay + step);
    ASSERT_EQ(surface.shown.size(), 1U);
    EXPECT_EQ(surface.shown[0].point, QPointF(50, 1000));
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect show: reason: multiClick"_s));
    EXPECT_EQ(editor.pressesOf(1), 0) << "the shortcut is ours";

    surface.dismissIcon();
    desktop.advance(2);
    veltrin.settings().smartSelectEnabled.set(false);
    desktop.keyboard.chord(1, KeyFlags::option);
    wait();
    EXPECT_TRUE(log.has(u"Custom smart select shortcut ignored by settings"_s));
    EXPECT_EQ(surface.shown.size(), 1U);
}

TEST_F(SmartSelectTriggerTest, aLongDragCallsForTheDropOverlayAndEveryReleaseLetsItGo) {
    launch();
    int shown = 0;
    std::vector<double> dismissals;
    trigger().showGlobalDropOverlayIfNeeded = [&] { ++shown; };
    trigger().scheduleDropOverlayDismiss = [&](double seconds) { dismissals.push_back(seconds); };
    desktop.mouse.drag({{200, 300}, {218, 300}, {218, 282}});
    EXPECT_EQ(shown, 0) << "18 is not more than 18";
    desktop.mouse.dragSomething({{200, 300}, {200, 319}, {400, 300}});
    EXPECT_EQ(shown, 2) << "at every step";
    desktop.mouse.click({10, 10});
    EXPECT_EQ(dismissals, (std::vector<double>{0.45, 0.45, 0.45}));
}

}  // namespace
}  // namespace veltrin
