#include "Foundation/Characters.h"
#include "Foundation/Json.h"
#include "Foundation/Text.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString family = QStringLiteral("👨‍👩‍👧‍👦");

TEST(Characters, countsGraphemeClustersNotUnits) {
    EXPECT_EQ(Characters::count(u""), 0);
    EXPECT_EQ(Characters::count(u"hello"), 5);
    EXPECT_EQ(Characters::count(u"你好"), 2);
    EXPECT_EQ(Characters::count(family), 1);
    EXPECT_EQ(Characters::count(QStringLiteral("e\u0301a")), 2);
    EXPECT_EQ(Characters::count(u"a\r\nb"), 3);
}

TEST(Characters, cutsNeverSplitACharacter) {
    const QString text = QStringLiteral("a") + family + QStringLiteral("b");
    EXPECT_EQ(Characters::prefix(text, 2), QStringLiteral("a") + family);
    EXPECT_EQ(Characters::suffix(text, 2), family + QStringLiteral("b"));
    EXPECT_EQ(Characters::prefix(text, 9), text);
    EXPECT_EQ(Characters::suffix(text, 9), text);
    EXPECT_EQ(Characters::prefix(text, -1), QString());
    EXPECT_EQ(Characters::suffix(QStringLiteral("abc"), 2), QStringLiteral("bc"));
}

TEST(Characters, containingGivesTheWholeCharacterOverAUnit) {
    const QString text = QStringLiteral("a") + family + QStringLiteral("b");
    EXPECT_EQ(Characters::containing(text, 0), QStringLiteral("a"));
    EXPECT_EQ(Characters::containing(text, family.size()), family);
    EXPECT_EQ(Characters::containing(text, text.size()), QString());
}

TEST(Text, previewIsOneTrimmedLineWithAnEllipsisPastTheLimit) {
    EXPECT_EQ(Text::preview(QStringLiteral("  a\n\tb "), 80), QStringLiteral("a  b"));
    EXPECT_EQ(Text::preview(QString(80, u'x'), 80), QString(80, u'x'));
    EXPECT_EQ(Text::preview(QString(81, u'x'), 80), QString(80, u'x') + QStringLiteral("..."));
}

TEST(Json, keepsMemberOrderAndNumberKinds) {
    const QByteArray text = R"({"b":1,"a":1.0,"c":[true,null,"\u4f60"]})";
    EXPECT_EQ(Json::parse(text).serialized(), QByteArray(R"({"b":1,"a":1.0,"c":[true,null,"你"]})"));
}

TEST(Json, refusesBrokenTextInvalidUtf8AndBottomlessNesting) {
    EXPECT_FALSE(Json::tryParse("{"));
    EXPECT_FALSE(Json::tryParse(""));
    EXPECT_FALSE(Json::tryParse("\"\xff\""));
    EXPECT_FALSE(Json::tryParse(QByteArray(100000, '[')));
    EXPECT_THROW(Json::parse("nul"), Json::ParseError);
}

TEST(Json, setReplacesInPlaceAndFindTakesTheNamedMember) {
    Json object;
    object.set(QStringLiteral("x"), 1);
    object.set(QStringLiteral("y"), 2.5);
    object.set(QStringLiteral("x"), QStringLiteral("z"));
    EXPECT_EQ(object.serialized(), QByteArray(R"({"x":"z","y":2.5})"));
    EXPECT_EQ(object.find(u"y")->toDouble(), 2.5);
    EXPECT_EQ(object.find(u"q"), nullptr);
}

TEST(Text, putsEachValueInItsPlace) {
    EXPECT_EQ(Text::filled(u"甲 {{a}}，乙 {{b}}，甲 {{a}}。"_s, {{u"a"_s, u"1"_s}, {u"b"_s, u"2"_s}}),
              u"甲 1，乙 2，甲 1。"_s);
    EXPECT_EQ(Text::filled(u"{{a}}"_s, {{u"a"_s, QString()}}), QString());
}

TEST(Text, leavesWhatAValueSaysAsItStands) {
    EXPECT_EQ(Text::filled(u"{{a}} {{b}}"_s, {{u"a"_s, u"{{b}}"_s}, {u"b"_s, u"{{a}}"_s}}), u"{{b}} {{a}}"_s);
}

TEST(Text, leavesBracesThatAreNoPlace) {
    for (const QString& form : {u"{{"_s, u"}}{{"_s, u"{{x}}"_s, u"{\"a\":{}}"_s, QString()})
        EXPECT_EQ(Text::filled(form, {{u"a"_s, u"1"_s}}), form);
    EXPECT_EQ(Text::filled(u"{{x {{a}} y"_s, {{u"a"_s, u"1"_s}}), u"{{x 1 y"_s);
    EXPECT_EQ(Text::filled(u"{{{a}}}"_s, {{u"a"_s, u"1"_s}}), u"{{{a}}}"_s);
}

}  // namespace
}  // namespace veltrin
