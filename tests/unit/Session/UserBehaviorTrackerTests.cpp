#include "Foundation/Json.h"
#include "Session/UserBehaviorTracker.h"
#include "support/fake/FakeRunLoop.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Type = TrackedBehavior::BehaviorType;
using Counts = UserProfile::Counts;

class UserBehaviorTrackerTest : public testing::Test {
protected:
    UserBehaviorTracker& tracker() {
        if (!tracker_) tracker_.emplace(directory, loop);
        return *tracker_;
    }
    void restart() { tracker_.reset(); }

    void record(Type type, const QString& detail = u"x"_s, const QString& category = u"c"_s, int times = 1) {
        for (int i = 0; i < times; ++i)
            tracker().record(type, detail, u"Mousepad"_s, category, true);
    }
    /// In a folder that cannot be, the tracker works from memory; counting many waits for no disk.
    QString directory = u"/dev/null/Veltrin"_s;
    FakeRunLoop loop;

private:
    std::optional<UserBehaviorTracker> tracker_;
};

class UserBehaviorTrackerFiles : public UserBehaviorTrackerTest {
protected:
    UserBehaviorTrackerFiles() { directory = folder.path(); }

    QByteArray file(const QString& name) const {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeFile(const QString& name, const QByteArray& bytes) const {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QTemporaryDir folder;
};

TEST_F(UserBehaviorTrackerFiles, aNewProfileIsABeginnersAndNothingIsWritten) {
    const UserProfile& profile = tracker().profile();
    EXPECT_EQ(profile.totalSessions, 0);
    EXPECT_EQ(profile.skillLevel, u"beginner"_s);
    EXPECT_EQ(profile.dominantWorkflow, u"general"_s);
    EXPECT_EQ(profile.learningRate, 0.5);
    EXPECT_EQ(profile.lastActive, Date{loop.wallNow()});
    EXPECT_TRUE(QDir(folder.path()).isEmpty());
}

TEST_F(UserBehaviorTrackerFiles, recordsNewestFirstAndWritesBothFiles) {
    tracker().record(Type::commandUsed, u"/review"_s, u"Konsole"_s, u"slash-command"_s, true);
    loop.advance(1);
    tracker().record(Type::memoryAction, u"更专业"_s, u"Mousepad"_s, u"memory-action"_s, false);
    const auto& behaviors = tracker().recentBehaviors();
    ASSERT_EQ(behaviors.size(), 2U);
    EXPECT_EQ(behaviors[0].type, Type::memoryAction);
    EXPECT_EQ(behaviors[0].detail, u"更专业"_s);
    EXPECT_EQ(behaviors[0].context, u"Mousepad"_s);
    EXPECT_EQ(behaviors[0].category, u"memory-action"_s);
    EXPECT_FALSE(behaviors[0].accepted);
    EXPECT_EQ(behaviors[0].timestamp, Date{loop.wallNow()});
    EXPECT_NE(behaviors[0].id, behaviors[1].id);
    EXPECT_EQ(behaviors[1].detail, u"/review"_s);
    EXPECT_EQ(tracker().profile().lastActive, Date{loop.wallNow()});

    const Json written = Json::parse(file(u"user_behaviors.json"_s));
    ASSERT_EQ(written.array()->size(), 2U);
    const Json& newest = written.array()->front();
    QStringList keys;
    for (const auto& [key, value] : *newest.object())
        keys.append(key);
    EXPECT_EQ(keys, (QStringList{u"id"_s, u"type"_s, u"detail"_s, u"context"_s, u"category"_s, u"accepted"_s,
                                 u"timestamp"_s}));
    EXPECT_EQ(newest.find(u"type")->toString(), u"memoryAction"_s);
    EXPECT_EQ(newest.find(u"timestamp")->toString(), iso8601Text(behaviors[0].timestamp));
    const Json profile = Json::parse(file(u"user_profile.json"_s));
    ASSERT_EQ(profile.array()->size(), 1U);
    EXPECT_EQ(profile.array()->front().find(u"topCommands")->serialized(), QByteArray(R"({"/review":1})"));
    EXPECT_EQ(profile.array()->front().find(u"lastActive")->toString(), iso8601Text({loop.wallNow()}));
}

TEST_F(UserBehaviorTrackerTest, countsEachTypeInItsPlace) {
    record(Type::commandUsed, u"/review"_s, u"slash-command"_s);
    record(Type::commandIgnored, u"/help"_s, u"slash-command"_s);
    record(Type::memoryAction, u"更专业"_s, u"memory-action"_s);
    record(Type::optimizeAction, u"2"_s, u"optimize"_s, 2);
    record(Type::promptDiagnosed, u"d"_s, u"writing"_s);
    record(Type::promptCategory, u"writing"_s, u"e"_s);
    record(Type::appSwitch, u"Konsole"_s, u"f"_s);
    const UserProfile& profile = tracker().profile();
    EXPECT_EQ(profile.topCommands, (Counts{{u"/review"_s, 1}}));
    EXPECT_EQ(profile.topCategories, (Counts{{u"slash-command"_s, 1}}));
    EXPECT_EQ(profile.preferredActions, (Counts{{u"更专业"_s, 1}, {u"optimize:2"_s, 2}}));
    EXPECT_EQ(profile.topPromptCategories, (Counts{{u"writing"_s, 2}}));
    EXPECT_EQ(profile.topApps, (Counts{{u"Konsole"_s, 1}}));
    EXPECT_EQ(profile.totalSessions, 8);
    EXPECT_EQ(profile.dominantWorkflow, u"writing"_s);
}

TEST_F(UserBehaviorTrackerTest, theDominantWorkflowAddsTheCountsOfBothTables) {
    record(Type::commandUsed, u"a"_s, u"tool"_s, 3);
    record(Type::commandUsed, u"b"_s, u"code"_s, 2);
    EXPECT_EQ(tracker().profile().dominantWorkflow, u"tool"_s);
    record(Type::promptCategory, u"code"_s, {}, 2);
    EXPECT_EQ(tracker().profile().dominantWorkflow, u"code"_s);
}

TEST_F(UserBehaviorTrackerFiles, keepsAThousandAndGoesOnCounting) {
    // The one form of the file that a start understands stands in for 998 slow writes.
    std::vector<TrackedBehavior> stored(998);
    stored.back().detail = u"oldest"_s;
    writeFile(u"user_behaviors.json"_s, *writeRecords(stored, DateStrategy::referenceDate));
    record(Type::memoryAction, u"x"_s, {}, 2);
    EXPECT_EQ(tracker().recentBehaviors().size(), 1000U);
    EXPECT_EQ(tracker().recentBehaviors().back().detail, u"oldest"_s);
    record(Type::memoryAction, u"newest"_s);
    EXPECT_EQ(tracker().recentBehaviors().size(), 1000U);
    EXPECT_EQ(tracker().recentBehaviors().front().detail, u"newest"_s);
    EXPECT_EQ(tracker().recentBehaviors().back().detail, QString()) << "the oldest is gone";
    EXPECT_EQ(tracker().profile().totalSessions, 1001);
    EXPECT_EQ(Json::parse(file(u"user_behaviors.json"_s)).array()->size(), 1000U);
}

TEST_F(UserBehaviorTrackerTest, theSkillLevelNeedsBreadthAndUse) {
    const auto level = [this] { return tracker().profile().skillLevel; };
    const auto useCommands = [this](int from, int to) {
        for (int i = from; i < to; ++i)
            record(Type::commandUsed, u"command %1"_s.arg(i));
    };
    record(Type::memoryAction, u"a"_s, u"c"_s, 10);
    useCommands(0, 4);
    EXPECT_EQ(level(), u"beginner"_s);
    record(Type::optimizeAction);
    EXPECT_EQ(level(), u"intermediate"_s);
    record(Type::memoryAction, u"b"_s, u"c"_s, 20);
    useCommands(4, 8);
    EXPECT_EQ(level(), u"intermediate"_s) << "31 actions, 8 commands";
    useCommands(8, 9);
    EXPECT_EQ(level(), u"advanced"_s);
}

TEST_F(UserBehaviorTrackerTest, muchUseOfFewCommandsStaysABeginners) {
    record(Type::memoryAction, u"a"_s, u"c"_s, 40);
    record(Type::commandUsed, u"one"_s, u"c"_s, 40);
    EXPECT_EQ(tracker().profile().skillLevel, u"beginner"_s);
}

TEST_F(UserBehaviorTrackerTest, theLearningRateIsTheShareOfCommandsSeenLately) {
    const auto rate = [this] { return tracker().profile().learningRate; };
    record(Type::memoryAction, u"a"_s, u"c"_s, 5);
    EXPECT_EQ(rate(), 0.5) << "no command yet";
    record(Type::commandUsed, u"one"_s);
    EXPECT_EQ(rate(), 1);
    record(Type::commandUsed, u"two"_s, u"c"_s, 19);
    EXPECT_EQ(rate(), 1) << "both are among the last 20";
    record(Type::memoryAction);
    EXPECT_EQ(rate(), 0.5) << "the first command is the 21st now";
    record(Type::memoryAction, u"a"_s, u"c"_s, 19);
    EXPECT_EQ(rate(), 0);
}

TEST_F(UserBehaviorTrackerTest, theContextIsEmptyUntilTheFourthBehaviour) {
    record(Type::optimizeAction, u"1"_s, u"optimize"_s, 3);
    EXPECT_EQ(tracker().profileContext(), QString());
    record(Type::optimizeAction, u"1"_s, u"optimize"_s);
    EXPECT_EQ(tracker().profileContext(), u"技能水平：beginner。"_s);
}

TEST_F(UserBehaviorTrackerTest, theContextTellsTheThreeMostUsed) {
    record(Type::commandUsed, u"/review"_s, u"slash-command"_s, 5);
    record(Type::commandUsed, u"loop"_s, u"skill"_s, 4);
    record(Type::commandUsed, u"onboard"_s, u"tool"_s, 3);
    record(Type::commandUsed, u"figma-use"_s, u"figma"_s, 2);
    EXPECT_EQ(tracker().profileContext(),
              u"用户最常使用的命令类型：slash-command(5次)、skill(4次)、tool(3次)；"
              "用户常用命令：/review、loop、onboard；用户主要工作流：slash-command；技能水平：beginner。"_s);
}

TEST_F(UserBehaviorTrackerFiles, aRestartForgetsBecauseItCannotReadItsOwnDates) {
    record(Type::commandUsed, u"/review"_s, u"slash-command"_s, 12);
    const QByteArray before = file(u"user_behaviors.json"_s);
    restart();
    EXPECT_TRUE(tracker().recentBehaviors().empty());
    EXPECT_EQ(tracker().profile().totalSessions, 0);
    EXPECT_EQ(tracker().profile().skillLevel, u"beginner"_s);
    EXPECT_EQ(tracker().profile().learningRate, 0.5);
    EXPECT_EQ(file(u"user_behaviors.json"_s), before) << "a start writes nothing";
    record(Type::memoryAction);
    EXPECT_EQ(Json::parse(file(u"user_behaviors.json"_s)).array()->size(), 1U);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files, QDir::Name),
              (QStringList{u"user_behaviors.json"_s, u"user_profile.json"_s}))
        << "and no copy is set aside";
}

TEST_F(UserBehaviorTrackerFiles, aFileWithDatesAsNumbersIsCounted) {
    writeFile(u"user_behaviors.json"_s, R"([
{"id":"0A3F6E1C-5B0D-4C58-9E0B-6D6B7C3D2E11","type":"commandUsed","detail":"loop","context":"Konsole",
 "category":"skill","accepted":true,"timestamp":700000000},
{"id":"0A3F6E1C-5B0D-4C58-9E0B-6D6B7C3D2E12","type":"appSwitch","detail":"Konsole","context":"Konsole",
 "category":"","accepted":true,"timestamp":1.5}])");
    const UserProfile& profile = tracker().profile();
    EXPECT_EQ(profile.totalSessions, 2);
    EXPECT_EQ(profile.topCommands, (Counts{{u"loop"_s, 1}}));
    EXPECT_EQ(profile.dominantWorkflow, u"skill"_s);
    EXPECT_EQ(profile.lastActive, Date::fromReferenceDate(700000000));
    EXPECT_EQ(profile.learningRate, 0.5) << "a start does not compute it";
}

TEST_F(UserBehaviorTrackerFiles, brokenFilesReadAsNothing) {
    for (const QByteArray& bad :
         {QByteArray("["), QByteArray("{}"), QByteArray("[{}]"), QByteArray("\xff\xfe"),
          QByteArray(R"([{"id":"x","type":"unheard","detail":"","context":"","category":"","accepted":true,
"timestamp":1}])")}) {
        restart();
        writeFile(u"user_behaviors.json"_s, bad);
        writeFile(u"user_profile.json"_s, bad);
        EXPECT_TRUE(tracker().recentBehaviors().empty());
        EXPECT_EQ(tracker().profile().totalSessions, 0);
    }
}

TEST_F(UserBehaviorTrackerTest, worksFromMemoryWhenNothingCanBeWritten) {
    record(Type::memoryAction);
    EXPECT_EQ(tracker().profile().totalSessions, 1);
    EXPECT_EQ(tracker().recentBehaviors().size(), 1U);
}

TEST_F(UserBehaviorTrackerTest, tellsItsObserversAfterEachRecord) {
    QList<qint64> seen;
    const auto subscription =
        tracker().changed.subscribe([&] { seen.append(tracker().profile().totalSessions); });
    record(Type::memoryAction, u"a"_s, {}, 2);
    EXPECT_EQ(seen, (QList<qint64>{1, 2}));
}

}  // namespace
}  // namespace veltrin
