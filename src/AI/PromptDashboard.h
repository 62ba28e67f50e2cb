#pragma once

#include "Foundation/Date.h"

#include <QString>
#include <QTimeZone>

#include <functional>
#include <vector>

namespace veltrin {

/// The figures of the prompt dashboard, computed anew at each call from what the stores hold. Needs no model,
/// keeps and writes nothing. `history` is the moments of the history's entries in any order; days are those
/// of `zone`; `now` is the present moment.
namespace PromptDashboard {

/// A column of the trend.
struct DayCount {
    QString label;  ///< the day's short name in Chinese
    int count = 0;
    friend bool operator==(const DayCount&, const DayCount&) = default;
};

/// Entries later than the same time of day seven days ago.
int sevenDayCount(const std::vector<Date>& history, Date now, const QTimeZone& zone);
/// Entries of the calendar day that lies `daysBack` days back; 0 is today.
int dailyCount(const std::vector<Date>& history, int daysBack, Date now, const QTimeZone& zone);
QString dayLabel(int daysBack, Date now, const QTimeZone& zone);
/// The last seven days, today last.
std::vector<DayCount> trend(const std::vector<Date>& history, Date now, const QTimeZone& zone);

/// What the estimate looks at in a stored prompt.
struct PromptText {
    QString title;
    QString content;
};

/// How complete the first 20 prompts are, from 45 to 95; 72 without prompts. Every prompt's score wavers by
/// what `waver` answers, a number from -5 to 5 drawn anew each time: meant, it is an estimate.
int estimatedAvgHealth(const std::vector<PromptText>& prompts, const std::function<int()>& waver);
/// The same with chance.
int estimatedAvgHealth(const std::vector<PromptText>& prompts);

}  // namespace PromptDashboard

}  // namespace veltrin
