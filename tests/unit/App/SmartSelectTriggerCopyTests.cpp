#include "unit/App/SmartSelectTriggerTest.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

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
