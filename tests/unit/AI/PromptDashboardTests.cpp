#include "AI/PromptDashboard.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <stdexcept>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using namespace PromptDashboard;

const QTimeZone shanghai("Asia/Shanghai");
const QTimeZone berlin("Europe/Berlin");

Date at(const QString& localTime, const QTimeZone& zone = shanghai) {
    const QDateTime parsed = QDateTime::fromString(localTime, u"yyyy-MM-dd HH:mm:ss"_s);
    return {static_cast<double>(QDateTime(parsed.date(), parsed.time(), zone).toSecsSinceEpoch())};
}

std::vector<Date> entries(const QStringList& localTimes, const QTimeZone& zone = shanghai) {
    std::vector<Date> moments;
    for (const QString& each : localTimes)
        moments.push_back(at(each, zone));
    return moments;
}

PromptText prompt(const QString& content) {
    return {{}, content};
}

const PromptText whole = prompt(u"角色：a\n任务：b\n背景：c\n要求：d\n格式：e"_s);
const PromptText taskOnly = prompt(u"a"_s);

TEST(PromptDashboard, countsTheEntriesOfSevenDays) {
    const Date now = at(u"2026-11-21 10:00:00"_s);
    EXPECT_EQ(sevenDayCount(entries({u"2026-11-21 09:59:59"_s, u"2026-11-14 10:00:01"_s,
                                     u"2026-11-14 10:00:00"_s, u"2026-11-01 00:00:00"_s}),
                            now, shanghai),
              2);
    EXPECT_EQ(sevenDayCount({}, now, shanghai), 0);
}

TEST(PromptDashboard, sevenDaysAreTheCalendarsWhenTheClocksChange) {
    const Date now = at(u"2026-10-26 10:00:00"_s, berlin);
    EXPECT_EQ(
        sevenDayCount(entries({u"2026-10-19 10:00:01"_s, u"2026-10-19 09:59:59"_s}, berlin), now, berlin), 1)
        << "169 hours";
}

TEST(PromptDashboard, aDayRunsFromItsStartToTheNext) {
    const Date now = at(u"2026-11-21 10:00:00"_s);
    const auto history =
        entries({u"2026-11-21 00:00:00"_s, u"2026-11-21 23:00:00"_s, u"2026-11-20 23:59:59"_s,
                 u"2026-11-20 00:00:00"_s, u"2026-11-19 23:59:59"_s});
    EXPECT_EQ(dailyCount(history, 0, now, shanghai), 2);
    EXPECT_EQ(dailyCount(history, 1, now, shanghai), 2);
    EXPECT_EQ(dailyCount(history, 2, now, shanghai), 1);
    EXPECT_EQ(dailyCount(history, 3, now, shanghai), 0);
}

TEST(PromptDashboard, aDayOfTwentyFiveHoursHasThemAll) {
    const auto history = entries({u"2026-10-25 00:00:00"_s, u"2026-10-25 23:59:59"_s}, berlin);
    EXPECT_EQ(dailyCount(history, 1, at(u"2026-10-26 10:00:00"_s, berlin), berlin), 2);
}

TEST(PromptDashboard, theTrendEndsWithToday) {
    const auto columns =
        trend(entries({u"2026-11-21 08:00:00"_s, u"2026-11-15 08:00:00"_s, u"2026-11-14 08:00:00"_s}),
              at(u"2026-11-21 10:00:00"_s), shanghai);
    EXPECT_EQ(columns, (std::vector<DayCount>{{u"周日"_s, 1},
                                              {u"周一"_s, 0},
                                              {u"周二"_s, 0},
                                              {u"周三"_s, 0},
                                              {u"周四"_s, 0},
                                              {u"周五"_s, 0},
                                              {u"周六"_s, 1}}));
}

TEST(PromptDashboard, anEmptyLibraryIsOfFixedHealth) {
    EXPECT_EQ(estimatedAvgHealth({}, []() -> int { throw std::logic_error("nothing to draw"); }), 72);
    EXPECT_EQ(estimatedAvgHealth({}), 72);
}

TEST(PromptDashboard, healthIsTheMeanOfTheKindsThatArePresent) {
    EXPECT_EQ(estimatedAvgHealth({whole, taskOnly}, [] { return 0; }), 60);
    int drawn = 0;
    EXPECT_EQ(estimatedAvgHealth({whole, taskOnly, taskOnly}, [&drawn] { return drawn++ == 0 ? 5 : -1; }), 47)
        << "143 by 3, cut";
    EXPECT_EQ(drawn, 3) << "each prompt wavers by itself";
}

TEST(PromptDashboard, looksAtTheFirstTwentyAlone) {
    std::vector<PromptText> prompts(20, whole);
    prompts.insert(prompts.end(), 10, taskOnly);
    int drawn = 0;
    EXPECT_EQ(estimatedAvgHealth(prompts, [&drawn] { return ++drawn, -10; }), 90);
    EXPECT_EQ(drawn, 20);
}

TEST(PromptDashboard, healthStaysBetweenItsBounds) {
    EXPECT_EQ(estimatedAvgHealth({prompt({})}, [] { return -5; }), 45);
    EXPECT_EQ(estimatedAvgHealth({whole}, [] { return 5; }), 95);
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(estimatedAvgHealth({whole}), 95);
        const int health = estimatedAvgHealth({prompt(u"角色：a\n任务：b\n背景：c"_s)});
        EXPECT_TRUE(health >= 55 && health <= 65) << health;
    }
}

}  // namespace
}  // namespace veltrin
