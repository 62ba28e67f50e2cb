#include "AI/AdaptiveRecommender.h"
#include "AI/OllamaError.h"
#include "Session/UserBehaviorTracker.h"
#include "support/fake/FakeRunLoop.h"
#include "support/fake/ModelWorld.h"
#include "support/fake/TaskRunner.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using AdaptiveRecommender::score;
using Type = TrackedBehavior::BehaviorType;

CommandRecommendation recommendation(const QString& command, const QString& category,
                                     const QString& confidence) {
    return {command, category, u"因为"_s, confidence};
}

TEST(RecommendationScore, addsConfidenceAndUse) {
    UserProfile profile;
    profile.topCommands[u"often"_s] = 10;
    profile.topCategories[u"tool"_s] = 10;
    EXPECT_DOUBLE_EQ(score(recommendation(u"often"_s, u"tool"_s, u"medium"_s), profile), 3.5);
    EXPECT_DOUBLE_EQ(score(recommendation(u"new"_s, u"skill"_s, u"high"_s), profile), 2.0);
    EXPECT_DOUBLE_EQ(score(recommendation(u"new"_s, u"skill"_s, u"low"_s), profile), 1.0);
    profile.topCommands[u"seldom"_s] = 2;
    profile.topCategories[u"skill"_s] = 3;
    EXPECT_DOUBLE_EQ(score(recommendation(u"seldom"_s, u"skill"_s, u"medium"_s), profile), 2.2);
}

TEST(RecommendationScore, aKnownWorkflowFavoursItsCategories) {
    const QStringList all{u"slash-command"_s, u"skill"_s, u"workflow"_s, u"tool"_s, u"figma"_s};
    const std::pair<QString, QStringList> table[] = {
        {u"code"_s, {u"tool"_s, u"workflow"_s, u"slash-command"_s}},
        {u"writing"_s, {u"skill"_s, u"workflow"_s}},
        {u"chat"_s, {u"skill"_s, u"slash-command"_s}},
        {u"business"_s, {u"workflow"_s, u"tool"_s}},
        {u"painting"_s, {u"tool"_s, u"figma"_s}},
        {u"general"_s, {}},
        {u"coding"_s, {}},
    };
    for (const auto& [workflow, favoured] : table) {
        UserProfile profile;
        profile.dominantWorkflow = workflow;
        for (const QString& category : all) {
            EXPECT_DOUBLE_EQ(score(recommendation(u"x"_s, category, u"medium"_s), profile),
                             favoured.contains(category) ? 1.5 : 1.0)
                << qPrintable(workflow + u' ' + category);
        }
    }
}

TEST(RecommendationScore, isFiveAtMost) {
    UserProfile profile;
    profile.dominantWorkflow = u"code"_s;
    profile.topCommands[u"x"_s] = 1000;
    profile.topCategories[u"tool"_s] = 1000;
    EXPECT_DOUBLE_EQ(score(recommendation(u"x"_s, u"tool"_s, u"high"_s), profile), 5.0);
}

class AdaptiveRecommendation : public testing::Test {
protected:
    void record(const QString& command, const QString& category, int times) {
        for (int i = 0; i < times; ++i)
            tracker.record(Type::commandUsed, command, u"Konsole"_s, category, true);
    }
    std::vector<CommandRecommendation> recommend() {
        return valueOf(
            AdaptiveRecommender::recommend(u"git rebase"_s, u"Konsole"_s, world.client(), tracker));
    }
    static QStringList commands(const std::vector<CommandRecommendation>& recommendations) {
        QStringList commands;
        for (const auto& each : recommendations)
            commands.append(each.command);
        return commands;
    }

    const QString answer =
        u"[{\"command\":\"a\",\"category\":\"tool\",\"explanation\":\"e\",\"confidence\":\"medium\"},"
        "{\"command\":\"b\",\"category\":\"figma\",\"explanation\":\"e\",\"confidence\":\"medium\"},"
        "{\"command\":\"c\",\"category\":\"skill\",\"explanation\":\"e\",\"confidence\":\"high\"},"
        "{\"command\":\"d\",\"category\":\"skill\",\"explanation\":\"e\",\"confidence\":\"high\"}]"_s;
    QTemporaryDir folder;
    FakeRunLoop loop;
    UserBehaviorTracker tracker{folder.path(), loop};
    ModelWorld world;
};

TEST_F(AdaptiveRecommendation, keepsTheModelsOrderForANewUser) {
    world.answerLocally(answer);
    EXPECT_EQ(commands(recommend()), (QStringList{u"a"_s, u"b"_s, u"c"_s, u"d"_s}));
    const QString prompt = world.localPrompt(0);
    EXPECT_TRUE(prompt.contains(u"---\ngit rebase\n---"_s)) << qPrintable(prompt);
    EXPECT_TRUE(prompt.contains(u"活跃应用：Konsole"_s));
    EXPECT_FALSE(prompt.contains(u"用户历史行为画像"_s));
}

TEST_F(AdaptiveRecommendation, ranksByTheProfileAndKeepsTheOrderOfEquals) {
    record(u"b"_s, u"figma"_s, 5);
    world.answerLocally(answer);
    EXPECT_EQ(commands(recommend()), (QStringList{u"b"_s, u"c"_s, u"d"_s, u"a"_s}));
}

TEST_F(AdaptiveRecommendation, tellsTheModelWhatIsKnown) {
    record(u"b"_s, u"figma"_s, 4);
    world.answerLocally(answer);
    recommend();
    EXPECT_TRUE(world.localPrompt(0).contains(
        u"---\n用户上下文：\ngit rebase\n\n用户历史行为画像（仅供参考，用于更精准推荐）：\n"
        "用户最常使用的命令类型：figma(4次)；用户常用命令：b；用户主要工作流：figma；技能水平：beginner。\n---"_s))
        << qPrintable(world.localPrompt(0));
}

TEST_F(AdaptiveRecommendation, aModelErrorIsThrownAndNothingIsRecorded) {
    world.http.answer(500, "no");
    EXPECT_THROW(recommend(), OllamaError);
    EXPECT_TRUE(tracker.recentBehaviors().empty());
}

}  // namespace
}  // namespace veltrin
