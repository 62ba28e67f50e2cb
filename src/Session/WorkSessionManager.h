#pragma once

#include "Foundation/Date.h"
#include "Foundation/Published.h"
#include "Foundation/RawValues.h"
#include "Platform/RunLoop.h"

#include <QString>

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace veltrin {

class NotificationCenter;
class Preferences;
class Workspace;

enum class PomodoroState { idle, focus, shortBreak };
template <>
inline constexpr auto rawValuesOf<PomodoroState> =
    std::to_array<const char*>({"idle", "focus", "shortBreak"});

/// One part of the usage chart.
struct UsageSlice {
    QString name;
    int count = 0;
    QString colorHex;
    friend bool operator==(const UsageSlice&, const UsageSlice&) = default;
};

/// What the home screen's cards show: the day's counters, the typing rate, fatigue, the pomodoro and the
/// focus clock. The counters stand in the preferences, a day at a time. Nothing counts key strokes, model
/// calls or uses yet; the members are there to be set by whoever will. Main thread.
class WorkSessionManager {
public:
    static constexpr int fatigueThresholdMinutes = 45;
    static constexpr int focusDuration = 1500;  ///< seconds
    static constexpr int breakDuration = 300;   ///< seconds

    /// Loads the day's counters. A process that stays up over midnight goes on counting into the old day, and
    /// writes under its date: only a launch begins a new one.
    WorkSessionManager(RunLoop& runLoop, Preferences& preferences, const Workspace& workspace,
                       NotificationCenter& notifications);
    WorkSessionManager(const WorkSessionManager&) = delete;
    WorkSessionManager& operator=(const WorkSessionManager&) = delete;

    Observers<> changed;

    Published<int> todayKeystrokes{changed};
    Published<int> todayAICalls{changed};
    Published<int> todayWordsProcessed{changed};
    Published<int> todayPomodorosCompleted{changed};
    Published<int> todayBreaksTaken{changed};
    Published<int> usageOptimize{changed};
    Published<int> usageTranslate{changed};
    Published<int> usageVoice{changed};
    Published<int> usageDrag{changed};
    Published<int> usageSmartSelect{changed};
    Published<int> usageReverse{changed};
    Published<double> currentWPM{
        changed};  ///< key strokes of the last minute; not divided by a word's length
    Published<double> averageWPM{changed};  ///< over the minutes in which something was typed
    Published<bool> isFatigued{changed};
    Published<int> continuousTypingMinutes{changed};
    Published<PomodoroState> pomodoroState{changed};
    Published<int> pomodoroSecondsRemaining{changed};
    Published<bool> focusModeEnabled{changed};
    Published<QString> focusAppName{changed};
    Published<QString> focusAppBundleID{changed};
    Published<std::optional<QString>> focusAppIcon{changed};  ///< the icon's name or file
    Published<int> focusElapsedSeconds{changed};

    std::vector<Date> recentKeystrokeTimes;
    std::optional<Date> lastKeystrokeTime;
    std::optional<Date> continuousTypingStart;
    const std::vector<double>& wpmSamples() const { return wpmSamples_; }

    /// Writes the counters and their day.
    void persistAll();

    /// One focus phase and one break; the next begins by hand.
    void startPomodoro();
    void stopPomodoro();
    /// From 0 at the start of a phase to 1 at its end.
    double pomodoroProgress() const;
    /// Minutes and seconds as "25:00".
    QString pomodoroTimeFormatted() const;

    /// Counts the seconds, and follows the application in front.
    void startFocusMode();
    void stopFocusMode();
    QString focusTimeFormatted() const;

    QString keystrokesFormatted() const;
    QString wordsFormatted() const;
    /// The features that were used at all.
    std::vector<UsageSlice> usageSlices() const;
    int totalFeatureUsage() const;

private:
    using Counter = std::pair<const char*, Published<int> WorkSessionManager::*>;
    static const std::array<Counter, 11> counters;

    Date now() const { return {runLoop_.wallNow()}; }
    QString today() const;
    void loadTodayData();
    void resetDaily();
    void monitorTick();
    void noticeFatigue();
    void noticeBreak();
    void measureRate();
    void runPomodoroTimer();
    void pomodoroTick();
    void pomodoroPhaseComplete();
    void updateFrontmostApp();

    RunLoop& runLoop_;
    Preferences& preferences_;
    const Workspace& workspace_;
    NotificationCenter& notifications_;
    QString day_;  ///< the one that is counted, as "2026-11-21" in the local time zone
    std::vector<double> wpmSamples_;
    std::optional<Date> focusStartDate_;
    Timer monitor_;
    Timer pomodoroTimer_;
    Timer focusTimer_;
};

}  // namespace veltrin
