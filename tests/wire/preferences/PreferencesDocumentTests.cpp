#include "Platform/Linux/PreferencesDocument.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

PreferencesDocument decoded(const QByteArray& text) {
    return PreferencesDocument::decode(text).value_or(PreferencesDocument());
}

template <typename T>
std::optional<T> read(const PreferencesDocument& document, const QString& key) {
    const auto value = document.value(key);
    if (!value || !std::holds_alternative<T>(*value)) return std::nullopt;
    return std::get<T>(*value);
}

TEST(PreferencesDocument, keepsEachTypeApart) {
    PreferencesDocument document;
    document.set(u"text"_s, u"true"_s);
    document.set(u"flag"_s, true);
    document.set(u"whole"_s, 1.0);
    document.set(u"zero"_s, 0.0);
    document.set(u"data"_s, QByteArray("\x00\xff{}", 4));
    const auto again = decoded(document.encode());
    EXPECT_EQ(read<QString>(again, u"text"_s), u"true"_s);
    EXPECT_EQ(read<bool>(again, u"flag"_s), true);
    EXPECT_EQ(read<double>(again, u"whole"_s), 1.0);
    EXPECT_EQ(read<double>(again, u"zero"_s), 0.0);
    EXPECT_EQ(read<QByteArray>(again, u"data"_s), QByteArray("\x00\xff{}", 4));
    EXPECT_FALSE(again.value(u"absent"_s));
}

TEST(PreferencesDocument, writesAWholeDoubleAsARealNumber) {
    PreferencesDocument document;
    document.set(u"ms"_s, 340.0);
    EXPECT_EQ(document.encode(), QByteArray("{\n  \"ms\": 340.0\n}\n"));
}

TEST(PreferencesDocument, readsAHandWrittenIntegerAsADoubleAndLeavesItAsItStands) {
    auto document = decoded(R"({"ms":340,"x":1})");
    EXPECT_EQ(read<double>(document, u"ms"_s), 340.0);
    document.set(u"x"_s, true);
    EXPECT_EQ(document.encode(), QByteArray("{\n  \"ms\": 340,\n  \"x\": true\n}\n"));
}

TEST(PreferencesDocument, keepsTheOrderOfTheFileAndAppendsNewKeys) {
    auto document = decoded(R"({"b":"1","a":"2"})");
    document.set(u"c"_s, u"3"_s);
    document.set(u"b"_s, false);
    EXPECT_EQ(document.encode(), QByteArray("{\n  \"b\": false,\n  \"a\": \"2\",\n  \"c\": \"3\"\n}\n"));
}

TEST(PreferencesDocument, leavesUnknownShapesUntouchedAndReadsThemAsAbsent) {
    const QByteArray text =
        R"({"null":null,"list":[1,2.0],"object":{"data":"AA==","more":1},"badData":{"data":"*"},)"
        R"("dataOfNumber":{"data":1}})";
    auto document = decoded(text);
    for (const auto& key : {u"null"_s, u"list"_s, u"object"_s, u"badData"_s, u"dataOfNumber"_s})
        EXPECT_FALSE(document.value(key)) << key.toStdString();
    document.set(u"new"_s, true);
    const Json written = Json::parse(document.encode());
    const Json original = Json::parse(text);
    for (const auto& [key, member] : *original.object())
        EXPECT_EQ(*written.find(key), member);
}

TEST(PreferencesDocument, aValueTakesThePlaceOfAnUnknownShape) {
    auto document = decoded(R"({"x":[1],"y":true})");
    EXPECT_TRUE(document.set(u"x"_s, u"text"_s));
    EXPECT_EQ(document.encode(), QByteArray("{\n  \"x\": \"text\",\n  \"y\": true\n}\n"));
}

TEST(PreferencesDocument, saysWhetherAnythingChanged) {
    PreferencesDocument document;
    EXPECT_TRUE(document.set(u"x"_s, 1.0));
    EXPECT_FALSE(document.set(u"x"_s, 1.0));
    EXPECT_TRUE(document.set(u"x"_s, true));
    EXPECT_TRUE(document.remove(u"x"_s));
    EXPECT_FALSE(document.remove(u"x"_s));
}

TEST(PreferencesDocument, refusesWhatIsNoObject) {
    for (const QByteArray& text : {QByteArray(), QByteArray("{"), QByteArray("[]"), QByteArray("\"x\""),
                                   QByteArray("{\"a\":\"\xff\"}"), QByteArray("{\"a\":1e999}")})
        EXPECT_FALSE(PreferencesDocument::decode(text)) << text.toStdString();
}

TEST(PreferencesDocument, acceptsAByteOrderMark) {
    EXPECT_EQ(read<bool>(decoded("\xef\xbb\xbf{\"a\":true}"), u"a"_s), true);
}

TEST(PreferencesDocument, takesTheLastOfTwoMembersOfOneName) {
    EXPECT_EQ(read<QString>(decoded(R"({"a":"1","a":"2"})"), u"a"_s), u"2"_s);
}

TEST(PreferencesDocument, aNumberThatJsonCannotHoldIsAbsentAfterwards) {
    PreferencesDocument document;
    document.set(u"x"_s, std::numeric_limits<double>::quiet_NaN());
    document.set(u"y"_s, std::numeric_limits<double>::infinity());
    const auto again = decoded(document.encode());
    EXPECT_FALSE(again.value(u"x"_s));
    EXPECT_FALSE(again.value(u"y"_s));
}

}  // namespace
}  // namespace veltrin
