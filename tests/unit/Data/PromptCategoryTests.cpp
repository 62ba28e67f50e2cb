#include "Data/PromptCategory.h"
#include "support/RecordLaws.h"
#include "support/fake/FakePreferences.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString key = u"assets_custom_categories"_s;

TEST(PromptCategory, hasAWordForEveryCategory) {
    QStringList words;
    for (const auto category : allCases<PromptCategory>())
        words << categoryLabel(rawValue(category));
    EXPECT_EQ(words.join(u' '), u"全部 收藏 最近入库 绘画 视频 对话 代码 写作 商业"_s);
}

TEST(PromptCategory, showsAnUnknownTagAsItStands) {
    for (const QString& tag : {u"general"_s, u"custom-1A2B3C4D"_s, u"Painting"_s, QString()})
        EXPECT_EQ(categoryLabel(tag), tag);
}

TEST(CustomCategory, getsAFolderAndATagOfItsOwn) {
    const auto category = CustomCategory::made(u"法务"_s, u"#B5D8FF"_s);
    EXPECT_EQ(category.name, u"法务"_s);
    EXPECT_EQ(category.icon, u"folder.fill"_s);
    EXPECT_EQ(category.accentHex, u"#B5D8FF"_s);
    EXPECT_EQ(category.tag.size(), 15);
    EXPECT_TRUE(category.tag.startsWith(u"custom-"_s));
    EXPECT_EQ(category.tag.mid(7), category.tag.mid(7).toUpper());
    EXPECT_NE(category.tag, CustomCategory::made(u"法务"_s, {}).tag);
    EXPECT_NE(category.tag.mid(7), uuidText(category.id).left(8)) << "of a new identifier, not its own";
}

TEST(CustomCategory, keepsTheLawsOfRecords) {
    expectRecordLaws<CustomCategory>();
}

TEST(CustomCategories, readTheTextOfTheirPreference) {
    FakePreferences preferences;
    EXPECT_TRUE(CustomCategories::load(preferences).empty());
    const std::vector<CustomCategory> categories{CustomCategory::made(u"法务"_s, u"#FFE066"_s),
                                                 CustomCategory::made(u"\"财务\""_s, u"#B5D8FF"_s)};
    CustomCategories::save(preferences, categories);
    EXPECT_TRUE(preferences.string(key)->startsWith(u"[{\"id\":\""_s));
    EXPECT_EQ(CustomCategories::load(preferences), categories);
    for (const PreferenceValue& broken : {PreferenceValue(u"[{}]"_s), PreferenceValue(u"{"_s),
                                          PreferenceValue(u""_s), PreferenceValue(1.0)}) {
        preferences.values[key] = broken;
        EXPECT_TRUE(CustomCategories::load(preferences).empty());
    }
}

}  // namespace
}  // namespace veltrin
