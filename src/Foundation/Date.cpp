#include "Foundation/Date.h"

#include <chrono>
#include <cmath>

namespace veltrin {
namespace {

namespace chrono = std::chrono;

/// The years that four digits can write, in seconds since 1970.
constexpr double firstWritableSecond = -62167219200.0;
constexpr double lastWritableSecond = 253402300799.0;

void putDigits(QChar* at, int width, unsigned number) {
    for (int i = width - 1; i >= 0; --i, number /= 10)
        at[i] = QChar(u'0' + static_cast<char16_t>(number % 10));
}

/// The number that the `width` digits at `position` write; -1 when one of them is none.
int digits(QStringView text, qsizetype position, int width) {
    int number = 0;
    for (qsizetype i = position; i < position + width; ++i) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9') return -1;
        number = number * 10 + (c - u'0');
    }
    return number;
}

/// Seconds east of UTC that "Z" or "+08:00" stand for.
std::optional<int> offsetSeconds(QStringView zone) {
    if (zone == u"Z") return 0;
    if (zone.size() != 6 || zone[3] != u':' || (zone[0] != u'+' && zone[0] != u'-')) return std::nullopt;
    const int hours = digits(zone, 1, 2);
    const int minutes = digits(zone, 4, 2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59) return std::nullopt;
    return (zone[0] == u'-' ? -1 : 1) * (hours * 3600 + minutes * 60);
}

}  // namespace

std::optional<QString> iso8601Text(Date date) {
    const double whole = std::floor(date.secondsSince1970);
    if (!(whole >= firstWritableSecond && whole <= lastWritableSecond)) return std::nullopt;
    const chrono::sys_seconds moment{chrono::seconds(static_cast<qint64>(whole))};
    const auto day = chrono::floor<chrono::days>(moment);
    const chrono::year_month_day date_(day);
    const chrono::hh_mm_ss time(moment - day);
    QString text = QStringLiteral("0000-00-00T00:00:00Z");
    QChar* at = text.data();
    putDigits(at, 4, static_cast<unsigned>(static_cast<int>(date_.year())));
    putDigits(at + 5, 2, static_cast<unsigned>(date_.month()));
    putDigits(at + 8, 2, static_cast<unsigned>(date_.day()));
    putDigits(at + 11, 2, static_cast<unsigned>(time.hours().count()));
    putDigits(at + 14, 2, static_cast<unsigned>(time.minutes().count()));
    putDigits(at + 17, 2, static_cast<unsigned>(time.seconds().count()));
    return text;
}

std::optional<Date> dateFromIso8601(QStringView text) {
    constexpr qsizetype zoneAt = 19;
    if (text.size() <= zoneAt || text[4] != u'-' || text[7] != u'-' || text[10] != u'T' || text[13] != u':' ||
        text[16] != u':') {
        return std::nullopt;
    }
    const int year = digits(text, 0, 4);
    const int month = digits(text, 5, 2);
    const int day = digits(text, 8, 2);
    const int hour = digits(text, 11, 2);
    const int minute = digits(text, 14, 2);
    const int second = digits(text, 17, 2);
    const auto offset = offsetSeconds(text.sliced(zoneAt));
    if (year < 0 || month < 1 || day < 1 || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
        second < 0 || second > 59 || !offset) {
        return std::nullopt;
    }
    const chrono::year_month_day date{chrono::year(year), chrono::month(static_cast<unsigned>(month)),
                                      chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return std::nullopt;
    const auto moment = chrono::sys_days(date) + chrono::hours(hour) + chrono::minutes(minute) +
                        chrono::seconds(second - *offset);
    const double seconds =
        static_cast<double>(chrono::duration_cast<chrono::seconds>(moment.time_since_epoch()).count());
    // An offset may lead out of the years that can be written again.
    if (seconds < firstWritableSecond || seconds > lastWritableSecond) return std::nullopt;
    return Date{seconds};
}

}  // namespace veltrin
