#include "AI/AIChatCreateSheet.h"
#include "support/Golden.h"
#include "support/fake/FakeRunLoop.h"
#include "support/fake/ModelWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

struct ChatWorld : ModelWorld {
    FakeRunLoop runLoop;
    std::vector<AgentProfile> created;
    std::optional<AIChatCreateSheet> sheet{std::in_place, client(), runLoop,
                                           [this](const AgentProfile& agent) { created.push_back(agent); }};

    void say(const QString& text) {
        sheet->userInput = text;
        sheet->sendMessage();
    }
    QString lastText() const { return sheet->messages().back().text; }
};

const QString agentAnswer =
    u"这是配置：{\"name\":\"校对\",\"description\":\"校对论文\",\"systemPrompt\":\"你是校对。\","
    u"\"icon\":\"pencil\",\"colorHex\":\"#112233\",\"skills\":[\"校对\"],"
    u"\"outputStyle\":\"严谨\"} 完毕"_s;

TEST(AIChatCreateSheet, greetsFirst) {
    ChatWorld world;
    ASSERT_EQ(world.sheet->messages().size(), 1U);
    EXPECT_FALSE(world.sheet->messages().front().isUser);
    EXPECT_TRUE(world.lastText().startsWith(u"你好！我是你的 Agent 创建助手"_s));
    EXPECT_EQ(world.sheet->round(), 0);
    EXPECT_FALSE(world.sheet->isThinking() || world.sheet->showConfirm());
}

TEST(AIChatCreateSheet, asksGeneratesAndSumsUpInTheWrittenWords) {
    ChatWorld world;
    world.answerLocally(u"给谁看？"_s);
    world.say(u"校对论文"_s);
    EXPECT_EQ(world.localPrompt(0), golden(u"agents/chat_first"_s));
    EXPECT_TRUE(world.lastBody().contains(R"("options":{"temperature":0.5,"num_predict":180})"));
    EXPECT_EQ(world.http.requests.back().timeout, 15);
    EXPECT_EQ(world.lastText(), u"给谁看？"_s);
    EXPECT_EQ(world.http.requests.size(), 1U) << "nothing is generated after the first message";
    EXPECT_FALSE(world.sheet->generatedAgent());

    world.answerLocally(u"明白了。"_s);
    world.answerLocally(agentAnswer);
    world.say(u"导师"_s);
    ASSERT_EQ(world.http.requests.size(), 3U);
    EXPECT_EQ(world.localPrompt(1), golden(u"agents/chat_second"_s));
    EXPECT_EQ(world.localPrompt(2), golden(u"agents/chat_generate"_s)) << "a round before the summary";
    EXPECT_TRUE(world.lastBody().contains(R"("options":{"temperature":0.5,"num_predict":600})"));
    EXPECT_EQ(world.http.requests.back().timeout, 25);
    ASSERT_TRUE(world.sheet->showConfirm());
    const AgentProfile agent = *world.sheet->generatedAgent();

    world.answerLocally(u"我来为你生成这个 Agent"_s);
    world.say(u"再短些"_s);
    EXPECT_EQ(world.http.requests.size(), 4U) << "there is an agent already";
    EXPECT_EQ(world.localPrompt(3), golden(u"agents/chat_summary"_s));
    EXPECT_EQ(world.sheet->generatedAgent(), agent);
    EXPECT_EQ(world.sheet->round(), 3);
}

TEST(AIChatCreateSheet, fillsAnAgentFromTheAnswer) {
    const AgentProfile agent = AIChatCreateSheet::agentOf(agentAnswer, Date{5});
    EXPECT_EQ(agent.name, u"校对"_s);
    EXPECT_EQ(agent.description, u"校对论文"_s);
    EXPECT_EQ(agent.systemPrompt, u"你是校对。"_s);
    EXPECT_EQ(agent.icon, u"pencil"_s);
    EXPECT_EQ(agent.colorHex, u"#112233"_s);
    EXPECT_EQ(agent.skills, QStringList{u"校对"_s});
    EXPECT_EQ(agent.outputStyle, u"严谨"_s);
    EXPECT_EQ(agent.category, u"general"_s);
    EXPECT_EQ(agent.createdAt, Date{5});
    EXPECT_FALSE(agent.isBuiltin || agent.isActive);
    const AgentProfile bare = AIChatCreateSheet::agentOf(u"{\"name\":\"校对\",\"icon\":3}"_s, {});
    EXPECT_EQ(bare.name, u"校对"_s);
    EXPECT_EQ(bare.icon, u"sparkles"_s);
    EXPECT_EQ(bare.colorHex, u"#FFD98A"_s);
    EXPECT_EQ(bare.outputStyle, QString());
}

TEST(AIChatCreateSheet, fallsBackOnTheStockAgent) {
    for (const QString& answer : {u"没有"_s, u"{ 坏 }"_s, u"} {"_s, QString()}) {
        const AgentProfile agent = AIChatCreateSheet::agentOf(answer, {});
        EXPECT_EQ(agent.name, u"新 Agent"_s);
        EXPECT_EQ(agent.systemPrompt, u"你是一个专业的 AI 助手。"_s);
        EXPECT_EQ(agent.icon, u"sparkles"_s);
        EXPECT_EQ(agent.colorHex, u"#FFD98A"_s);
        EXPECT_EQ(agent.outputStyle, u"清晰专业"_s);
        EXPECT_TRUE(agent.description.isEmpty() && agent.skills.isEmpty());
    }
}

TEST(AIChatCreateSheet, goesOnWithoutTheModel) {
    ChatWorld world;
    world.http.fail(UrlError::timedOut, u"late"_s);
    world.say(u"一"_s);
    EXPECT_EQ(world.lastText(), u"好的，我已经了解你的需求了，我来为你生成这个 Agent，请稍等..."_s);
    EXPECT_FALSE(world.sheet->isThinking());
    world.http.answer(500, "x");
    world.http.answer(500, "x");
    world.say(u"二"_s);
    EXPECT_EQ(world.sheet->generatedAgent()->name, u"新 Agent"_s);
    EXPECT_EQ(world.sheet->messages().size(), 5U);
}

TEST(AIChatCreateSheet, sendsNothingBlankAndNothingWhileItThinks) {
    ChatWorld world;
    world.say(u" \n"_s);
    EXPECT_EQ(world.sheet->userInput, u" \n"_s);
    EXPECT_EQ(world.sheet->round(), 0);
    world.http.holding = true;
    world.say(u"一"_s);
    EXPECT_TRUE(world.sheet->isThinking());
    EXPECT_EQ(world.sheet->userInput, QString());
    world.say(u"二"_s);
    world.sheet->continueTuning();
    EXPECT_EQ(world.sheet->userInput, u"二"_s) << "it is not lost";
    EXPECT_EQ(world.sheet->round(), 1);
    world.answerLocally(u"好"_s);
    world.http.release();
    EXPECT_FALSE(world.sheet->isThinking());
    EXPECT_EQ(world.http.requests.size(), 1U);
}

TEST(AIChatCreateSheet, thinksUntilTheAgentIsThere) {
    ChatWorld world;
    world.answerLocally(u"好"_s);
    world.say(u"一"_s);
    world.http.holding = true;
    world.say(u"二"_s);
    world.answerLocally(u"好"_s);
    world.http.release();
    EXPECT_EQ(world.sheet->messages().size(), 5U) << "the reply is shown before the agent comes";
    EXPECT_TRUE(world.sheet->isThinking());
    world.say(u"三"_s);
    EXPECT_EQ(world.sheet->round(), 2);
    world.answerLocally(agentAnswer);
    world.http.release();
    EXPECT_FALSE(world.sheet->isThinking());
    EXPECT_TRUE(world.sheet->showConfirm());
}

TEST(AIChatCreateSheet, handsOverTheAgentThatIsConfirmed) {
    ChatWorld world;
    world.sheet->confirmCreate();
    EXPECT_TRUE(world.created.empty());
    for (const QString& answer : {u"好"_s, u"好"_s, agentAnswer})
        world.answerLocally(answer);
    world.say(u"一"_s);
    world.say(u"二"_s);
    world.sheet->confirmCreate();
    ASSERT_EQ(world.created.size(), 1U);
    EXPECT_EQ(world.created.front(), *world.sheet->generatedAgent());
}

TEST(AIChatCreateSheet, tunesOnWithAMessageOfItsOwn) {
    ChatWorld world;
    for (const QString& answer : {u"好"_s, u"好"_s, agentAnswer, u"这次更好"_s, agentAnswer})
        world.answerLocally(answer);
    world.say(u"一"_s);
    world.say(u"二"_s);
    const QUuid first = world.sheet->generatedAgent()->id;
    world.sheet->userInput = u"还没写完"_s;
    world.sheet->continueTuning();
    EXPECT_EQ(world.sheet->messages()[5].text, u"请帮我优化调整一下"_s);
    EXPECT_TRUE(world.sheet->messages()[5].isUser);
    EXPECT_EQ(world.sheet->userInput, u"还没写完"_s);
    EXPECT_EQ(world.sheet->round(), 3);
    ASSERT_TRUE(world.sheet->showConfirm());
    EXPECT_NE(world.sheet->generatedAgent()->id, first);
}

TEST(AIChatCreateSheet, mayCloseWhileTheModelAnswers) {
    ChatWorld world;
    world.http.holding = true;
    world.say(u"一"_s);
    world.sheet.reset();
    world.answerLocally(u"好"_s);
    world.http.release();
    EXPECT_EQ(world.http.requests.size(), 1U);
}

TEST(AIChatCreateSheet, mayCloseWhenItsAgentIsHandedOver) {
    ChatWorld world;
    for (const QString& answer : {u"好"_s, u"好"_s, agentAnswer})
        world.answerLocally(answer);
    QString name;
    world.sheet.emplace(world.client(), world.runLoop, [&](const AgentProfile& agent) {
        world.sheet.reset();
        name = agent.name;
    });
    world.say(u"一"_s);
    world.say(u"二"_s);
    world.sheet->confirmCreate();
    EXPECT_EQ(name, u"校对"_s);
}

}  // namespace
}  // namespace veltrin
