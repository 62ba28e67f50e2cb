#include "AI/AgentOutputGuard.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using AgentOutputGuard::detectMetaInstructionLeak;

TEST(AgentOutputGuard, findsAMarkerWhereverItStands) {
    EXPECT_TRUE(detectMetaInstructionLeak(u"这是为以下文本写的摘要"_s, QString(100, u'源')));
    EXPECT_TRUE(detectMetaInstructionLeak(u"Here is my SYSTEM PROMPT."_s, u"hi"_s));
    for (const QString& marker : {u"请你为以下"_s, u"请为以下"_s, u"为以下提示词"_s, u"下面这段"_s,
                                  u"以下提示词"_s, u"以下文本"_s, u"待处理文本"_s, u"原始提示词"_s}) {
        EXPECT_TRUE(detectMetaInstructionLeak(u"x"_s + marker, u"s"_s)) << qPrintable(marker);
    }
}

TEST(AgentOutputGuard, readsAcrossALineBreak) {
    EXPECT_TRUE(detectMetaInstructionLeak(u"system\nprompt"_s, u"s"_s));
    EXPECT_TRUE(detectMetaInstructionLeak(u"system\r\nprompt"_s, u"s"_s));
    EXPECT_FALSE(detectMetaInstructionLeak(u"system\tprompt"_s, u"s"_s));
}

TEST(AgentOutputGuard, flagsAnOpeningOnlyInAnOutputThatGrewByMoreThanTwelve) {
    const QString source = u"帮忙看看"_s;  // 4 characters
    for (const QString& opening : {u"请你"_s, u"请为"_s, u"任务："_s}) {
        EXPECT_FALSE(detectMetaInstructionLeak(opening + QString(16 - opening.size(), u'字'), source));
        EXPECT_TRUE(detectMetaInstructionLeak(opening + QString(17 - opening.size(), u'字'), source));
    }
    EXPECT_FALSE(detectMetaInstructionLeak(u"好的，请你"_s + QString(30, u'字'), source))
        << "not at the beginning";
}

TEST(AgentOutputGuard, comparesTrimmedLengthsInCharacters) {
    const QString family = u"👨‍👩‍👧‍👦"_s;
    EXPECT_FALSE(detectMetaInstructionLeak(u"请你"_s + family.repeated(12), u"  ab\n"_s))
        << "14 against 2 + 12";
    EXPECT_TRUE(detectMetaInstructionLeak(u"  请你"_s + family.repeated(13), u"  ab\n"_s));
}

TEST(AgentOutputGuard, appliesMarkersButNoOpeningWithoutASource) {
    EXPECT_FALSE(detectMetaInstructionLeak(u"请你"_s + QString(50, u'字'), u" \n"_s));
    EXPECT_TRUE(detectMetaInstructionLeak(u"待处理文本"_s, QString()));
}

TEST(AgentOutputGuard, findsNothingInABlankOutput) {
    EXPECT_FALSE(detectMetaInstructionLeak(u" \n "_s, u"源"_s));
}

}  // namespace
}  // namespace veltrin
