#include "Data/AssetsStudio.h"
#include "StoresFixture.h"
#include "support/fake/TaskRunner.h"
#include "support/fake/TaskWorld.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr double day = 86400;

class AssetsStudioTest : public testing::Test {
protected:
    AssetsStudioTest() {
        subscription_ = studio->toast.subscribe([this](const QString& words) { toasts << words; });
    }
    StoredPrompt insert(const QString& title, double age = 0, const QString& categoryTag = u"writing"_s) {
        StoredPrompt prompt;
        prompt.id = QUuid::createUuid();
        prompt.title = title;
        prompt.content = u"正文"_s;
        prompt.categoryTag = categoryTag;
        prompt.createdAt = prompt.updatedAt = Date{world.runLoop.wallNow() - age};
        prompts.insert(prompt);
        return prompt;
    }
    QStringList shown(const QString& category, const QString& search = {}) {
        studio->selectedCategory = category;
        studio->searchText = search;
        return titles(studio->filteredPrompts());
    }

    TaskWorld world;
    QTemporaryDir folder;
    PromptStore prompts{folder.path(), world.runLoop};
    std::optional<AssetsStudio> studio{std::in_place, prompts, world.preferences, world.runLoop,
                                       world.tasks()};
    QStringList toasts;

private:
    Subscription subscription_;
};

TEST_F(AssetsStudioTest, filtersByCategoryAndFavorites) {
    EXPECT_EQ(shown(u"all"_s).size(), 10);
    EXPECT_EQ(shown(u"painting"_s), (QStringList{u"赛博朋克城市"_s, u"水墨山水"_s, u"产品概念图"_s}));
    EXPECT_EQ(shown(u"favorites"_s), (QStringList{u"万能改写器"_s, u"思维链推理"_s}));
    StoredPrompt unfavored = prompts.prompts().back();
    unfavored.isFavorite = false;
    prompts.update(unfavored);
    StoredPrompt favored = prompts.prompts().front();
    favored.isFavorite = true;
    prompts.update(favored);
    EXPECT_EQ(shown(u"favorites"_s), (QStringList{u"赛博朋克城市"_s, u"万能改写器"_s, u"思维链推理"_s}))
        << "a flag or the category's name";
    insert(u"合同"_s, 0, u"custom-1A2B3C4D"_s);
    EXPECT_EQ(shown(u"custom-1A2B3C4D"_s), QStringList{u"合同"_s});
    EXPECT_TRUE(shown(u"general"_s).isEmpty());
}

TEST_F(AssetsStudioTest, recentShowsTheLastSevenDays) {
    insert(u"eight"_s, 8 * day);
    insert(u"six"_s, 6 * day);
    insert(u"now"_s);
    const QStringList recent = shown(u"recent"_s);
    EXPECT_FALSE(recent.contains(u"eight"_s));
    EXPECT_TRUE(recent.contains(u"six"_s));
    EXPECT_EQ(recent.size(), 12);
    EXPECT_EQ(studio->recentCountText(), u"12"_s);
}

TEST_F(AssetsStudioTest, narrowsTheCategoryByTheSearchText) {
    EXPECT_EQ(shown(u"painting"_s, u"STUDIO"_s), QStringList{u"产品概念图"_s});
    EXPECT_EQ(shown(u"painting"_s, u"艺术"_s), QStringList{u"水墨山水"_s});
    EXPECT_TRUE(shown(u"video"_s, u"studio"_s).isEmpty());
    EXPECT_EQ(studio->allFiltered().size(), 1U) << "the category alone";
}

TEST_F(AssetsStudioTest, savesTheDraftInTheSelectedCategory) {
    studio->selectedCategory = u"code"_s;
    studio->draft = {u" 审查 \n"_s, u"\n看代码 "_s, u" 安全, ,Review ，旧,"_s};
    EXPECT_TRUE(studio->saveNewAsset());
    const StoredPrompt& saved = prompts.prompts().front();
    EXPECT_EQ(saved.title, u"审查"_s);
    EXPECT_EQ(saved.content, u"看代码"_s);
    EXPECT_EQ(saved.tags, (QStringList{u"安全"_s, u"Review ，旧"_s}));
    EXPECT_EQ(saved.categoryTag, u"code"_s);
    EXPECT_EQ(saved.source, u"manual"_s);
    EXPECT_EQ(saved.createdAt.secondsSince1970, world.runLoop.wallNow());
    EXPECT_EQ(saved.updatedAt, saved.createdAt);
    EXPECT_FALSE(saved.isFavorite || saved.imageFilename || saved.userRating || saved.id.isNull());
    EXPECT_EQ(toasts, QStringList{u"资产已入库"_s});
    EXPECT_TRUE(studio->draft.title.isEmpty());
}

TEST_F(AssetsStudioTest, aPromptSavedUnderAFilterIsWriting) {
    for (const QString& filter : {u"favorites"_s, u"all"_s, u"recent"_s}) {
        studio->selectedCategory = filter;
        studio->draft = {u"新"_s + filter, u"文"_s, {}};
        EXPECT_TRUE(studio->saveNewAsset());
        EXPECT_EQ(prompts.prompts().front().categoryTag, u"writing"_s);
    }
    EXPECT_FALSE(shown(u"favorites"_s).contains(u"新favorites"_s)) << "so it is not in the list selected";
}

TEST_F(AssetsStudioTest, savesNoDraftWithoutTitleOrContent) {
    for (const AssetsStudio::Draft& draft :
         {AssetsStudio::Draft{u" "_s, u"文"_s, {}}, AssetsStudio::Draft{u"题"_s, u"\n"_s, {}}}) {
        studio->draft = draft;
        EXPECT_FALSE(studio->saveNewAsset());
        EXPECT_EQ(studio->draft.title, draft.title) << "what the user wrote stays";
    }
    EXPECT_EQ(prompts.prompts().size(), 10U);
    EXPECT_TRUE(toasts.isEmpty());
}

TEST_F(AssetsStudioTest, keepsACategoryOfTheUsersOwn) {
    EXPECT_FALSE(studio->addCustomCategory(u" "_s, u"#FFE066"_s));
    EXPECT_TRUE(world.preferences.values.empty() || studio->customCategories().empty());
    EXPECT_TRUE(studio->addCustomCategory(u" 法务 "_s, u"#FFE066"_s));
    EXPECT_EQ(toasts, QStringList{u"分类「法务」已添加"_s});
    const AssetsStudio next(prompts, world.preferences, world.runLoop, world.tasks());
    ASSERT_EQ(next.customCategories().size(), 1U);
    EXPECT_EQ(next.customCategories(), studio->customCategories());
    EXPECT_EQ(next.customCategories()[0].name, u"法务"_s);
}

TEST_F(AssetsStudioTest, ratesByTheMeanOfTheExistingStars) {
    EXPECT_EQ(studio->avgRatingText(), u"--"_s);
    const int stars[] = {5, 4, 4};
    for (std::size_t i = 0; i < 3; ++i) {
        StoredPrompt rated = prompts.prompts()[i];
        rated.userRating = stars[i];
        prompts.update(rated);
    }
    EXPECT_EQ(studio->avgRatingText(), u"4.3"_s);
}

TEST_F(AssetsStudioTest, aModelsFindsKeepTheirOrderAndSkipWhatIsGone) {
    world.http.holding = true;
    world.answerLocally(u"[4, 0, 1]"_s);
    const auto outcome = follow(studio->runAISearch(u"画"_s));
    prompts.deletePrompt(prompts.prompts().front().id);
    ASSERT_TRUE(world.http.release());
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(titles(*outcome->value), (QStringList{u"苏格拉底式追问"_s, u"水墨山水"_s}));
    EXPECT_TRUE(world.localPrompt(0).contains(u"User query: 画\n"_s));
}

TEST_F(AssetsStudioTest, aSearchThatOutlivesThePageFindsNothing) {
    world.http.holding = true;
    world.answerLocally(u"[0]"_s);
    const auto outcome = follow(studio->runAISearch(u"画"_s));
    studio.reset();
    ASSERT_TRUE(world.http.release());
    ASSERT_TRUE(outcome->value);
    EXPECT_TRUE(outcome->value->empty());
}

TEST_F(AssetsStudioTest, aSearchThatFailsSaysWhy) {
    world.http.fail(UrlError::timedOut, u"late"_s);
    EXPECT_EQ(follow(studio->runAISearch(u"画"_s))->errorDescription(), u"late"_s);
}

}  // namespace
}  // namespace veltrin
