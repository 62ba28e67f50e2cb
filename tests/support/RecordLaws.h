#pragma once

#include "Foundation/Records.h"

#include <gtest/gtest.h>

#include <random>

/// What holds for every record, checked from its own field table with made-up values. Use:
/// `expectRecordLaws<HistoryEntry>()`; the record needs operator==.
namespace veltrin::laws {

using Random = std::mt19937;

template <typename M>
struct Arbitrary;

template <typename M>
M arbitrary(Random& random) {
    return Arbitrary<M>::make(random);
}

inline int below(Random& random, int bound) {
    return std::uniform_int_distribution<int>(0, bound - 1)(random);
}

template <>
struct Arbitrary<QString> {
    static QString make(Random& random) {
        // What breaks careless writers: quotes, controls, slashes, a joined character, the edges of UTF-16.
        static const QStringList pieces{QStringLiteral("a"),
                                        QStringLiteral("语境："),
                                        QStringLiteral("\""),
                                        QStringLiteral("\\"),
                                        QStringLiteral("/"),
                                        QStringLiteral("\n\t"),
                                        QStringLiteral("👩‍👩‍👧"),
                                        QStringLiteral("é"),
                                        QString(QChar(1)),
                                        QString(QChar(0)),
                                        QString(QChar(0x7f)),
                                        QString(QChar(0x2028)),
                                        QString(QChar(0xfffd)),
                                        QString(QChar(0xffff))};
        QString text;
        for (int i = below(random, 8); i > 0; --i)
            text += pieces[below(random, static_cast<int>(pieces.size()))];
        return text;
    }
};
template <>
struct Arbitrary<bool> {
    static bool make(Random& random) { return below(random, 2) == 1; }
};
template <std::integral M>
struct Arbitrary<M> {
    static M make(Random& random) {
        switch (below(random, 4)) {
            case 0:
                return std::numeric_limits<M>::max();
            case 1:
                return std::numeric_limits<M>::min();
            default:
                return static_cast<M>(below(random, 100));
        }
    }
};
template <>
struct Arbitrary<double> {
    static double make(Random& random) {
        switch (below(random, 4)) {
            case 0:
                return 1e300;
            case 1:
                return below(random, 1000);
            default:
                return std::uniform_real_distribution<double>(-1, 1)(random);
        }
    }
};
template <>
struct Arbitrary<QUuid> {
    static QUuid make(Random& random) {
        return QUuid(random(), static_cast<ushort>(random()), static_cast<ushort>(random()), 1, 2, 3, 4, 5, 6,
                     7, static_cast<uchar>(random()));
    }
};
/// Whole seconds, which both date strategies keep.
template <>
struct Arbitrary<Date> {
    static Date make(Random& random) { return {std::floor(random() * 10.0 - 1e10)}; }
};
template <typename M>
    requires std::is_enum_v<M>
struct Arbitrary<M> {
    static M make(Random& random) { return static_cast<M>(below(random, static_cast<int>(caseCount<M>))); }
};
template <typename M>
struct Arbitrary<std::optional<M>> {
    static std::optional<M> make(Random& random) {
        return below(random, 2) == 0 ? std::nullopt : std::optional<M>(arbitrary<M>(random));
    }
};
template <typename Sequence>
struct ArbitrarySequence {
    static Sequence make(Random& random) {
        Sequence sequence;
        for (int i = below(random, 4); i > 0; --i)
            sequence.push_back(arbitrary<typename Sequence::value_type>(random));
        return sequence;
    }
};
template <typename M>
struct Arbitrary<std::vector<M>> : ArbitrarySequence<std::vector<M>> {};
template <>
struct Arbitrary<QStringList> : ArbitrarySequence<QStringList> {};
template <typename M>
struct Arbitrary<std::map<QString, M>> {
    static std::map<QString, M> make(Random& random) {
        std::map<QString, M> values;
        for (int i = below(random, 4); i > 0; --i)
            values.insert_or_assign(arbitrary<QString>(random), arbitrary<M>(random));
        return values;
    }
};
template <Record M>
struct Arbitrary<M> {
    static M make(Random& random) {
        M record{};
        std::apply(
            [&](const auto&... field) {
                ((record.*field.member =
                      arbitrary<std::remove_cvref_t<decltype(record.*field.member)>>(random)),
                 ...);
            },
            recordFields<M>);
        return record;
    }
};

/// The object without `key`.
inline Json without(const Json& json, QStringView key) {
    Json::Object members = *json.object();
    std::erase_if(members, [&](const Json::Member& member) { return member.first == key; });
    return Json(std::move(members));
}

inline Json with(Json json, QStringView key, Json value) {
    json.set(key.toString(), std::move(value));
    return json;
}

/// The record with one field at its default.
template <Record R, typename M>
R withDefault(R record, const RecordField<R, M>& field, Date now) {
    record.*field.member = R{}.*field.member;
    if constexpr (std::is_same_v<M, Date>) {
        if (field.nowWhenAbsent) record.*field.member = now;
    }
    return record;
}

template <Record R, typename M>
void expectFieldLaws(const R& record, const Json& json, const RecordField<R, M>& field,
                     const RecordReading& reading) {
    SCOPED_TRACE(testing::Message() << "field " << field.key.toString().toStdString());
    const R defaulted = withDefault(record, field, reading.now);
    const bool required = field.presence == Presence::required;
    for (const Json& lacking : {without(json, field.key), with(json, field.key, Json())}) {
        const auto read = readRecord<R>(lacking, reading);
        EXPECT_EQ(read.has_value(), !required) << "an absent and a null member count alike";
        if (read) {
            EXPECT_EQ(*read, defaulted);
        }
    }
    // No member is an array that holds an array, so this is of a wrong type for each.
    const Json wrong(Json::Array{Json(Json::Array{})});
    const auto read = readRecord<R>(with(json, field.key, wrong), reading);
    EXPECT_EQ(read.has_value(), field.presence == Presence::tolerant) << "of another type";
    if (read) {
        EXPECT_EQ(*read, defaulted);
    }
}

template <Record R>
void expectLawsOf(const R& record, DateStrategy dates) {
    const RecordReading reading{dates, Date{1795255200}};
    const auto json = writeRecord(record, dates);
    ASSERT_TRUE(json);
    EXPECT_EQ(readRecord<R>(*json, reading), record);

    std::vector<QString> expected;
    std::apply(
        [&](const auto&... field) {
            const auto note = [&](const auto& one) {
                if constexpr (detail::isOptional<std::remove_cvref_t<decltype(record.*one.member)>>) {
                    if (!(record.*one.member)) return;
                }
                expected.push_back(one.key.toString());
            };
            (note(field), ...);
        },
        recordFields<R>);
    std::vector<QString> keys;
    for (const auto& [key, value] : *json->object())
        keys.push_back(key);
    EXPECT_EQ(keys, expected) << "the members stand in the table's order, and what is none is left out";

    std::apply([&](const auto&... field) { (expectFieldLaws(record, *json, field, reading), ...); },
               recordFields<R>);
}

/// Written and read back, a record is itself, through values and through the text of a file; required members
/// are required, others default; nothing else reads.
template <Record R>
void expectRecordLaws() {
    Random random(20261121);
    std::vector<R> records;
    for (int i = 0; i < 40; ++i) {
        records.push_back(arbitrary<R>(random));
        expectLawsOf(records.back(), DateStrategy::iso8601);
        expectLawsOf(records.back(), DateStrategy::referenceDate);
    }
    for (const DateStrategy dates : {DateStrategy::iso8601, DateStrategy::referenceDate}) {
        const auto bytes = writeRecords(records, dates);
        ASSERT_TRUE(bytes);
        EXPECT_EQ(readRecords<R>(*bytes, {dates, {}}), records);
        EXPECT_FALSE(readRecords<R>(bytes->chopped(1), {dates, {}})) << "cut off";
        EXPECT_FALSE(readRecords<R>(bytes->left(bytes->size() / 2), {dates, {}}));
    }
    for (const Json& other : {Json(), Json(1), Json("text"), Json(Json::Array{})})
        EXPECT_FALSE(readRecord<R>(other));
}

}  // namespace veltrin::laws

namespace veltrin {
using laws::expectRecordLaws;
}
