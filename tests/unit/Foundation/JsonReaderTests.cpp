#include "Foundation/JsonReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

std::optional<QString> text(const QByteArray& inside) {
    const auto json = Json::tryParse('"' + inside + '"');
    return json ? json->toString() : std::nullopt;
}

QByteArray nested(int levels) {
    return QByteArray(levels, '[') + QByteArray(levels, ']');
}

TEST(JsonReader, readsEveryKindOfValueBetweenAnyWhiteSpace) {
    EXPECT_EQ(Json::parse(" null\r\n"), Json());
    EXPECT_EQ(Json::parse("true"), Json(true));
    EXPECT_EQ(Json::parse("\tfalse "), Json(false));
    EXPECT_EQ(Json::parse("\"\""), Json(QString()));
    EXPECT_EQ(Json::parse(" [ ] "), Json(Json::Array{}));
    EXPECT_EQ(Json::parse(" { } "), Json(Json::Object{}));
    EXPECT_EQ(Json::parse("[1 ,\n2]"), Json(Json::Array{Json(1), Json(2)}));
    EXPECT_EQ(Json::parse(R"({ "a" : 1 , "" : [null] })"),
              Json(Json::Object{{u"a"_s, Json(1)}, {QString(), Json(Json::Array{Json()})}}));
}

TEST(JsonReader, refusesWhatIsNoJson) {
    for (const char* broken : {"",
                               " ",
                               "nul",
                               "nulll",
                               "True",
                               "truefalse",
                               "[",
                               "]",
                               "[1",
                               "[1,",
                               "[1,]",
                               "[,1]",
                               "[1 2]",
                               "[1}",
                               "{",
                               "}",
                               "{]",
                               "{\"a\"",
                               "{\"a\":",
                               "{\"a\":1",
                               "{\"a\":1,",
                               "{\"a\":1,}",
                               "{,\"a\":1}",
                               "{a:1}",
                               "{1:2}",
                               "{\"a\" 1}",
                               "{\"a\":1 \"b\":2}",
                               "{null:1}",
                               "1 2",
                               "[1]x",
                               "[1],",
                               "'a'",
                               "\"a",
                               "\"a\\",
                               "\"a\\\"",
                               "\\",
                               "// a\n1",
                               "/**/1",
                               "NaN",
                               "Infinity",
                               "-Infinity",
                               "\xc2\xa0"
                               "1",
                               "\v1"}) {
        EXPECT_FALSE(Json::tryParse(broken)) << broken;
    }
}

TEST(JsonReader, readsWholeNumbersAsSuchAndOthersAsReal) {
    EXPECT_EQ(Json::parse("0"), Json(0));
    EXPECT_EQ(Json::parse("-0"), Json(0));
    EXPECT_EQ(Json::parse("-17"), Json(-17));
    EXPECT_EQ(Json::parse("9223372036854775807"), Json(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(Json::parse("-9223372036854775808"), Json(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(Json::parse("9223372036854775808"), Json(9223372036854775808.0)) << "past the integers";
    EXPECT_EQ(Json::parse("1" + QByteArray(30, '0')), Json(1e30));
    EXPECT_EQ(Json::parse("1.0"), Json(1.0));
    EXPECT_EQ(Json::parse("-0.5e+2"), Json(-50.0));
    EXPECT_EQ(Json::parse("1E2"), Json(100.0));
    EXPECT_EQ(Json::parse("0e0"), Json(0.0));
    EXPECT_EQ(Json::parse("1e-400"), Json(0.0)) << "too small to be told from zero";
    EXPECT_EQ(Json::parse("0." + QByteArray(2000, '3')), Json(1.0 / 3));
    EXPECT_EQ(Json::parse("2.2250738585072014e-308"), Json(std::numeric_limits<double>::min()));
    EXPECT_EQ(Json::parse("1.7976931348623157e308"), Json(std::numeric_limits<double>::max()));
}

TEST(JsonReader, refusesNumbersThatJsonDoesNotKnow) {
    for (const char* broken : {"-", "+1", "01", "-01", "00", ".5", "5.", "1.e1", "-.5", "1e", "1e+", "1e1.5",
                               "0x10", "1_0", "--1", "1e999", "-1e999"}) {
        EXPECT_FALSE(Json::tryParse(broken)) << broken;
        EXPECT_FALSE(Json::tryParse('[' + QByteArray(broken) + ']')) << broken;
    }
}

TEST(JsonReader, readsTextOfAnyLength) {
    for (int length = 0; length < 70; ++length) {
        const QByteArray plain(length, 'x');
        EXPECT_EQ(text(plain), QString::fromUtf8(plain));
        EXPECT_EQ(text(plain + "\\n" + plain), QString::fromUtf8(plain + '\n' + plain));
        EXPECT_EQ(text(plain + "字👩‍👩‍👧"),
                  QString::fromUtf8(plain) + u"字👩‍👩‍👧"_s);
        EXPECT_FALSE(text(plain + '\n' + plain)) << "a control character must be escaped";
        EXPECT_FALSE(text(plain + "\\")) << "open to the end";
        EXPECT_FALSE(text(plain + '\xff'));
    }
}

TEST(JsonReader, readsEscapes) {
    EXPECT_EQ(text(R"(\"\\\/\b\f\n\r\t)"), u"\"\\/\b\f\n\r\t"_s);
    EXPECT_EQ(text(R"(a\u0041\u4f60\u00e9z)"), u"aA你éz"_s);
    EXPECT_EQ(text(R"(\ud83d\uDE00)"), u"😀"_s);
    EXPECT_EQ(text(R"(\u0000)"), QString(QChar(0)));
    EXPECT_EQ(text(R"(\ufffe\uffff)"), u"\ufffe\uffff"_s);
    EXPECT_EQ(text("\x7f"), QString(QChar(0x7f)));
    for (const char* broken : {R"(\x)", R"(\a)", R"(\U0041)", R"(\u)", R"(\u12)", R"(\u12g4)", R"(\u 123)",
                               R"(\u-123)", R"(\u+123)", R"(\ud83d)", R"(\ud83dx)", R"(\ud83d\n)",
                               R"(\ud83d\u0041)", R"(\ude00)", R"(\ud83d\ud83d\ude00)"}) {
        EXPECT_FALSE(text(broken)) << broken;
    }
}

TEST(JsonReader, refusesWhatIsNoUtf8) {
    for (const char* broken :
         {"\x80", "\xc2", "\xc0\xaf", "\xe0\x80\xaf", "\xe4\xbd", "\xed\xa0\xbd\xed\xb8\x80", "\xf0\x9f\x98",
          "\xf4\x90\x80\x80", "\xf8\x88\x80\x80\x80", "\xfe"}) {
        for (const QByteArray& around :
             {QByteArray(), QByteArray("\\n"), QByteArray("字"), QByteArray(40, 'x')}) {
            EXPECT_FALSE(text(around + broken)) << broken;
            EXPECT_FALSE(text(broken + around)) << broken;
        }
        EXPECT_FALSE(Json::tryParse("{\"" + QByteArray(broken) + "\":1}"));
    }
    EXPECT_FALSE(text("\xe4\xbd\\n\xa0")) << "a character in two parts";
    EXPECT_EQ(text("\xef\xbf\xbd"), u"\ufffd"_s) << "the replacement character itself is one as any other";
}

TEST(JsonReader, aMarkOfByteOrderIsSkippedBeforeTheTextAndKeptInsideIt) {
    const QByteArray mark("\xef\xbb\xbf");
    EXPECT_EQ(Json::parse(mark + "[1]"), Json(Json::Array{Json(1)}));
    EXPECT_FALSE(Json::tryParse(mark));
    EXPECT_FALSE(Json::tryParse(mark + mark + "[1]"));
    EXPECT_FALSE(Json::tryParse("[1," + mark + "2]"));
    EXPECT_EQ(text(mark + "a"), u"\ufeffa"_s) << "text that was copied out of a file may begin so";
    EXPECT_EQ(text("\\n" + mark), u"\n\ufeff"_s);
    EXPECT_EQ(Json::parse("{\"" + mark + "a\":1}").find(u"\ufeffa"_s)->toInteger(), 1);
}

TEST(JsonReader, zeroBytesBehindTheValueEndTheText) {
    EXPECT_EQ(Json::parse(QByteArray("[1]\n\0\0\0", 7)), Json(Json::Array{Json(1)}));
    EXPECT_FALSE(Json::tryParse(QByteArray("\0", 1)));
    EXPECT_FALSE(Json::tryParse(QByteArray("[1\0]", 4)));
    EXPECT_FALSE(Json::tryParse(QByteArray("\"a\0\"", 4)));
}

TEST(JsonReader, nestsToFiveHundredAndTwelveLevels) {
    EXPECT_TRUE(Json::tryParse(nested(512)));
    EXPECT_FALSE(Json::tryParse(nested(513)));
    const auto take = [](const Json&) { return true; };
    EXPECT_TRUE(Json::parseElements(nested(512), take));
    EXPECT_FALSE(Json::parseElements(nested(513), take));
    EXPECT_TRUE(Json::tryParse('[' + nested(300) + ',' + nested(300) + ']'))
        << "beside each other they do not add up";
    EXPECT_FALSE(Json::tryParse(QByteArray("{\"a\":").repeated(513)));
}

TEST(JsonReader, passesOverExactlyWhatItReads) {
    const QString texts[] = {
        QStringLiteral("{\"a\":[1,-2.5e-3,true,false,null,\"\\n\\u00e4\\ud83d\\ude00\"],\"a\":{}}"),
        QStringLiteral(" [ ] "),
        QStringLiteral("[1e400]"),
        QStringLiteral("[1e-400]"),
        QStringLiteral("[\"\\ud83d\"]"),
        QStringLiteral("[\"\\"),
        QStringLiteral("[1234567890123456789012]"),
        u'[' + QStringLiteral("9").repeated(400) + u']',
        QStringLiteral("[").repeated(512) + QStringLiteral("]").repeated(512),
        QStringLiteral("[").repeated(513) + QStringLiteral("]").repeated(513),
        QStringLiteral("[1]\0x").left(4),
        QString(QChar(0xFEFF)) + QStringLiteral("[1]"),
    };
    const QString wrong = QStringLiteral(" \"\\{}[]:,0-.eEtu\n好");
    int valid = 0;
    for (const QString& text : texts) {
        const auto compare = [&](const QString& each) {
            const QByteArray utf8 = each.toUtf8();
            const bool parses = Json::tryParse(utf8).has_value();
            EXPECT_EQ(JsonReader::isDocument(utf8), parses) << each.toStdString();
            valid += parses ? 1 : 0;
        };
        compare(text);
        for (qsizetype at = 0; at < std::min<qsizetype>(text.size(), 80); ++at) {
            compare(text.left(at));
            compare(QString(text).remove(at, 1));
            for (const QChar c : wrong)
                compare(QString(text).replace(at, 1, c));
        }
    }
    EXPECT_GT(valid, 100) << "else little was compared";
}

TEST(JsonReader, tellsWhereTheTextWentWrongAndNotWhatItSays) {
    const auto error = [](const QByteArray& broken) {
        try {
            Json::parse(broken);
        } catch (const Json::ParseError& failure) {
            return QByteArray(failure.what());
        }
        return QByteArray("none");
    };
    EXPECT_EQ(error(R"({"secret":1 2})"), "JSON syntax error at byte 12");
    EXPECT_EQ(error(""), "JSON syntax error");
    EXPECT_EQ(error("\"secret"), "JSON syntax error") << "no text at all";
    EXPECT_EQ(error(nested(600)), "JSON nested deeper than 512 levels");
}

TEST(JsonReader, namesThatRepeatAreToldFromThoseThatResembleThem) {
    QByteArray file = "[";
    Json::Array expected;
    for (int i = 0; i < 400; ++i) {
        // Of equal length, and equal at both ends.
        const QByteArray name = 'a' + QByteArray::number(100 + i % 7) + 'z';
        file += "{\"" + name + "\":" + QByteArray::number(i) + R"(,"id":1,"\u0069d2":2,"":3},)";
        expected.emplace_back(Json::Object{{QString::fromUtf8(name), Json(i)},
                                           {u"id"_s, Json(1)},
                                           {u"id2"_s, Json(2)},
                                           {QString(), Json(3)}});
    }
    file.back() = ']';
    EXPECT_EQ(Json::parse(file), Json(expected));
    EXPECT_FALSE(Json::tryParse("[{\"id\":1},{\"id\n\":1}]"));
    EXPECT_FALSE(Json::tryParse("[{\"id\":1},{\"id"));
}

}  // namespace
}  // namespace veltrin
