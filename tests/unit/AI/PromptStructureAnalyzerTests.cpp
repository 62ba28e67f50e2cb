#include "AI/PromptStructureAnalyzer.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Kind = PromptStructureKind;
using Blocks = std::map<Kind, QString>;

PromptStructureAnalysis analyze(const QString& content) {
    return PromptStructureAnalyzer::analyze(u"标题"_s, content);
}

TEST(PromptStructureAnalyzer, readsLabelledLinesAndNamesWhatIsMissing) {
    const auto analysis = analyze(u"  角色：律师\n任务：审合同\n"_s);
    EXPECT_EQ(analysis.title, u"标题"_s);
    EXPECT_EQ(analysis.content, u"角色：律师\n任务：审合同"_s);
    EXPECT_EQ(analysis.blocks, (Blocks{{Kind::role, u"律师"_s}, {Kind::task, u"审合同"_s}}));
    EXPECT_EQ(analysis.missing, (std::vector{Kind::context, Kind::constraint, Kind::output}));
    EXPECT_EQ(analysis.notes, (QStringList{u"补上上下文后，模型会少猜测场景和目标用户。"_s,
                                           u"补上约束后，可以减少跑题、虚构和过度发挥。"_s,
                                           u"补上输出格式后，结果会更可控，也更适合复制使用。"_s}));
}

TEST(PromptStructureAnalyzer, fillsBlocksFromTelltaleSentences) {
    const auto analysis = analyze(u"你是翻译。不要解释。输出 JSON。"_s);
    EXPECT_EQ(analysis.blocks, (Blocks{{Kind::role, u"你是翻译"_s},
                                       {Kind::task, u"你是翻译。不要解释。输出 JSON。"_s},
                                       {Kind::constraint, u"不要解释"_s},
                                       {Kind::output, u"输出 JSON"_s}}));
    EXPECT_EQ(analysis.missing, std::vector{Kind::context});
}

TEST(PromptStructureAnalyzer, anEmptyContentHasNoBlocksAndMissesAllKinds) {
    for (const QString& content : {QString(), u" \n\t "_s}) {
        const auto analysis = analyze(content);
        EXPECT_TRUE(analysis.content.isEmpty());
        EXPECT_TRUE(analysis.blocks.empty());
        EXPECT_EQ(analysis.missing,
                  (std::vector{Kind::role, Kind::task, Kind::context, Kind::constraint, Kind::output}));
        EXPECT_EQ(analysis.notes.size(), 4) << "a missing task has no note";
        EXPECT_EQ(analysis.notes.front(), u"补上角色后，模型会更容易选择专业视角和判断标准。"_s);
    }
}

TEST(PromptStructureAnalyzer, saysSoWhenNothingIsMissing) {
    const auto analysis = analyze(u"身份：a\n要做什么：b\n材料：c\n限制：d\n格式：e"_s);
    EXPECT_TRUE(analysis.missing.empty());
    EXPECT_EQ(analysis.notes, QStringList{u"当前提示词已经表达了核心任务，但结构还可以补齐。"_s});
}

TEST(PromptStructureAnalyzer, knowsEveryLabel) {
    const std::pair<Kind, QStringList> labels[] = {
        {Kind::role, {u"角色"_s, u"身份"_s, u"扮演"_s, u"Role"_s}},
        {Kind::task, {u"任务"_s, u"目标"_s, u"要做什么"_s, u"Task"_s}},
        {Kind::context, {u"上下文"_s, u"背景"_s, u"场景"_s, u"材料"_s, u"Context"_s}},
        {Kind::constraint, {u"约束"_s, u"限制"_s, u"要求"_s, u"不要"_s, u"注意"_s, u"Constraint"_s}},
        {Kind::output, {u"输出格式"_s, u"格式"_s, u"输出"_s, u"Output"_s}},
    };
    for (const auto& [kind, aliases] : labels) {
        for (const QString& alias : aliases) {
            for (const QString& front : {u""_s, u"- "_s, u"## "_s}) {
                for (const QString& colon : {u":"_s, u"："_s}) {
                    const auto blocks = analyze(front + alias + colon + u" x "_s).blocks;
                    ASSERT_TRUE(blocks.contains(kind)) << qPrintable(alias);
                    EXPECT_EQ(blocks.at(kind), u"x"_s);
                }
            }
        }
    }
}

TEST(PromptStructureAnalyzer, aLineWithoutALabelGoesOnWithTheOpenBlock) {
    const auto blocks = analyze(u"开头\n任务：一\n\n  二\r\n背景：三\n四"_s).blocks;
    EXPECT_EQ(blocks, (Blocks{{Kind::task, u"一\n  二"_s}, {Kind::context, u"三\n四"_s}}))
        << "lines before the first label belong to no block, empty ones to none either";
}

TEST(PromptStructureAnalyzer, aLabelThatComesTwiceLosesNothing) {
    EXPECT_EQ(analyze(u"要求：一\n任务：二\n注意：三"_s).blocks.at(Kind::constraint), u"一\n三"_s);
}

TEST(PromptStructureAnalyzer, aLabelNeedsItsColonRightBehindIt) {
    for (const QString& line : {u"角色"_s, u"角色 ：x"_s, u"角色定义：x"_s, u"* 角色：x"_s, u"role: x"_s})
        EXPECT_FALSE(analyze(line).blocks.contains(Kind::role)) << qPrintable(line);
}

TEST(PromptStructureAnalyzer, anEmptyLabelledBlockIsMissingAndGetsNoFallback) {
    const auto analysis = analyze(u"你是律师\n角色："_s);
    EXPECT_EQ(analysis.blocks.at(Kind::role), QString());
    EXPECT_EQ(analysis.missing.front(), Kind::role);
}

TEST(PromptStructureAnalyzer, telltaleWordsAreFoundInAnyCase) {
    const auto blocks = analyze(u"Please ACT AS a lawyer! You MUST be short? Give MarkDown"_s).blocks;
    EXPECT_EQ(blocks.at(Kind::role), u"Please ACT AS a lawyer"_s);
    EXPECT_EQ(blocks.at(Kind::constraint), u"You MUST be short"_s);
    EXPECT_EQ(blocks.at(Kind::output), u"Give MarkDown"_s);
}

TEST(PromptStructureAnalyzer, theFirstSentenceWithAnyOfTheWordsWins) {
    EXPECT_EQ(analyze(u"无关。必须短。不要长。"_s).blocks.at(Kind::constraint), u"必须短"_s);
}

TEST(PromptStructureAnalyzer, aTextWhoseLowerCaseIsLongerKeepsItsSentences) {
    EXPECT_EQ(analyze(u"İİİİİİ. İ must stay. end"_s).blocks.at(Kind::constraint), u"İ must stay"_s);
}

TEST(PromptStructureAnalyzer, takesAnyUtf16) {
    const QString lone = QChar(0xD800) + u"你是。"_s + QChar(0xDC00);
    EXPECT_EQ(analyze(lone).blocks.at(Kind::role), QChar(0xD800) + u"你是"_s);
}

}  // namespace
}  // namespace veltrin
