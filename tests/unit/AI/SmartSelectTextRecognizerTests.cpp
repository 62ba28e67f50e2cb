#include "AI/SmartSelectTextRecognizer.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Kind = SmartSelectRecognition::Kind;

SmartSelectRecognition recognized(const QString& text) {
    return SmartSelectTextRecognizer::recognize(text);
}

Kind kindOf(const QString& text) {
    return recognized(text).kind;
}

std::optional<QString> languageOf(const QString& text) {
    return recognized(text).language;
}

TEST(SmartSelectTextRecognizerTest, aTextOfBlanksIsATextOfLittleConfidence) {
    for (const QString& blanks : {u""_s, u"   "_s, u"\n\t \n"_s}) {
        EXPECT_EQ(kindOf(blanks), Kind::text);
        EXPECT_EQ(recognized(blanks).confidence, 0.2);
    }
}

TEST(SmartSelectTextRecognizerTest, eachKindHasItsWordsAndConfidence) {
    struct Row {
        QString text;
        Kind kind;
        double confidence;
        QString title;
        QString label;
    };
    const Row rows[] = {
        {u" {\"a\": [1, 2]} \n"_s, Kind::json, 0.94, u"JSON"_s, u"JSON 解析"_s},
        {u"https://example.org/a?b=c"_s, Kind::url, 0.92, u"链接"_s, u"链接识别"_s},
        {u"error: no such file"_s, Kind::error, 0.88, u"错误"_s, u"错误分析"_s},
        {u"func add(a) { return a }"_s, Kind::code, 0.86, u"代码 · Swift"_s, u"代码解释"_s},
        {u"Dear Sir or Madam"_s, Kind::email, 0.74, u"邮件"_s, u"邮件识别"_s},
        {u"甲：你好\n乙：再见"_s, Kind::chat, 0.7, u"对话"_s, u"对话识别"_s},
        {u"今天天气很好"_s, Kind::text, 0.55, u"文本"_s, u"文本识别"_s},
    };
    for (const Row& row : rows) {
        const auto found = recognized(row.text);
        EXPECT_EQ(rawValue(found.kind), rawValue(row.kind)) << qPrintable(row.text);
        EXPECT_EQ(found.confidence, row.confidence);
        EXPECT_EQ(found.displayTitle(), row.title);
        EXPECT_EQ(found.label(), row.label);
    }
}

TEST(SmartSelectTextRecognizerTest, bracesAroundWhatIsNoJsonGoOnThroughTheLaterRules) {
    EXPECT_EQ(kindOf(u"{not json}"_s), Kind::text);
    EXPECT_EQ(kindOf(u"{ return x; }"_s), Kind::code);
    EXPECT_EQ(kindOf(u"[error: 5]"_s), Kind::error);
    EXPECT_EQ(kindOf(u"{\"a\":1]"_s), Kind::text);
    EXPECT_EQ(kindOf(u"\"only a string\""_s), Kind::text);
}

TEST(SmartSelectTextRecognizerTest, theOrderOfTheRulesDecides) {
    EXPECT_EQ(kindOf(u"[\"error: one\"]"_s), Kind::json) << "a list is JSON even when it tells of an error";
    EXPECT_EQ(kindOf(u"Traceback (most recent call last):\n    def f():\n        return 1;"_s), Kind::error);
    EXPECT_EQ(kindOf(u"https://example.org/error:"_s), Kind::url);
    EXPECT_EQ(kindOf(u"import a\nfrom b\nThanks, C"_s), Kind::code);
    EXPECT_EQ(kindOf(u"Subject: a\nTo: b"_s), Kind::email);
}

TEST(SmartSelectTextRecognizerTest, anAddressWithABlankInItIsNone) {
    EXPECT_EQ(kindOf(u"https://example.org/a b"_s), Kind::text);
    EXPECT_EQ(kindOf(u"https://example.org/a\u00A0b"_s), Kind::text);
    EXPECT_EQ(kindOf(u"https://example.org\nhttps://example.com"_s), Kind::chat);
    EXPECT_EQ(kindOf(u"see https://example.org"_s), Kind::text);
    EXPECT_EQ(kindOf(u"  www.example.org\n"_s), Kind::url) << "blanks around it do not count";
}

TEST(SmartSelectTextRecognizerTest, anAddressMayBeginInCapitals) {
    EXPECT_EQ(kindOf(u"HTTPS://EXAMPLE.ORG"_s), Kind::url);
    EXPECT_EQ(kindOf(u"Www.Example.Org"_s), Kind::url);
}

TEST(SmartSelectTextRecognizerTest, theTwoSitesNeedTheirSlash) {
    EXPECT_EQ(kindOf(u"github.com/a/b"_s), Kind::url);
    EXPECT_EQ(kindOf(u"figma.com/file/x"_s), Kind::url);
    EXPECT_EQ(kindOf(u"github.community"_s), Kind::text);
}

TEST(SmartSelectTextRecognizerTest, oneLineWithAKeywordAndThreeSymbolsIsCode) {
    EXPECT_EQ(kindOf(u"let it be {now};"_s), Kind::code);
}

TEST(SmartSelectTextRecognizerTest, codeTakesKeywordsOrOneWithSymbolsOrAnIndentWithSymbols) {
    EXPECT_EQ(kindOf(u"let it be"_s), Kind::text);
    EXPECT_EQ(kindOf(u"let it be; now"_s), Kind::text) << "one keyword and one symbol";
    EXPECT_EQ(kindOf(u"let it be the class of 99"_s), Kind::code) << "two keywords";
    EXPECT_EQ(kindOf(u"let let let it be"_s), Kind::text) << "a keyword counts once";
    EXPECT_EQ(kindOf(u"a();\n    b"_s), Kind::code);
    EXPECT_EQ(kindOf(u"a();\n\tb"_s), Kind::code);
    EXPECT_EQ(kindOf(u"a();\n   b"_s), Kind::text) << "three blanks are no indent";
    EXPECT_EQ(kindOf(u"    a();"_s), Kind::text) << "the first line's own indent is trimmed away";
}

TEST(SmartSelectTextRecognizerTest, theLanguageIsToldByTheFirstRuleThatHolds) {
    EXPECT_EQ(languageOf(u"import SwiftUI\nlet x"_s), u"Swift"_s);
    EXPECT_EQ(languageOf(u"let a\nvar body: some View"_s), u"Swift"_s);
    EXPECT_EQ(languageOf(u"const f = () => func x"_s), u"Swift"_s);
    EXPECT_EQ(languageOf(u"function f() { return 1 }"_s), u"JavaScript"_s);
    EXPECT_EQ(languageOf(u"console.log(1); return 2"_s), u"JavaScript"_s);
    EXPECT_EQ(languageOf(u"def f():\n    return 1"_s), u"Python"_s);
    EXPECT_EQ(languageOf(u"#!/usr/bin/python\nimport os\nclass A"_s), u"Python"_s);
    EXPECT_EQ(languageOf(u"SELECT a FROM b WHERE c"_s), u"SQL"_s);
    EXPECT_EQ(languageOf(u"#include <a>\nstruct B;"_s), u"C/C++"_s);
    EXPECT_EQ(languageOf(u"enum A { struct B }"_s), std::nullopt);
    EXPECT_EQ(recognized(u"enum A { struct B }"_s).displayTitle(), u"代码"_s);
}

TEST(SmartSelectTextRecognizerTest, anErrorShowsNoLanguageInItsTitle) {
    const auto python = recognized(u"Traceback (most recent call last)"_s);
    EXPECT_EQ(python.language, u"Python"_s);
    EXPECT_EQ(python.displayTitle(), u"错误"_s);
}

TEST(SmartSelectTextRecognizerTest, aMessageWithoutCodeIsAnErrorWithoutALanguage) {
    const auto plain = recognized(u"error: disk full"_s);
    EXPECT_EQ(plain.kind, Kind::error);
    EXPECT_EQ(plain.language, std::nullopt);
    EXPECT_EQ(plain.displayTitle(), u"错误"_s);
}

TEST(SmartSelectTextRecognizerTest, aLineWithThanksIsAnEmail) {
    EXPECT_EQ(kindOf(u"Many thanks, and see you soon"_s), Kind::email);
    EXPECT_EQ(kindOf(u"Best Regards\nA"_s), Kind::email);
}

TEST(SmartSelectTextRecognizerTest, twoLinesOfWhichOneHoldsAColonAreAChat) {
    EXPECT_EQ(kindOf(u"A: hello\nhello yourself"_s), Kind::chat) << "half is enough";
    EXPECT_EQ(kindOf(u"hello\n甲：好"_s), Kind::chat);
    EXPECT_EQ(kindOf(u"A: hello\nb\nc"_s), Kind::text) << "less than half is not";
}

TEST(SmartSelectTextRecognizerTest, oneLineWithAColonIsNoChat) {
    EXPECT_EQ(kindOf(u"A: hello"_s), Kind::text);
    EXPECT_EQ(kindOf(u"A: hello\n \t\n\n"_s), Kind::text);
}

TEST(SmartSelectTextRecognizerTest, emptyLinesOfAChatDoNotCount) {
    EXPECT_EQ(kindOf(u"甲：好\n\n乙：好\n丙"_s), Kind::chat);
}

TEST(SmartSelectTextRecognizerTest, wordsThatShareLettersAreAllFound) {
    EXPECT_EQ(kindOf(u"from where"_s), Kind::text);
    EXPECT_EQ(kindOf(u"a from  where b"_s), Kind::code);
    EXPECT_EQ(languageOf(u"select a from b"_s), u"SQL"_s) << "\"from \" and \" from \" in one place";
}

}  // namespace
}  // namespace veltrin
