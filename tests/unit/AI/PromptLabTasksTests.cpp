#include "AI/OllamaError.h"
#include "AI/PromptDiagnosis.h"
#include "AI/ReverseWorkbench.h"
#include "support/Golden.h"
#include "support/fake/TaskRunner.h"
#include "support/fake/TaskWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class PromptLabTasks : public testing::Test {
protected:
    PromptDiagnosis diagnosis() { return {world.client(), world.runLoop, world.material.closures()}; }
    ReverseWorkbench workbench() { return {world.client(), world.runLoop, world.material.closures()}; }

    TaskWorld world;
};

TEST_F(PromptLabTasks, diagnoseAsksForAReportAndRemembersThePrompt) {
    world.answerLocally(u"{\"overallScore\": 90, \"rewrites\": [{\"prompt\": \"新\"}]}"_s);
    const QString prompt = u"写一首关于 {{prompt}} 的诗"_s;
    const DiagnosisResult result = valueOf(diagnosis().diagnose(prompt));
    EXPECT_EQ(world.localPrompt(0), golden(u"diagnose"_s));
    EXPECT_EQ(world.material.history, QStringList{u"diagnose|%1|Veltrin"_s.arg(prompt)});
    EXPECT_EQ(result.overall, 90);
    EXPECT_EQ(result.rewrite, u"新"_s);
    ASSERT_TRUE(result.report);
    EXPECT_EQ(result.report->originalText, prompt);
    EXPECT_EQ(result.report->createdAt, Date{world.runLoop.wallNow()});
}

TEST_F(PromptLabTasks, diagnoseOfAnUnreadableAnswerIsAResultThatSaysSo) {
    world.answerLocally({});
    const DiagnosisResult result = valueOf(diagnosis().diagnose(u"x"_s));
    EXPECT_EQ(result.overall, 53);
    EXPECT_EQ(result.rewrite, u"x"_s);
    EXPECT_EQ(result.issues,
              QStringList{u"诊断结果解析失败：无法解析 AI 返回的诊断 JSON。\n建议：请重试，或切换到更稳"
                          "定的模型。"_s});
}

TEST_F(PromptLabTasks, aModelErrorPassesAndLeavesNoEntry) {
    for (int i = 0; i < 3; ++i)
        world.http.answer(500, "no");
    EXPECT_THROW(valueOf(diagnosis().diagnose(u"x"_s)), OllamaError);
    EXPECT_THROW(valueOf(workbench().reverseEngineerProject(u"x"_s, {}, std::nullopt)), OllamaError);
    EXPECT_THROW(valueOf(workbench().iteratePrompt(u"x"_s, u"y"_s)), OllamaError);
    EXPECT_TRUE(world.material.history.isEmpty());
}

TEST_F(PromptLabTasks, theWorkbenchAsksWithTheContractOfOptimizeWhenNoShortcutIsNamed) {
    world.answerLocally(u"{\"userGoal\": \"目标\", \"artifacts\": [{\"content\": \"成品\"}]}"_s);
    const WorkbenchProject project =
        valueOf(workbench().reverseEngineerProject(u"一张照片"_s, {u"风格分析"_s}, std::nullopt));
    EXPECT_EQ(world.localPrompt(0), golden(u"reverse-workbench"_s));
    EXPECT_EQ(world.material.asked, QStringList{u"optimize nil"_s});
    EXPECT_EQ(world.material.history, QStringList{u"reverse|一张照片|Veltrin"_s});
    EXPECT_EQ(project.userGoal, u"目标"_s);
    EXPECT_EQ(project.primaryPromptText(), u"成品"_s);
    EXPECT_EQ(project.source, (WorkbenchSource{u"mixed"_s, u"辅助工作台输入"_s, u"一张照片"_s}));
    EXPECT_EQ(project.createdAt, Date{world.runLoop.wallNow()});
}

TEST_F(PromptLabTasks, theWorkbenchHoldsTheContractOfANamedShortcut) {
    world.material.contract = u"合同 {{intents}}"_s;
    world.answerLocally(u"不是 JSON"_s);
    const WorkbenchProject project = valueOf(
        workbench().reverseEngineerProject(u"第一行\n第二行"_s, {u"文本优化"_s, u"图像生成"_s}, u"drag"_s));
    EXPECT_EQ(world.localPrompt(0), golden(u"reverse-workbench-with-contract"_s));
    EXPECT_EQ(world.material.asked, QStringList{u"drag nil"_s});
    EXPECT_EQ(project.primaryPromptText(), u"不是 JSON"_s) << "the answer is not lost";
}

TEST_F(PromptLabTasks, iterateGivesTheAnswerAsItCame) {
    world.answerLocally(u"画一只暖色的猫"_s);
    world.answerLocally({});
    EXPECT_EQ(valueOf(workbench().iteratePrompt(u"画一只猫"_s, u"更暖"_s)), u"画一只暖色的猫"_s);
    EXPECT_EQ(world.localPrompt(0), golden(u"iterate-prompt"_s));
    EXPECT_EQ(valueOf(workbench().iteratePrompt(u"画一只猫"_s, u"更暖"_s)), QString());
    EXPECT_TRUE(world.material.history.isEmpty());
}

TEST_F(PromptLabTasks, anInstanceMayGoWhileItsTaskIsUnderWay) {
    world.http.holding = true;
    world.answerLocally(u"{\"overall\": 72}"_s);
    auto outcome = follow(PromptDiagnosis(diagnosis()).diagnose(u"x"_s));
    ASSERT_TRUE(world.http.release());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->overall, 72);
}

}  // namespace
}  // namespace veltrin
