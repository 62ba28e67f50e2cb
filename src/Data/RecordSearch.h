#pragma once

#include "Foundation/Text.h"

#include <QString>

#include <vector>

/// The one search of all lists: the text is trimmed and lower-cased; a record is shown when a lower-cased
/// field contains it, every record when nothing is left of it.
namespace veltrin::RecordSearch {

/// The records that are to be shown, in the order of the list. `anyField(record, contains)` asks `contains`
/// of the record's searched fields and answers whether one holds the text.
template <typename R, typename AnyField>
std::vector<R> matching(const std::vector<R>& records, const QString& text, const AnyField& anyField) {
    const QString wanted = Text::trimmed(text).toLower();
    if (wanted.isEmpty()) return records;
    const auto contains = [&](const QString& field) { return field.toLower().contains(wanted); };
    std::vector<R> found;
    for (const R& record : records) {
        if (anyField(record, contains)) found.push_back(record);
    }
    return found;
}

}  // namespace veltrin::RecordSearch
