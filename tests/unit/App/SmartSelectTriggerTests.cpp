#include "unit/App/SmartSelectTriggerTest.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

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

}  // namespace
}  // namespace veltrin
