#include "AI/AgentGeneration.h"
#include "AI/OllamaError.h"
#include "support/Golden.h"
#include "support/fake/ModelWorld.h"
#include "support/fake/TaskRunner.h"
#include "unit/AI/AgentWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

struct GenerationWorld : ModelWorld {
    AgentWorld agents;

    AgentProfile generate(const QString& answer, const QString& description = u"写诗"_s) {
        answerLocally(answer);
        return valueOf(agents.manager().generateAgent(client(), description));
    }
    AgentProfile optimize(const AgentProfile& agent, const QString& answer) {
        answerLocally(answer);
        return valueOf(agents.manager().optimizeAgent(client(), agent));
    }
};

TEST(AgentGeneration, asksForAWholeAgentInTheWrittenWords) {
    GenerationWorld world;
    const QString description = u"帮我写小红书文案的专家，{{name}} 与 \"引号\"\n第二行"_s;
    world.generate(u"{}"_s, description);
    EXPECT_EQ(world.localPrompt(0), golden(u"agents/generate"_s));
    EXPECT_EQ(world.http.requests.back().timeout, 30);
    EXPECT_TRUE(world.lastBody().contains(R"("options":{"temperature":0.3})")) << "and no limit";
}

TEST(AgentGeneration, takesTheAgentOfTheAnswer) {
    GenerationWorld world;
    const AgentProfile agent = world.generate(
        u"好的：```json\n{\"name\":\"诗人\",\"icon\":\"pencil\",\"colorHex\":\"#ABCDEF\",\"description\":"
        u"\"写诗的\","
        u"\"category\":\"creative\",\"systemPrompt\":\"你是诗人。\",\"skills\":[\"押韵\",\"对仗\"],"
        u"\"outputStyle\":\"五言\"}\n```"_s);
    EXPECT_EQ(agent.name, u"诗人"_s);
    EXPECT_EQ(agent.icon, u"pencil"_s);
    EXPECT_EQ(agent.colorHex, u"#ABCDEF"_s);
    EXPECT_EQ(agent.description, u"写诗的"_s);
    EXPECT_EQ(agent.category, u"creative"_s);
    EXPECT_EQ(agent.systemPrompt, u"你是诗人。"_s);
    EXPECT_EQ(agent.skills, (QStringList{u"押韵"_s, u"对仗"_s}));
    EXPECT_EQ(agent.tags, (QStringList{u"押韵"_s, u"对仗"_s, u"AI生成"_s}));
    EXPECT_EQ(agent.outputStyle, u"五言"_s);
    EXPECT_FALSE(agent.isBuiltin || agent.isActive);
    EXPECT_EQ(agent.createdAt, world.agents.now());
    EXPECT_EQ(agent.updatedAt, world.agents.now());
    EXPECT_EQ(agent.version, 1);
    EXPECT_TRUE(agent.memories.isEmpty());
    EXPECT_EQ(world.agents.manager().agents().size(), 6U) << "nothing is added";
}

TEST(AgentGeneration, fillsWhatTheAnswerLacks) {
    GenerationWorld world;
    for (const QString& answer : {u"{}"_s, u"{\"name\":1,\"skills\":[\"a\",2],\"category\":null}"_s}) {
        const AgentProfile agent = world.generate(answer);
        EXPECT_EQ(agent.name, u"AI Agent"_s);
        EXPECT_EQ(agent.systemPrompt, answer);
        EXPECT_EQ(agent.icon, u"sparkles"_s);
        EXPECT_EQ(agent.colorHex, u"#FFD98A"_s);
        EXPECT_EQ(agent.description, QString());
        EXPECT_TRUE(agent.skills.isEmpty());
        EXPECT_EQ(agent.tags, QStringList{u"AI生成"_s});
        EXPECT_EQ(agent.outputStyle, QString());
        EXPECT_EQ(agent.category, u"general"_s);
    }
}

TEST(AgentGeneration, takesAnAnswerWithoutJsonAsThePrompt) {
    GenerationWorld world;
    for (const QString& answer : {u"你是一位诗人。"_s, u"{ 不是 JSON }"_s, u"[1]"_s, QString()}) {
        const AgentProfile agent = world.generate(answer, u"写诗的人"_s);
        EXPECT_EQ(agent.name, u"自定义 Agent"_s);
        EXPECT_EQ(agent.systemPrompt, answer);
        EXPECT_EQ(agent.description, u"写诗的人"_s);
        EXPECT_EQ(agent.icon, u"sparkles"_s);
        EXPECT_EQ(agent.colorHex, u"#FFD98A"_s);
        EXPECT_EQ(agent.category, u"general"_s);
        EXPECT_TRUE(agent.skills.isEmpty());
        EXPECT_EQ(agent.tags, QStringList{u"AI生成"_s});
    }
}

TEST(AgentGeneration, passesOnTheErrorsOfTheModel) {
    GenerationWorld world;
    world.http.answer(500, "x");
    EXPECT_TRUE(
        follow(world.agents.manager().generateAgent(world.client(), u"x"_s))->failedWith<OllamaError>());
    world.http.answer(500, "x");
    EXPECT_TRUE(follow(world.agents.manager().optimizeAgent(world.client(), AgentProfile()))
                    ->failedWith<OllamaError>());
}

TEST(AgentGeneration, asksForABetterPromptInTheWrittenWords) {
    GenerationWorld world;
    AgentProfile agent = world.agents.named(u"文案大师 {{prompt}}"_s);
    agent.systemPrompt = u"你是一位资深文案策划。\n1. 先理解目标受众"_s;
    world.optimize(agent, u"{}"_s);
    EXPECT_EQ(world.localPrompt(0), golden(u"agents/optimize"_s));
    EXPECT_EQ(world.http.requests.back().timeout, 30);
    EXPECT_TRUE(world.lastBody().contains(R"("options":{"temperature":0.3})"));
}

TEST(AgentGeneration, changesOnlyThePromptWhenItImproves) {
    GenerationWorld world;
    const AgentProfile agent = world.agents.named(u"甲"_s);
    world.agents.runLoop.advance(60);
    AgentProfile improved = world.optimize(
        agent, u"{\"systemPrompt\":\"更好\",\"suggestions\":[\"x\"],\"score\":85,\"name\":\"乙\"}"_s);
    EXPECT_EQ(improved.systemPrompt, u"更好"_s);
    EXPECT_EQ(improved.updatedAt, world.agents.now());
    improved.systemPrompt = agent.systemPrompt;
    improved.updatedAt = agent.updatedAt;
    EXPECT_EQ(improved, agent);
}

TEST(AgentGeneration, leavesTheAgentAsItIsWithoutAPromptInTheAnswer) {
    GenerationWorld world;
    const AgentProfile agent = world.agents.named(u"甲"_s);
    world.agents.runLoop.advance(60);
    for (const QString& answer :
         {u"{\"score\":85}"_s, u"{\"systemPrompt\":[\"更好\"]}"_s, u"更好"_s, QString()})
        EXPECT_EQ(world.optimize(agent, answer), agent) << qUtf8Printable(answer);
}

}  // namespace
}  // namespace veltrin
