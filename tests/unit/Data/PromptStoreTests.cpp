#include "Data/PromptStore.h"
#include "StoresFixture.h"
#include "support/RecordLaws.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class PromptStoreTest : public StoresFixture {
protected:
    PromptStore store() { return PromptStore(folder(), loop); }
    static StoredPrompt prompt(const QString& title, const QString& content = u"正文"_s) {
        StoredPrompt prompt;
        prompt.id = QUuid::createUuid();
        prompt.title = title;
        prompt.content = content;
        return prompt;
    }

    const QString name = u"prompts.json"_s;
};

TEST_F(PromptStoreTest, anEmptyLibraryGetsItsTenSeeds) {
    const auto seeded = store();
    const auto& prompts = seeded.prompts();
    EXPECT_EQ(titles(prompts),
              (QStringList{u"赛博朋克城市"_s, u"水墨山水"_s, u"产品概念图"_s, u"电影开场镜头"_s,
                           u"苏格拉底式追问"_s, u"代码审查专家"_s, u"爆款标题生成器"_s, u"SWOT 分析框架"_s,
                           u"万能改写器"_s, u"思维链推理"_s}));
    QStringList categories;
    for (std::size_t i = 0; i < prompts.size(); ++i) {
        const StoredPrompt& each = prompts[i];
        categories << each.categoryTag;
        EXPECT_EQ(each.isFavorite, i >= 8);
        EXPECT_EQ(each.source, u"manual"_s);
        EXPECT_EQ(each.tags.size(), 2);
        EXPECT_FALSE(each.userRating || each.imageFilename);
        EXPECT_EQ(each.createdAt.secondsSince1970, loop.wallNow());
        EXPECT_EQ(each.updatedAt, each.createdAt);
        EXPECT_FALSE(each.id.isNull());
    }
    EXPECT_EQ(categories.join(u' '),
              u"painting painting painting video chat code writing business favorites favorites"_s);
    EXPECT_EQ(prompts[2].tags, (QStringList{u"DALL·E"_s, u"设计"_s}));
    EXPECT_EQ(prompts[9].content, u"Let's think step by step. 强制模型逐步推理，减少幻觉，提升准确率"_s);
    EXPECT_EQ(store().prompts(), prompts) << "the seeds were written";
}

TEST_F(PromptStoreTest, anOldRecordOfThreeFieldsLoadsWithEveryDefault) {
    put(name, R"([{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","title":"旧","content":"文"}])");
    const auto loaded = store();
    ASSERT_EQ(loaded.prompts().size(), 1U);
    StoredPrompt expected = prompt(u"旧"_s, u"文"_s);
    expected.id = QUuid(u"E621E1F8-C36C-495A-93FC-0C247A3E6E5F"_s);
    expected.createdAt = expected.updatedAt = Date{loop.wallNow()};
    EXPECT_EQ(loaded.prompts()[0], expected);
    EXPECT_EQ(expected.categoryTag, u"general"_s);
    EXPECT_EQ(expected.source, u"manual"_s);
}

TEST_F(PromptStoreTest, aRecordWithoutATitleMakesTheFileReadAsEmpty) {
    put(name, R"([{"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E5F","content":"文"}])");
    const auto seeded = store();
    EXPECT_EQ(seeded.prompts().size(), 10U) << "and so the seeds run";
    EXPECT_TRUE(QFile::exists(path(name + u".unreadable"_s))) << "what was there is kept aside";
}

TEST_F(PromptStoreTest, aNewPromptStandsInFrontAndIsWritten) {
    auto library = store();
    int changes = 0;
    const auto subscription = library.changed().subscribe([&] { ++changes; });
    library.insert(prompt(u"新"_s));
    EXPECT_EQ(library.prompts().front().title, u"新"_s);
    EXPECT_EQ(library.prompts().size(), 11U);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(store().prompts().size(), 11U);
    EXPECT_TRUE(bytesOf(name).contains("\"isFavorite\" : false"));
}

TEST_F(PromptStoreTest, anUpdateIsDatedAndOfAnUnknownIdNothing) {
    auto library = store();
    int changes = 0;
    const auto subscription = library.changed().subscribe([&] { ++changes; });
    loop.advance(100);
    StoredPrompt changed = library.prompts()[1];
    changed.title = u"水墨"_s;
    library.update(changed);
    EXPECT_EQ(library.prompts()[1].title, u"水墨"_s);
    EXPECT_EQ(library.prompts()[1].updatedAt.secondsSince1970, loop.wallNow());
    EXPECT_EQ(library.prompts()[1].createdAt, changed.createdAt);
    EXPECT_EQ(changes, 1);
    const QByteArray before = bytesOf(name);
    library.update(prompt(u"无"_s));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(bytesOf(name), before);
}

TEST_F(PromptStoreTest, removesEveryPromptWithTheId) {
    auto library = store();
    StoredPrompt twin = prompt(u"孪生"_s);
    library.insert(twin);
    library.insert(twin);
    EXPECT_EQ(titles(library.search(u"孪生"_s)).size(), 2);
    library.deletePrompt(twin.id);
    EXPECT_EQ(library.prompts().size(), 10U);
    EXPECT_TRUE(library.search(u"孪生"_s).empty());
    EXPECT_EQ(library.find(twin.id), nullptr);
    EXPECT_EQ(store().prompts().size(), 10U);
}

TEST_F(PromptStoreTest, aLibraryThatWasEmptiedIsSeededAtTheNextLaunch) {
    auto library = store();
    while (!library.prompts().empty())
        library.deletePrompt(library.prompts().front().id);
    EXPECT_EQ(readRecords<StoredPrompt>(bytesOf(name)), std::vector<StoredPrompt>());
    EXPECT_EQ(store().prompts().size(), 10U);
}

TEST_F(PromptStoreTest, searchesTitleContentAndTagsInAnyCase) {
    auto library = store();
    EXPECT_EQ(titles(library.search(u"swot"_s)), QStringList{u"SWOT 分析框架"_s});
    EXPECT_EQ(titles(library.search(u"STUDIO Lighting"_s)), QStringList{u"产品概念图"_s});
    EXPECT_EQ(titles(library.search(u"mj"_s)), QStringList{u"赛博朋克城市"_s});
    EXPECT_EQ(titles(library.search(u"分析"_s)), (QStringList{u"代码审查专家"_s, u"SWOT 分析框架"_s}));
    EXPECT_EQ(library.search(QString()).size(), 10U);
    EXPECT_TRUE(library.search(u" "_s).size() < 10U) << "a blank is a query";
    EXPECT_TRUE(library.search(u"没有的"_s).empty());
}

TEST_F(PromptStoreTest, aSearchAfterAChangeFindsTheNewText) {
    auto library = store();
    library.prepareSearch();
    library.insert(prompt(u"Neu"_s));
    EXPECT_EQ(library.matches(u"neu"_s), std::vector<std::size_t>{0});
    StoredPrompt changed = library.prompts()[0];
    changed.title = u"Anders"_s;
    library.update(changed);
    EXPECT_TRUE(library.matches(u"neu"_s).empty());
    EXPECT_EQ(library.matches(u"anders"_s), std::vector<std::size_t>{0});
    EXPECT_EQ(library.matches(u"赛博"_s), std::vector<std::size_t>{1});
    library.deletePrompt(changed.id);
    EXPECT_EQ(library.matches(u"赛博"_s), std::vector<std::size_t>{0});
}

TEST_F(PromptStoreTest, aPictureHasAnAddressOnlyWhenItIsInTheFolder) {
    const auto library = store();
    EXPECT_EQ(library.imagesDir(), folder() + u"/images"_s);
    EXPECT_FALSE(library.imageURL(u"a.png"_s));
    QDir().mkpath(library.imagesDir() + u"/sub"_s);
    QFile file(library.imagesDir() + u"/a.png"_s);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(library.imageURL(u"a.png"_s), QUrl::fromLocalFile(file.fileName()));
    for (const QString& other : {u""_s, u"."_s, u".."_s, u"sub"_s, u"../prompts.json"_s, u"sub/../a.png"_s})
        EXPECT_FALSE(library.imageURL(other)) << qPrintable(other);
}

TEST_F(PromptStoreTest, worksFromMemoryWhereNothingCanBeWritten) {
    QFile file(folder());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    auto library = store();
    library.insert(prompt(u"新"_s));
    EXPECT_EQ(library.prompts().size(), 11U);
}

TEST(StoredPrompt, keepsTheLawsOfRecords) {
    expectRecordLaws<StoredPrompt>();
    expectRecordLaws<StoredPreset>();
}

TEST(StoredPrompt, namesItsOrigin) {
    StoredPrompt prompt;
    const auto label = [&](const QString& source, const QString& reference = {}) {
        prompt.source = source;
        prompt.sourceReference = reference;
        return prompt.sourceLabel();
    };
    EXPECT_EQ(label(u"ai"_s), u"AI 生成"_s);
    EXPECT_EQ(label(u"imported"_s), u"导入"_s);
    EXPECT_EQ(label(u"manual"_s), u"手动"_s);
    EXPECT_EQ(label(u"workbench"_s), u"反推工作台"_s);
    EXPECT_EQ(label(u"diagnosis"_s), u"诊断优化"_s);
    EXPECT_EQ(label(u"memory"_s), u"记忆动作"_s);
    EXPECT_EQ(label(u"drag"_s), u"智能拖拽"_s);
    EXPECT_EQ(label(u"reverse"_s), u"反推"_s);
    EXPECT_EQ(label(QString()), u"反推"_s);
    EXPECT_EQ(label(u"drag"_s, u"照片.png"_s), u"照片.png"_s);
    EXPECT_EQ(label(u"workbench"_s, u"海报"_s), u"海报"_s);
    EXPECT_EQ(label(u"ai"_s, u"海报"_s), u"AI 生成"_s) << "only a drop and the workbench show where from";
}

TEST(StoredPrompt, showsItsDatesInTheShortForm) {
    StoredPrompt prompt;
    prompt.createdAt = Date{1763719200};  // 2025-11-21 10:00 UTC
    prompt.updatedAt = Date{1763719200 + 2 * 86400};
    const QLocale chinese(QLocale::Chinese, QLocale::China);
    EXPECT_EQ(prompt.formattedDate(chinese), chinese.toString(QDate(2025, 11, 21), QLocale::ShortFormat));
    EXPECT_EQ(prompt.formattedUpdated(chinese), chinese.toString(QDate(2025, 11, 23), QLocale::ShortFormat));
}

}  // namespace
}  // namespace veltrin
