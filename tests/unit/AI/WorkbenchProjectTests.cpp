#include "AI/WorkbenchProject.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using ArtifactType = GeneratedArtifact::ArtifactType;

constexpr Date now{1795200715};
const WorkbenchSource source{u"mixed"_s, u"辅助工作台输入"_s, u"一张照片"_s};

WorkbenchProject parse(const QString& answer) {
    return WorkbenchProject::parse(answer, source, now);
}

TEST(WorkbenchProject, readsWhatItAskedFor) {
    const auto project = parse(
        uR"({"userGoal": "复刻画风", "detectedScenario": "painting",
"insights": [{"kind": "style", "title": "画风", "detail": "水彩"}, {"title": "色", "content": "暖"}],
"promptAsset": {"title": "水彩", "blocks": {"task": "画一张水彩"}},
"artifacts": [{"type": "memoryAction", "title": "动作", "summary": "说明", "content": "规则", "tags": ["快捷动作"]},
              {"type": "plainPrompt", "content": "画一张水彩猫"}],
"nextQuestions": ["要多大？", 3]})"_s);
    EXPECT_FALSE(project.id.isNull());
    EXPECT_EQ(project.source, source);
    EXPECT_EQ(project.createdAt, now);
    EXPECT_EQ(project.userGoal, u"复刻画风"_s);
    EXPECT_EQ(project.detectedScenario, u"painting"_s);
    ASSERT_EQ(project.insights.size(), 2U);
    EXPECT_EQ(project.insights[0].kind, u"style"_s);
    EXPECT_EQ(project.insights[0].title, u"画风"_s);
    EXPECT_EQ(project.insights[0].detail, u"水彩"_s);
    EXPECT_EQ(project.insights[1].kind, u"insight"_s);
    EXPECT_EQ(project.insights[1].detail, u"暖"_s);
    ASSERT_TRUE(project.promptAsset);
    EXPECT_EQ(project.promptAsset->source, PromptAssetSource::workbench);
    ASSERT_EQ(project.artifacts.size(), 2U);
    EXPECT_EQ(project.artifacts[0].type, ArtifactType::memoryAction);
    EXPECT_EQ(project.artifacts[0].title, u"动作"_s);
    EXPECT_EQ(project.artifacts[0].summary, u"说明"_s);
    EXPECT_EQ(project.artifacts[0].tags, QStringList{u"快捷动作"_s});
    EXPECT_EQ(project.nextQuestions, QStringList{u"要多大？"_s});
    EXPECT_EQ(project.primaryPromptText(), u"画一张水彩猫"_s);
}

TEST(WorkbenchProject, anAnswerThatIsNoJsonBecomesTheOneArtifact) {
    for (const QString& answer : {u" 画一只猫 "_s, u"{画一只猫"_s, QString()}) {
        const auto project = parse(answer);
        EXPECT_EQ(project.userGoal, u"根据输入材料生成可复用提示词"_s);
        EXPECT_EQ(project.detectedScenario, u"general"_s);
        ASSERT_EQ(project.insights.size(), 1U);
        EXPECT_EQ(project.insights[0].title, u"未解析为结构化结果"_s);
        EXPECT_EQ(project.insights[0].detail, u"已保留模型原始输出。"_s);
        EXPECT_FALSE(project.promptAsset);
        ASSERT_EQ(project.artifacts.size(), 1U);
        EXPECT_EQ(project.artifacts[0].type, ArtifactType::plainPrompt);
        EXPECT_EQ(project.artifacts[0].title, u"反推提示词"_s);
        EXPECT_EQ(project.artifacts[0].summary, u"模型原始输出"_s);
        EXPECT_EQ(project.artifacts[0].content, answer);
        EXPECT_TRUE(project.nextQuestions.isEmpty());
    }
}

TEST(WorkbenchProject, anArtifactWithoutATypeKeepsItsContent) {
    const auto project =
        parse(uR"({"artifacts": [{"content": "留下"}, {"type": "unheard", "content": "也留下"}]})"_s);
    ASSERT_EQ(project.artifacts.size(), 2U);
    EXPECT_EQ(project.artifacts[0].type, ArtifactType::plainPrompt);
    EXPECT_EQ(project.artifacts[0].content, u"留下"_s);
    EXPECT_EQ(project.artifacts[1].content, u"也留下"_s);
}

TEST(WorkbenchProject, anAnswerWithoutAScenarioIsGeneral) {
    EXPECT_EQ(parse(uR"({"userGoal": "x", "promptAsset": {}})"_s).detectedScenario, u"general"_s);
}

TEST(WorkbenchProject, anAnswerThatGivesNothingToKeepIsKeptItself) {
    const QString answer = u"{\"userGoal\": \"目标\", \"prompt\": \"画一只猫\"}"_s;
    const auto project = parse(answer);
    EXPECT_EQ(project.userGoal, u"目标"_s);
    ASSERT_EQ(project.artifacts.size(), 1U);
    EXPECT_EQ(project.artifacts[0].content, answer);
}

TEST(WorkbenchProject, anAssetWithoutATitleHasTheWorkbenchs) {
    EXPECT_EQ(parse(uR"({"promptAsset": {}})"_s).promptAsset->title, u"工作台生成提示词"_s);
}

TEST(WorkbenchProject, thePrimaryTextIsThePlainPromptElseTheAssetElseAnyArtifact) {
    EXPECT_EQ(parse(uR"({"promptAsset": {"blocks": {"role": "画家", "task": " ", "output": "一张图"}},
"artifacts": [{"type": "memoryAction", "content": "动作"}, {"type": "plainPrompt", "content": " "}]})"_s)
                  .primaryPromptText(),
              u"画家\n\n一张图"_s);
    EXPECT_EQ(parse(uR"({"promptAsset": {}, "artifacts": [{"type": "memoryAction", "content": "动作"}]})"_s)
                  .primaryPromptText(),
              u"动作"_s);
    EXPECT_EQ(parse(uR"({"promptAsset": {}})"_s).primaryPromptText(), QString());
}

}  // namespace
}  // namespace veltrin
