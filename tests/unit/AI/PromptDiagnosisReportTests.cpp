#include "AI/PromptIntelligenceModels.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Kind = PromptStructureKind;
using BlockKind = PromptAssetBlockKind;

constexpr Date now{1795200715};
const QString source = u"写一首诗"_s;

PromptDiagnosisReport parse(const QString& answer) {
    return PromptDiagnosisReport::parse(answer, source, now);
}

/// The names and scores, as "name=score".
QStringList scores(const PromptDiagnosisReport& report) {
    QStringList texts;
    for (const auto& each : report.dimensions)
        texts.append(each.name + u'=' + QString::number(each.score));
    return texts;
}

TEST(PromptDiagnosisReport, readsWhatItAskedFor) {
    const auto report = parse(
        uR"(好的：```json
{"overallScore": 81.5, "verdict": "可用", "targetScenario": "writing", "modelFit": "thinking_on，推理多",
 "dimensions": [{"name": "角色定义", "score": 60, "summary": "弱", "evidence": "没有角色"}],
 "issues": [{"severity": "high", "title": "无格式", "detail": "不稳定", "fix": "写明格式",
             "affectedBlock": "output"}],
 "rewrites": [{"title": "稳定版", "intent": "直接执行", "prompt": "新提示词", "tags": ["稳定", "短"]},
              {"title": "二", "prompt": "另一个"}],
 "suggestedAsset": {"title": "诗", "summary": "写诗", "categoryTag": "writing", "tags": ["诗"],
   "source": "diagnosis", "sourceReference": "ref", "blocks": [{"kind": "role", "content": "诗人"}],
   "modelHint": {"preferredProvider": "ollama", "preferredModel": "qwen3:8b", "thinkingMode": "alwaysOn",
                 "reason": "推理"}}}
```)"_s);
    EXPECT_EQ(report.originalText, source);
    EXPECT_EQ(report.createdAt, now);
    EXPECT_FALSE(report.id.isNull());
    EXPECT_EQ(report.overallScore, 81.5);
    EXPECT_EQ(report.verdict, u"可用"_s);
    EXPECT_EQ(report.targetScenario, u"writing"_s);
    EXPECT_EQ(report.modelFit, u"thinking_on，推理多"_s);
    ASSERT_EQ(report.dimensions.size(), 1U);
    EXPECT_EQ(report.dimensions[0].name, u"角色定义"_s);
    EXPECT_EQ(report.dimensions[0].score, 60);
    EXPECT_EQ(report.dimensions[0].summary, u"弱"_s);
    EXPECT_EQ(report.dimensions[0].evidence, u"没有角色"_s);
    ASSERT_EQ(report.issues.size(), 1U);
    EXPECT_EQ(report.issues[0].severity, u"high"_s);
    EXPECT_EQ(report.issues[0].title, u"无格式"_s);
    EXPECT_EQ(report.issues[0].detail, u"不稳定"_s);
    EXPECT_EQ(report.issues[0].fix, u"写明格式"_s);
    EXPECT_EQ(report.issues[0].affectedBlock, Kind::output);
    ASSERT_EQ(report.rewrites.size(), 2U);
    EXPECT_EQ(report.rewrites[0].title, u"稳定版"_s);
    EXPECT_EQ(report.rewrites[0].intent, u"直接执行"_s);
    EXPECT_EQ(report.rewrites[0].prompt, u"新提示词"_s);
    EXPECT_EQ(report.rewrites[0].tags, (QStringList{u"稳定"_s, u"短"_s}));
    ASSERT_TRUE(report.suggestedAsset);
    const PromptAsset& asset = *report.suggestedAsset;
    EXPECT_EQ(asset.title, u"诗"_s);
    EXPECT_EQ(asset.summary, u"写诗"_s);
    EXPECT_EQ(asset.categoryTag, u"writing"_s);
    EXPECT_EQ(asset.tags, QStringList{u"诗"_s});
    EXPECT_EQ(asset.source, PromptAssetSource::diagnosis);
    EXPECT_EQ(asset.sourceReference, u"ref"_s);
    EXPECT_EQ(asset.createdAt, now);
    EXPECT_EQ(asset.updatedAt, now);
    ASSERT_EQ(asset.blocks.size(), 1U);
    EXPECT_EQ(asset.blocks[0].kind, BlockKind::role);
    EXPECT_EQ(asset.blocks[0].content, u"诗人"_s);
    EXPECT_EQ(asset.modelHint.preferredModel, u"qwen3:8b"_s);
    EXPECT_EQ(asset.modelHint.thinkingMode, ModelThinkingMode::alwaysOn);
}

TEST(PromptDiagnosisReport, anOlderScoreWithoutAVerdictIsJudgedByIt) {
    const auto report = parse(uR"({"overall": 72})"_s);
    EXPECT_EQ(report.overallScore, 72);
    EXPECT_EQ(report.verdict, u"基本可用，建议补齐关键约束"_s);
    EXPECT_EQ(report.targetScenario, u"general"_s);
    EXPECT_EQ(report.modelFit, u"smart"_s);
    EXPECT_EQ(scores(report), (QStringList{u"角色定义=72"_s, u"任务描述=72"_s, u"上下文=61.2"_s,
                                           u"约束条件=57.6"_s, u"输出格式=54"_s}));
    EXPECT_TRUE(report.issues.empty());
    EXPECT_FALSE(report.suggestedAsset);
}

TEST(PromptDiagnosisReport, readsTheOlderFormat) {
    const auto report = parse(
        uR"({"overall": 60, "summary": "旧", "scenario": "chat", "recommendedThinkingMode": "thinking_off",
"scores": [{"label": "清晰", "score": 55}, {"name": "完整"}, {}], "rewrite": "改写",
"issues": [{"problem": "空泛", "evidence": "没有对象", "suggestion": "写明对象"}]})"_s);
    EXPECT_EQ(report.verdict, u"旧"_s);
    EXPECT_EQ(report.targetScenario, u"chat"_s);
    EXPECT_EQ(report.modelFit, u"thinking_off"_s);
    EXPECT_EQ(scores(report), (QStringList{u"清晰=55"_s, u"完整=60"_s, u"质量维度=60"_s}));
    ASSERT_EQ(report.rewrites.size(), 1U);
    EXPECT_EQ(report.rewrites[0].title, u"结构化重写"_s);
    EXPECT_EQ(report.rewrites[0].intent, u"兼容旧诊断格式"_s);
    EXPECT_EQ(report.rewrites[0].prompt, u"改写"_s);
    ASSERT_EQ(report.issues.size(), 1U);
    EXPECT_EQ(report.issues[0].title, u"空泛"_s);
    EXPECT_EQ(report.issues[0].detail, u"没有对象"_s);
    EXPECT_EQ(report.issues[0].fix, u"写明对象"_s);
}

TEST(PromptDiagnosisReport, freeTextIsAReportThatSaysSo) {
    for (const QString& answer : {u"我觉得不错"_s, QString(), u"{"_s, u"[1]"_s, u"{\"a\": 数字}"_s}) {
        const auto report = parse(answer);
        EXPECT_EQ(report.overallScore, 53);
        EXPECT_EQ(report.verdict, u"无法解析 AI 返回的诊断 JSON。"_s);
        EXPECT_EQ(report.targetScenario, u"general"_s);
        EXPECT_EQ(report.modelFit, u"smart"_s);
        EXPECT_EQ(scores(report).constFirst(), u"角色定义=53"_s);
        EXPECT_EQ(report.dimensions.size(), 5U);
        ASSERT_EQ(report.issues.size(), 1U);
        EXPECT_EQ(report.issues[0].severity, u"high"_s);
        EXPECT_EQ(report.issues[0].title, u"诊断结果解析失败"_s);
        EXPECT_EQ(report.issues[0].detail, report.verdict);
        EXPECT_EQ(report.issues[0].fix, u"请重试，或切换到更稳定的模型。"_s);
        ASSERT_EQ(report.rewrites.size(), 1U);
        EXPECT_EQ(report.rewrites[0].title, u"原文保留"_s);
        EXPECT_EQ(report.rewrites[0].intent, u"解析失败兜底"_s);
        EXPECT_EQ(report.rewrites[0].prompt, source);
    }
}

TEST(PromptDiagnosisReport, aScoreJustBelowAStepFallsToTheLowerVerdict) {
    const auto verdict = [](const QString& score) {
        return parse(u"{\"overallScore\": %1}"_s.arg(score)).verdict;
    };
    EXPECT_EQ(verdict(u"85"_s), u"结构稳定，可直接使用"_s);
    EXPECT_EQ(verdict(u"84.9"_s), u"基本可用，建议补齐关键约束"_s);
    EXPECT_EQ(verdict(u"69.9"_s), u"存在明显缺口，建议先修复再使用"_s);
    EXPECT_EQ(verdict(u"49.9"_s), u"风险较高，需要重写"_s);
    EXPECT_EQ(verdict(u"\"many\""_s), u"存在明显缺口，建议先修复再使用"_s) << "no number reads 50";
}

TEST(PromptDiagnosisReport, anIssueWithoutWordsGetsItsDefaults) {
    const auto report = parse(
        uR"({"issues": [{}, {"affectedBlock": "constraints"}, 7,
{"affectedBlock": "constraint"}, {"affectedBlock": "nowhere"}]})"_s);
    ASSERT_EQ(report.issues.size(), 4U) << "what is no object is left out";
    EXPECT_EQ(report.issues[0].severity, u"medium"_s);
    EXPECT_EQ(report.issues[0].title, u"提示词问题"_s);
    EXPECT_EQ(report.issues[0].detail, u"补充更明确的说明。"_s);
    EXPECT_EQ(report.issues[0].fix, u"根据问题补齐缺失信息。"_s);
    EXPECT_EQ(report.issues[0].affectedBlock, std::nullopt);
    EXPECT_EQ(report.issues[1].affectedBlock, Kind::constraint) << "the word the prompt asks for";
    EXPECT_EQ(report.issues[2].affectedBlock, Kind::constraint);
    EXPECT_EQ(report.issues[3].affectedBlock, std::nullopt);
}

TEST(PromptDiagnosisReport, membersOfOtherTypesCountAsAbsent) {
    const auto report = parse(
        uR"({"overallScore": null, "overall": 88, "verdict": 3, "dimensions": {},
"issues": "none", "rewrites": [], "rewrite": ["x"], "suggestedAsset": "none"})"_s);
    EXPECT_EQ(report.overallScore, 88);
    EXPECT_EQ(report.verdict, u"结构稳定，可直接使用"_s);
    EXPECT_EQ(report.dimensions.size(), 5U);
    ASSERT_EQ(report.rewrites.size(), 1U);
    EXPECT_EQ(report.rewrites[0].title, u"原文"_s);
    EXPECT_EQ(report.rewrites[0].intent, u"未生成重写版本"_s);
    EXPECT_EQ(report.rewrites[0].prompt, source);
    EXPECT_FALSE(report.suggestedAsset);
}

TEST(PromptDiagnosisReport, anAssetIsReadWithItsBlocksAsAnObject) {
    const auto report = parse(
        uR"({"suggestedAsset": {"source": "elsewhere", "blocks":
{"task": "审合同", "constraints": "不要编造", "constraint": "短", "role": 3, "other": "x", "output": ""},
"modelHint": {"thinkingMode": "smart | alwaysOn"}}})"_s);
    ASSERT_TRUE(report.suggestedAsset);
    const PromptAsset& asset = *report.suggestedAsset;
    EXPECT_EQ(asset.title, u"诊断修复提示词"_s);
    EXPECT_EQ(asset.source, PromptAssetSource::diagnosis);
    EXPECT_EQ(asset.modelHint.thinkingMode, ModelThinkingMode::smart);
    ASSERT_EQ(asset.blocks.size(), 4U);
    EXPECT_EQ(asset.blocks[0].kind, BlockKind::task);
    EXPECT_EQ(asset.blocks[1].kind, BlockKind::constraints);
    EXPECT_EQ(asset.blocks[1].content, u"不要编造"_s);
    EXPECT_EQ(asset.blocks[2].kind, BlockKind::constraints);
    EXPECT_EQ(asset.blocks[3].kind, BlockKind::output);
}

TEST(DiagnosisResult, showsTheReport) {
    const auto report = parse(
        uR"({"overallScore": 64, "dimensions": [{"label": "甲", "score": 1}, {"name": "乙",
"score": 2}], "issues": [{"title": "题", "detail": "因", "fix": "改"}, {"title": "题", "detail": "因", "fix": " "}],
"rewrites": [{"prompt": "一"}, {"content": "二"}]})"_s);
    const DiagnosisResult result(report);
    EXPECT_EQ(result.overall, 64);
    EXPECT_EQ(result.scores, (std::vector<DiagnosisResult::Score>{{u"甲"_s, 1}, {u"乙"_s, 2}}));
    EXPECT_EQ(result.issues, (QStringList{u"题：因\n建议：改"_s, u"题：因"_s}));
    EXPECT_EQ(result.rewrite, u"一"_s);
    EXPECT_EQ(result.report, report);
}

TEST(DiagnosisResult, showsTheSourceWhenThereIsNoRewrite) {
    PromptDiagnosisReport report;
    report.originalText = source;
    EXPECT_EQ(DiagnosisResult(report).rewrite, source);
    EXPECT_EQ(DiagnosisResult(parse(u"{}"_s)).rewrite, source);
}

}  // namespace
}  // namespace veltrin
