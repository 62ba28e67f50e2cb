#include "Data/MemoryActionStore.h"
#include "StoresFixture.h"
#include "support/RecordLaws.h"
#include "support/fake/FakePreferences.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString key = u"memory_action_voice_action_id"_s;

MemoryActionPreset action(const QString& title, std::optional<int> slot, bool isQuick = true) {
    MemoryActionPreset action;
    action.id = QUuid::createUuid();
    action.title = title;
    action.isQuickAction = isQuick;
    action.shortcutSlot = slot;
    return action;
}

class MemoryActionStoreTest : public StoresFixture {
protected:
    MemoryActionStore store() { return MemoryActionStore(folder(), loop, preferences); }
    void putActions(const std::vector<MemoryActionPreset>& actions) {
        put(u"memory_actions.json"_s, *writeRecords(actions));
    }

    FakePreferences preferences;
};

TEST_F(MemoryActionStoreTest, itsRecordObeysItsTable) {
    expectRecordLaws<MemoryActionPreset>();
}

TEST_F(MemoryActionStoreTest, anEmptyOneGetsTheFourQuickActions) {
    const auto actions = store().actions();
    ASSERT_EQ(titles(actions), (QStringList{u"提示词优化"_s, u"添加表情"_s, u"更专业"_s, u"更简洁"_s}));
    const MemoryActionPreset& third = actions[2];
    EXPECT_EQ(third.shortcutSlot, 3);
    EXPECT_EQ(third.description, u"改成清晰、稳重、专业的表达"_s);
    EXPECT_EQ(third.instruction,
              u"保留原意，将文本改写得更专业、清晰、稳重。减少口语化表达，补足逻辑连接，避免夸张和空话。"_s);
    EXPECT_EQ(third.icon, u"briefcase.fill"_s);
    EXPECT_EQ(third.colorHex, u"#B5D8FF"_s);
    for (const MemoryActionPreset& each : actions) {
        EXPECT_TRUE(each.isQuickAction);
        EXPECT_EQ(each.createdAt, Date{1795255200});
        EXPECT_EQ(each.updatedAt, Date{1795255200});
    }
    EXPECT_EQ(store().actions(), actions) << "they are written";
}

TEST_F(MemoryActionStoreTest, theFirstQuickActionServesTheVoiceAndIsStored) {
    const auto actions = store();
    EXPECT_EQ(actions.voiceAction()->title, u"提示词优化"_s);
    EXPECT_EQ(preferences.string(key), uuidText(*actions.voiceActionID()));
    EXPECT_EQ(store().voiceActionID(), actions.voiceActionID());
}

TEST_F(MemoryActionStoreTest, withoutQuickActionsTheFirstOfAllServesTheVoice) {
    putActions({action(u"a"_s, std::nullopt), action(u"b"_s, 2, false)});
    EXPECT_EQ(store().voiceAction()->title, u"a"_s);
}

TEST_F(MemoryActionStoreTest, anUnparsableVoiceActionCountsAsNone) {
    preferences.values[key] = u"not an identifier"_s;
    EXPECT_EQ(store().voiceAction()->title, u"提示词优化"_s);
}

TEST_F(MemoryActionStoreTest, quickActionsAreThoseOfTheFourSlotsBySlot) {
    putActions({action(u"four"_s, 4), action(u"five"_s, 5), action(u"none"_s, std::nullopt),
                action(u"two"_s, 2), action(u"zero"_s, 0), action(u"hidden"_s, 1, false),
                action(u"two again"_s, 2)});
    EXPECT_EQ(titles(store().quickActions()), (QStringList{u"two"_s, u"two again"_s, u"four"_s}));
}

TEST_F(MemoryActionStoreTest, thereAreAtMostFourQuickActions) {
    std::vector<MemoryActionPreset> many;
    for (int i = 0; i < 6; ++i)
        many.push_back(action(QString::number(i), 1 + i % 3));
    putActions(many);
    EXPECT_EQ(titles(store().quickActions()), (QStringList{u"0"_s, u"3"_s, u"1"_s, u"4"_s}));
}

TEST_F(MemoryActionStoreTest, aVoiceActionDeletedByHandClearsTheKey) {
    const auto first = store().actions();
    putActions({first[1], first[2]});
    const auto actions = store();
    EXPECT_FALSE(actions.voiceActionID());
    EXPECT_FALSE(actions.voiceAction());
    EXPECT_FALSE(preferences.string(key));
}

TEST_F(MemoryActionStoreTest, aFileEmptiedByHandIsSeededAndTheFirstQuickActionTaken) {
    const auto former = *store().voiceActionID();
    putActions({});
    const auto actions = store();
    EXPECT_EQ(actions.voiceAction()->title, u"提示词优化"_s);
    EXPECT_NE(*actions.voiceActionID(), former);
    EXPECT_EQ(preferences.string(key), uuidText(*actions.voiceActionID()));
}

TEST_F(MemoryActionStoreTest, settingTheVoiceActionWritesTheKeyAndNoneRemovesIt) {
    auto actions = store();
    int told = 0;
    const auto subscription = actions.changed().subscribe([&] { ++told; });
    const QUuid second = actions.actions()[1].id;
    actions.setVoiceActionID(second);
    EXPECT_EQ(preferences.string(key), uuidText(second));
    EXPECT_EQ(actions.voiceAction()->title, u"添加表情"_s);
    actions.setVoiceActionID(std::nullopt);
    EXPECT_FALSE(preferences.string(key));
    EXPECT_EQ(told, 2);
}

}  // namespace
}  // namespace veltrin
