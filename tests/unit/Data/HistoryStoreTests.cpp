#include "Data/HistoryStore.h"
#include "StoresFixture.h"
#include "support/RecordLaws.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class HistoryStoreTest : public StoresFixture {
protected:
    HistoryStore store() { return HistoryStore(folder(), loop); }
};

TEST_F(HistoryStoreTest, itsRecordObeysItsTable) {
    expectRecordLaws<HistoryEntry>();
}

TEST_F(HistoryStoreTest, recordsNewestFirstAndWritesAtOnce) {
    auto history = store();
    int told = 0;
    const auto subscription = history.changed().subscribe([&] { ++told; });
    history.record(u"optimize"_s, u"第一"_s, u"Veltrin"_s);
    loop.advance(1);
    history.record(u"voice"_s, u"second"_s, u"Editor"_s);
    EXPECT_EQ(told, 2);
    auto again = store();
    ASSERT_EQ(again.entries().size(), 2U);
    EXPECT_EQ(again.entries()[0].snippet, u"second"_s);
    EXPECT_EQ(again.entries()[0].appName, u"Editor"_s);
    EXPECT_EQ(again.entries()[0].createdAt, Date{1795255201});
    EXPECT_EQ(again.entries()[1], history.entries()[1]);
    EXPECT_NE(again.entries()[0].id, again.entries()[1].id);
}

TEST_F(HistoryStoreTest, standsInTheFileWithTheFieldsNames) {
    auto history = store();
    history.record(u"send"_s, u"a/b"_s, u"App"_s);
    const QByteArray id = uuidText(history.entries()[0].id).toUtf8();
    EXPECT_EQ(bytesOf(u"history.json"_s), "[\n  {\n    \"id\" : \"" + id + R"(",
    "type" : "send",
    "snippet" : "a\/b",
    "appName" : "App",
    "createdAt" : "2026-11-21T10:00:00Z"
  }
])");
}

TEST_F(HistoryStoreTest, afterFiveHundredTheOldestGoes) {
    QByteArray full = "[";
    for (int i = 0; i < 500; ++i) {
        full += R"({"id":")" + uuidText(QUuid::createUuid()).toUtf8() + R"(","type":"send","snippet":")" +
                QByteArray::number(i) + R"(","appName":"A","createdAt":"2026-01-01T00:00:00Z"},)";
    }
    full.back() = ']';
    put(u"history.json"_s, full);
    auto history = store();
    ASSERT_EQ(history.entries().size(), 500U);
    history.record(u"send"_s, u"new"_s, u"A"_s);
    EXPECT_EQ(history.entries().size(), 500U);
    EXPECT_EQ(history.entries().front().snippet, u"new"_s);
    EXPECT_EQ(history.entries().back().snippet, u"498"_s);
    EXPECT_EQ(store().entries(), store().entries());
    EXPECT_EQ(store().entries().size(), 500U);
}

TEST_F(HistoryStoreTest, aSnippetIsCutToEightyCharactersNotBytes) {
    auto history = store();
    history.record(u"send"_s, u"👩‍👩‍👧"_s.repeated(81), u"A"_s);
    EXPECT_EQ(history.entries()[0].snippet, u"👩‍👩‍👧"_s.repeated(80));
    history.record(u"send"_s, u"字"_s.repeated(80), u"A"_s);
    EXPECT_EQ(history.entries()[0].snippet, u"字"_s.repeated(80));
}

TEST_F(HistoryStoreTest, anEntryWithoutAppNameMakesTheWholeFileReadAsEmpty) {
    auto history = store();
    history.record(u"send"_s, u"x"_s, u"A"_s);
    QByteArray bytes = bytesOf(u"history.json"_s);
    bytes.replace(R"("appName" : "A",)", "");
    put(u"history.json"_s, bytes);
    EXPECT_TRUE(store().entries().empty());
}

TEST_F(HistoryStoreTest, clearedEntriesAreBackAfterARestartUnlessSomethingWasRecorded) {
    auto history = store();
    history.record(u"send"_s, u"old"_s, u"A"_s);
    int told = 0;
    const auto subscription = history.changed().subscribe([&] { ++told; });
    history.clearEntries();
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(history.entries().empty());
    EXPECT_EQ(store().entries().size(), 1U) << "meant so: clearing is not written";
    history.record(u"send"_s, u"new"_s, u"A"_s);
    ASSERT_EQ(store().entries().size(), 1U);
    EXPECT_EQ(store().entries()[0].snippet, u"new"_s);
}

TEST_F(HistoryStoreTest, twoEntriesOfOneMomentAreBothKept) {
    auto history = store();
    history.record(u"send"_s, u"same"_s, u"A"_s);
    history.record(u"send"_s, u"same"_s, u"A"_s);
    EXPECT_EQ(store().entries().size(), 2U);
}

TEST_F(HistoryStoreTest, showsAWordForEachType) {
    const auto word = [](const QString& type) { return HistoryEntry{{}, type, {}, {}, {}}.typeWord(); };
    EXPECT_EQ(word(u"translate"_s), u"翻译"_s);
    EXPECT_EQ(word(u"optimize"_s), u"优化"_s);
    EXPECT_EQ(word(u"diagnose"_s), u"诊断"_s);
    EXPECT_EQ(word(u"reverse"_s), u"反推"_s);
    EXPECT_EQ(word(u"voice"_s), u"语音"_s);
    EXPECT_EQ(word(u"send"_s), u"发送"_s);
    EXPECT_EQ(word(u"memoryAction:更专业"_s), u"更专业"_s);
    EXPECT_EQ(word(u"memoryAction:"_s), u""_s);
    EXPECT_EQ(word(u"smartSelectReply"_s), u"对话"_s);
    EXPECT_EQ(word(u"smartSelectOrganize"_s), u"对话"_s);
}

TEST_F(HistoryStoreTest, searchLooksIntoSnippetTypeAndApplication) {
    auto history = store();
    history.record(u"voice"_s, u"Hello World"_s, u"Mail"_s);
    history.record(u"translate"_s, u"你好"_s, u"Editor"_s);
    const auto found = [&](const QString& text) {
        QStringList snippets;
        for (const HistoryEntry& entry : history.search(text))
            snippets << entry.snippet;
        return snippets;
    };
    EXPECT_EQ(found(u" \n"_s), (QStringList{u"你好"_s, u"Hello World"_s}));
    EXPECT_EQ(found(u"  hello W "_s), QStringList{u"Hello World"_s});
    EXPECT_EQ(found(u"TRANS"_s), QStringList{u"你好"_s});
    EXPECT_EQ(found(u"mail"_s), QStringList{u"Hello World"_s});
    EXPECT_EQ(found(u"翻译"_s), QStringList{}) << "the word shown is not searched";
}

TEST_F(HistoryStoreTest, worksFromMemoryWhereNothingCanBeWritten) {
    QFile blocker(folder());
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    auto history = store();
    history.record(u"send"_s, u"kept"_s, u"A"_s);
    EXPECT_EQ(history.entries().size(), 1U);
}

}  // namespace
}  // namespace veltrin
