#include "Session/WorkSessionManager.h"

#include "Foundation/NotificationCenter.h"
#include "Platform/Preferences.h"
#include "Platform/Workspace.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace veltrin {
namespace {

const QString dateKey = QStringLiteral("ws_today_date");

constexpr double monitorSeconds = 30;
constexpr double clockSeconds = 1;
constexpr double breakAfterSeconds = 300;
constexpr double rateSeconds = 60;
constexpr std::size_t maximumSamples = 100;

/// The whole of a stored number; the preferences could hold any.
int wholeNumber(double number) {
    constexpr double most = std::numeric_limits<int>::max();
    return std::isnan(number) ? 0 : static_cast<int>(std::clamp(number, -most, most));
}

int wholeSecondsSince(Date from, Date to) {
    return wholeNumber(to.secondsSince1970 - from.secondsSince1970);
}

QString clockText(int seconds) {
    return QString::asprintf("%02d:%02d", seconds / 60, seconds % 60);
}

QString shortNumber(int number) {
    return number >= 10000 ? QString::asprintf("%.1fk", number / 1000.0) : QString::number(number);
}

}  // namespace

const std::array<WorkSessionManager::Counter, 11> WorkSessionManager::counters{{
    {"ws_today_keystrokes", &WorkSessionManager::todayKeystrokes},
    {"ws_today_ai_calls", &WorkSessionManager::todayAICalls},
    {"ws_today_words_processed", &WorkSessionManager::todayWordsProcessed},
    {"ws_today_pomodoros", &WorkSessionManager::todayPomodorosCompleted},
    {"ws_usage_breaks", &WorkSessionManager::todayBreaksTaken},
    {"ws_usage_optimize", &WorkSessionManager::usageOptimize},
    {"ws_usage_translate", &WorkSessionManager::usageTranslate},
    {"ws_usage_voice", &WorkSessionManager::usageVoice},
    {"ws_usage_drag", &WorkSessionManager::usageDrag},
    {"ws_usage_smart_select", &WorkSessionManager::usageSmartSelect},
    {"ws_usage_reverse", &WorkSessionManager::usageReverse},
}};

WorkSessionManager::WorkSessionManager(RunLoop& runLoop, Preferences& preferences, const Workspace& workspace,
                                       NotificationCenter& notifications)
    : runLoop_(runLoop), preferences_(preferences), workspace_(workspace), notifications_(notifications) {
    pomodoroSecondsRemaining.set(focusDuration);
    loadTodayData();
    monitor_ = runLoop_.every(monitorSeconds, [this] { monitorTick(); });
}

QString WorkSessionManager::today() const {
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(runLoop_.wallNow())), Qt::LocalTime)
        .toString(QStringLiteral("yyyy-MM-dd"));
}

void WorkSessionManager::loadTodayData() {
    day_ = today();
    if (preferences_.string(dateKey) != day_) {
        resetDaily();
        return;
    }
    for (const auto& [key, member] : counters)
        (this->*member).set(wholeNumber(preferences_.real(QString::fromUtf8(key)).value_or(0)));
}

void WorkSessionManager::resetDaily() {
    for (const auto& [key, member] : counters)
        (this->*member).set(0);
    persistAll();
}

void WorkSessionManager::persistAll() {
    for (const auto& [key, member] : counters)
        preferences_.set(QString::fromUtf8(key), static_cast<double>((this->*member)()));
    preferences_.set(dateKey, day_);
}

void WorkSessionManager::monitorTick() {
    noticeFatigue();
    noticeBreak();
    measureRate();
}

void WorkSessionManager::noticeFatigue() {
    if (!continuousTypingStart) return;
    continuousTypingMinutes.set(wholeSecondsSince(*continuousTypingStart, now()) / 60);
    if (continuousTypingMinutes() < fatigueThresholdMinutes || isFatigued()) return;
    isFatigued.set(true);
    notifications_.post(Notifications::veltrinFatigueReminder);
}

void WorkSessionManager::noticeBreak() {
    if (!lastKeystrokeTime) return;
    if (now().secondsSince1970 - lastKeystrokeTime->secondsSince1970 <= breakAfterSeconds) return;
    continuousTypingStart.reset();
    continuousTypingMinutes.set(0);
    // Rest counts as a break only when it ends a fatigued state.
    if (!isFatigued()) return;
    isFatigued.set(false);
    todayBreaksTaken.set(todayBreaksTaken() + 1);
    persistAll();
}

void WorkSessionManager::measureRate() {
    std::erase_if(recentKeystrokeTimes,
                  [&](Date at) { return now().secondsSince1970 - at.secondsSince1970 > rateSeconds; });
    currentWPM.set(static_cast<double>(recentKeystrokeTimes.size()));
    // An idle minute does not lower the average.
    if (currentWPM() <= 0) return;
    if (wpmSamples_.size() >= maximumSamples) wpmSamples_.erase(wpmSamples_.begin());
    wpmSamples_.push_back(currentWPM());
    averageWPM.set(std::accumulate(wpmSamples_.begin(), wpmSamples_.end(), 0.0) /
                   static_cast<double>(wpmSamples_.size()));
}

void WorkSessionManager::startPomodoro() {
    pomodoroState.set(PomodoroState::focus);
    pomodoroSecondsRemaining.set(focusDuration);
    runPomodoroTimer();
}

void WorkSessionManager::runPomodoroTimer() {
    pomodoroTimer_ = runLoop_.every(clockSeconds, [this] { pomodoroTick(); });
}

void WorkSessionManager::pomodoroTick() {
    if (pomodoroSecondsRemaining() < 1) {
        pomodoroPhaseComplete();
    } else {
        pomodoroSecondsRemaining.set(pomodoroSecondsRemaining() - 1);
    }
}

void WorkSessionManager::pomodoroPhaseComplete() {
    pomodoroTimer_.invalidate();
    if (pomodoroState() == PomodoroState::focus) {
        todayPomodorosCompleted.set(todayPomodorosCompleted() + 1);
        persistAll();
        pomodoroState.set(PomodoroState::shortBreak);
        pomodoroSecondsRemaining.set(breakDuration);
        notifications_.post(Notifications::veltrinPomodoroBreak);
        runPomodoroTimer();
    } else {
        pomodoroState.set(PomodoroState::idle);
        pomodoroSecondsRemaining.set(focusDuration);
        notifications_.post(Notifications::veltrinPomodoroResume);
    }
}

void WorkSessionManager::stopPomodoro() {
    pomodoroTimer_.invalidate();
    pomodoroState.set(PomodoroState::idle);
    pomodoroSecondsRemaining.set(focusDuration);
}

double WorkSessionManager::pomodoroProgress() const {
    const double length = pomodoroState() == PomodoroState::shortBreak ? breakDuration : focusDuration;
    return 1 - pomodoroSecondsRemaining() / length;
}

QString WorkSessionManager::pomodoroTimeFormatted() const {
    return clockText(pomodoroSecondsRemaining());
}

void WorkSessionManager::startFocusMode() {
    focusModeEnabled.set(true);
    focusStartDate_ = now();
    focusElapsedSeconds.set(0);
    updateFrontmostApp();
    focusTimer_ = runLoop_.every(clockSeconds, [this] {
        if (focusStartDate_) focusElapsedSeconds.set(wholeSecondsSince(*focusStartDate_, now()));
        updateFrontmostApp();
    });
}

void WorkSessionManager::stopFocusMode() {
    focusModeEnabled.set(false);
    focusTimer_.invalidate();
    focusElapsedSeconds.set(0);
    focusAppName.set({});
    focusAppBundleID.set({});
}

void WorkSessionManager::updateFrontmostApp() {
    const auto front = workspace_.frontmostApplication();
    if (!front) return;
    focusAppName.set(front->localizedName.value_or(QStringLiteral("Unknown")));
    const QString bundleID = front->bundleIdentifier.value_or(QString());
    if (bundleID == focusAppBundleID()) return;
    focusAppBundleID.set(bundleID);
    focusAppIcon.set(front->icon);
}

QString WorkSessionManager::focusTimeFormatted() const {
    return clockText(focusElapsedSeconds());
}

QString WorkSessionManager::keystrokesFormatted() const {
    return shortNumber(todayKeystrokes());
}

QString WorkSessionManager::wordsFormatted() const {
    return shortNumber(todayWordsProcessed());
}

std::vector<UsageSlice> WorkSessionManager::usageSlices() const {
    std::vector<UsageSlice> slices{{QStringLiteral("优化"), usageOptimize(), QStringLiteral("#FFE066")},
                                   {QStringLiteral("翻译"), usageTranslate(), QStringLiteral("#A7F3D0")},
                                   {QStringLiteral("语音"), usageVoice(), QStringLiteral("#DDD6FE")},
                                   {QStringLiteral("拖拽"), usageDrag(), QStringLiteral("#FBCFE8")},
                                   {QStringLiteral("选中"), usageSmartSelect(), QStringLiteral("#BAE6FD")},
                                   {QStringLiteral("反推"), usageReverse(), QStringLiteral("#FED7AA")}};
    std::erase_if(slices, [](const UsageSlice& slice) { return slice.count < 1; });
    return slices;
}

int WorkSessionManager::totalFeatureUsage() const {
    double total = 0;
    for (const auto* usage :
         {&usageOptimize, &usageTranslate, &usageVoice, &usageDrag, &usageSmartSelect, &usageReverse})
        total += (*usage)();
    return wholeNumber(total);
}

}  // namespace veltrin
