#include "AI/AgentCard.h"
#include "support/RecordLaws.h"
#include "unit/AI/AgentWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(AgentCard, keepsToTheLawsOfRecords) {
    expectRecordLaws<AgentCard>();
}

TEST(AgentCard, holdsTheVersionTheTimeAndTheWholeAgent) {
    AgentWorld world;
    world.runLoop.wallStart = Date::fromReferenceDate(786000000.5).secondsSince1970 - world.runLoop.now();
    const AgentProfile agent = world.manager().agents().front();
    const QByteArray bytes = world.manager().exportAgentCard(agent).value();
    EXPECT_TRUE(
        bytes.startsWith("{\n  \"veltrinVersion\" : \"1.0.10\",\n  \"exportedAt\" : 786000000.5,\n"
                         "  \"agent\" : {\n    \"id\" : \""));
    const Json card = Json::parse(bytes);
    EXPECT_EQ(card.object()->size(), 3U);
    EXPECT_EQ(card.find(u"agent")->find(u"createdAt")->toDouble(), 786000000.5);
    EXPECT_EQ(AgentCard::decoded(bytes, {})->agent, agent) << "its identifier included";
}

TEST(AgentCard, comesInAsANewAgentAtTheHeadOfTheList) {
    AgentWorld world;
    AgentProfile agent = world.manager().agents().front();
    agent.version = 9;
    const QByteArray card = world.manager().exportAgentCard(agent).value();
    world.runLoop.advance(3600);
    const auto returned = world.manager().importAgentCard(card);
    ASSERT_TRUE(returned);
    const AgentProfile stored = world.manager().agents().front();
    EXPECT_EQ(world.manager().agents().size(), 7U);
    EXPECT_EQ(stored.name, agent.name);
    EXPECT_EQ(stored.systemPrompt, agent.systemPrompt);
    EXPECT_EQ(stored.version, 1);
    EXPECT_FALSE(stored.isBuiltin) << "though the card holds a builtin";
    EXPECT_TRUE(stored.isActive) << "as in the card";
    EXPECT_EQ(stored.createdAt, world.now());
    EXPECT_EQ(stored.updatedAt, world.now());
    EXPECT_NE(stored.id, agent.id);
    world.restart();
    EXPECT_EQ(world.manager().agents().front(), stored);
}

TEST(AgentCard, returnsAnAgentOfAnotherIdentifierThanTheStoredOne) {
    AgentWorld world;
    const QByteArray card = world.manager().exportAgentCard(world.named(u"甲"_s)).value();
    const auto returned = world.manager().importAgentCard(card);
    EXPECT_EQ(returned->name, u"甲"_s);
    EXPECT_NE(returned->id, world.manager().agents().front().id);
    EXPECT_EQ(world.manager().agent(returned->id), nullptr);
}

TEST(AgentCard, isReadWithoutTheLaterFieldsOfAnAgent) {
    AgentWorld world;
    const auto agent = world.manager().importAgentCard(
        R"({"exportedAt":0,"veltrinVersion":"0.1","extra":1,"agent":{
            "id":"0a1b2c3d-0000-4000-8000-000000000001","name":"甲","systemPrompt":"","icon":"",
            "colorHex":"","description":"","isBuiltin":true,"isActive":false}})");
    ASSERT_TRUE(agent);
    EXPECT_EQ(agent->category, u"general"_s);
}

TEST(AgentCard, isNothingElse) {
    AgentWorld world;
    const QByteArray card = world.manager().exportAgentCard(world.named(u"甲"_s)).value();
    const QByteArray file = world.file();
    const Json json = Json::parse(card);
    Json isoExport = json;
    isoExport.set(u"exportedAt"_s, u"2026-11-21T10:00:00Z"_s);
    Json isoAgent = json;
    Json agent = *json.find(u"agent");
    agent.set(u"createdAt"_s, u"2026-11-21T10:00:00Z"_s);
    isoAgent.set(u"agent"_s, agent);
    for (const QByteArray& bytes :
         {isoExport.serialized(), isoAgent.serialized(), json.find(u"agent")->serialized(), "[" + card + "]",
          card.chopped(1), QByteArray(), QByteArray("{}"), QByteArray("\xff"),
          QByteArray(card).replace("甲", "\xb3\xd7"), "\xef\xbb\xbf" + card.chopped(3)})
        EXPECT_FALSE(world.manager().importAgentCard(bytes)) << bytes.left(60).constData();
    EXPECT_EQ(world.file(), file);
    EXPECT_EQ(world.manager().agents().size(), 6U);
}

TEST(AgentCard, isNoneForWhatNoFileHolds) {
    AgentWorld world;
    AgentProfile agent = world.named(u"甲"_s);
    agent.topP = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(world.manager().exportAgentCard(agent));
}

TEST(AgentCard, isNamedAfterItsAgent) {
    AgentProfile agent;
    agent.name = u"小红书 写手"_s;
    EXPECT_EQ(AgentCard::fileName(agent), u"小红书 写手.agentcard.json"_s);
    agent.name = u"../../.profile"_s;
    EXPECT_EQ(AgentCard::fileName(agent), u"..-..-.profile.agentcard.json"_s);
    EXPECT_EQ(AgentCard::contentType, u"com.veltrin.agentcard"_s);
}

}  // namespace
}  // namespace veltrin
