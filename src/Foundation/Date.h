#pragma once

#include <QString>

#include <compare>
#include <optional>

namespace veltrin {

/// A moment. The core takes the present one from `RunLoop::wallNow()`.
struct Date {
    double secondsSince1970 = 0;

    /// Seconds from 1970-01-01 to 2001-01-01, both UTC.
    static constexpr double referenceOffset = 978307200;

    constexpr double secondsSinceReferenceDate() const { return secondsSince1970 - referenceOffset; }
    static constexpr Date fromReferenceDate(double seconds) { return {seconds + referenceOffset}; }

    friend constexpr auto operator<=>(const Date&, const Date&) = default;
};

/// The moment in UTC as "2026-11-21T10:00:00Z", whole seconds cut downward. None outside the years 0000 to
/// 9999.
std::optional<QString> iso8601Text(Date date);

/// Reads "2026-11-21T10:00:00" followed by "Z" or by an offset as "+08:00"; nothing else, fractions included.
std::optional<Date> dateFromIso8601(QStringView text);

}  // namespace veltrin
