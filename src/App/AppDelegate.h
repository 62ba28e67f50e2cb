#pragma once

#include "App/ActiveInteraction.h"
#include "App/AuthLinks.h"
#include "App/ChosenAction.h"
#include "App/DirectTranslation.h"
#include "App/ExternalActionHandler.h"
#include "App/OptimizeInteraction.h"
#include "App/QuitShortcut.h"
#include "App/SmartSelectOverlay.h"
#include "App/SmartSelectTrigger.h"
#include "App/TriggerGates.h"
#include "Debug/MVPDebugPanel.h"
#include "Engines/ExpressionRunner.h"
#include "ExternalAccess/ExternalTextClipboardFallback.h"
#include "ExternalAccess/ExternalTextInputLocator.h"
#include "ExternalAccess/ExternalTextInputReader.h"
#include "ExternalAccess/ExternalTextWriteback.h"
#include "ExternalAccess/PermissionDiagnostics.h"
#include "ExternalAccess/SmartSelectContentReader.h"
#include "ExternalAccess/WritebackTargetValidator.h"
#include "Foundation/Lifetime.h"
#include "Foundation/NotificationCenter.h"
#include "Gesture/SpaceGestureEngine.h"
#include "Gesture/SpaceGesturePolicy.h"
#include "Platform/Desktop.h"
#include "System/CrashReporter.h"

#include <optional>
#include <vector>

namespace veltrin {

class AgentTeamManager;
class Analytics;
class AppSettings;
struct DataStore;
class ExpressionMemoryStore;
class InteractionSoundPlayer;
class ModelTasks;
class OllamaClient;
class SmartSelectSurface;
class SystemLog;
class UserBehaviorTracker;

/// The spine of the process: owns the long-lived objects, turns the engine's raw callbacks into actions, and
/// brings the process up and down in order. The work of each interaction is done by an object of its own.
/// Main thread.
class AppDelegate {
public:
    /// Process-wide objects that outlive the delegate.
    struct Shared {
        AppSettings& settings;
        NotificationCenter& notifications;
        OllamaClient& client;
        ExpressionMemoryStore& expressionMemory;
        UserBehaviorTracker& behaviors;
        DataStore& data;
        ModelTasks& tasks;
        AgentTeamManager& agents;
        InteractionSoundPlayer& sounds;
        SystemLog& systemLog;
        Analytics& analytics;
        /// What the program may lack: its main window, its account, and fonts of its own.
        std::function<void()> presentMainWindow{};
        AuthLinks::Account account{};
        std::function<void()> registerFonts{};
        /// Stands beside selections in place of the program's own overlay.
        SmartSelectSurface* smartSelectSurface = nullptr;
    };

    AppDelegate(const Desktop& desktop, const Shared& shared);
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;
    ~AppDelegate();

    void applicationDidFinishLaunching();
    /// The program was started again or its icon was pressed. Always answers false: nothing is left to the
    /// caller.
    bool applicationShouldHandleReopen(bool hasVisibleWindows);
    /// Addresses that the desktop hands to this program, each in its order.
    void applicationOpen(const std::vector<QUrl>& urls) { authLinks_.open(urls); }
    /// True: the process may end now.
    bool applicationShouldTerminate();
    void applicationWillTerminate();

    void showMainWindow();
    void handleCustomShortcut(CustomShortcutAction action);

    SpaceGestureEngine& engine() { return engine_; }
    MVPDebugPanel& debugPanel() { return debugPanel_; }
    /// The interactions that come before the choice in the path of a key attach themselves here.
    ActiveInteraction& activeInteraction() { return activeInteraction_; }
    OptimizeInteraction& optimizeInteraction() { return optimize_; }
    SmartSelectOverlay& smartSelectOverlay() { return smartSelectOverlay_; }
    /// The overlay for drops attaches itself here.
    SmartSelectTrigger& smartSelectTrigger() { return smartSelect_; }

private:
    void startDiagnostics();
    void setupNotificationObservers();
    void fillEngine();
    void fillEngineActions();
    void fillEngineHooks();
    bool isActionAvailable(CustomShortcutAction action) const;
    void openDragWorkbench();
    void subscribeToSettings();
    void setGestureEngineEnabled(bool enabled);
    void onDouble();
    void onTriple();
    void warmUp();

    Desktop desktop_;
    Shared shared_;
    CrashReporter crashReporter_;
    SpaceGestureAppPolicy appPolicy_;
    ClipboardFallbackInterferenceGuard interferenceGuard_;
    SpaceGestureEngine engine_;
    MVPDebugPanel debugPanel_;
    PermissionDiagnostics permissions_;
    PasteboardLoan pasteboardLoan_;
    ExternalTextClipboardFallback clipboardFallback_;
    ExternalTextInputReader reader_;
    ExternalTextInputLocator locator_;
    SmartSelectClipboardCopy smartSelectCopy_;
    SmartSelectContentReader smartSelectReader_;
    ExternalTextWriteback writeback_;
    WritebackTargetValidator validator_;
    ExpressionRunner expressions_;
    ExternalActionHandler actions_;
    DirectTranslation translation_;
    ChosenAction chosen_;
    OptimizeInteraction optimize_;
    ActiveInteraction activeInteraction_;
    SmartSelectOverlay smartSelectOverlay_;
    TriggerGates gates_;
    SmartSelectTrigger smartSelect_;
    AuthLinks authLinks_;
    QuitShortcut quitShortcut_;
    std::vector<Subscription> notificationObservers_;
    Subscription settingsCancellable_;
    std::optional<bool> lastGesturesEnabled_;
    Lifetime lifetime_;
};

}  // namespace veltrin
