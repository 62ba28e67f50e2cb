#include "AI/TranslationOutputGuard.h"
#include "support/Slowdown.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using TranslationOutputGuard::needsRetry;

TEST(TranslationOutputGuard, wantsARetryForTheSourceInOtherClothes) {
    EXPECT_TRUE(needsRetry(u"Hello  World"_s, u" “hello\tworld” "_s, std::nullopt));
    EXPECT_TRUE(needsRetry(u"Hello"_s, u"`'HELLO'`"_s, TranslationLanguage::english));
    EXPECT_TRUE(needsRetry(u"你好"_s, u"‘你好’"_s, TranslationLanguage::chinese));
}

TEST(TranslationOutputGuard, wantsARetryForNothing) {
    EXPECT_TRUE(needsRetry(u"你好"_s, u" \n"_s, std::nullopt));
    EXPECT_TRUE(needsRetry(u"你好"_s, u"\"\""_s, TranslationLanguage::automatic));
    EXPECT_TRUE(needsRetry(u""_s, u"x"_s, std::nullopt));
}

TEST(TranslationOutputGuard, infersTheDirectionFromTheScript) {
    EXPECT_FALSE(needsRetry(u"你好"_s, u"Hello"_s, std::nullopt));
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"你好"_s, std::nullopt));
    EXPECT_FALSE(needsRetry(u"你好世界"_s, u"你好世界！"_s, std::nullopt))
        << "four of five characters are 0.8";
    EXPECT_TRUE(needsRetry(u"Hello there"_s, u"there Hello"_s, std::nullopt)) << "the same seven characters";
    EXPECT_FALSE(needsRetry(u"Hello there"_s, u"there, Hello"_s, std::nullopt)) << "seven of eight are 0.875";
    EXPECT_TRUE(needsRetry(u"一二三四五六七八九十百千万"_s, u"万千百十九八七六五四三二一"_s, std::nullopt));
}

TEST(TranslationOutputGuard, doesNotJudgeASourceOfDigits) {
    EXPECT_FALSE(needsRetry(u"12345"_s, u"12345!"_s, std::nullopt));
    EXPECT_TRUE(needsRetry(u"12345"_s, u" 12345 "_s, std::nullopt));
}

TEST(TranslationOutputGuard, wantsTheScriptOfTheTarget) {
    EXPECT_TRUE(needsRetry(u"Hello"_s, u"Hello!"_s, TranslationLanguage::chinese));
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"你好"_s, TranslationLanguage::chinese));
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"你好"_s, TranslationLanguage::japanese))
        << "Han counts for Japanese";
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"こんにちは"_s, TranslationLanguage::japanese));
    EXPECT_TRUE(needsRetry(u"Hello"_s, u"안녕"_s, TranslationLanguage::japanese));
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"안녕"_s, TranslationLanguage::korean));
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"\u1112\u1161\u11AB"_s, TranslationLanguage::korean));
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"Привет"_s, TranslationLanguage::russian));
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"مرحبا"_s, TranslationLanguage::arabic));
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"สวัสดี"_s, TranslationLanguage::thai));
    for (const auto target :
         {TranslationLanguage::english, TranslationLanguage::french, TranslationLanguage::german,
          TranslationLanguage::spanish, TranslationLanguage::portuguese, TranslationLanguage::italian,
          TranslationLanguage::vietnamese}) {
        EXPECT_FALSE(needsRetry(u"你好"_s, u"Salut"_s, target));
        EXPECT_TRUE(needsRetry(u"你好"_s, u"您好"_s, target));
    }
    for (const auto target : {TranslationLanguage::russian, TranslationLanguage::arabic,
                              TranslationLanguage::thai, TranslationLanguage::korean}) {
        EXPECT_TRUE(needsRetry(u"你好"_s, u"Hello"_s, target));
    }
}

TEST(TranslationOutputGuard, testsTheEndsOfEachScriptRange) {
    const auto accepts = [](char16_t unit, TranslationLanguage target) {
        return !needsRetry(u"source"_s, QString(QChar(unit)), target);
    };
    EXPECT_TRUE(accepts(0x4E00, TranslationLanguage::chinese) &&
                accepts(0x9FFF, TranslationLanguage::chinese));
    EXPECT_FALSE(accepts(0x4DFF, TranslationLanguage::chinese) ||
                 accepts(0xA000, TranslationLanguage::chinese));
    EXPECT_TRUE(accepts(0x3040, TranslationLanguage::japanese) &&
                accepts(0x30FF, TranslationLanguage::japanese));
    EXPECT_FALSE(accepts(0x303F, TranslationLanguage::japanese) ||
                 accepts(0x3100, TranslationLanguage::japanese));
    EXPECT_TRUE(accepts(0x0400, TranslationLanguage::russian) &&
                accepts(0x04FF, TranslationLanguage::russian));
    EXPECT_FALSE(accepts(0x03FF, TranslationLanguage::russian) ||
                 accepts(0x0500, TranslationLanguage::russian));
    EXPECT_TRUE(accepts(0x0E7F, TranslationLanguage::thai) && accepts(0x06FF, TranslationLanguage::arabic));
    EXPECT_FALSE(accepts(0xD7B0, TranslationLanguage::korean) ||
                 accepts(0x1200, TranslationLanguage::korean));
    EXPECT_FALSE(accepts(u'é', TranslationLanguage::english))
        << "an accented letter alone is no Latin letter";
}

TEST(TranslationOutputGuard, acceptsAnyOtherTextForAnAutomaticTarget) {
    EXPECT_FALSE(needsRetry(u"Hello"_s, u"!"_s, TranslationLanguage::automatic));
}

TEST(TranslationOutputGuard, staysQuickOnLongTexts) {
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(needsRetry(u"句子很长，"_s.repeated(50000 / slowdown),
                           u"句子很长，"_s.repeated(50000 / slowdown - 1), std::nullopt));
    EXPECT_LT(timer.elapsed(), 2000);
}

}  // namespace
}  // namespace veltrin
