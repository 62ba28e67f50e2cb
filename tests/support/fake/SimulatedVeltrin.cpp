#include "support/fake/SimulatedVeltrin.h"

#include "AI/TaskMaterial.h"

namespace veltrin {
namespace {

constexpr double idleStep = 0.1;
/// The look at the clipboard.
constexpr std::size_t standingTimers = 1;
/// Longer than the double tap's longest idle guard.
constexpr double pauseBeforeTaps = 2.1;
/// Longer than a third tap is waited for.
constexpr double longestTail = 0.33;

void putIfAbsent(FakePreferences& preferences, const char* key, PreferenceValue value) {
    preferences.values.try_emplace(QString::fromUtf8(key), std::move(value));
}

}  // namespace

SimulatedVeltrin::~SimulatedVeltrin() {
    delegate_.reset();
    model.cancelAll();
}

AppSettings& SimulatedVeltrin::settings() {
    if (!settings_) {
        putIfAbsent(desktop.preferences, "hasCompletedOnboarding", true);
        putIfAbsent(desktop.preferences, "shortcut_translation", QStringLiteral("⌥|T"));
        settings_.emplace(desktop.preferences, notifications, desktop.environment);
    }
    return *settings_;
}

void SimulatedVeltrin::launch() {
    client_.emplace(model, settings());
    data_.emplace(dataFolder, desktop.runLoop, desktop.pasteboard, desktop.workspace, desktop.preferences);
    agents_.emplace(dataFolder, desktop.preferences, desktop.runLoop);
    tasks_.emplace(*client_, settings(), desktop.runLoop,
                   taskMaterial(*agents_, data_->dictionary, data_->history));
    sounds_.emplace(desktop.runLoop, desktop.soundOutput, settings());
    analytics_.emplace(settings());
    delegate_ = std::make_unique<AppDelegate>(
        desktop.desktop(),
        AppDelegate::Shared{settings(), notifications, *client_, expressionMemory_, behaviors_, *data_,
                            *tasks_, *agents_, *sounds_, systemLog, *analytics_, presentMainWindow, account,
                            registerFonts, smartSelectSurface});
    delegate_->applicationDidFinishLaunching();
    desktop.runLoop.runDue();
}

void SimulatedVeltrin::quit() {
    if (delegate_->applicationShouldTerminate()) delegate_->applicationWillTerminate();
}

void SimulatedVeltrin::tapOptimize() {
    desktop.advance(pauseBeforeTaps);
    desktop.keyboard.tapSpaces(2);
    desktop.advance(longestTail);
}

void SimulatedVeltrin::tapTranslate() {
    desktop.advance(pauseBeforeTaps);
    desktop.keyboard.tapSpaces(3);
    desktop.runLoop.runDue();
}

void SimulatedVeltrin::pressTranslateShortcut() {
    desktop.keyboard.chord(translateKey, KeyFlags::option);
    desktop.runLoop.runDue();
}

bool SimulatedVeltrin::isIdle() const {
    return model.pending() == 0 && desktop.runLoop.pendingTimers() == (data_ ? standingTimers : 0) &&
           desktop.floatingPanels.openCount() == 0 &&
           (!delegate_ || delegate_->engine().eventTapSuspendCount() == 0);
}

bool SimulatedVeltrin::runUntilIdle(double limit) {
    const double end = desktop.now() + limit;
    while (!isIdle() && desktop.now() < end)
        desktop.advance(idleStep);
    return isIdle();
}

}  // namespace veltrin
