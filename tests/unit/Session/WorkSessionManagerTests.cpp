#include "Foundation/NotificationCenter.h"
#include "Session/WorkSessionManager.h"
#include "support/fake/FakeDesktop.h"

#include <QDateTime>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class WorkSessionTest : public testing::Test {
protected:
    WorkSessionTest() {
        for (const QString& name :
             {Notifications::veltrinFatigueReminder, Notifications::veltrinPomodoroBreak,
              Notifications::veltrinPomodoroResume})
            observers_.push_back(notifications.observe(name, [this, name] { posted << name; }));
    }
    std::unique_ptr<WorkSessionManager> launch() {
        return std::make_unique<WorkSessionManager>(loop, preferences, desktop.workspace, notifications);
    }
    Date secondsAgo(double seconds) const { return {loop.wallNow() - seconds}; }
    QString today() const {
        return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(loop.wallNow())).toString(u"yyyy-MM-dd"_s);
    }
    void stored(const char* key, double value) { preferences.values[QString::fromUtf8(key)] = value; }
    double storedNumber(const char* key) const {
        return preferences.real(QString::fromUtf8(key)).value_or(-1);
    }
    /// Until the monitor has looked once.
    void tick() { loop.advance(30); }

    FakeDesktop desktop;
    FakeRunLoop& loop = desktop.runLoop;
    FakePreferences preferences;
    NotificationCenter notifications;
    QStringList posted;

private:
    std::vector<Subscription> observers_;
};

TEST_F(WorkSessionTest, aDayThatIsStoredIsLoaded) {
    preferences.values[u"ws_today_date"_s] = today();
    stored("ws_today_keystrokes", 12345);
    stored("ws_today_ai_calls", 2);
    stored("ws_today_words_processed", 9999);
    stored("ws_today_pomodoros", 4);
    stored("ws_usage_breaks", 5);
    stored("ws_usage_optimize", 6);
    stored("ws_usage_translate", 7);
    stored("ws_usage_voice", 8);
    stored("ws_usage_drag", 9);
    stored("ws_usage_smart_select", 10);
    const auto session = launch();
    EXPECT_EQ(session->todayKeystrokes(), 12345);
    EXPECT_EQ(session->todayAICalls(), 2);
    EXPECT_EQ(session->todayWordsProcessed(), 9999);
    EXPECT_EQ(session->todayPomodorosCompleted(), 4);
    EXPECT_EQ(session->todayBreaksTaken(), 5);
    EXPECT_EQ(session->usageOptimize(), 6);
    EXPECT_EQ(session->usageTranslate(), 7);
    EXPECT_EQ(session->usageVoice(), 8);
    EXPECT_EQ(session->usageDrag(), 9);
    EXPECT_EQ(session->usageSmartSelect(), 10);
    EXPECT_EQ(session->usageReverse(), 0) << "an absent key reads 0";
    EXPECT_TRUE(preferences.writes.empty());
}

TEST_F(WorkSessionTest, aStoredDateOfYesterdayResetsAllCountersAndWritesTodaysDate) {
    preferences.values[u"ws_today_date"_s] = u"2001-01-01"_s;
    stored("ws_today_keystrokes", 12);
    stored("ws_usage_reverse", 3);
    const auto session = launch();
    EXPECT_EQ(session->todayKeystrokes(), 0);
    EXPECT_EQ(session->usageReverse(), 0);
    EXPECT_EQ(preferences.string(u"ws_today_date"_s), today());
    for (const char* key :
         {"ws_today_keystrokes", "ws_today_ai_calls", "ws_today_words_processed", "ws_today_pomodoros",
          "ws_usage_breaks", "ws_usage_optimize", "ws_usage_translate", "ws_usage_voice", "ws_usage_drag",
          "ws_usage_smart_select", "ws_usage_reverse"})
        EXPECT_EQ(storedNumber(key), 0) << key;
}

TEST_F(WorkSessionTest, withNoStoredDateTheDayBegins) {
    launch();
    EXPECT_EQ(preferences.string(u"ws_today_date"_s), today());
}

TEST_F(WorkSessionTest, overMidnightItGoesOnCountingIntoTheOldDay) {
    const auto session = launch();
    const QString oldDay = today();
    session->todayAICalls.set(3);
    loop.advance(25 * 3600.0);
    EXPECT_EQ(session->todayAICalls(), 3);
    session->persistAll();
    EXPECT_EQ(preferences.string(u"ws_today_date"_s), oldDay);
    EXPECT_EQ(launch()->todayAICalls(), 0) << "which the next launch finds to be over";
    EXPECT_EQ(preferences.string(u"ws_today_date"_s), today());
}

TEST_F(WorkSessionTest, allCountersAreWrittenAndReadBack) {
    const auto session = launch();
    int number = 0;
    const auto all = {&WorkSessionManager::todayKeystrokes,     &WorkSessionManager::todayAICalls,
                      &WorkSessionManager::todayWordsProcessed, &WorkSessionManager::todayPomodorosCompleted,
                      &WorkSessionManager::todayBreaksTaken,    &WorkSessionManager::usageOptimize,
                      &WorkSessionManager::usageTranslate,      &WorkSessionManager::usageVoice,
                      &WorkSessionManager::usageDrag,           &WorkSessionManager::usageSmartSelect,
                      &WorkSessionManager::usageReverse};
    for (const auto member : all)
        ((*session).*member).set(++number);
    session->persistAll();
    const auto again = launch();
    number = 0;
    for (const auto member : all)
        EXPECT_EQ(((*again).*member)(), ++number);
}

TEST_F(WorkSessionTest, storedNumbersOfAnySizeAreNoHarm) {
    preferences.values[u"ws_today_date"_s] = today();
    stored("ws_today_keystrokes", 1e300);
    stored("ws_usage_optimize", 1e300);
    stored("ws_usage_voice", 1e300);
    preferences.values[u"ws_today_ai_calls"_s] = u"many"_s;
    const auto session = launch();
    EXPECT_GT(session->todayKeystrokes(), 0);
    EXPECT_GT(session->totalFeatureUsage(), 0);
    EXPECT_EQ(session->todayAICalls(), 0);
}

TEST_F(WorkSessionTest, fatigueBeginsAtFortyFiveMinutesAndRemindsOnce) {
    const auto session = launch();
    session->continuousTypingStart = secondsAgo(44 * 60);
    tick();
    EXPECT_EQ(session->continuousTypingMinutes(), 44);
    EXPECT_FALSE(session->isFatigued());
    tick();
    EXPECT_EQ(session->continuousTypingMinutes(), 45);
    EXPECT_TRUE(session->isFatigued());
    EXPECT_EQ(posted, QStringList{u"veltrinFatigueReminder"_s});
    loop.advance(300);
    EXPECT_EQ(posted.size(), 1);
}

TEST_F(WorkSessionTest, restAfterAFatiguedRunCountsAsABreak) {
    const auto session = launch();
    session->continuousTypingStart = secondsAgo(50 * 60);
    tick();
    ASSERT_TRUE(session->isFatigued());
    session->lastKeystrokeTime = secondsAgo(270);
    tick();
    EXPECT_TRUE(session->isFatigued()) << "300 seconds are no rest yet";
    session->lastKeystrokeTime = secondsAgo(271);
    tick();
    EXPECT_FALSE(session->isFatigued());
    EXPECT_FALSE(session->continuousTypingStart);
    EXPECT_EQ(session->continuousTypingMinutes(), 0);
    EXPECT_EQ(session->todayBreaksTaken(), 1);
    EXPECT_EQ(storedNumber("ws_usage_breaks"), 1);
    loop.advance(300);
    EXPECT_EQ(session->todayBreaksTaken(), 1);
}

TEST_F(WorkSessionTest, restAfterAnUntiredRunEndsItWithoutACount) {
    const auto session = launch();
    session->continuousTypingStart = secondsAgo(20 * 60);
    session->lastKeystrokeTime = secondsAgo(271);
    tick();
    EXPECT_FALSE(session->continuousTypingStart);
    EXPECT_EQ(session->todayBreaksTaken(), 0);
}

TEST_F(WorkSessionTest, theRateIsTheKeyStrokesOfTheLastMinute) {
    const auto session = launch();
    session->recentKeystrokeTimes = {secondsAgo(31), secondsAgo(30), secondsAgo(1)};
    tick();
    EXPECT_EQ(session->currentWPM(), 2);
    EXPECT_EQ(session->averageWPM(), 2);
    session->recentKeystrokeTimes = {secondsAgo(0), secondsAgo(0), secondsAgo(0), secondsAgo(0)};
    tick();
    EXPECT_EQ(session->averageWPM(), 3);
    loop.advance(120);
    EXPECT_EQ(session->currentWPM(), 0);
    EXPECT_EQ(session->wpmSamples().back(), 4);
    EXPECT_GT(session->averageWPM(), 3) << "idle minutes do not lower the average";
}

TEST_F(WorkSessionTest, thereAreNeverMoreThanAHundredSamples) {
    const auto session = launch();
    for (int i = 0; i < 130; ++i) {
        session->recentKeystrokeTimes.assign(i < 30 ? 1 : 2, secondsAgo(0));
        tick();
        EXPECT_LE(session->wpmSamples().size(), 100U);
    }
    EXPECT_EQ(session->wpmSamples().size(), 100U);
    EXPECT_EQ(session->averageWPM(), 2) << "the oldest went first";
}

TEST_F(WorkSessionTest, aPomodoroIsOneFocusPhaseAndOneBreak) {
    const auto session = launch();
    session->startPomodoro();
    EXPECT_EQ(session->pomodoroState(), PomodoroState::focus);
    EXPECT_EQ(session->pomodoroTimeFormatted(), u"25:00"_s);
    EXPECT_EQ(session->pomodoroProgress(), 0);
    loop.advance(1500);
    EXPECT_EQ(session->pomodoroState(), PomodoroState::focus);
    EXPECT_EQ(session->pomodoroTimeFormatted(), u"00:00"_s);
    EXPECT_EQ(session->pomodoroProgress(), 1);
    loop.advance(1);
    EXPECT_EQ(session->pomodoroState(), PomodoroState::shortBreak);
    EXPECT_EQ(session->pomodoroSecondsRemaining(), 300);
    EXPECT_EQ(session->pomodoroProgress(), 0);
    EXPECT_EQ(session->todayPomodorosCompleted(), 1);
    EXPECT_EQ(storedNumber("ws_today_pomodoros"), 1);
    loop.advance(301);
    EXPECT_EQ(session->pomodoroState(), PomodoroState::idle);
    EXPECT_EQ(session->pomodoroSecondsRemaining(), 1500);
    EXPECT_EQ(posted, (QStringList{u"veltrinPomodoroBreak"_s, u"veltrinPomodoroResume"_s}));
    loop.advance(3600);
    EXPECT_EQ(session->pomodoroState(), PomodoroState::idle) << "the next cycle starts by hand";
    EXPECT_EQ(session->todayPomodorosCompleted(), 1);
}

TEST_F(WorkSessionTest, stoppingAPomodoroChangesNoCount) {
    const auto session = launch();
    session->startPomodoro();
    loop.advance(100);
    session->startPomodoro();
    EXPECT_EQ(session->pomodoroSecondsRemaining(), 1500);
    loop.advance(100);
    EXPECT_EQ(session->pomodoroSecondsRemaining(), 1400) << "one timer, not two";
    session->stopPomodoro();
    loop.advance(3600);
    EXPECT_EQ(session->pomodoroState(), PomodoroState::idle);
    EXPECT_EQ(session->pomodoroSecondsRemaining(), 1500);
    EXPECT_EQ(session->todayPomodorosCompleted(), 0);
    EXPECT_TRUE(posted.isEmpty());
}

TEST_F(WorkSessionTest, focusFollowsTheApplicationInFront) {
    FakeApplication& editor = desktop.workspace.launch(u"Editor"_s, u"org.editor"_s);
    editor.icon = u"editor-icon"_s;
    FakeApplication& nameless = desktop.workspace.launch({}, std::nullopt);
    nameless.name.reset();
    desktop.workspace.bringToFront(&editor);
    const auto session = launch();
    session->startFocusMode();
    EXPECT_TRUE(session->focusModeEnabled());
    EXPECT_EQ(session->focusAppName(), u"Editor"_s);
    EXPECT_EQ(session->focusAppBundleID(), u"org.editor"_s);
    EXPECT_EQ(session->focusAppIcon(), u"editor-icon"_s);
    editor.icon = u"later"_s;
    loop.advance(75);
    EXPECT_EQ(session->focusAppIcon(), u"editor-icon"_s) << "fetched only when the application changes";
    EXPECT_EQ(session->focusElapsedSeconds(), 75);
    EXPECT_EQ(session->focusTimeFormatted(), u"01:15"_s);
    desktop.workspace.bringToFront(nullptr);
    loop.advance(1);
    EXPECT_EQ(session->focusAppName(), u"Editor"_s) << "with nothing in front nothing changes";
    desktop.workspace.bringToFront(&nameless);
    loop.advance(1);
    EXPECT_EQ(session->focusAppName(), u"Unknown"_s);
    session->stopFocusMode();
    EXPECT_FALSE(session->focusModeEnabled());
    EXPECT_EQ(session->focusAppName(), QString());
    EXPECT_EQ(session->focusAppBundleID(), QString());
    EXPECT_EQ(session->focusElapsedSeconds(), 0);
    loop.advance(10);
    EXPECT_EQ(session->focusElapsedSeconds(), 0);
}

TEST_F(WorkSessionTest, numbersFromTenThousandOnAreShortened) {
    const auto session = launch();
    session->todayKeystrokes.set(9999);
    session->todayWordsProcessed.set(12345);
    EXPECT_EQ(session->keystrokesFormatted(), u"9999"_s);
    EXPECT_EQ(session->wordsFormatted(), u"12.3k"_s);
}

TEST_F(WorkSessionTest, theUsageChartHoldsWhatWasUsed) {
    const auto session = launch();
    EXPECT_TRUE(session->usageSlices().empty());
    session->usageReverse.set(2);
    session->usageTranslate.set(1);
    EXPECT_EQ(session->usageSlices(),
              (std::vector<UsageSlice>{{u"翻译"_s, 1, u"#A7F3D0"_s}, {u"反推"_s, 2, u"#FED7AA"_s}}));
    EXPECT_EQ(session->totalFeatureUsage(), 3);
    for (auto* usage :
         {&session->usageOptimize, &session->usageVoice, &session->usageDrag, &session->usageSmartSelect})
        usage->set(1);
    EXPECT_EQ(session->usageSlices(), (std::vector<UsageSlice>{{u"优化"_s, 1, u"#FFE066"_s},
                                                               {u"翻译"_s, 1, u"#A7F3D0"_s},
                                                               {u"语音"_s, 1, u"#DDD6FE"_s},
                                                               {u"拖拽"_s, 1, u"#FBCFE8"_s},
                                                               {u"选中"_s, 1, u"#BAE6FD"_s},
                                                               {u"反推"_s, 2, u"#FED7AA"_s}}));
    EXPECT_EQ(session->totalFeatureUsage(), 7);
}

TEST(PomodoroState, isStoredByTheNamesOfItsCases) {
    EXPECT_EQ(rawValue(PomodoroState::idle), u"idle"_s);
    EXPECT_EQ(rawValue(PomodoroState::focus), u"focus"_s);
    EXPECT_EQ(rawValue(PomodoroState::shortBreak), u"shortBreak"_s);
}

TEST_F(WorkSessionTest, observersAreTold) {
    const auto session = launch();
    int told = 0;
    const auto subscription = session->changed.subscribe([&] { ++told; });
    session->todayAICalls.set(1);
    EXPECT_EQ(told, 1);
}

TEST_F(WorkSessionTest, nothingOfItOutlivesIt) {
    auto session = launch();
    session->startPomodoro();
    session->startFocusMode();
    session.reset();
    EXPECT_EQ(loop.pendingTimers(), 0U);
}

}  // namespace
}  // namespace veltrin
