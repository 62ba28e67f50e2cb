#include "Data/ClipboardStore.h"
#include "StoresFixture.h"
#include "support/RecordLaws.h"
#include "support/fake/FakeDesktop.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class ClipboardStoreTest : public StoresFixture {
protected:
    ClipboardStoreTest() : editor(desktop.workspace.launch(u"Editor"_s, u"editor"_s)) {
        desktop.workspace.bringToFront(&editor);
    }
    ClipboardStore store() {
        return ClipboardStore(folder(), desktop.runLoop, desktop.pasteboard, desktop.workspace);
    }
    void copy(const QString& text) { desktop.pasteboard.copyFrom(editor.pid, text); }
    static QStringList texts(const ClipboardStore& store) {
        QStringList texts;
        for (const ClipboardEntry& entry : store.entries())
            texts << entry.text;
        return texts;
    }

    FakeDesktop desktop;
    FakeApplication& editor;
};

TEST_F(ClipboardStoreTest, itsRecordObeysItsTable) {
    expectRecordLaws<ClipboardEntry>();
}

TEST_F(ClipboardStoreTest, takesWhatIsCopiedOnceASecondWithTheApplicationInFront) {
    auto clipboard = store();
    clipboard.startMonitoring();
    copy(u"  text\n"_s);
    desktop.runLoop.advance(0.9);
    EXPECT_TRUE(clipboard.entries().empty());
    desktop.runLoop.advance(0.2);
    ASSERT_EQ(texts(clipboard), QStringList{u"text"_s});
    EXPECT_EQ(clipboard.entries()[0].sourceApp, u"Editor"_s);
    EXPECT_EQ(texts(store()), QStringList{u"text"_s});
    desktop.workspace.bringToFront(nullptr);
    copy(u"nobody's"_s);
    desktop.runLoop.advance(1);
    EXPECT_EQ(clipboard.entries()[0].sourceApp, QString());
}

TEST_F(ClipboardStoreTest, whatStoodThereBeforeTheLaunchIsNeverTaken) {
    copy(u"before"_s);
    auto clipboard = store();
    copy(u"between"_s);
    clipboard.startMonitoring();
    desktop.runLoop.advance(3);
    EXPECT_TRUE(clipboard.entries().empty());
}

TEST_F(ClipboardStoreTest, aLaterCopyThatIsEqualAfterTrimmingAddsNothing) {
    auto clipboard = store();
    clipboard.startMonitoring();
    for (const QString& text : {u"a"_s, u" a "_s, u"a\n"_s}) {
        copy(text);
        desktop.runLoop.advance(1);
    }
    EXPECT_EQ(texts(clipboard), QStringList{u"a"_s});
}

TEST_F(ClipboardStoreTest, oneTextTwiceInARowIsOneEntryButBackAndForthIsThree) {
    auto clipboard = store();
    for (const QString& text : {u"A"_s, u"A"_s, u"B"_s, u"A"_s, u"  "_s, QString()})
        clipboard.add(text, {});
    EXPECT_EQ(texts(clipboard), (QStringList{u"A"_s, u"B"_s, u"A"_s}));
}

TEST_F(ClipboardStoreTest, theFirstTextAfterALaunchIsNeverARepeat) {
    store().add(u"A"_s, {});
    auto clipboard = store();
    clipboard.add(u"A"_s, {});
    EXPECT_EQ(texts(clipboard), (QStringList{u"A"_s, u"A"_s}));
}

TEST_F(ClipboardStoreTest, whatItsOwnerMarksAsSecretIsNeverTaken) {
    auto clipboard = store();
    clipboard.startMonitoring();
    desktop.pasteboard.copySecretFrom(editor.pid, u"hunter2"_s);
    desktop.runLoop.advance(2);
    clipboard.pasteFromClipboard();
    EXPECT_TRUE(clipboard.entries().empty());
    EXPECT_EQ(bytesOf(u"clipboard.json"_s), "no file");
    copy(u"hunter2"_s);
    desktop.runLoop.advance(1);
    EXPECT_EQ(texts(clipboard), QStringList{u"hunter2"_s}) << "only the mark counts";
}

TEST_F(ClipboardStoreTest, whatThisProgramOffersForAMomentIsNotTaken) {
    auto clipboard = store();
    clipboard.startMonitoring();
    desktop.pasteboard.setString(u"a result on its way"_s, PasteboardContent::temporary);
    desktop.runLoop.advance(1);
    EXPECT_TRUE(clipboard.entries().empty());
    desktop.pasteboard.setString(u"a copied result"_s, PasteboardContent::lasting);
    desktop.runLoop.advance(1);
    EXPECT_EQ(texts(clipboard), QStringList{u"a copied result"_s});
}

TEST_F(ClipboardStoreTest, picturesAndBlanksAreNotTaken) {
    auto clipboard = store();
    clipboard.startMonitoring();
    desktop.pasteboard.copyOtherFrom(editor.pid, {u"image/png"_s});
    desktop.runLoop.advance(1);
    copy(u" \n\t"_s);
    desktop.runLoop.advance(1);
    EXPECT_TRUE(clipboard.entries().empty());
}

TEST_F(ClipboardStoreTest, aThousandChangesASecondCostOneLookASecond) {
    auto clipboard = store();
    clipboard.startMonitoring();
    int written = 0;
    const auto subscription = clipboard.changed().subscribe([&] { ++written; });
    for (int i = 0; i < 3000; ++i)
        desktop.runLoop.inWorld(i / 1000.0, [this, i] { copy(u"text "_s + QString::number(i)); });
    desktop.runLoop.advance(4);
    EXPECT_LE(written, 4);
    EXPECT_EQ(clipboard.entries().front().text, u"text 2999"_s);
}

TEST_F(ClipboardStoreTest, anOwnerThatDoesNotAnswerCostsOneBoundedWaitAChange) {
    auto clipboard = store();
    clipboard.startMonitoring();
    copy(u"lost"_s);
    desktop.pasteboard.stopAnswering();
    desktop.runLoop.advance(10);
    EXPECT_TRUE(clipboard.entries().empty());
    EXPECT_LE(desktop.runLoop.blockedSeconds(), 0.5);
}

TEST_F(ClipboardStoreTest, theButtonTakesWhatStandsThereNow) {
    copy(u"before the launch"_s);
    auto clipboard = store();
    clipboard.pasteFromClipboard();
    clipboard.pasteFromClipboard();
    EXPECT_EQ(texts(clipboard), QStringList{u"before the launch"_s});
    EXPECT_EQ(clipboard.entries()[0].sourceApp, u"Editor"_s);
}

TEST_F(ClipboardStoreTest, keepsTheNewestTwoHundred) {
    auto clipboard = store();
    for (int i = 0; i < 203; ++i)
        clipboard.add(QString::number(i), u"A"_s);
    EXPECT_EQ(clipboard.entries().size(), 200U);
    EXPECT_EQ(clipboard.entries().back().text, u"3"_s);
    EXPECT_EQ(texts(store()), texts(clipboard));
}

TEST_F(ClipboardStoreTest, deletingAndClearingAreWritten) {
    auto clipboard = store();
    for (const QString& text : {u"A"_s, u"B"_s, u"C"_s})
        clipboard.add(text, {});
    clipboard.deleteEntry(clipboard.entries()[1].id);
    EXPECT_EQ(texts(store()), (QStringList{u"C"_s, u"A"_s}));
    clipboard.clearEntries();
    EXPECT_TRUE(clipboard.entries().empty());
    EXPECT_TRUE(store().entries().empty()) << "the list stays empty after a restart";
}

TEST_F(ClipboardStoreTest, deletingTakesEveryEntryOfTheIdentifier) {
    auto former = store();
    former.add(u"A"_s, {});
    former.add(u"B"_s, {});
    const ClipboardEntry twice = former.entries()[0];
    put(u"clipboard.json"_s, *writeRecords<ClipboardEntry>({twice, former.entries()[1], twice}));
    auto clipboard = store();
    ASSERT_EQ(texts(clipboard), (QStringList{u"B"_s, u"A"_s, u"B"_s}));
    clipboard.deleteEntry(clipboard.entries()[0].id);
    EXPECT_EQ(texts(clipboard), QStringList{u"A"_s});
    EXPECT_EQ(texts(store()), QStringList{u"A"_s});
}

TEST_F(ClipboardStoreTest, searchLooksIntoTextAndApplication) {
    auto clipboard = store();
    clipboard.add(u"Hello"_s, u"Mail"_s);
    clipboard.add(u"你好"_s, u"Editor"_s);
    EXPECT_EQ(clipboard.search(u" "_s).size(), 2U);
    EXPECT_EQ(clipboard.search(u"HELL"_s).at(0).text, u"Hello"_s);
    EXPECT_EQ(clipboard.search(u"edit"_s).at(0).text, u"你好"_s);
    EXPECT_TRUE(clipboard.search(u"nothing"_s).empty());
}

TEST_F(ClipboardStoreTest, monitoringAgainLeavesOneTimer) {
    auto clipboard = store();
    clipboard.startMonitoring();
    const auto timers = desktop.runLoop.pendingTimers();
    clipboard.startMonitoring();
    EXPECT_EQ(desktop.runLoop.pendingTimers(), timers);
}

}  // namespace
}  // namespace veltrin
