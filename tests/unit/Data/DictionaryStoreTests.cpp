#include "Data/DictionaryStore.h"
#include "StoresFixture.h"
#include "support/RecordLaws.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

DictionaryTerm term(const QString& word, const QString& meaning = u"meaning"_s) {
    DictionaryTerm term;
    term.id = QUuid::createUuid();
    term.term = word;
    term.meaning = meaning;
    term.source = u"manual"_s;
    return term;
}

QStringList words(const std::vector<DictionaryTerm>& terms) {
    QStringList words;
    for (const DictionaryTerm& each : terms)
        words << each.term;
    return words;
}

class DictionaryStoreTest : public StoresFixture {
protected:
    DictionaryStore store() { return DictionaryStore(folder(), loop); }
};

TEST_F(DictionaryStoreTest, itsRecordObeysItsTable) {
    expectRecordLaws<DictionaryTerm>();
}

TEST_F(DictionaryStoreTest, anEmptyOneIsSeededAndWritten) {
    const auto dictionary = store();
    ASSERT_EQ(dictionary.terms().size(), 1U);
    const DictionaryTerm& seed = dictionary.terms()[0];
    EXPECT_EQ(seed.term, u"ESC"_s);
    EXPECT_EQ(seed.meaning,
              u"按用户语境保留为专有名词；不要默认解释成 Escape 键或电子稳定控制，除非上下文明确要求。"_s);
    EXPECT_EQ(seed.context, u"外部聊天、提示词优化、翻译时优先保持原词。"_s);
    EXPECT_EQ(seed.aliases, (QStringList{u"Esc"_s, u"esc"_s}));
    EXPECT_EQ(seed.source, u"default"_s);
    EXPECT_EQ(seed.createdAt, Date{1795255200});
    EXPECT_EQ(seed.updatedAt, Date{1795255200});
    EXPECT_EQ(store().terms(), dictionary.terms());
}

TEST_F(DictionaryStoreTest, whoDeletesEveryTermFindsTheSeedAgainAtTheNextLaunch) {
    auto dictionary = store();
    dictionary.deleteTerm(dictionary.terms()[0].id);
    EXPECT_TRUE(dictionary.terms().empty());
    EXPECT_EQ(words(store().terms()), QStringList{u"ESC"_s});
}

TEST_F(DictionaryStoreTest, addingAWordThatIsThereReplacesItInPlaceWithANewIdentifierAndNewFields) {
    auto dictionary = store();
    dictionary.add(term(u"first"_s));
    loop.advance(60);
    auto again = term(u"esc"_s, u"电子稳定控制"_s);
    again.aliases = {u"ESP"_s};
    dictionary.add(again);
    EXPECT_EQ(words(dictionary.terms()), (QStringList{u"first"_s, u"esc"_s}));
    again.updatedAt = Date{1795255260};
    EXPECT_EQ(dictionary.terms()[1], again);
    EXPECT_EQ(store().terms()[1].id, again.id);
}

TEST_F(DictionaryStoreTest, addingANewWordPutsItFirst) {
    auto dictionary = store();
    int told = 0;
    const auto subscription = dictionary.changed().subscribe([&] { ++told; });
    dictionary.add(term(u"新"_s));
    EXPECT_EQ(words(dictionary.terms()), (QStringList{u"新"_s, u"ESC"_s}));
    EXPECT_EQ(words(store().terms()), (QStringList{u"新"_s, u"ESC"_s}));
    EXPECT_EQ(told, 1);
}

TEST_F(DictionaryStoreTest, theAddRowTrimsAndRefusesEmptyTexts) {
    auto dictionary = store();
    EXPECT_FALSE(dictionary.addManual(u" \n"_s, u"meaning"_s));
    EXPECT_FALSE(dictionary.addManual(u"word"_s, u" "_s));
    EXPECT_EQ(dictionary.terms().size(), 1U);
    EXPECT_TRUE(dictionary.addManual(u" word\n"_s, u" meaning "_s));
    const DictionaryTerm& added = dictionary.terms()[0];
    EXPECT_EQ(added.term, u"word"_s);
    EXPECT_EQ(added.meaning, u"meaning"_s);
    EXPECT_EQ(added.context, QString());
    EXPECT_TRUE(added.aliases.isEmpty());
    EXPECT_EQ(added.source, u"manual"_s);
    EXPECT_FALSE(added.id.isNull());
    EXPECT_EQ(added.createdAt, Date{1795255200});
}

TEST_F(DictionaryStoreTest, updateReplacesTheTermOfThatIdentifierOnly) {
    auto dictionary = store();
    DictionaryTerm changed = dictionary.terms()[0];
    changed.meaning = u"退出键"_s;
    loop.advance(5);
    dictionary.update(changed);
    changed.updatedAt = Date{1795255205};
    EXPECT_EQ(dictionary.terms()[0], changed);
    EXPECT_EQ(store().terms()[0], changed);
    int told = 0;
    const auto subscription = dictionary.changed().subscribe([&] { ++told; });
    dictionary.update(term(u"unknown"_s));
    EXPECT_EQ(dictionary.terms().size(), 1U);
    EXPECT_EQ(told, 0);
}

TEST_F(DictionaryStoreTest, deletingTakesEveryTermOfTheIdentifierAndAddingReplacesTheFirstAlike) {
    const DictionaryTerm twin = term(u"Twin"_s);
    put(u"dictionary_terms.json"_s, *writeRecords<DictionaryTerm>({twin, term(u"other"_s), twin}));
    auto dictionary = store();
    dictionary.add(term(u"TWIN"_s));
    EXPECT_EQ(words(dictionary.terms()), (QStringList{u"TWIN"_s, u"other"_s, u"Twin"_s}));
    dictionary.add(twin);
    dictionary.deleteTerm(twin.id);
    EXPECT_EQ(words(dictionary.terms()), QStringList{u"other"_s});
    EXPECT_EQ(words(store().terms()), QStringList{u"other"_s});
}

TEST_F(DictionaryStoreTest, searchLooksIntoWordMeaningContextAndAliases) {
    auto dictionary = store();
    auto other = term(u"Veltrin"_s, u"一个程序"_s);
    other.context = u"Work Notes"_s;
    other.aliases = {u"VT"_s};
    dictionary.add(other);
    EXPECT_EQ(words(dictionary.search(u"  "_s)), (QStringList{u"Veltrin"_s, u"ESC"_s}));
    EXPECT_EQ(words(dictionary.search(u" velt "_s)), QStringList{u"Veltrin"_s});
    EXPECT_EQ(words(dictionary.search(u"程序"_s)), QStringList{u"Veltrin"_s});
    EXPECT_EQ(words(dictionary.search(u"work n"_s)), QStringList{u"Veltrin"_s});
    EXPECT_EQ(words(dictionary.search(u"vt"_s)), QStringList{u"Veltrin"_s});
    EXPECT_EQ(words(dictionary.search(u"manual"_s)), QStringList{});
}

TEST_F(DictionaryStoreTest, contextPromptWithNoTermsIsEmpty) {
    auto dictionary = store();
    dictionary.deleteTerm(dictionary.terms()[0].id);
    EXPECT_EQ(dictionary.contextPrompt(16), QString());
}

TEST_F(DictionaryStoreTest, contextPromptWritesALineForEachOfTheFirstTerms) {
    auto dictionary = store();
    for (int i = 0; i < 20; ++i)
        dictionary.add(term(u"t"_s + QString::number(i), u"m"_s));
    const QStringList lines = dictionary.contextPrompt(16).split(u'\n');
    EXPECT_EQ(lines.size(), 16);
    EXPECT_EQ(lines.front(), u"- t19：m"_s);
    EXPECT_EQ(lines.back(), u"- t4：m"_s);
    EXPECT_EQ(dictionary.contextPrompt(0), QString());
    EXPECT_EQ(dictionary.contextPrompt(100).split(u'\n').back(),
              u"- ESC：按用户语境保留为专有名词；不要默认解释成 Escape 键或电子稳定控制，除非上下文明确要求。"
              u"；别名：Esc、esc；语境：外部聊天、提示词优化、翻译时优先保持原词。"_s);
}

}  // namespace
}  // namespace veltrin
