#include "AI/ShortcutAssignments.h"

#include <gtest/gtest.h>

#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

bool everyone(const QString&) {
    return true;
}

TEST(ShortcutAssignments, countTheSlotsOfEachShortcut) {
    EXPECT_EQ(ShortcutSlots::count(u"optimize"_s), 4);
    EXPECT_EQ(ShortcutSlots::count(u"translation"_s), 1);
    EXPECT_EQ(ShortcutSlots::count(u"smartSelect"_s), 2);
    EXPECT_EQ(ShortcutSlots::count(u"drag"_s), 4);
    EXPECT_EQ(ShortcutSlots::count(u"voice"_s), 1);
    EXPECT_EQ(ShortcutSlots::count(u"Optimize"_s), 1) << "a key that is not listed";
    EXPECT_EQ(ShortcutSlots::count(QString()), 1);
}

TEST(ShortcutAssignments, padWithEmptySlotsUpToTheOneThatIsFilled) {
    ShortcutAssignments assignments;
    EXPECT_TRUE(assignments.assign(u"A"_s, u"optimize"_s, 3));
    EXPECT_EQ(assignments.ids(u"optimize"_s), (QStringList{QString(), QString(), QString(), u"A"_s}));
    EXPECT_TRUE(assignments.repair(u"F"_s, everyone));
    EXPECT_EQ(assignments.ids(u"optimize"_s), (QStringList{u"F"_s, u"F"_s, u"F"_s, u"A"_s}));
}

TEST(ShortcutAssignments, refuseASlotThatTheShortcutDoesNotHave) {
    ShortcutAssignments assignments;
    for (const int slot : {-1, 4, 5, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_FALSE(assignments.assign(u"A"_s, u"optimize"_s, slot)) << slot;
    EXPECT_FALSE(assignments.assign(u"A"_s, u"translation"_s, 1));
    EXPECT_FALSE(assignments.assign(u"A"_s, u"older"_s, 1));
    EXPECT_EQ(assignments, ShortcutAssignments());
    EXPECT_TRUE(assignments.assign(u"A"_s, u"older"_s, 0));
}

TEST(ShortcutAssignments, cutAStoredListThatIsTooLongWhenOneIsAssigned) {
    auto assignments = ShortcutAssignments::decoded(R"({"translation":["A","B","C"]})");
    EXPECT_TRUE(assignments.assign(u"D"_s, u"translation"_s, 0));
    EXPECT_EQ(assignments.ids(u"translation"_s), QStringList{u"D"_s});
}

TEST(ShortcutAssignments, moveLaterSlotsUpWhenAnAgentGoes) {
    auto assignments = ShortcutAssignments::decoded(R"({"optimize":["A","B","C","B"],"older":["B"]})");
    assignments.remove(u"B"_s);
    EXPECT_EQ(assignments.ids(u"optimize"_s), (QStringList{u"A"_s, u"C"_s}));
    EXPECT_TRUE(assignments.ids(u"older"_s).isEmpty());
}

TEST(ShortcutAssignments, repairShortLongEmptyAndDeadSlots) {
    auto assignments = ShortcutAssignments::decoded(
        R"({"optimize":["A"],"translation":["A","B"],"smartSelect":["","dead"],"older":["dead",""]})");
    const auto lives = [](const QString& id) { return id == u"A" || id == u"F"; };
    EXPECT_TRUE(assignments.repair(u"F"_s, lives));
    EXPECT_EQ(assignments.ids(u"optimize"_s), (QStringList{u"A"_s, u"F"_s, u"F"_s, u"F"_s}));
    EXPECT_EQ(assignments.ids(u"translation"_s), QStringList{u"A"_s});
    EXPECT_EQ(assignments.ids(u"smartSelect"_s), (QStringList{u"F"_s, u"F"_s}));
    EXPECT_EQ(assignments.ids(u"drag"_s), (QStringList{u"F"_s, u"F"_s, u"F"_s, u"F"_s}));
    EXPECT_EQ(assignments.ids(u"voice"_s), QStringList{u"F"_s});
    EXPECT_EQ(assignments.ids(u"older"_s), (QStringList{u"dead"_s, QString()})) << "left as it is";
    EXPECT_FALSE(assignments.repair(u"F"_s, lives)) << "nothing is left to repair";
}

TEST(ShortcutAssignments, comeBackFromTheirStoredForm) {
    ShortcutAssignments assignments;
    assignments.repair(u"F"_s, everyone);
    assignments.assign(u"A\"\n甲"_s, u"older"_s, 0);
    EXPECT_EQ(ShortcutAssignments::decoded(assignments.encoded()), assignments);
    EXPECT_EQ(ShortcutAssignments().encoded(), QByteArray("{}"));
}

TEST(ShortcutAssignments, readWhatIsNoTableAsEmpty) {
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("{"), QByteArray("[]"), QByteArray("null"),
          QByteArray(R"({"optimize":"A"})"), QByteArray(R"({"optimize":[1]})"),
          QByteArray(R"({"optimize":["A"],"drag":[null]})"), QByteArray("\xff\xfe")})
        EXPECT_EQ(ShortcutAssignments::decoded(bytes), ShortcutAssignments()) << bytes.constData();
}

}  // namespace
}  // namespace veltrin
