#include "Foundation/Date.h"
#include "Foundation/Identifiers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(Date, writesWholeSecondsInUtc) {
    EXPECT_EQ(iso8601Text(Date{1795255200}), u"2026-11-21T10:00:00Z"_s);
    EXPECT_EQ(iso8601Text(Date{1795255200.999}), u"2026-11-21T10:00:00Z"_s);
    EXPECT_EQ(iso8601Text(Date{-0.5}), u"1969-12-31T23:59:59Z"_s);
    EXPECT_EQ(iso8601Text(Date{-62167219200.0}), u"0000-01-01T00:00:00Z"_s);
    EXPECT_EQ(iso8601Text(Date{253402300799.9}), u"9999-12-31T23:59:59Z"_s);
}

TEST(Date, hasNoTextOutsideTheYearsOfFourDigits) {
    EXPECT_FALSE(iso8601Text(Date{253402300800.0}));
    EXPECT_FALSE(iso8601Text(Date{-62167219201.0}));
    EXPECT_FALSE(iso8601Text(Date{std::nan("")}));
    EXPECT_FALSE(iso8601Text(Date{std::numeric_limits<double>::infinity()}));
}

TEST(Date, readsWhatItWritesAndOffsets) {
    EXPECT_EQ(dateFromIso8601(u"2026-11-21T10:00:00Z"), Date{1795255200});
    EXPECT_EQ(dateFromIso8601(u"2026-11-21T18:00:00+08:00"), Date{1795255200});
    EXPECT_EQ(dateFromIso8601(u"2026-11-21T04:30:00-05:30"), Date{1795255200});
    EXPECT_EQ(dateFromIso8601(u"2024-02-29T00:00:00Z"), Date{1709164800});
}

TEST(Date, readsNothingElse) {
    for (const QString& text : {u""_s,
                                u"2026-11-21"_s,
                                u"2026-11-21T10:00:00"_s,
                                u"2026-11-21 10:00:00Z"_s,
                                u"2026-11-21T10:00:00.5Z"_s,
                                u"2025-02-29T00:00:00Z"_s,
                                u"2026-13-01T00:00:00Z"_s,
                                u"2026-00-01T00:00:00Z"_s,
                                u"2026-11-31T00:00:00Z"_s,
                                u"2026-11-21T24:00:00Z"_s,
                                u"2026-11-21T10:60:00Z"_s,
                                u"2026-11-21T10:00:60Z"_s,
                                u"2026-11-21T10:00:00z"_s,
                                u"2026-11-21T10:00:00+0800"_s,
                                u"2026-11-21T10:00:00+24:00"_s,
                                u"+026-11-21T10:00:00Z"_s,
                                u"0000-01-01T00:00:00+01:00"_s,
                                u"9999-12-31T23:59:59-01:00"_s,
                                u"２０２６-11-21T10:00:00Z"_s,
                                u"2026-11-21T10:00:00Z "_s}) {
        EXPECT_FALSE(dateFromIso8601(text)) << text.toStdString();
    }
}

TEST(Date, countsFromTheReferenceDate) {
    EXPECT_EQ(Date::fromReferenceDate(0), dateFromIso8601(u"2001-01-01T00:00:00Z"));
    EXPECT_EQ(Date{1795255200}.secondsSinceReferenceDate(), 816948000);
}

TEST(Identifiers, areWrittenInUpperCaseWithoutBraces) {
    const auto id = uuidFrom(u"6f9619ff-8b86-d011-b42d-00c04fc964ff");
    ASSERT_TRUE(id);
    EXPECT_EQ(uuidText(*id), u"6F9619FF-8B86-D011-B42D-00C04FC964FF"_s);
    EXPECT_EQ(uuidFrom(uuidText(*id)), id);
}

TEST(Identifiers, otherFormsAreNone) {
    for (const QString& text :
         {u""_s, u"{6F9619FF-8B86-D011-B42D-00C04FC964FF}"_s, u"6F9619FF8B86D011B42D00C04FC964FF"_s,
          u"6F9619FF-8B86-D011-B42D-00C04FC964F"_s, u"6F9619FF-8B86-D011-B42D-00C04FC964FG"_s,
          u"6F9619FF-8B86-D011-B42D-00C04FC964FF "_s, u"6F9619FF-8B86D-011-B42D-00C04FC964FF"_s}) {
        EXPECT_FALSE(uuidFrom(text)) << text.toStdString();
    }
}

}  // namespace
}  // namespace veltrin
