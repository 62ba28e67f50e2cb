#include "App/AppDelegate.h"

#include "AI/OllamaClient.h"
#include "Data/AppSettings.h"
#include "Data/DataStore.h"
#include "Expression/ExpressionMemoryStore.h"
#include "Foundation/MVPLog.h"
#include "Platform/RunLoop.h"
#include "System/Analytics.h"

#include <algorithm>

namespace veltrin {
namespace {

constexpr double readySeconds = 6.0;
constexpr double permissionSeconds = 6.0;
constexpr double gesturesOffSeconds = 2.0;
constexpr double dragOpenedSeconds = 1.6;

/// The milliseconds of a setting, held within its range, in seconds.
double seconds(const Setting<double>& milliseconds, double minimum, double maximum) {
    return std::clamp(milliseconds(), minimum, maximum) / 1000;
}

}  // namespace

AppDelegate::AppDelegate(const Desktop& desktop, const Shared& shared)
    : desktop_(desktop),
      shared_(shared),
      crashReporter_(shared.systemLog),
      appPolicy_(desktop.workspace, shared.settings),
      interferenceGuard_(desktop.runLoop),
      engine_(desktop.runLoop, desktop.keyEventTaps, desktop.preferences, desktop.pasteboard,
              &PermissionDiagnostics::printEventTapFailureHint,
              [this](qint64 changeCount) { interferenceGuard_.recordPotentialUserCopyKeyDown(changeCount); }),
      debugPanel_(desktop.runLoop, desktop.floatingPanels, desktop.screens, desktop.pasteboard,
                  desktop.preferences),
      permissions_(desktop.workspace, desktop.accessibility, desktop.keyEventTaps),
      pasteboardLoan_(desktop.pasteboard, desktop.runLoop),
      clipboardFallback_(desktop.workspace, desktop.pasteboard, pasteboardLoan_, desktop.keyPoster,
                         desktop.runLoop, interferenceGuard_),
      reader_(desktop.accessibility, desktop.workspace, desktop.preferences, &clipboardFallback_),
      locator_(desktop.accessibility, desktop.workspace, desktop.screens),
      smartSelectCopy_(desktop.workspace, desktop.pasteboard, pasteboardLoan_, desktop.keyPoster,
                       desktop.runLoop, interferenceGuard_),
      smartSelectReader_(desktop.accessibility, desktop.workspace, smartSelectCopy_),
      writeback_(desktop.accessibility, desktop.workspace, pasteboardLoan_, desktop.keyPoster,
                 desktop.runLoop, &clipboardFallback_),
      validator_(desktop.accessibility, desktop.workspace, shared.settings),
      expressions_(shared.client),
      actions_({desktop.runLoop, desktop.accessibility, shared.settings, engine_, debugPanel_, writeback_,
                validator_, expressions_, shared.expressionMemory, shared.behaviors, shared.client,
                shared.tasks, shared.sounds}),
      translation_(engine_, locator_, reader_, actions_),
      chosen_(desktop.runLoop, engine_, reader_, actions_),
      optimize_({desktop.runLoop, engine_, debugPanel_, locator_, shared.data.memoryActions, shared.agents,
                 shared.settings, chosen_, shared.sounds}),
      activeInteraction_(optimize_),
      smartSelectOverlay_({desktop.runLoop, desktop.floatingPanels, desktop.screens, desktop.pasteboard,
                           shared.agents, shared.settings, shared.sounds, shared.data.history,
                           shared.data.prompts, expressions_}),
      gates_(shared.settings, appPolicy_),
      smartSelect_({desktop.runLoop, desktop.mouseEventTaps, desktop.screens, shared.settings, appPolicy_,
                    smartSelectReader_,
                    shared.smartSelectSurface ? *shared.smartSelectSurface : smartSelectOverlay_}),
      authLinks_(desktop.preferences, [this] { showMainWindow(); }),
      quitShortcut_(desktop.keyEventTaps, desktop.runLoop, desktop.processControl) {
    authLinks_.account = shared_.account;
    smartSelectCopy_.onBorrowed =
        lifetime_.bind([this](bool isBorrowed) { shared_.data.clipboard.setPaused(isBorrowed); });
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    startDiagnostics();
    if (shared_.registerFonts) shared_.registerFonts();
    shared_.data.clipboard.startMonitoring();
    MVPLog::write("MVP App launched");
    permissions_.logAll();
    permissions_.promptAccessibilityIfNeeded();
    showMainWindow();
    quitShortcut_.start();
    if (shared_.settings.hasCompletedOnboarding())
        debugPanel_.showPanel(QStringLiteral("Veltrin Ready"), std::nullopt, readySeconds);
    smartSelect_.setupMouseSelectionMonitor();
    setupNotificationObservers();
    fillEngine();
    subscribeToSettings();
    warmUp();
}

/// Before all else, so that whatever fails after it is seen.
void AppDelegate::startDiagnostics() {
    crashReporter_.start();
    std::vector<std::unique_ptr<AnalyticsBackend>> backends;
    backends.push_back(std::make_unique<OSLogAnalyticsBackend>(
        shared_.systemLog, QStringLiteral("com.veltrin.app"), QStringLiteral("analytics")));
    shared_.analytics.setBackends(std::move(backends));
    shared_.analytics.track(QStringLiteral("launch"));
}

void AppDelegate::setupNotificationObservers() {
    for (const QString& name : {Notifications::showMainWindow, Notifications::showOnboarding}) {
        notificationObservers_.push_back(shared_.notifications.observe(name, lifetime_.bind([this] {
            desktop_.runLoop.post(lifetime_.bind([this] { showMainWindow(); }));
        })));
    }
}

void AppDelegate::fillEngine() {
    const AppSettings& settings = shared_.settings;
    engine_.isFrontmostAppAllowedForDouble =
        lifetime_.bind([this] { return appPolicy_.isFrontmostAppAllowed({}); });
    engine_.characterBeforeCursorProvider =
        lifetime_.bind([this] { return reader_.characterBeforeCursor(); });
    engine_.doubleSpaceMaximumInterval = [&settings] {
        return seconds(settings.doubleSpaceMaxIntervalMS, 120, 500);
    };
    engine_.doubleSpaceIdleGuard = [&settings] {
        return seconds(settings.doubleSpaceIdleGuardMS, 300, 2000);
    };
    engine_.tripleSpaceMaximumTailInterval = [&settings] {
        return seconds(settings.tripleSpaceTailIntervalMS, 120, 320);
    };
    engine_.tripleSpaceMaximumTotalInterval = [&settings] {
        return seconds(settings.tripleSpaceTotalIntervalMS, 300, 800);
    };
    fillEngineActions();
    fillEngineHooks();
}

void AppDelegate::fillEngineActions() {
    engine_.isActionAvailable =
        lifetime_.bind([this](CustomShortcutAction action) { return isActionAvailable(action); });
    engine_.onDouble = lifetime_.bind([this] { onDouble(); });
    engine_.onTriple = lifetime_.bind([this] { onTriple(); });
    engine_.onCustomShortcut = lifetime_.bind([this](CustomShortcutAction action) {
        desktop_.runLoop.post(lifetime_.bind([this, action] { handleCustomShortcut(action); }));
    });
}

void AppDelegate::fillEngineHooks() {
    const auto keyDown = [this](qint64 keyCode, bool isAutoRepeat) {
        return activeInteraction_.handleActiveInteractionKeyDown(keyCode, isAutoRepeat);
    };
    engine_.onKeyDownEvent = lifetime_.bind(keyDown);
    engine_.onKeyUpEvent =
        lifetime_.bind([this](qint64 keyCode) { return activeInteraction_.handleKeyUp(keyCode); });
    // Asked a second time about a key that nobody claimed; the answer is the same.
    engine_.onKeyDown = lifetime_.bind([keyDown](qint64 keyCode) { return keyDown(keyCode, false); });
}

/// A shortcut whose action does not exist is left to the application in front.
bool AppDelegate::isActionAvailable(CustomShortcutAction action) const {
    switch (action) {
        case CustomShortcutAction::optimize:
        case CustomShortcutAction::translation:
        case CustomShortcutAction::smartSelect:
            return true;
        case CustomShortcutAction::drag:
            return shared_.presentMainWindow != nullptr;
        case CustomShortcutAction::voice:
            break;
    }
    return false;
}

void AppDelegate::subscribeToSettings() {
    // Only changes pass, and each is acted on in a later turn; the first value is what starts the tap.
    const auto deliver = [this](bool enabled) {
        if (lastGesturesEnabled_ == enabled) return;
        lastGesturesEnabled_ = enabled;
        desktop_.runLoop.post(lifetime_.bind([this, enabled] { setGestureEngineEnabled(enabled); }));
    };
    settingsCancellable_ = shared_.settings.spaceGesturesEnabled.changed.subscribe(lifetime_.bind(deliver));
    deliver(shared_.settings.spaceGesturesEnabled());
}

void AppDelegate::setGestureEngineEnabled(bool enabled) {
    if (!enabled) {
        engine_.stop();
        MVPLog::write("SpaceGestureEngine stopped by settings");
        debugPanel_.showPanel(QStringLiteral("Global Gestures Off"), std::nullopt, gesturesOffSeconds);
        return;
    }
    if (engine_.start()) {
        MVPLog::write("SpaceGestureEngine started successfully");
    } else {
        MVPLog::write("SpaceGestureEngine failed to start");
        debugPanel_.showPanel(QStringLiteral("Input Monitoring Required"), std::nullopt, permissionSeconds);
    }
}

void AppDelegate::onDouble() {
    if (!gates_.allows(Trigger::doubleTap)) return;
    MVPLog::write("Double Space Triggered");
    desktop_.runLoop.post(lifetime_.bind([this] { optimize_.showOptimizeChoicePanel(); }));
}

void AppDelegate::onTriple() {
    if (!gates_.allows(Trigger::tripleTap)) return;
    MVPLog::write("Triple Space Triggered");
    translation_.start(desktop_.runLoop);
}

void AppDelegate::handleCustomShortcut(CustomShortcutAction action) {
    switch (action) {
        case CustomShortcutAction::optimize:
            if (gates_.allows(Trigger::optimizeShortcut)) optimize_.showOptimizeChoicePanel();
            break;
        case CustomShortcutAction::translation:
            if (gates_.allows(Trigger::translationShortcut)) translation_.start(desktop_.runLoop);
            break;
        case CustomShortcutAction::drag:
            if (gates_.allows(Trigger::dragShortcut)) openDragWorkbench();
            break;
        case CustomShortcutAction::smartSelect:
            if (gates_.allows(Trigger::smartSelectShortcut)) smartSelect_.handleShortcut();
            break;
        case CustomShortcutAction::voice:
            break;
    }
}

void AppDelegate::openDragWorkbench() {
    showMainWindow();
    shared_.notifications.post(Notifications::veltrinNavigateToDragWorkbench);
    debugPanel_.showPanel(QStringLiteral("拖拽入口已打开"), std::nullopt, dragOpenedSeconds);
}

void AppDelegate::warmUp() {
    // Nobody waits for it, and it never throws.
    shared_.client.warmup();
}

void AppDelegate::showMainWindow() {
    MVPLog::write("Main window requested");
    if (shared_.presentMainWindow) shared_.presentMainWindow();
}

bool AppDelegate::applicationShouldHandleReopen(bool) {
    showMainWindow();
    return false;
}

bool AppDelegate::applicationShouldTerminate() {
    engine_.stop();
    smartSelect_.stopMouseEventTap();
    return true;
}

void AppDelegate::applicationWillTerminate() {
    engine_.stop();
    smartSelect_.stopMouseEventTap();
    quitShortcut_.stop();
    // The user's clipboard does not wait for a timer that will never fire.
    smartSelectCopy_.giveBackPending();
    pasteboardLoan_.giveBackPending();
}

}  // namespace veltrin
