#include "AI/PromptDashboard.h"

#include "AI/PromptStructureAnalyzer.h"

#include <QDateTime>
#include <QLocale>
#include <QRandomGenerator>

#include <algorithm>
#include <cmath>

namespace veltrin::PromptDashboard {
namespace {

constexpr int daysOfAWeek = 7;
constexpr int healthWithoutPrompts = 72;
constexpr std::size_t judgedPrompts = 20;
constexpr int pointsPerKind = 20;
constexpr int widestWaver = 5;
constexpr int lowestHealth = 45;
constexpr int highestHealth = 95;

QDateTime local(Date date, const QTimeZone& zone) {
    return QDateTime::fromMSecsSinceEpoch(std::llround(date.secondsSince1970 * 1000), zone);
}

Date moment(const QDateTime& dateTime) {
    return {static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000};
}

QDate day(int daysBack, Date now, const QTimeZone& zone) {
    return local(now, zone).date().addDays(-daysBack);
}

int presentKinds(const PromptText& prompt) {
    const auto analysis = PromptStructureAnalyzer::analyze(prompt.title, prompt.content);
    return static_cast<int>(caseCount<PromptStructureKind> - analysis.missing.size());
}

}  // namespace

int sevenDayCount(const std::vector<Date>& history, Date now, const QTimeZone& zone) {
    // The calendar's seven days, which a change of the clocks makes longer or shorter.
    const Date start = moment(local(now, zone).addDays(-daysOfAWeek));
    return static_cast<int>(
        std::count_if(history.begin(), history.end(), [&](Date each) { return each > start; }));
}

int dailyCount(const std::vector<Date>& history, int daysBack, Date now, const QTimeZone& zone) {
    const QDate date = day(daysBack, now, zone);
    const Date start = moment(date.startOfDay(zone));
    const Date end = moment(date.addDays(1).startOfDay(zone));
    return static_cast<int>(std::count_if(history.begin(), history.end(),
                                          [&](Date each) { return each >= start && each < end; }));
}

QString dayLabel(int daysBack, Date now, const QTimeZone& zone) {
    const QLocale chinese(QLocale::Chinese, QLocale::China);
    return chinese.dayName(day(daysBack, now, zone).dayOfWeek(), QLocale::ShortFormat);
}

std::vector<DayCount> trend(const std::vector<Date>& history, Date now, const QTimeZone& zone) {
    std::vector<DayCount> columns;
    for (int daysBack = daysOfAWeek - 1; daysBack >= 0; --daysBack)
        columns.push_back({dayLabel(daysBack, now, zone), dailyCount(history, daysBack, now, zone)});
    return columns;
}

int estimatedAvgHealth(const std::vector<PromptText>& prompts, const std::function<int()>& waver) {
    if (prompts.empty()) return healthWithoutPrompts;
    const std::size_t judged = std::min(judgedPrompts, prompts.size());
    int sum = 0;
    for (std::size_t i = 0; i < judged; ++i)
        sum += presentKinds(prompts[i]) * pointsPerKind + waver();
    return std::clamp(sum / static_cast<int>(judged), lowestHealth, highestHealth);
}

int estimatedAvgHealth(const std::vector<PromptText>& prompts) {
    return estimatedAvgHealth(
        prompts, [] { return QRandomGenerator::global()->bounded(-widestWaver, widestWaver + 1); });
}

}  // namespace veltrin::PromptDashboard
