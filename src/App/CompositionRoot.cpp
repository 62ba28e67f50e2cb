#include "App/CompositionRoot.h"

#include "AI/AgentTeamManager.h"
#include "AI/OllamaClient.h"
#include "AI/TaskMaterial.h"
#include "App/AppDelegate.h"
#include "Data/AppSettings.h"
#include "Data/DataDirectory.h"
#include "Data/DataStore.h"
#include "Expression/ExpressionMemoryStore.h"
#include "Foundation/MVPLog.h"
#include "Platform/Linux/AtSpi/AtSpiAccessibility.h"
#include "Platform/Linux/DesktopEntries.h"
#include "Platform/Linux/FieldInspector.h"
#include "Platform/Linux/FilePreferences.h"
#include "Platform/Linux/LinuxDesktopAppearance.h"
#include "Platform/Linux/LinuxProcessControl.h"
#include "Platform/Linux/LinuxSystemEnvironment.h"
#include "Platform/Linux/LinuxSystemLog.h"
#include "Platform/Linux/Pulse/PulseSoundOutput.h"
#include "Platform/Linux/QtHttpClient.h"
#include "Platform/Linux/QtRunLoop.h"
#include "Platform/Linux/SessionLock.h"
#include "Platform/Linux/SingleInstance.h"
#include "Platform/Linux/X11/X11KeyEventTaps.h"
#include "Platform/Linux/X11/X11KeyPoster.h"
#include "Platform/Linux/X11/X11MouseEventTaps.h"
#include "Platform/Linux/X11/X11Pasteboard.h"
#include "Platform/Linux/X11/X11Screens.h"
#include "Platform/Linux/X11/X11Windows.h"
#include "Platform/Linux/X11/X11Workspace.h"
#include "Platform/Linux/X11TopLevelWindows.h"
#include "Session/UserBehaviorTracker.h"
#include "Session/WorkSessionManager.h"
#include "System/Analytics.h"
#include "System/InteractionSoundPlayer.h"
#include "UI/Design/FontManager.h"
#include "UI/Design/LookSource.h"
#include "UI/Design/VtLook.h"
#include "UI/Overlays/QuickFloatingPanels.h"
#include "UI/Tray/TrayItem.h"

#include <QApplication>
#include <QDBusConnection>
#include <QStandardPaths>

namespace veltrin {
namespace {

/// How long a post waits for the user to let go of a key that the tap holds.
constexpr std::chrono::milliseconds letGoLimit{100};

QString preferencesPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/Veltrin/preferences.json");
}

}  // namespace

/// In the order of need: each object may use those above it, and they end in the opposite order.
struct CompositionRoot::Objects {
    Objects(QApplication& application, SingleInstance& singleInstance)
        : instance(singleInstance), connection(X11Connection::open()), windows(*connection) {
        instance.activated = [this] { delegate.applicationShouldHandleReopen(false); };
        instance.opened = [this](const std::vector<QUrl>& urls) { delegate.applicationOpen(urls); };
        QObject::connect(&application, &QCoreApplication::aboutToQuit, &runLoop,
                         [this] { delegate.applicationWillTerminate(); });
    }

    void terminate() {
        if (delegate.applicationShouldTerminate()) QCoreApplication::quit();
    }

    SingleInstance& instance;
    LinuxSystemLog systemLog;
    QtRunLoop runLoop;
    std::unique_ptr<X11Connection> connection;
    X11Windows windows;
    DesktopEntries desktopEntries;
    X11Workspace workspace{windows, desktopEntries};
    X11Screens screens{*connection};
    X11Pasteboard pasteboard;
    X11KeyEventTaps keyEventTaps{runLoop};
    X11MouseEventTaps mouseEventTaps{runLoop};
    SessionLock sessionLock{QDBusConnection::sessionBus(), QDBusConnection::systemBus(), [this](bool locked) {
                                keyEventTaps.setSilent(locked);
                                mouseEventTaps.setSilent(locked);
                            }};
    X11TopLevelWindows topLevelWindows;
    AtSpiAccessibility accessibility{&topLevelWindows};
    FieldInspector inspector{accessibility};
    X11KeyPoster keyPoster{windows,
                           {[this] { keyEventTaps.letGo(letGoLimit); }, &inspector,
                            [this](quint64 window) { pasteboard.pastePosted(window); }}};
    FilePreferences preferences{preferencesPath()};
    QtHttpClient httpClient;
    LinuxDesktopAppearance appearance;
    LinuxSystemEnvironment environment{appearance};
    LinuxProcessControl processControl{[this] { terminate(); }, [this] { instance.release(); }};
    NotificationCenter notifications;
    AppSettings settings{preferences, notifications, environment};
    Analytics analytics{settings};
    VtLook look{nullptr};
    LookSource lookSource{look, settings, appearance};
    QuickFloatingPanels floatingPanels{screens, look};
    OllamaClient client{httpClient, settings};
    AgentTeamManager agents{appSupportDir(environment), preferences, runLoop};
    ExpressionMemoryStore expressionMemory{preferences};
    DataStore data{appSupportDir(environment), runLoop, pasteboard, workspace, preferences};
    ModelTasks tasks{client, settings, runLoop, taskMaterial(agents, data.dictionary, data.history)};
    WorkSessionManager workSession{runLoop, preferences, workspace, notifications};
    UserBehaviorTracker behaviors{appSupportDir(environment), runLoop};
    PulseSoundOutput soundOutput;
    InteractionSoundPlayer sounds{runLoop, soundOutput, settings};
    AppDelegate delegate{
        Desktop{runLoop, keyEventTaps, mouseEventTaps, keyPoster, accessibility, pasteboard, workspace,
                screens, preferences, httpClient, floatingPanels, processControl, environment},
        AppDelegate::Shared{settings,
                            notifications,
                            client,
                            expressionMemory,
                            behaviors,
                            data,
                            tasks,
                            agents,
                            sounds,
                            systemLog,
                            analytics,
                            nullptr,
                            {},
                            [] { FontManager::registerAll(); }}};
    TrayItem tray{{nullptr, [this] { terminate(); }}};
};

CompositionRoot::CompositionRoot(QApplication& application, SingleInstance& instance)
    : objects_(std::make_unique<Objects>(application, instance)) {
}

CompositionRoot::~CompositionRoot() = default;

void CompositionRoot::launch() {
    objects_->delegate.applicationDidFinishLaunching();
    objects_->floatingPanels.prepare();
    objects_->tray.show();
}

void CompositionRoot::open(const QStringList& urls) {
    if (!urls.isEmpty()) objects_->instance.Open(urls, {});
}

void CompositionRoot::terminate() {
    objects_->terminate();
}

}  // namespace veltrin
