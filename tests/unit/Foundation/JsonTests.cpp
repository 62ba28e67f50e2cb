#include "Foundation/Json.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(Json, ofAMemberNamedTwiceTheLastValueStaysAtTheFirstPlace) {
    const Json json = Json::parse(R"({"a":1,"b":2,"a":3})");
    EXPECT_EQ(json, Json(Json::Object{{u"a"_s, Json(3)}, {u"b"_s, Json(2)}}));
    EXPECT_EQ(*json.find(u"a"), Json(3));
}

TEST(Json, repeatedMembersOfALargeObjectAreDroppedToo) {
    QByteArray text = "{";
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 100; ++i)
            text += "\"k" + QByteArray::number(i) + "\":" + QByteArray::number(round) + ",";
    }
    text.back() = '}';
    const Json json = Json::parse(text);
    ASSERT_EQ(json.object()->size(), 100U);
    for (const auto& [key, value] : *json.object())
        EXPECT_EQ(value, Json(1));
    EXPECT_EQ(json.object()->back().first, u"k99"_s);
}

TEST(Json, anObjectOfVeryManyMembersIsReadInReasonableTime) {
    QByteArray text = "{";
    for (int i = 0; i < 300'000; ++i)
        text += "\"k" + QByteArray::number(i) + "\":0,";
    text.back() = '}';
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(Json::parse(text).object()->size(), 300'000U);
    EXPECT_LT(clock.elapsed(), 10'000) << "looking each name up among the former ones takes minutes";
}

TEST(Json, handsOverTheElementsOfAnArray) {
    Json::Array taken;
    const auto take = [&](const Json& element) {
        taken.push_back(element);
        return true;
    };
    EXPECT_TRUE(Json::parseElements(R"([1, "x", [2], {"a": [3]}, null])", take));
    EXPECT_EQ(Json(taken), Json::parse(R"([1, "x", [2], {"a": [3]}, null])"));
    EXPECT_TRUE(Json::parseElements("[]", take));
}

TEST(Json, handsOverNothingMoreOnceRefused) {
    int seen = 0;
    EXPECT_FALSE(Json::parseElements("[1,2,3]", [&](const Json&) { return ++seen < 2; }));
    EXPECT_EQ(seen, 2);
}

TEST(Json, elementsOfWhatIsNoWholeArrayAreNone) {
    const auto take = [](const Json&) { return true; };
    for (const QByteArray& text : {QByteArray(), QByteArray("{}"), QByteArray("1"), QByteArray("[1"),
                                   QByteArray("[1]x"), QByteArray("[\"\xff\"]"), QByteArray(600, '[')}) {
        EXPECT_FALSE(Json::parseElements(text, take)) << text.toStdString();
    }
}

TEST(Json, anElementOfEndlesslyManyValuesIsRefused) {
    QByteArray text = "[{\"a\":[0";
    for (int i = 0; i < 1'000'001; ++i)
        text += ",0";
    text += "]}]";
    EXPECT_FALSE(Json::parseElements(text, [](const Json&) { return true; }));
}

TEST(Json, isPrettyPrintedInTheFormOfTheFiles) {
    const Json json =
        Json::parse(R"([{"z":"a/b","a":1,"n":null,"t":true,"x":[],"y":{},"r":1.5,"w":3.0,"l":["是",2]}])");
    EXPECT_EQ(json.prettyPrinted(), QByteArray(R"([
  {
    "z" : "a\/b",
    "a" : 1,
    "n" : null,
    "t" : true,
    "x" : [

    ],
    "y" : {

    },
    "r" : 1.5,
    "w" : 3,
    "l" : [
      "是",
      2
    ]
  }
])"));
}

TEST(Json, prettyPrintedTextReadsBackAsTheSame) {
    QString text;
    for (char16_t c = 0; c < 0x100; ++c)
        text += QChar(c);
    text += u"\u2028 👩‍👩‍👧 \uffff"_s;
    const Json json(Json::Object{{text, Json(text)},
                                 {u"number"_s, Json(0.1)},
                                 {u"large"_s, Json(1.5e300)},
                                 {u"least"_s, Json(std::numeric_limits<std::int64_t>::min())}});
    EXPECT_EQ(Json::parse(json.prettyPrinted()), json);
}

TEST(Json, whatHasNoJsonFormIsPrintedAsWhatHas) {
    QString lone = u"a"_s + QChar(0xd800) + u"b"_s + QChar(0xdc00);
    const Json json(Json::Array{Json(lone), Json(std::numeric_limits<double>::infinity())});
    EXPECT_EQ(json.prettyPrinted(), "[\n  \"a\uFFFDb\uFFFD\",\n  null\n]");
}

}  // namespace
}  // namespace veltrin
