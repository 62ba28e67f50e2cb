#include "support/FullDisk.h"
#include "support/RecordLaws.h"
#include "unit/AI/AgentWorld.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

QByteArray asideOf(const AgentWorld& world) {
    QFile file(world.path() + u".unreadable"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(AgentsFile, keepsToTheLawsOfRecords) {
    expectRecordLaws<AgentProfile>();
}

TEST(AgentsFile, keepsFractionsOfSeconds) {
    AgentWorld world;
    AgentProfile agent = world.named(u"甲"_s);
    agent.createdAt = Date{1795255200.123456};
    agent.updatedAt = Date::fromReferenceDate(786000000.987654);
    world.putAgents({agent});
    EXPECT_EQ(world.manager().agents(), std::vector{agent});
    world.manager().persist();
    world.restart();
    EXPECT_EQ(world.manager().agents(), std::vector{agent});
}

TEST(AgentsFile, isReplacedByTheBuiltinAgentsWhenItDoesNotDecodeAndIsKeptAside) {
    AgentWorld valid;
    valid.putAgents({valid.named(u"甲"_s), valid.named(u"乙"_s)});
    const QByteArray whole = valid.file();
    QByteArray noActive = whole;
    noActive.replace("\"isActive\" : false", "\"active\" : false");
    QByteArray isoDates = whole;
    const Json first = Json::parse(whole).array()->front();
    isoDates.replace(first.find(u"createdAt")->serialized(), "\"2026-11-21T10:00:00Z\"");
    ASSERT_NE(noActive, whole);
    ASSERT_NE(isoDates, whole);
    for (const QByteArray& bytes :
         {whole.chopped(1), whole.left(whole.size() / 2), noActive, isoDates, QByteArray("{}"),
          QByteArray("null"), QByteArray("[1]"), QByteArray("[null]"), QByteArray(), QByteArray("\xff\xfe["),
          QByteArray(whole).replace("甲", "\xb3\xd7"), QByteArray("[") + QByteArray(100000, '['),
          QByteArray(4096, '\0')}) {
        AgentWorld world;
        world.putFile(bytes);
        EXPECT_EQ(world.names().size(), 6) << bytes.left(80).constData();
        EXPECT_EQ(asideOf(world), bytes);
        world.restart();
        EXPECT_EQ(world.names().size(), 6);
    }
}

TEST(AgentsFile, keepsAgentsThatShareAnIdentifier) {
    AgentWorld world;
    AgentProfile one = world.named(u"甲"_s);
    AgentProfile two = world.named(u"乙"_s);
    two.id = one.id;
    world.putAgents({one, two});
    EXPECT_EQ(world.manager().assignedAgent(u"voice"_s, 0)->name, u"甲"_s) << "the first one counts";
    world.manager().toggle(one.id);
    EXPECT_TRUE(world.manager().agents().front().isActive);
    EXPECT_FALSE(world.manager().agents().back().isActive);
    world.manager().remove(one.id);
    EXPECT_TRUE(world.manager().agents().empty()) << "every one of that identifier";
}

TEST(AgentsFile, takesTheLastOfAFieldThatStandsTwice) {
    AgentWorld world;
    world.putAgents({world.named(u"甲"_s)});
    QByteArray twice = world.file();
    twice.replace("\"icon\"", "\"name\" : \"乙\",\n    \"icon\"");
    world.putFile(twice);
    EXPECT_EQ(world.names(), QStringList{u"乙"_s});
}

TEST(AgentsFile, ofAHundredMegabytesThatDoesNotDecodeIsKeptAsideWhole) {
    AgentWorld world;
    constexpr qint64 size = 100LL * 1024 * 1024;
    world.putFile("[{\"id\":\"");
    ASSERT_TRUE(QFile(world.path()).resize(size));
    EXPECT_EQ(world.names().size(), 6);
    EXPECT_EQ(QFileInfo(world.path() + u".unreadable"_s).size(), size);
    EXPECT_LT(QFileInfo(world.path()).size(), 10000);
}

TEST(AgentsFile, ofSeveralMegabytesIsRead) {
    AgentWorld world;
    AgentProfile agent = world.named(u"甲"_s);
    agent.systemPrompt = QString(2 * 1024 * 1024, u'界');
    world.putAgents({agent, world.named(u"乙"_s)});
    EXPECT_EQ(world.manager().agents().front(), agent);
}

TEST(AgentsFile, isMadeWithItsFolder) {
    AgentWorld world;
    const QString folder = world.folder.filePath(u"a/b"_s);
    AgentTeamManager manager(folder, world.preferences, world.runLoop);
    EXPECT_TRUE(QFileInfo::exists(folder + u"/agents.json"_s));
    QDir(world.folder.path()).removeRecursively();
    manager.toggle(manager.agents().front().id);
    EXPECT_TRUE(QFileInfo::exists(folder + u"/agents.json"_s)) << "also when it went meanwhile";
}

TEST(AgentsFile, isDoneWithoutWhereNoneCanBe) {
    AgentWorld world;
    world.putFile("a file");  // the folder of the second manager
    AgentTeamManager manager(world.path(), world.preferences, world.runLoop);
    EXPECT_EQ(manager.agents().size(), 6U);
    manager.toggle(manager.agents().back().id);
    EXPECT_TRUE(manager.agents().back().isActive) << "it works from memory";
    EXPECT_EQ(world.file(), QByteArray("a file"));
}

TEST(AgentsFile, isLeftAloneWhenItIsNoFile) {
    AgentWorld world;
    ASSERT_EQ(mkfifo(QFile::encodeName(world.path()).constData(), 0600), 0);
    EXPECT_EQ(world.names().size(), 6) << "a pipe is not waited for";
}

TEST(AgentsFile, staysWholeOnAFullDisk) {
    AgentWorld world;
    world.manager();
    const QByteArray before = world.file();
    {
        const FullDisk full(100);
        world.manager().toggle(world.manager().agents().front().id);
        EXPECT_EQ(world.file(), before);
    }
    EXPECT_FALSE(world.manager().agents().front().isActive);
    world.manager().persist();
    EXPECT_NE(world.file(), before);
}

TEST(AgentsFile, keepsAgentsWithNumbersThatNoFileHoldsInMemory) {
    AgentWorld world;
    const QByteArray before = (world.manager(), world.file());
    AgentProfile agent = world.manager().agents().front();
    agent.temperature = std::numeric_limits<double>::quiet_NaN();
    world.manager().update(agent);
    EXPECT_EQ(world.file(), before) << "what was stored stays";
    EXPECT_EQ(world.manager().agents().front().version, 2);
}

}  // namespace
}  // namespace veltrin
