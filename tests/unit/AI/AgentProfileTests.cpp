#include "AI/AgentProfile.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr RecordReading agentReading{DateStrategy::referenceDate, Date{1800000000}};

/// An agent as the first version wrote it: the required fields and no others.
const QByteArray oldAgent =
    R"({"id":"0A1B2C3D-0000-4000-8000-000000000001","name":"甲","systemPrompt":"你是甲。","icon":"star",)"
    R"("colorHex":"#FFFFFF","description":"一","isBuiltin":false,"isActive":true})";

std::optional<AgentProfile> read(const QByteArray& utf8) {
    return readRecord<AgentProfile>(Json::parse(utf8), agentReading);
}

TEST(AgentProfile, fillsWhatAnOlderFileLacks) {
    const auto agent = read(oldAgent);
    ASSERT_TRUE(agent);
    EXPECT_EQ(agent->category, u"general"_s);
    EXPECT_EQ(agent->version, 1);
    EXPECT_TRUE(agent->skills.isEmpty() && agent->memories.isEmpty() && agent->tags.isEmpty());
    EXPECT_TRUE(agent->outputStyle.isEmpty());
    EXPECT_FALSE(agent->temperature || agent->topP || agent->maxTokens);
    EXPECT_EQ(agent->createdAt, agentReading.now);
    EXPECT_EQ(agent->updatedAt, agentReading.now);
}

TEST(AgentProfile, needsTheFieldsThatWereThereFromTheBeginning) {
    const Json whole = Json::parse(oldAgent);
    for (const auto& [key, value] : *whole.object()) {
        Json without = Json(Json::Object());
        Json null = whole;
        null.set(key, Json());
        for (const auto& [other, member] : *whole.object()) {
            if (other != key) without.set(other, member);
        }
        EXPECT_FALSE(readRecord<AgentProfile>(without, agentReading)) << qUtf8Printable(key);
        EXPECT_FALSE(readRecord<AgentProfile>(null, agentReading)) << qUtf8Printable(key);
    }
}

TEST(AgentProfile, refusesAFieldOfAnotherType) {
    for (const auto& [key, value] : Json::Object{{u"version"_s, u"1"_s},
                                                 {u"skills"_s, u"a"_s},
                                                 {u"tags"_s, Json::Array{Json(1)}},
                                                 {u"temperature"_s, u"0.5"_s},
                                                 {u"maxTokens"_s, 1.5},
                                                 {u"createdAt"_s, u"2026-11-21T10:00:00Z"_s},
                                                 {u"isActive"_s, 1},
                                                 {u"id"_s, u"one"_s}}) {
        Json wrong = Json::parse(oldAgent);
        wrong.set(key, value);
        EXPECT_FALSE(readRecord<AgentProfile>(wrong, agentReading)) << qUtf8Printable(key);
    }
}

TEST(AgentProfile, writesItsKeysInOrderAndLeavesOutWhatIsNone) {
    auto agent = *read(oldAgent);
    agent.createdAt = agent.updatedAt = Date::fromReferenceDate(10.5);
    EXPECT_EQ(writeRecord(agent, DateStrategy::referenceDate)->serialized(),
              QByteArray(oldAgent).chopped(1) +
                  R"(,"skills":[],"memories":[],"outputStyle":"","category":"general","tags":[],)"
                  R"("createdAt":10.5,"updatedAt":10.5,"version":1})");
    agent.temperature = 0.25;
    agent.topP = 1.0;
    agent.maxTokens = 2000;
    const auto json = writeRecord(agent, DateStrategy::referenceDate);
    EXPECT_EQ(json->find(u"temperature")->toDouble(), 0.25);
    EXPECT_EQ(json->find(u"topP")->toDouble(), 1.0);
    EXPECT_EQ(json->find(u"maxTokens")->toInteger(), 2000);
    EXPECT_EQ(readRecord<AgentProfile>(*json, agentReading), agent);
}

TEST(AgentProfile, sumsUpItsParametersInOneLine) {
    AgentProfile agent;
    EXPECT_EQ(agent.modelSummary(), u"默认参数"_s);
    agent.outputStyle = u" \n"_s;
    EXPECT_EQ(agent.modelSummary(), u"默认参数"_s);
    agent.outputStyle = u" 简洁 "_s;
    EXPECT_EQ(agent.modelSummary(), u"简洁"_s);
    agent.temperature = 0.66;
    agent.topP = 1;
    agent.maxTokens = 800;
    EXPECT_EQ(agent.modelSummary(), u"T=0.7 · TopP=1.0 · Max800 · 简洁"_s);
}

}  // namespace
}  // namespace veltrin
