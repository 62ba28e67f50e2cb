#include "Foundation/MVPLog.h"
#include "support/fake/FakeKeyCodes.h"
#include "support/fake/LogCapture.h"
#include "support/fake/SimulatedVeltrin.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using Reply = SimulatedModel::Reply;

class AppDelegateTest : public testing::Test {
protected:
    AppDelegateTest() {
        desktop.pasteboard.put(QStringLiteral("mine"));
        desktop.focus(field);
        field.placeCaret(field.value.size());
        veltrin.model.answers(Reply::text(QStringLiteral("Hello.")));
    }

    void store(const char* key, PreferenceValue value) {
        desktop.preferences.values.insert_or_assign(QString::fromUtf8(key), std::move(value));
    }
    std::optional<QString> message() const { return desktop.floatingPanels.shownText(PanelKind::text); }
    /// Taps that run, by what they listen to.
    int runningTaps(KeyEventMask mask) const {
        int running = 0;
        for (const auto& tap : desktop.keyEventTaps.taps)
            running += tap->isRunning() && tap->mask == mask ? 1 : 0;
        return running;
    }
    int gestureTaps() const { return runningTaps(KeyEventMask::keyDownAndKeyUp); }
    int quitTaps() const { return runningTaps(KeyEventMask::keyDown); }
    /// The lines that are there, in their order, of those that are asked for.
    QStringList logged(const QStringList& wanted) const {
        QStringList found;
        for (const QString& line : log.lines()) {
            if (wanted.contains(line)) found << line;
        }
        return found;
    }

    LogCapture log;
    SimulatedVeltrin veltrin;
    FakeDesktop& desktop = veltrin.desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
    FakeTextField& field = editor.addField(QStringLiteral("Hallo"));
};

TEST_F(AppDelegateTest, launchesInOrder) {
    veltrin.launch();
    desktop.advance(1);
    const QStringList order{
        QStringLiteral("MVP App launched"),
        QStringLiteral("── Permission Diagnostics ──"),
        QStringLiteral("AX positioning permission prompt result: true"),
        QStringLiteral("Main window requested"),
        QStringLiteral("UI showPanel requested: Veltrin Ready anchor: nil visible frame: (0, 0, 1920, 1050)"),
        QStringLiteral("SpaceGestureEngine starting"),
        QStringLiteral("CGEventTap created"),
        QStringLiteral("CGEventTap runloop source added"),
        QStringLiteral("SpaceGestureEngine started successfully"),
        QStringLiteral("Ollama warmup completed"),
    };
    EXPECT_EQ(logged(order), order);
    EXPECT_EQ(gestureTaps(), 1);
    EXPECT_EQ(quitTaps(), 1);
}

TEST_F(AppDelegateTest, crashesAndFontsAreSeenToBeforeAnythingElse) {
    veltrin.registerFonts = [this] {
        EXPECT_TRUE(veltrin.systemLog.isWatching);
        EXPECT_EQ(veltrin.systemLog.lines,
                  (QStringList{QStringLiteral("com.veltrin.app crash: CrashReporter started"),
                               QStringLiteral("com.veltrin.app analytics: launch")}));
        EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);  // nobody looks at the clipboard yet
        EXPECT_EQ(logged({QStringLiteral("MVP App launched")}), QStringList());
        MVPLog::write("fonts");
    };
    veltrin.launch();
    const QStringList order{QStringLiteral("fonts"), QStringLiteral("MVP App launched")};
    EXPECT_EQ(logged(order), order);
}

TEST_F(AppDelegateTest, readyShowsForSixSecondsOnceOnboardingIsDone) {
    veltrin.launch();
    EXPECT_EQ(message(), QStringLiteral("Veltrin Ready"));
    desktop.advance(5.9);
    EXPECT_EQ(message(), QStringLiteral("Veltrin Ready"));
    desktop.advance(0.2);
    EXPECT_FALSE(message());
    EXPECT_TRUE(veltrin.runUntilIdle());
}

TEST_F(AppDelegateTest, beforeOnboardingNothingSaysReady) {
    store("hasCompletedOnboarding", false);
    veltrin.launch();
    EXPECT_TRUE(desktop.floatingPanels.records.empty());
    EXPECT_EQ(gestureTaps(), 1);
}

TEST_F(AppDelegateTest, aStartWithTheSwitchOffHasNoTapButTheQuitTap) {
    store("spaceGesturesEnabled", false);
    veltrin.launch();
    EXPECT_EQ(message(), QStringLiteral("Global Gestures Off"));
    EXPECT_EQ(gestureTaps(), 0);
    EXPECT_EQ(quitTaps(), 1);
    desktop.advance(1.9);
    EXPECT_EQ(message(), QStringLiteral("Global Gestures Off"));
    desktop.advance(0.2);
    EXPECT_FALSE(message());
    veltrin.tapTranslate();
    EXPECT_EQ(veltrin.model.prompts, 0);
    desktop.keyboard.chord(KeyCode::q, KeyFlags::command | KeyFlags::shift);
    EXPECT_EQ(desktop.processControl.terminations, 1);
}

TEST_F(AppDelegateTest, withoutTheRightToListenAPanelSaysSoForSixSeconds) {
    desktop.keyEventTaps.granted = false;
    veltrin.launch();
    EXPECT_EQ(message(), QStringLiteral("Input Monitoring Required"));
    EXPECT_EQ(desktop.keyEventTaps.requests, 1);
    EXPECT_EQ(logged({QStringLiteral("SpaceGestureEngine failed to start")}).size(), 1);
    desktop.advance(5.9);
    EXPECT_EQ(message(), QStringLiteral("Input Monitoring Required"));
    EXPECT_TRUE(veltrin.runUntilIdle());
    EXPECT_EQ(desktop.keyEventTaps.requests, 1);  // nobody tries again by himself
}

TEST_F(AppDelegateTest, flippingTheSwitchOffAndOnWipesTheSequenceAndStartsAfresh) {
    veltrin.launch();
    desktop.advance(3);
    desktop.keyboard.tapSpaces(2);
    veltrin.settings().spaceGesturesEnabled.set(false);
    EXPECT_EQ(gestureTaps(), 1);  // acted on in a later turn
    desktop.runLoop.runDue();
    EXPECT_EQ(gestureTaps(), 0);
    EXPECT_EQ(message(), QStringLiteral("Global Gestures Off"));
    veltrin.settings().spaceGesturesEnabled.set(true);
    veltrin.settings().spaceGesturesEnabled.set(true);  // an equal value is no change
    desktop.runLoop.runDue();
    EXPECT_EQ(gestureTaps(), 1);
    desktop.keyboard.tapSpaces(1);  // would have been the third
    EXPECT_TRUE(veltrin.runUntilIdle());
    EXPECT_EQ(veltrin.model.prompts, 0);
    EXPECT_EQ(logged({QStringLiteral("SpaceGestureEngine already running")}), QStringList());
    EXPECT_EQ(logged({QStringLiteral("SpaceGestureEngine started successfully")}).size(), 2);
    EXPECT_EQ(logged({QStringLiteral("SpaceGestureEngine stopped by settings")}).size(), 1);
}

TEST_F(AppDelegateTest, theTranslationShortcutIsClaimedAndSwallowed) {
    veltrin.launch();
    veltrin.pressTranslateShortcut();
    EXPECT_EQ(editor.pressesOf(SimulatedVeltrin::translateKey), 0);
    EXPECT_EQ(editor.releasesOf(SimulatedVeltrin::translateKey), 0);
    EXPECT_TRUE(veltrin.runUntilIdle());
    EXPECT_EQ(field.value, QStringLiteral("Hello."));
}

TEST_F(AppDelegateTest, shortcutsWithoutAnActionBelongToTheApplication) {
    store("shortcut_drag", QStringLiteral("⌥|Z"));
    veltrin.launch();
    desktop.keyboard.chord(FakeKeyCode::z, KeyFlags::option);
    desktop.keyboard.chord(KeyCode::space, KeyFlags::option);  // voice's default
    EXPECT_EQ(editor.pressesOf(FakeKeyCode::z), 1);
    EXPECT_EQ(editor.releasesOf(FakeKeyCode::z), 1);
    EXPECT_EQ(editor.pressesOf(KeyCode::space), 1);
    EXPECT_EQ(desktop.keyEventTaps.swallowed, 0);
    for (const auto& tap : desktop.keyEventTaps.taps) {
        for (const ClaimableKey& key : tap->claimable)
            EXPECT_TRUE(key.keyCode == KeyCode::q || key.keyCode == SimulatedVeltrin::translateKey)
                << key.keyCode;
    }
}

TEST_F(AppDelegateTest, theTripleSwitchGatesTheShortcutAsWellAsTheTaps) {
    veltrin.launch();
    veltrin.settings().tripleSpaceGestureEnabled.set(false);
    veltrin.tapTranslate();
    veltrin.pressTranslateShortcut();
    EXPECT_TRUE(veltrin.runUntilIdle());
    const QStringList refusals{QStringLiteral("Triple Space Triggered but ignored by settings"),
                               QStringLiteral("Custom translation shortcut ignored by settings")};
    EXPECT_EQ(logged(refusals), refusals);
    EXPECT_EQ(veltrin.model.prompts, 0);
    EXPECT_EQ(editor.pressesOf(SimulatedVeltrin::translateKey), 0);  // refused, but still ours
}

TEST_F(AppDelegateTest, aDoubleTapOnTheOptimizeBlacklistIsRefusedWhileATripleStillWorks) {
    store("shortcut_optimize_blacklisted_bundle_ids", QStringLiteral("org.example.Editor"));
    veltrin.launch();
    desktop.advance(3);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(0.5);
    EXPECT_EQ(logged({QStringLiteral("Double Space Triggered but ignored by settings")}).size(), 1);
    EXPECT_EQ(logged({QStringLiteral("Double Space Triggered")}).size(), 0);
    veltrin.tapTranslate();
    EXPECT_TRUE(veltrin.runUntilIdle());
    EXPECT_EQ(field.value, QStringLiteral("Hello."));
}

TEST_F(AppDelegateTest, onTheGeneralBlacklistTheEnginesOwnGateRefuses) {
    store("gesture_blacklisted_bundle_ids", QStringLiteral("org.example.Editor"));
    veltrin.launch();
    veltrin.tapTranslate();
    EXPECT_EQ(logged({QStringLiteral("Triple space rejected by safety gate")}).size(), 1);
    EXPECT_EQ(logged({QStringLiteral("Triple Space Triggered but ignored by settings")}).size(), 0);
    EXPECT_EQ(veltrin.model.prompts, 0);
}

TEST_F(AppDelegateTest, changedIntervalsCountFromTheNextTapAndAreHeldWithinTheirRange) {
    veltrin.launch();
    veltrin.settings().tripleSpaceTailIntervalMS.set(1);  // held at 120
    desktop.advance(3);
    desktop.keyboard.tapSpaces(3, 0.15);
    EXPECT_TRUE(veltrin.runUntilIdle());
    EXPECT_EQ(veltrin.model.prompts, 0);
    desktop.advance(3);
    desktop.keyboard.tapSpaces(3, 0.11);
    desktop.advance(1);
    EXPECT_TRUE(veltrin.runUntilIdle());
    EXPECT_EQ(veltrin.model.prompts, 1) << qPrintable(log.lines().join(u'\n'));
}

TEST_F(AppDelegateTest, thePillStandsInTheTextAndAnswersReplaceEachOtherInTheirSlots) {
    field.editable = false;
    veltrin.model.answers(Reply::text(QStringLiteral("Hello."), 1));
    veltrin.launch();
    EXPECT_TRUE(veltrin.runUntilIdle());
    veltrin.pressTranslateShortcut();
    ASSERT_EQ(desktop.floatingPanels.shown().size(), 1u);
    EXPECT_EQ(desktop.floatingPanels.shown()[0]->spec.kind, PanelKind::statusPill);
    EXPECT_EQ(desktop.floatingPanels.shown()[0]->spec.text, QStringLiteral("正在翻译"));
    veltrin.delegate().debugPanel().showPanel(QStringLiteral("note"), std::nullopt, 1.6);
    EXPECT_EQ(desktop.floatingPanels.shown().size(), 2u);  // a message leaves the pill alone
    desktop.advance(1);
    ASSERT_EQ(desktop.floatingPanels.shown().size(), 1u);
    EXPECT_EQ(message(), QStringLiteral("已复制\n翻译后的内容：Hello."));
    desktop.advance(2.2);
    EXPECT_TRUE(message());
    desktop.advance(0.3);
    EXPECT_FALSE(message());
}

TEST_F(AppDelegateTest, theOrderlyEndGivesTheClipboardBackAtOnceAndStopsEveryTap) {
    veltrin.launch();
    EXPECT_TRUE(veltrin.runUntilIdle());
    veltrin.pressTranslateShortcut();
    desktop.advance(0.2);
    ASSERT_EQ(field.value, QStringLiteral("Hello."));
    ASSERT_EQ(desktop.pasteboard.peek(), QStringLiteral("Hello."));
    veltrin.quit();
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("mine"));
    EXPECT_EQ(gestureTaps(), 0);
    EXPECT_EQ(quitTaps(), 0);
    veltrin.destroy();
    desktop.advance(2);
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("mine"));
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
}

TEST_F(AppDelegateTest, aSecondStartShowsTheWindowAndLeavesNothingToTheCaller) {
    veltrin.launch();
    EXPECT_FALSE(veltrin.delegate().applicationShouldHandleReopen(false));
    EXPECT_EQ(logged({QStringLiteral("Main window requested")}).size(), 2);
    veltrin.notifications.post(Notifications::showMainWindow);
    EXPECT_EQ(logged({QStringLiteral("Main window requested")}).size(), 2);  // on a later turn
    desktop.runLoop.runDue();
    EXPECT_EQ(logged({QStringLiteral("Main window requested")}).size(), 3);
    veltrin.settings().hasCompletedOnboarding.set(false);
    desktop.runLoop.runDue();
    EXPECT_EQ(logged({QStringLiteral("Main window requested")}).size(), 4);
}

TEST_F(AppDelegateTest, theMainWindowIsPresentedWheneverItIsAskedFor) {
    int presented = 0;
    veltrin.presentMainWindow = [&] { ++presented; };
    veltrin.launch();
    EXPECT_EQ(presented, 1);
    veltrin.delegate().applicationShouldHandleReopen(true);
    EXPECT_EQ(presented, 2);
    veltrin.notifications.post(Notifications::showOnboarding);
    desktop.runLoop.runDue();
    EXPECT_EQ(presented, 3);
}

TEST_F(AppDelegateTest, theDragShortcutOpensTheWorkbenchAndAsksNothingOfTheMasterSwitch) {
    int presented = 0;
    int navigated = 0;
    veltrin.presentMainWindow = [&] { ++presented; };
    store("shortcut_drag", QStringLiteral("⌥|Z"));
    veltrin.launch();
    const auto observer =
        veltrin.notifications.observe(Notifications::veltrinNavigateToDragWorkbench, [&] { ++navigated; });
    EXPECT_TRUE(veltrin.runUntilIdle());
    desktop.keyboard.chord(FakeKeyCode::z, KeyFlags::option);
    desktop.runLoop.runDue();
    EXPECT_EQ(editor.pressesOf(FakeKeyCode::z), 0);
    EXPECT_EQ(presented, 2);
    EXPECT_EQ(navigated, 1);
    EXPECT_EQ(message(), QStringLiteral("拖拽入口已打开"));
    desktop.advance(1.4);
    EXPECT_TRUE(message());
    desktop.advance(0.25);
    EXPECT_FALSE(message());
    veltrin.settings().spaceGesturesEnabled.set(false);
    veltrin.delegate().handleCustomShortcut(CustomShortcutAction::drag);
    EXPECT_EQ(presented, 3);
}

TEST_F(AppDelegateTest, theDragShortcutIsRefusedByItsOwnSwitchAndItsBlacklist) {
    int presented = 0;
    veltrin.presentMainWindow = [&] { ++presented; };
    veltrin.launch();
    const QString refusal = QStringLiteral("Custom drag shortcut ignored by settings");
    veltrin.settings().dragInteractionEnabled.set(false);
    veltrin.delegate().handleCustomShortcut(CustomShortcutAction::drag);
    EXPECT_EQ(logged({refusal}).size(), 1);
    veltrin.settings().dragInteractionEnabled.set(true);
    veltrin.settings().dragBlacklistedBundleIDsText.set(QStringLiteral("org.example.Editor"));
    veltrin.delegate().handleCustomShortcut(CustomShortcutAction::drag);
    EXPECT_EQ(logged({refusal}).size(), 2);
    EXPECT_EQ(presented, 1);
}

TEST_F(AppDelegateTest, addressesOfALoginReachTheAccount) {
    QStringList codes;
    veltrin.account.exchangeCode = [&](QString code) -> QCoro::Task<void> {
        codes << code;
        co_return;
    };
    veltrin.account.isAuthenticated = [] { return true; };
    int presented = 0;
    veltrin.presentMainWindow = [&] { ++presented; };
    veltrin.launch();
    veltrin.delegate().applicationOpen(
        {QUrl(QStringLiteral("veltrin://auth?code=a")), QUrl(QStringLiteral("veltrin://auth?code=b"))});
    EXPECT_EQ(codes, QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(presented, 3);
}

TEST_F(AppDelegateTest, aServiceThatIsDownOnlyCostsTheWarmUp) {
    veltrin.model.serviceUp = false;
    veltrin.launch();
    EXPECT_TRUE(veltrin.runUntilIdle());
    EXPECT_EQ(logged({QStringLiteral("Ollama warmup skipped: service unavailable")}).size(), 1);
}

}  // namespace
}  // namespace veltrin
