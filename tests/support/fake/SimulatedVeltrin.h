#pragma once

#include "AI/AgentTeamManager.h"
#include "AI/ModelTasks.h"
#include "AI/OllamaClient.h"
#include "App/AppDelegate.h"
#include "Data/AppSettings.h"
#include "Data/DataStore.h"
#include "Expression/ExpressionMemoryStore.h"
#include "Session/UserBehaviorTracker.h"
#include "System/Analytics.h"
#include "System/InteractionSoundPlayer.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/FakeSystemLog.h"
#include "support/fake/SimulatedModel.h"

namespace veltrin {

/// The whole program on a simulated desktop. Set the desktop up first, its stored preferences above all; the
/// program is made by `launch`.
///
///     SimulatedVeltrin veltrin;
///     FakeTextField& field = veltrin.desktop.launch(u"Editor"_s,
///     u"org.example.Editor"_s).addField(u"Hallo"_s); veltrin.desktop.focus(field); veltrin.launch();
///     veltrin.model.answers(SimulatedModel::Reply::text(u"Hello."_s));
///     veltrin.tapTranslate();
///     veltrin.runUntilIdle();
class SimulatedVeltrin {
public:
    SimulatedVeltrin() = default;
    SimulatedVeltrin(const SimulatedVeltrin&) = delete;
    SimulatedVeltrin& operator=(const SimulatedVeltrin&) = delete;
    /// The program goes first; requests that are still open then fail.
    ~SimulatedVeltrin();

    /// Starts the program and lets it come to rest. Onboarding counts as done unless `preferences` says
    /// otherwise.
    void launch();
    bool isLaunched() const { return delegate_ != nullptr; }
    /// The orderly end, as at a quit or a SIGTERM.
    void quit();
    /// The process is gone without a word.
    void destroy() {
        delegate_.reset();
        sounds_.reset();
        tasks_.reset();
        agents_.reset();
        data_.reset();
    }

    AppDelegate& delegate() { return *delegate_; }
    AppSettings& settings();
    ExpressionMemoryStore& expressionMemory() { return expressionMemory_; }
    UserBehaviorTracker& behaviors() { return behaviors_; }
    DataStore& data() { return *data_; }
    AgentTeamManager& agents() { return *agents_; }
    ModelTasks& tasks() { return *tasks_; }

    void type(const QString& text) { desktop.keyboard.type(text); }
    /// Two taps of the space bar after a pause that lets them count; returns when the choice is open, or
    /// would be.
    void tapOptimize();
    /// Three taps of the space bar after a pause that lets them count.
    void tapTranslate();
    /// The stored shortcut of the translation, `translateKey` with Option unless a test stores another.
    void pressTranslateShortcut();

    /// Nothing is under way: no request, timer, panel or suspension. What runs for the whole of a run, as the
    /// look at the clipboard, does not count.
    bool isIdle() const;
    /// Lets time pass until that is so; false when it is not after `limit` seconds.
    bool runUntilIdle(double limit = 120);

    static constexpr qint64 translateKey = 17;  ///< T

    /// Of the stores, to be set before the launch. A folder that cannot be lets them work from memory: the
    /// disk would dominate a simulation's time.
    QString dataFolder = QStringLiteral("/dev/null/Veltrin");
    // What the program is lent, to be set before the launch.
    std::function<void()> presentMainWindow;
    AuthLinks::Account account;
    std::function<void()> registerFonts;
    SmartSelectSurface* smartSelectSurface = nullptr;

    FakeDesktop desktop;
    FakeSystemLog systemLog;
    SimulatedModel model{desktop.runLoop};
    NotificationCenter notifications;

private:
    std::optional<AppSettings> settings_;
    std::optional<OllamaClient> client_;
    ExpressionMemoryStore expressionMemory_{desktop.preferences};
    /// In a folder that cannot be, so that it works from memory: the disk would dominate a simulation's time.
    UserBehaviorTracker behaviors_{QStringLiteral("/dev/null/Veltrin"), desktop.runLoop};
    std::optional<DataStore> data_;
    std::optional<AgentTeamManager> agents_;
    std::optional<ModelTasks> tasks_;
    std::optional<InteractionSoundPlayer> sounds_;
    std::optional<Analytics> analytics_;
    std::unique_ptr<AppDelegate> delegate_;
};

}  // namespace veltrin
