#include "ExternalAccess/ExternalTextClipboardFallback.h"
#include "ExternalAccess/ExternalTextInputReader.h"
#include "ExternalAccess/ExternalTextWriteback.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using Source = ExternalTextReadResult::Source;

/// An application that gives accessibility nothing has the keyboard, and the user has copied something
/// before.
class ClipboardFallbackTest : public testing::Test {
protected:
    ClipboardFallbackTest() {
        chat.accessible = false;
        desktop.focus(field);
        desktop.pasteboard.put(QStringLiteral("user's"));
        desktop.advance(5);
    }
    /// Whatever happens, the keyboard is free and nothing waits.
    ~ClipboardFallbackTest() override { EXPECT_TRUE(desktop.keyboard.down.empty()); }

    PostTarget target() { return {chat.pid, chat.activeWindow->id, nullptr}; }
    ExternalTextReadResult read() {
        return fallback.readFocusedText(*chat.name, *chat.bundleIdentifier, target());
    }
    /// Seconds that a read blocks.
    double timedRead() {
        const double start = desktop.now();
        result = read();
        return desktop.now() - start;
    }
    bool write(const QString& text) {
        auto to = result;
        if (to.frontmostAppName == QStringLiteral("unknown")) to = read();
        return fallback.write(text, to);
    }
    std::optional<QString> pasteboard() const { return desktop.pasteboard.peek(); }
    int posted(qint64 keyCode) const {
        return static_cast<int>(std::count_if(desktop.keyPoster.records.begin(),
                                              desktop.keyPoster.records.end(), [keyCode](const auto& record) {
                                                  return record.result.posted &&
                                                         record.chord.keyCode == keyCode;
                                              }));
    }
    void expectFailed(const ExternalTextReadResult& failed) {
        EXPECT_EQ(failed.source, Source::none);
        EXPECT_EQ(failed.text, QString());
        EXPECT_EQ(failed.fullText, QString());
        EXPECT_EQ(failed.textContext, ExternalTextContext());
        EXPECT_EQ(failed.frontmostAppName, *chat.name);
        EXPECT_EQ(failed.processIdentifier, chat.pid);
        EXPECT_EQ(failed.role, QStringLiteral("clipboardFallback"));
        EXPECT_TRUE(failed.requiresClipboardWriteback);
    }
    void renameToWeChat() { chat.name = QStringLiteral("微信"); }

    FakeDesktop desktop;
    FakeApplication& chat = desktop.launch(QStringLiteral("Chat"), QStringLiteral("org.example.Chat"));
    FakeTextField& field = chat.addField(QStringLiteral("你好，\tworld\nagain"));
    PasteboardLoan loan{desktop.pasteboard, desktop.runLoop};
    ClipboardFallbackInterferenceGuard guard{desktop.runLoop};
    ExternalTextClipboardFallback fallback{desktop.workspace, desktop.pasteboard, loan,
                                           desktop.keyPoster, desktop.runLoop,    guard};
    ExternalTextReadResult result;
};

// MARK: Reading

TEST_F(ClipboardFallbackTest, readsTheWholeFieldAndGivesTheClipboardBack) {
    LogCapture log;
    const auto read = this->read();
    EXPECT_EQ(read.source, Source::value);
    EXPECT_EQ(read.text, field.value);
    EXPECT_EQ(read.fullText, field.value);
    EXPECT_EQ(read.textContext, (ExternalTextContext{field.value, 15, {}, {}}));
    EXPECT_EQ(read.role, QStringLiteral("clipboardFallback"));
    EXPECT_EQ(read.frontmostAppName, QStringLiteral("Chat"));
    EXPECT_EQ(read.bundleIdentifier, QStringLiteral("org.example.Chat"));
    EXPECT_EQ(read.processIdentifier, chat.pid);
    EXPECT_EQ(read.targetWindow, chat.activeWindow->id);
    EXPECT_TRUE(read.requiresClipboardWriteback);
    EXPECT_FALSE(read.isSelf);
    EXPECT_FALSE(read.element);
    EXPECT_FALSE(read.selectedRange);
    EXPECT_FALSE(read.selectedText);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::lasting);
    const QString pid = QString::number(chat.pid);
    EXPECT_EQ(
        log.lines(),
        (QStringList{
            QStringLiteral("Clipboard fallback read begin: app: Chat bundle: org.example.Chat pid: ") + pid,
            QStringLiteral("Clipboard fallback activated app: Chat pid: ") + pid,
            QStringLiteral("Clipboard fallback copy attempt: 1"),
            QStringLiteral("Clipboard fallback read success: length: 15 preview: 你好， world again")}));
}

TEST_F(ClipboardFallbackTest, aGoodReadBlocksForItsWaitsOnly) {
    EXPECT_NEAR(timedRead(), 0.08 + 0.14 + 0.14 + 0.05, 1e-6);
    renameToWeChat();
    EXPECT_NEAR(timedRead(), 0.16 + 0.14 + 0.14 + 0.05, 1e-6);
}

TEST_F(ClipboardFallbackTest, aLongTextIsLoggedByItsBeginningOnly) {
    field.value = QString(81, u'x');
    LogCapture log;
    read();
    EXPECT_TRUE(log.has(QStringLiteral("Clipboard fallback read success: length: 81 preview: ") +
                        QString(80, u'x') + QStringLiteral("...")));
    field.value = QString(80, u'x');
    read();
    EXPECT_TRUE(log.lines().last().endsWith(QStringLiteral(" ") + QString(80, u'x')));
}

TEST_F(ClipboardFallbackTest, aSelectionThatCopiesWhatWasOnTheClipboardComesBackInTheFirstRound) {
    desktop.pasteboard.put(QStringLiteral("abc"));
    field.value = QStringLiteral("abc");
    EXPECT_LT(timedRead(), 0.42);
    EXPECT_EQ(result.text, QStringLiteral("abc"));
    EXPECT_EQ(pasteboard(), QStringLiteral("abc"));
}

TEST_F(ClipboardFallbackTest, aFreshCopyOfTheUsersIsLeftAlone) {
    guard.recordPotentialUserCopyKeyDown(desktop.pasteboard.changeCount());
    desktop.pasteboard.copyFrom(chat.pid, QStringLiteral("fresh"));
    desktop.advance(1);
    const qint64 count = desktop.pasteboard.changeCount();
    expectFailed(read());
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    EXPECT_TRUE(desktop.keyPoster.records.empty());
    desktop.advance(0.3);
    EXPECT_EQ(read().text, field.value);
    EXPECT_EQ(pasteboard(), QStringLiteral("fresh"));
}

TEST_F(ClipboardFallbackTest, aCopyKeyThatChangedNothingDoesNotHinder) {
    guard.recordPotentialUserCopyKeyDown(desktop.pasteboard.changeCount());
    EXPECT_EQ(read().text, field.value);
}

TEST_F(ClipboardFallbackTest, itsOwnCopyKeyIsNotTakenForTheUsers) {
    desktop.later(0.3, [this] { guard.recordPotentialUserCopyKeyDown(desktop.pasteboard.changeCount()); });
    EXPECT_EQ(read().text, field.value);
    EXPECT_EQ(read().text, field.value);
}

TEST_F(ClipboardFallbackTest, aClipboardWhoseOwnerDoesNotAnswerIsNotTouched) {
    desktop.pasteboard.stopAnswering();
    const qint64 count = desktop.pasteboard.changeCount();
    LogCapture log;
    expectFailed(read());
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    EXPECT_TRUE(desktop.keyPoster.records.empty());
    EXPECT_TRUE(log.has(QStringLiteral("Clipboard fallback read refused: pasteboard owner does not answer")));
    EXPECT_FALSE(write(QStringLiteral("NEW")));
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    EXPECT_TRUE(
        log.has(QStringLiteral("Clipboard fallback write refused: pasteboard owner does not answer")));
}

TEST_F(ClipboardFallbackTest, ofThreeFailedCopyAttemptsEachWaitsForASecond) {
    field.value.clear();
    field.selection = {};
    LogCapture log;
    EXPECT_NEAR(timedRead(), 0.08 + 0.14 + 3 * (0.14 + 1.0), 1e-6);
    expectFailed(result);
    EXPECT_EQ(posted(KeyCode::c), 3);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(log.lines().mid(2),
              (QStringList{QStringLiteral("Clipboard fallback copy attempt: 1"),
                           QStringLiteral("Clipboard fallback copy attempt: 2"),
                           QStringLiteral("Clipboard fallback copy attempt: 3"),
                           QStringLiteral("Clipboard fallback read failed: no copied text")}));
}

TEST_F(ClipboardFallbackTest, weChatIsGivenAPauseAfterTheFirstCopy) {
    renameToWeChat();
    field.value.clear();
    field.selection = {};
    EXPECT_NEAR(timedRead(), 0.16 + 0.14 + 3 * (0.14 + 1.0) + 0.18, 1e-6);
}

TEST_F(ClipboardFallbackTest, aCopyThatComesLateIsTaken) {
    chat.postedKeyLatency = 0.9;
    EXPECT_EQ(read().text, field.value);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(ClipboardFallbackTest, blankTextIsNoText) {
    field.value = QStringLiteral(" \n\t ");
    LogCapture log;
    expectFailed(read());
    EXPECT_TRUE(log.has(QStringLiteral("Clipboard fallback read failed: no copied text")));
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

// Accepted: nothing undoes the select-all.
TEST_F(ClipboardFallbackTest, theFieldStaysWhollySelected) {
    field.value = QStringLiteral("  ");
    field.placeCaret(1);
    read();
    EXPECT_EQ(field.selection, (TextRange{0, 2}));
}

// Accepted: only a plain string survives the round trip.
TEST_F(ClipboardFallbackTest, aPictureOnTheClipboardIsGoneAfterTheRead) {
    desktop.pasteboard.putOther({QStringLiteral("image/png")});
    EXPECT_EQ(read().text, field.value);
    EXPECT_FALSE(pasteboard());
    EXPECT_EQ(desktop.pasteboard.current().owner, FakePasteboard::Owner::program);
    EXPECT_TRUE(desktop.pasteboard.current().otherTypes.isEmpty());
}

TEST_F(ClipboardFallbackTest, aSecretOnTheClipboardComesBackMarked) {
    desktop.pasteboard.copySecretFrom(0, QStringLiteral("pass"));
    EXPECT_EQ(read().text, field.value);
    EXPECT_EQ(pasteboard(), QStringLiteral("pass"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::secret);
}

TEST_F(ClipboardFallbackTest, aCopyWhoseOwnerFallsSilentCostsOneAttempt) {
    const double start = desktop.now();
    desktop.later(0.27, [this] { desktop.pasteboard.stopAnswering(); });
    LogCapture log;
    // The application copies, and then never hands its text out.
    expectFailed(read());
    EXPECT_LT(desktop.now() - start, 3);
    EXPECT_EQ(posted(KeyCode::c), 1);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_TRUE(
        log.has(QStringLiteral("Clipboard fallback copy attempt failed: pasteboard owner does not answer")));
}

TEST_F(ClipboardFallbackTest, whereThePasteboardCannotBeEmptiedTheUsersTextIsNotTakenForTheFields) {
    field.value.clear();
    field.selection = {};
    desktop.pasteboard.refusesToBeCleared = true;
    expectFailed(read());
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(ClipboardFallbackTest, whenSelectAllCannotBePostedTheClipboardComesBackAtOnce) {
    desktop.keyPoster.refusal = QStringLiteral("no");
    LogCapture log;
    EXPECT_NEAR(timedRead(), 0.08, 1e-6);
    expectFailed(result);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_TRUE(log.has(QStringLiteral("Clipboard fallback key refused: no")));
    EXPECT_TRUE(log.has(QStringLiteral("Clipboard fallback read failed: could not post Cmd+A")));
}

TEST_F(ClipboardFallbackTest, whenTheCopyCannotBePostedTheClipboardComesBack) {
    desktop.later(0.15, [this] { desktop.keyPoster.refusal = QStringLiteral("no"); });
    LogCapture log;
    expectFailed(read());
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_TRUE(log.has(QStringLiteral("Clipboard fallback copy attempt failed: could not post Cmd+C")));
    EXPECT_EQ(log.lines().last(), QStringLiteral("Clipboard fallback read failed: no copied text"));
}

TEST_F(ClipboardFallbackTest, aTerminalIsNeverDrivenByKeys) {
    chat.terminal = true;
    expectFailed(read());
    EXPECT_TRUE(chat.received.empty());
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_FALSE(write(QStringLiteral("ls\n")));
    EXPECT_TRUE(chat.received.empty());
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(ClipboardFallbackTest, aHungApplicationCostsLittleAndGetsNoKeys) {
    chat.hang();
    EXPECT_LT(timedRead(), 0.6);
    expectFailed(result);
    chat.resume();
    desktop.advance(1);
    EXPECT_TRUE(chat.received.empty());
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(ClipboardFallbackTest, aProcessThatIsGoneGetsNoKeys) {
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), QStringLiteral("org.example.Other"));
    FakeTextField& innocent = other.addField(QStringLiteral("innocent"));
    const auto to = target();
    chat.quit();
    desktop.focus(innocent);
    desktop.pasteboard.put(QStringLiteral("user's"));
    LogCapture log;
    expectFailed(fallback.readFocusedText(*chat.name, *chat.bundleIdentifier, to));
    EXPECT_TRUE(log.has(QStringLiteral("Clipboard fallback activate skipped: Chat")));
    EXPECT_TRUE(other.received.empty());
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(ClipboardFallbackTest, aPasswordFieldGetsNoKeys) {
    chat.accessible = true;
    field.password = true;
    expectFailed(read());
    EXPECT_TRUE(chat.received.empty());
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(ClipboardFallbackTest, ourOwnWindowsAreNotDrivenByKeys) {
    FakeApplication& own = desktop.workspace.program();
    desktop.focus(own.addField(QStringLiteral("own")));
    const qint64 count = desktop.pasteboard.changeCount();
    const auto read = fallback.readFocusedText(QStringLiteral("Veltrin"), desktop.workspace.mainBundle,
                                               {own.pid, 0, nullptr});
    EXPECT_TRUE(read.isSelf);
    EXPECT_EQ(read.source, Source::none);
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    EXPECT_TRUE(own.received.empty());
}

// MARK: Writing

TEST_F(ClipboardFallbackTest, writesByReplacingTheWholeFieldAndGivesTheClipboardBackLater) {
    result = read();
    LogCapture log;
    const double start = desktop.now();
    EXPECT_TRUE(write(QStringLiteral("NEW")));
    EXPECT_NEAR(desktop.now() - start, 0.08 + 0.07 + 0.14 + 0.08 + 0.14, 1e-6);
    EXPECT_EQ(field.value, QStringLiteral("NEW"));
    EXPECT_EQ(pasteboard(), QStringLiteral("NEW"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::temporary);
    desktop.advance(0.84);
    EXPECT_EQ(pasteboard(), QStringLiteral("NEW"));
    desktop.advance(0.02);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::lasting);
    EXPECT_EQ(log.lines(),
              (QStringList{
                  QStringLiteral("Clipboard fallback write begin: replacementLength: 3 app: Chat bundle: "
                                 "org.example.Chat wechat: false"),
                  QStringLiteral("Clipboard fallback activated app: Chat pid: ") + QString::number(chat.pid),
                  QStringLiteral("Clipboard fallback write posted Cmd+A/V delivery: hid restoreDelay: 0.85"),
                  QStringLiteral("Clipboard fallback write clipboard restored")}));
}

TEST_F(ClipboardFallbackTest, weChatIsGivenMoreTime) {
    for (const auto* name : {"WeChat", "wechat beta", "微信"}) {
        chat.name = QString::fromUtf8(name);
        result = read();
        const double start = desktop.now();
        EXPECT_TRUE(write(QStringLiteral("NEW")));
        EXPECT_NEAR(desktop.now() - start, 0.16 + 0.14 + 0.14 + 0.18 + 0.14, 1e-6);
        desktop.advance(1.39);
        EXPECT_EQ(pasteboard(), QStringLiteral("NEW"));
        desktop.advance(0.02);
        EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    }
}

TEST_F(ClipboardFallbackTest, anEmptyClipboardIsEmptyAgainAfterAWrite) {
    desktop.pasteboard.clearContents();
    result = read();
    EXPECT_TRUE(write(QStringLiteral("NEW")));
    EXPECT_EQ(pasteboard(), QStringLiteral("NEW"));
    desktop.advance(0.9);
    EXPECT_FALSE(pasteboard());
}

TEST_F(ClipboardFallbackTest, aPasteThatComesLateStillGetsOurText) {
    result = read();
    chat.postedKeyLatency = 3;
    EXPECT_TRUE(write(QStringLiteral("NEW")));
    desktop.advance(4);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(field.value, QStringLiteral("NEW"));
}

TEST_F(ClipboardFallbackTest, aSecretComesBackMarkedAfterAWrite) {
    desktop.pasteboard.copySecretFrom(0, QStringLiteral("pass"));
    EXPECT_TRUE(write(QStringLiteral("NEW")));
    desktop.advance(1);
    EXPECT_EQ(pasteboard(), QStringLiteral("pass"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::secret);
}

TEST_F(ClipboardFallbackTest, aCopyTheUserMakesAfterAWriteStays) {
    EXPECT_TRUE(write(QStringLiteral("NEW")));
    desktop.pasteboard.put(QStringLiteral("newer"));
    desktop.advance(1);
    EXPECT_EQ(pasteboard(), QStringLiteral("newer"));
}

TEST_F(ClipboardFallbackTest, whenAKeyOfAWriteCannotBePostedTheClipboardComesBackAtOnce) {
    result = read();
    LogCapture log;
    desktop.keyPoster.refusal = QStringLiteral("no");
    EXPECT_FALSE(write(QStringLiteral("NEW")));
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(log.lines().last(), QStringLiteral("Clipboard fallback write failed: could not post Cmd+A"));
    desktop.keyPoster.refusal.reset();
    desktop.later(0.2, [this] { desktop.keyPoster.refusal = QStringLiteral("no"); });
    EXPECT_FALSE(write(QStringLiteral("NEW")));
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(log.lines().last(), QStringLiteral("Clipboard fallback write failed: could not post Cmd+V"));
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
    EXPECT_EQ(field.value, QStringLiteral("你好，\tworld\nagain"));
}

TEST_F(ClipboardFallbackTest, aPasteboardThatCannotBeTakenIsNotPasted) {
    result = read();
    desktop.pasteboard.refusesOwnership = true;
    LogCapture log;
    EXPECT_FALSE(write(QStringLiteral("NEW")));
    EXPECT_EQ(posted(KeyCode::v), 0);
    EXPECT_EQ(log.lines().last(),
              QStringLiteral("Clipboard fallback write failed: could not take the pasteboard"));
}

// Accepted: without a window that was known at the read, the keys go to whatever is in front.
TEST_F(ClipboardFallbackTest, aWriteIntoAProcessThatIsGoneGoesToWhatIsInFront) {
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), QStringLiteral("org.example.Other"));
    FakeTextField& front = other.addField(QStringLiteral("in front"));
    result = read();
    result.targetWindow = 0;
    chat.quit();
    desktop.focus(front);
    LogCapture log;
    EXPECT_TRUE(write(QStringLiteral("NEW")));
    EXPECT_TRUE(log.has(QStringLiteral("Clipboard fallback activate skipped: Chat")));
    EXPECT_EQ(front.value, QStringLiteral("NEW"));
}

TEST_F(ClipboardFallbackTest, aWriteWhoseWindowIsGoneReplacesNothingElse) {
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), QStringLiteral("org.example.Other"));
    FakeTextField& innocent = other.addField(QStringLiteral("innocent"));
    result = read();
    chat.quit();
    desktop.focus(innocent);
    desktop.pasteboard.put(QStringLiteral("user's"));
    EXPECT_FALSE(write(QStringLiteral("NEW")));
    EXPECT_EQ(innocent.value, QStringLiteral("innocent"));
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

// MARK: Together with the reader and the writer

TEST_F(ClipboardFallbackTest, aFieldWithoutAccessibilityIsReadAndWrittenByTheClipboard) {
    ExternalTextInputReader reader(desktop.accessibility, desktop.workspace, desktop.preferences, &fallback);
    ExternalTextWriteback writer(desktop.accessibility, desktop.workspace, loan, desktop.keyPoster,
                                 desktop.runLoop, &fallback);
    const auto read = reader.readFocusedText();
    EXPECT_EQ(read.text, field.value);
    EXPECT_EQ(read.targetWindow, chat.activeWindow->id);
    // Replaces all, whatever is asked for.
    const auto applied = writer.apply(QStringLiteral("NEW"), read, false);
    EXPECT_TRUE(applied.success);
    EXPECT_EQ(applied.strategy, WritebackStrategy::clipboardPaste);
    EXPECT_EQ(field.value, QStringLiteral("NEW"));
    desktop.advance(1);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(ClipboardFallbackTest, theReaderNamesThePasswordFieldSoThatNoKeyIsPosted) {
    chat.accessible = true;
    field.password = true;
    ExternalTextInputReader reader(desktop.accessibility, desktop.workspace, desktop.preferences, &fallback);
    EXPECT_FALSE(reader.readFocusedText().hasText());
    ASSERT_FALSE(desktop.keyPoster.records.empty());
    EXPECT_TRUE(desktop.keyPoster.records.front().chord.target.element);
    EXPECT_TRUE(chat.received.empty());
}

}  // namespace
}  // namespace veltrin
