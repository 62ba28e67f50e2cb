#pragma once

#include "Foundation/Date.h"
#include "Foundation/Identifiers.h"
#include "Foundation/Json.h"
#include "Foundation/RawValues.h"

#include <QString>
#include <QStringList>

#include <cmath>
#include <concepts>
#include <limits>
#include <map>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

/// Records and their JSON form. A record is a plain struct whose fields are declared once:
///
///     struct Note {
///         QUuid id;
///         QString tag = u"general"_s;
///         std::optional<QString> image;
///         Date createdAt;
///     };
///     template <>
///     inline constexpr auto recordFields<Note> =
///         std::tuple{required(u"id", &Note::id), defaulted(u"tag", &Note::tag),
///                    optional(u"image", &Note::image), defaultedToNow(u"createdAt", &Note::createdAt)};
///
/// The table drives `readRecord`, `writeRecord` and the property tests (tests/support/RecordLaws.h); the
/// default of a field is the one its member has in a record made without arguments. Members may be QString,
/// bool, integers, doubles, QUuid, Date, enumerations with raw values, other records, and of any of these
/// std::vector, std::map with QString keys and (by `optional`) std::optional; QStringList too.
namespace veltrin {

enum class DateStrategy {
    iso8601,        ///< text as "2026-11-21T10:00:00Z"
    referenceDate,  ///< number of seconds since 2001-01-01 00:00:00 UTC
};

/// How a text is read: the form of its dates, and the moment that stands in for an absent date.
struct RecordReading {
    DateStrategy dates = DateStrategy::iso8601;
    Date now{};
};

enum class Presence {
    required,   ///< absent, null or of another type: the record does not read
    defaulted,  ///< absent or null: the default; of another type: the record does not read
    tolerant,   ///< absent, null or of another type: the default
};

template <typename R, typename M>
struct RecordField {
    QStringView key;
    M R::*member;
    Presence presence;
    bool nowWhenAbsent = false;
};

/// The field table of a record: specialise it with a std::tuple of the makers below, in the order of the
/// file.
template <typename R>
inline constexpr std::tuple<> recordFields{};

template <typename R, typename M>
constexpr RecordField<R, M> required(QStringView key, M R::*member) {
    return {key, member, Presence::required};
}
template <typename R, typename M>
constexpr RecordField<R, M> defaulted(QStringView key, M R::*member) {
    return {key, member, Presence::defaulted};
}
template <typename R, typename M>
constexpr RecordField<R, M> tolerant(QStringView key, M R::*member) {
    return {key, member, Presence::tolerant};
}
/// Left out of the file when none; absent and null read as none.
template <typename R, typename M>
constexpr RecordField<R, std::optional<M>> optional(QStringView key, std::optional<M> R::*member) {
    return {key, member, Presence::defaulted};
}
/// A date whose default is the moment of reading.
template <typename R>
constexpr RecordField<R, Date> defaultedToNow(QStringView key, Date R::*member) {
    return {key, member, Presence::defaulted, true};
}

template <typename T>
concept Record = std::tuple_size_v<std::remove_cvref_t<decltype(recordFields<T>)>> > 0;

/// The record that the object `json` writes; none when it is no object or a field forbids it. Unknown members
/// are passed over; of a member named twice the last counts.
template <Record R>
std::optional<R> readRecord(const Json& json, const RecordReading& reading = {});

/// The record as an object; none when it holds what no file can (a number that is not finite, a date outside
/// the years that ISO 8601 writes).
template <Record R>
std::optional<Json> writeRecord(const R& record, DateStrategy dates = DateStrategy::iso8601);

// ---------------------------------------------------------------------------------------------------------

/// How a member of type M stands in JSON: `read` gives none for a value of another form, `write` none for a
/// value that has no JSON form.
template <typename M>
struct RecordCodec;

template <>
struct RecordCodec<QString> {
    static std::optional<QString> read(const Json& json, const RecordReading&) { return json.toString(); }
    static std::optional<Json> write(const QString& value, DateStrategy) { return Json(value); }
};

template <>
struct RecordCodec<bool> {
    static std::optional<bool> read(const Json& json, const RecordReading&) { return json.toBool(); }
    static std::optional<Json> write(bool value, DateStrategy) { return Json(value); }
};

/// A whole number may be written as "3.0"; one that does not fit the type does not read.
template <std::integral M>
struct RecordCodec<M> {
    static std::optional<M> read(const Json& json, const RecordReading&) {
        auto number = json.toInteger();
        if (const auto real = json.isReal() ? json.toDouble() : std::nullopt) {
            constexpr double exact = 9007199254740992.0;
            if (std::trunc(*real) == *real && std::abs(*real) <= exact)
                number = static_cast<std::int64_t>(*real);
        }
        if (!number || !std::in_range<M>(*number)) return std::nullopt;
        return static_cast<M>(*number);
    }
    static std::optional<Json> write(M value, DateStrategy) { return Json(std::int64_t{value}); }
};

template <>
struct RecordCodec<double> {
    static std::optional<double> read(const Json& json, const RecordReading&) { return json.toDouble(); }
    static std::optional<Json> write(double value, DateStrategy) {
        return std::isfinite(value) ? std::optional<Json>(value) : std::nullopt;
    }
};

template <>
struct RecordCodec<QUuid> {
    static std::optional<QUuid> read(const Json& json, const RecordReading&) {
        const auto text = json.toString();
        return text ? uuidFrom(*text) : std::nullopt;
    }
    static std::optional<Json> write(const QUuid& value, DateStrategy) { return Json(uuidText(value)); }
};

template <>
struct RecordCodec<Date> {
    static std::optional<Date> read(const Json& json, const RecordReading& reading) {
        if (reading.dates == DateStrategy::referenceDate) {
            const auto seconds = json.toDouble();
            return seconds ? std::optional(Date::fromReferenceDate(*seconds)) : std::nullopt;
        }
        const auto text = json.toString();
        return text ? dateFromIso8601(*text) : std::nullopt;
    }
    static std::optional<Json> write(Date value, DateStrategy dates) {
        if (dates == DateStrategy::referenceDate)
            return RecordCodec<double>::write(value.secondsSinceReferenceDate(), dates);
        const auto text = iso8601Text(value);
        return text ? std::optional<Json>(*text) : std::nullopt;
    }
};

template <typename M>
    requires std::is_enum_v<M>
struct RecordCodec<M> {
    static std::optional<M> read(const Json& json, const RecordReading&) {
        const auto raw = json.toString();
        return raw ? fromRawValue<M>(*raw) : std::nullopt;
    }
    static std::optional<Json> write(M value, DateStrategy) { return Json(rawValue(value)); }
};

template <Record M>
struct RecordCodec<M> {
    static std::optional<M> read(const Json& json, const RecordReading& reading) {
        return readRecord<M>(json, reading);
    }
    static std::optional<Json> write(const M& value, DateStrategy dates) { return writeRecord(value, dates); }
};

/// One wrong element spoils the array.
template <typename Sequence>
struct SequenceCodec {
    using Element = typename Sequence::value_type;
    static std::optional<Sequence> read(const Json& json, const RecordReading& reading) {
        const Json::Array* array = json.array();
        if (array == nullptr) return std::nullopt;
        Sequence sequence;
        for (const Json& each : *array) {
            auto element = RecordCodec<Element>::read(each, reading);
            if (!element) return std::nullopt;
            sequence.push_back(std::move(*element));
        }
        return sequence;
    }
    static std::optional<Json> write(const Sequence& sequence, DateStrategy dates) {
        Json::Array array;
        array.reserve(static_cast<std::size_t>(sequence.size()));
        for (const Element& each : sequence) {
            auto element = RecordCodec<Element>::write(each, dates);
            if (!element) return std::nullopt;
            array.push_back(std::move(*element));
        }
        return Json(std::move(array));
    }
};

template <typename M>
struct RecordCodec<std::vector<M>> : SequenceCodec<std::vector<M>> {};
template <>
struct RecordCodec<QStringList> : SequenceCodec<QStringList> {};

template <typename M>
struct RecordCodec<std::map<QString, M>> {
    static std::optional<std::map<QString, M>> read(const Json& json, const RecordReading& reading) {
        const Json::Object* object = json.object();
        if (object == nullptr) return std::nullopt;
        std::map<QString, M> values;
        for (const auto& [key, member] : *object) {
            auto value = RecordCodec<M>::read(member, reading);
            if (!value) return std::nullopt;
            values.insert_or_assign(key, std::move(*value));
        }
        return values;
    }
    static std::optional<Json> write(const std::map<QString, M>& values, DateStrategy dates) {
        Json::Object object;
        object.reserve(values.size());
        for (const auto& [key, value] : values) {
            auto member = RecordCodec<M>::write(value, dates);
            if (!member) return std::nullopt;
            object.emplace_back(key, std::move(*member));
        }
        return Json(std::move(object));
    }
};

namespace detail {

template <typename T>
inline constexpr bool isOptional = false;
template <typename T>
inline constexpr bool isOptional<std::optional<T>> = true;

/// Finds members that mostly stand in the order of the table without searching the object for each.
class MemberCursor {
public:
    explicit MemberCursor(const Json& json) : json_(json), members_(*json.object()) {}
    const Json* find(QStringView key) {
        if (next_ < members_.size() && members_[next_].first == key) return &members_[next_++].second;
        return json_.find(key);
    }

private:
    const Json& json_;
    const Json::Object& members_;
    std::size_t next_ = 0;
};

template <typename R, typename M>
bool readField(R& record, const RecordField<R, M>& field, MemberCursor& members,
               const RecordReading& reading) {
    const Json* json = members.find(field.key);
    if (json == nullptr || json->isNull()) {
        if constexpr (std::is_same_v<M, Date>) {
            if (field.nowWhenAbsent) record.*field.member = reading.now;
        }
        return field.presence != Presence::required;
    }
    if constexpr (isOptional<M>) {
        auto value = RecordCodec<typename M::value_type>::read(*json, reading);
        if (value) record.*field.member = std::move(value);
        return (record.*field.member).has_value() || field.presence == Presence::tolerant;
    } else {
        auto value = RecordCodec<M>::read(*json, reading);
        if (!value) return field.presence == Presence::tolerant;
        record.*field.member = std::move(*value);
        return true;
    }
}

template <typename R, typename M>
bool writeField(Json::Object& object, const R& record, const RecordField<R, M>& field, DateStrategy dates) {
    std::optional<Json> json;
    if constexpr (isOptional<M>) {
        const M& value = record.*field.member;
        if (!value) return true;
        json = RecordCodec<typename M::value_type>::write(*value, dates);
    } else {
        json = RecordCodec<M>::write(record.*field.member, dates);
    }
    if (!json) return false;
    // The key is a literal of the table, so the text need not be copied.
    object.emplace_back(QString::fromRawData(field.key.data(), field.key.size()), std::move(*json));
    return true;
}

}  // namespace detail

template <Record R>
std::optional<R> readRecord(const Json& json, const RecordReading& reading) {
    if (!json.isObject()) return std::nullopt;
    R record{};
    detail::MemberCursor members(json);
    const bool whole = std::apply(
        [&](const auto&... fields) { return (detail::readField(record, fields, members, reading) && ...); },
        recordFields<R>);
    if (!whole) return std::nullopt;
    return record;
}

template <Record R>
std::optional<Json> writeRecord(const R& record, DateStrategy dates) {
    Json::Object object;
    object.reserve(std::tuple_size_v<std::remove_cvref_t<decltype(recordFields<R>)>>);
    const bool whole = std::apply(
        [&](const auto&... fields) { return (detail::writeField(object, record, fields, dates) && ...); },
        recordFields<R>);
    if (!whole) return std::nullopt;
    return Json(std::move(object));
}

/// The records of a text that is one JSON array of them; none when it is anything else, or when one of them
/// does not read.
template <Record R>
std::optional<std::vector<R>> readRecords(const QByteArray& utf8, const RecordReading& reading = {}) {
    std::vector<R> records;
    const bool whole = Json::parseElements(utf8, [&](const Json& element) {
        auto record = readRecord<R>(element, reading);
        if (record) records.push_back(std::move(*record));
        return record.has_value();
    });
    if (!whole) return std::nullopt;
    return records;
}

/// The records as one pretty-printed JSON array; none when one of them cannot be written.
template <Record R>
std::optional<QByteArray> writeRecords(const std::vector<R>& records,
                                       DateStrategy dates = DateStrategy::iso8601) {
    const auto array = RecordCodec<std::vector<R>>::write(records, dates);
    return array ? std::optional(array->prettyPrinted()) : std::nullopt;
}

}  // namespace veltrin
