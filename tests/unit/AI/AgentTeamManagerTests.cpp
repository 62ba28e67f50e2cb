#include "unit/AI/AgentWorld.h"

#include <gtest/gtest.h>

#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString optimize = u"optimize"_s;

int changesOf(AgentTeamManager& manager, const std::function<void()>& work) {
    int changes = 0;
    const auto subscription = manager.changed.subscribe([&] { ++changes; });
    work();
    return changes;
}

TEST(AgentTeamManager, givesANewUserSixBuiltinAgents) {
    AgentWorld world;
    EXPECT_EQ(world.names(), (QStringList{u"产品思维"_s, u"代码架构"_s, u"创意写作"_s, u"学术严谨"_s,
                                          u"用户体验"_s, u"数据分析"_s}));
    for (const AgentProfile& agent : world.manager().agents()) {
        EXPECT_TRUE(agent.isBuiltin);
        EXPECT_EQ(agent.isActive, agent.name == u"产品思维"_s);
        EXPECT_EQ(agent.version, 1);
        EXPECT_EQ(agent.createdAt, world.now());
        EXPECT_TRUE(agent.memories.isEmpty());
        EXPECT_FALSE(agent.temperature || agent.topP || agent.maxTokens);
        EXPECT_EQ(agent.skills.size(), 2);
        EXPECT_EQ(agent.tags.size(), 2);
        EXPECT_EQ(agent.systemPrompt.count(u'\n'), 5);
    }
    EXPECT_EQ(world.manager().builtinAgents().size(), 6U);
    EXPECT_EQ(world.manager().activeAgents().size(), 1U);
    EXPECT_EQ(world.manager().primaryAgent()->name, u"产品思维"_s);
    const auto before = world.manager().agents();
    world.restart();
    EXPECT_EQ(world.manager().agents(), before) << "they were written";
}

TEST(AgentTeamManager, seedsAnEmptyListAndNoOther) {
    AgentWorld world;
    world.putFile("[]");
    EXPECT_EQ(world.manager().agents().size(), 6U);

    AgentWorld one;
    one.putAgents({one.named(u"甲"_s)});
    EXPECT_EQ(one.names(), QStringList{u"甲"_s});
    EXPECT_FALSE(one.manager().primaryAgent());
    EXPECT_EQ(one.slotNames(optimize), (QStringList{u"甲"_s, u"甲"_s, u"甲"_s, u"甲"_s}))
        << "the only agent serves although it is neither active nor builtin";
}

TEST(AgentTeamManager, writesDatesAsSecondsSinceTheReferenceDate) {
    AgentWorld world;
    world.runLoop.wallStart = 978307200.0 + 786000000.25 - world.runLoop.now();
    world.manager();
    const Json agents = Json::parse(world.file());
    const Json& first = agents.array()->front();
    EXPECT_EQ(first.find(u"createdAt")->toDouble(), 786000000.25);
    EXPECT_EQ(first.find(u"updatedAt")->toDouble(), 786000000.25);
    EXPECT_TRUE(world.file().contains("\n  {\n    \"id\" : ")) << "pretty printed";
    EXPECT_EQ(QFile::permissions(world.path()) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

TEST(AgentTeamManager, pointsEverySlotAtTheFirstBuiltinWithoutAStoredTable) {
    AgentWorld world;
    int slots = 0;
    for (const auto& [key, count] : {std::pair{u"optimize"_s, 4},
                                     {u"translation"_s, 1},
                                     {u"smartSelect"_s, 2},
                                     {u"drag"_s, 4},
                                     {u"voice"_s, 1}}) {
        EXPECT_EQ(world.slotNames(key), QStringList(count, u"产品思维"_s)) << qUtf8Printable(key);
        slots += count;
    }
    EXPECT_EQ(slots, 12);
    EXPECT_EQ(world.assignmentWrites(), 1) << "one repair at the start, and none at the reads";
    EXPECT_EQ(world.slotNames(u"older"_s), QStringList{u"-"_s});
}

TEST(AgentTeamManager, storesTheTableAsTheBytesOfItsJson) {
    AgentWorld world;
    const QString id = uuidText(world.manager().agents().front().id);
    const Json table = Json::parse(world.storedAssignments());
    EXPECT_EQ(table.object()->size(), 5U);
    ASSERT_EQ(table.find(optimize)->array()->size(), 4U);
    EXPECT_EQ(table.find(optimize)->array()->front().toString(), id);
    EXPECT_EQ(id, id.toUpper());
}

TEST(AgentTeamManager, keepsTheOlderKeysOfAStoredTable) {
    AgentWorld world;
    world.preferences.values[AgentWorld::assignmentsKey] = QByteArray(R"({"older":["X",""]})");
    world.manager();
    EXPECT_EQ(Json::parse(world.storedAssignments()).find(u"older")->serialized(), R"(["X",""])");
}

TEST(AgentTeamManager, dropsATableThatDoesNotDecode) {
    for (const PreferenceValue& stored :
         {PreferenceValue(QByteArray("{")), PreferenceValue(u"text"_s), PreferenceValue(true)}) {
        AgentWorld world;
        world.preferences.values[AgentWorld::assignmentsKey] = stored;
        EXPECT_EQ(world.slotNames(u"voice"_s), QStringList{u"产品思维"_s});
        EXPECT_EQ(Json::parse(world.storedAssignments()).object()->size(), 5U);
    }
}

TEST(AgentTeamManager, keepsATableThatNeedsNoRepairUntouched) {
    AgentWorld world;
    world.manager().assignAgent(world.idOf(u"学术严谨"_s), u"drag"_s, 2);
    const QByteArray stored = world.storedAssignments();
    world.restart();
    world.preferences.writes.clear();
    EXPECT_EQ(world.slotNames(u"drag"_s),
              (QStringList{u"产品思维"_s, u"产品思维"_s, u"学术严谨"_s, u"产品思维"_s}));
    EXPECT_EQ(world.assignmentWrites(), 0);
    EXPECT_EQ(world.storedAssignments(), stored);
    EXPECT_EQ(changesOf(world.manager(), [&] { world.manager().ensureDefaultShortcutAssignments(); }), 0);
}

TEST(AgentTeamManager, putsAnAgentIntoASlot) {
    AgentWorld world;
    const QUuid id = world.idOf(u"创意写作"_s);
    EXPECT_EQ(changesOf(world.manager(), [&] { world.manager().assignAgent(id, optimize, 3); }), 1);
    EXPECT_EQ(world.manager().assignedAgent(optimize, 3)->name, u"创意写作"_s);
    const QByteArray stored = world.storedAssignments();
    for (const int slot : {-1, 4, 1000})
        EXPECT_EQ(changesOf(world.manager(), [&] { world.manager().assignAgent(id, optimize, slot); }), 0);
    EXPECT_EQ(world.storedAssignments(), stored);
    EXPECT_FALSE(world.manager().assignedAgent(optimize, 4));
    EXPECT_FALSE(world.manager().assignedAgent(optimize, -1));
}

TEST(AgentTeamManager, servesASlotOfAKeyThatIsNotListed) {
    AgentWorld world;
    world.manager().assignAgent(world.idOf(u"数据分析"_s), u"older"_s, 0);
    world.manager().assignAgent(world.idOf(u"数据分析"_s), u"older"_s, 1);
    EXPECT_EQ(world.slotNames(u"older"_s), QStringList{u"数据分析"_s});
}

TEST(AgentTeamManager, movesSlotsUpWhenAnAgentIsDeleted) {
    AgentWorld world;
    const QStringList names{u"代码架构"_s, u"创意写作"_s, u"学术严谨"_s, u"用户体验"_s};
    for (int slot = 0; slot < 4; ++slot)
        world.manager().assignAgent(world.idOf(names[slot]), optimize, slot);
    world.manager().remove(world.idOf(u"创意写作"_s));
    const QStringList after{u"代码架构"_s, u"学术严谨"_s, u"用户体验"_s, u"产品思维"_s};
    EXPECT_EQ(world.slotNames(optimize), after);
    world.restart();
    EXPECT_EQ(world.slotNames(optimize), after);
    EXPECT_FALSE(world.names().contains(u"创意写作"_s)) << "a builtin agent can be deleted";
}

TEST(AgentTeamManager, takesOnlyTheDeletedAgentOutOfTheSlots) {
    AgentWorld world;
    world.manager().assignAgent(world.idOf(u"代码架构"_s), optimize, 0);
    world.manager().assignAgent(world.idOf(u"创意写作"_s), optimize, 1);
    world.manager().remove(world.manager().agents().front().id);  // the identifier in the list itself
    EXPECT_EQ(world.slotNames(optimize).first(2), (QStringList{u"代码架构"_s, u"创意写作"_s}));
}

TEST(AgentTeamManager, findsAnotherFallbackWhenTheActiveAgentGoes) {
    AgentWorld world;
    world.manager().remove(world.idOf(u"产品思维"_s));
    EXPECT_EQ(world.slotNames(u"voice"_s), QStringList{u"代码架构"_s}) << "the first builtin";
    world.manager().activate(world.idOf(u"数据分析"_s));
    world.manager().remove(world.idOf(u"代码架构"_s));
    EXPECT_EQ(world.slotNames(u"voice"_s), QStringList{u"数据分析"_s}) << "the first active one";
}

TEST(AgentTeamManager, hasNobodyForAnySlotWhenTheLastAgentIsDeletedAndSeedsAtTheNextStart) {
    AgentWorld world;
    const auto agents = world.manager().agents();
    for (const AgentProfile& agent : agents)
        world.manager().remove(agent.id);
    EXPECT_EQ(world.slotNames(u"smartSelect"_s), (QStringList{u"-"_s, u"-"_s}));
    EXPECT_EQ(world.manager().runtimeContractPromptFor(optimize, 0), QString());
    EXPECT_FALSE(world.manager().primaryAgent());
    world.restart();
    EXPECT_EQ(world.manager().agents().size(), 6U);
}

TEST(AgentTeamManager, doesNothingForAnUnknownAgent) {
    AgentWorld world;
    const auto agents = world.manager().agents();
    const AgentProfile stranger = world.named(u"生"_s);
    EXPECT_EQ(changesOf(world.manager(),
                        [&] {
                            world.manager().activate(stranger.id);
                            world.manager().toggle(stranger.id);
                            world.manager().update(stranger);
                        }),
              0);
    world.manager().remove(stranger.id);
    EXPECT_EQ(world.manager().agents(), agents);
}

TEST(AgentTeamManager, activatesAndTogglesAndKeepsIt) {
    AgentWorld world;
    const QUuid id = world.idOf(u"学术严谨"_s);
    world.manager();
    world.runLoop.advance(60);
    world.manager().activate(id);
    world.manager().activate(id);
    EXPECT_TRUE(world.manager().agent(id)->isActive);
    EXPECT_EQ(world.manager().agent(id)->updatedAt, world.now());
    EXPECT_EQ(world.manager().agent(id)->version, 1) << "only an update raises it";
    world.manager().toggle(world.manager().agents().front().id);
    world.restart();
    EXPECT_EQ(world.manager().primaryAgent()->id, id);
    world.manager().toggle(id);
    EXPECT_FALSE(world.manager().primaryAgent());
}

TEST(AgentTeamManager, raisesTheVersionAtEachUpdate) {
    AgentWorld world;
    AgentProfile agent = world.manager().agents().back();
    agent.systemPrompt = u"新的"_s;
    world.runLoop.advance(5);
    world.manager().update(agent);
    world.manager().update(agent);
    const AgentProfile* stored = world.manager().agent(agent.id);
    EXPECT_EQ(stored->systemPrompt, u"新的"_s);
    EXPECT_EQ(stored->version, 2) << "counted from the version that was handed in";
    EXPECT_EQ(stored->updatedAt, world.now());
    EXPECT_EQ(stored->createdAt, agent.createdAt);
}

TEST(AgentTeamManager, leavesTheGreatestVersionAsItIs) {
    AgentWorld world;
    AgentProfile agent = world.manager().agents().back();
    agent.version = std::numeric_limits<std::int64_t>::max();
    world.manager().update(agent);
    EXPECT_EQ(world.manager().agent(agent.id)->version, agent.version) << "a file may hold any number";
}

TEST(AgentTeamManager, duplicatesAnAgentAsTheUsersOwn) {
    AgentWorld world;
    AgentProfile agent = world.manager().agents().front();
    agent.version = 7;
    world.runLoop.advance(60);
    world.manager().duplicate(agent);
    const AgentProfile copy = world.manager().agents().back();
    EXPECT_EQ(copy.name, u"产品思维 (副本)"_s);
    EXPECT_NE(copy.id, agent.id);
    EXPECT_FALSE(copy.isBuiltin || copy.isActive);
    EXPECT_EQ(copy.version, 1);
    EXPECT_EQ(copy.createdAt, world.now());
    EXPECT_EQ(copy.updatedAt, world.now());
    EXPECT_EQ(copy.systemPrompt, agent.systemPrompt);
    world.restart();
    EXPECT_EQ(world.manager().agents().back(), copy);
}

TEST(AgentTeamManager, takesAgentsAtBothEndsAndWritesThemWhenTold) {
    AgentWorld world;
    world.manager().append(world.named(u"尾"_s));
    world.manager().insertFirst(world.named(u"头"_s));
    EXPECT_EQ(world.names().front(), u"头"_s);
    EXPECT_EQ(world.names().back(), u"尾"_s);
    EXPECT_FALSE(world.file().contains("尾"));
    world.manager().persist();
    world.restart();
    EXPECT_EQ(world.names().size(), 8);
}

TEST(AgentTeamManager, saysTheContractOfTheAgentInTheSlot) {
    AgentWorld world;
    world.manager().assignAgent(world.idOf(u"代码架构"_s), optimize, 1);
    const QString one = world.manager().runtimeContractPromptFor(optimize, 1);
    EXPECT_TRUE(one.startsWith(
        u"Agent Contract（由 Veltrin 编译的执行规则，不是待处理文本）：\n- Agent：代码架构\n"_s));
    EXPECT_EQ(one.count(u"Agent Contract"_s), 1);
}

TEST(AgentTeamManager, repeatsTheContractOfAnAgentThatServesSeveralSlots) {
    AgentWorld world;
    const QString one = world.manager().runtimeContractPromptFor(optimize, 0);
    EXPECT_EQ(world.manager().runtimeContractPromptFor(optimize, std::nullopt),
              QStringList(4, one).join(u"\n\n"_s));
    EXPECT_EQ(world.manager().runtimeContractPromptFor(u"translation"_s, std::nullopt), one);
    EXPECT_EQ(world.manager().runtimeContractPromptFor(optimize, 4), QStringList(4, one).join(u"\n\n"_s))
        << "a slot that is not there falls through to all assigned agents";
    EXPECT_EQ(world.manager().runtimeContractPromptFor(optimize, -1), QStringList(4, one).join(u"\n\n"_s));
}

TEST(AgentTeamManager, saysTheContractsOfTheActiveAgentsWithoutAnAssignment) {
    AgentWorld world;
    world.manager().activate(world.idOf(u"创意写作"_s));
    const QString contracts = world.manager().runtimeContractPromptFor(u"older"_s, 0);
    EXPECT_EQ(contracts.count(u"Agent Contract"_s), 2);
    EXPECT_TRUE(contracts.contains(u"- Agent：产品思维\n"_s));
    EXPECT_TRUE(contracts.contains(
        u"\n\nAgent Contract（由 Veltrin 编译的执行规则，不是待处理文本）：\n- Agent：创意写作\n"_s));
}

TEST(AgentTeamManager, listsAssignedAgentsWithRepeatsAndWithoutStrangers) {
    AgentWorld world;
    world.manager();
    world.restart();
    Json table = Json::parse(world.storedAssignments());
    const Json id = table.find(optimize)->array()->front();
    table.set(u"older"_s, Json::Array{id, u"nobody"_s, id});
    world.preferences.values[AgentWorld::assignmentsKey] = table.serialized();
    EXPECT_EQ(world.manager().assignedAgents(u"older"_s).size(), 2U);
}

TEST(AgentTeamManager, saysTheContractsOfTheTableAsItStandsWithoutARepair) {
    AgentWorld world;
    world.manager().assignAgent(QUuid::createUuid(), u"translation"_s, 0);
    const QByteArray stored = world.storedAssignments();
    const QString contract = world.manager().runtimeContractPromptFor(u"translation"_s, std::nullopt);
    EXPECT_EQ(contract, world.manager().runtimeContractPromptFor(u"older"_s, std::nullopt))
        << "nobody is assigned, so the active agents speak";
    EXPECT_EQ(world.storedAssignments(), stored);
    world.manager().runtimeContractPromptFor(u"translation"_s, 0);
    EXPECT_NE(world.storedAssignments(), stored) << "a slot is repaired before it is read";
}

TEST(AgentTeamManager, knowsAnAgentByTheWrittenFormOfItsIdentifierOnly) {
    AgentWorld world;
    const QUuid id = world.idOf(u"创意写作"_s);
    world.manager().assignAgent(id, u"voice"_s, 0);
    world.restart();
    QByteArray table = world.storedAssignments();
    table.replace(uuidText(id).toUtf8(), uuidText(id).toLower().toUtf8());
    world.preferences.values[AgentWorld::assignmentsKey] = table;
    EXPECT_EQ(world.slotNames(u"voice"_s), QStringList{u"产品思维"_s});
}

TEST(AgentTeamManager, survivesAnObserverThatReadsTheSlots) {
    AgentWorld world;
    QStringList seen;
    const auto subscription =
        world.manager().changed.subscribe([&] { seen = world.slotNames(u"smartSelect"_s); });
    world.manager().assignAgent(QUuid::createUuid(), u"smartSelect"_s, 1);
    EXPECT_EQ(seen, (QStringList{u"产品思维"_s, u"产品思维"_s})) << "a stranger is replaced at once";
}

}  // namespace
}  // namespace veltrin
