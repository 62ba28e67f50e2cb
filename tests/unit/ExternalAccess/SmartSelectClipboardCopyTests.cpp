#include "ExternalAccess/ExternalTextClipboardFallback.h"
#include "ExternalAccess/SmartSelectClipboardCopy.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"
#include "support/fake/TaskRunner.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Result = std::shared_ptr<Outcome<std::optional<QString>>>;

/// Something is selected in a field, and the user has copied something before.
class SmartSelectClipboardCopyTest : public testing::Test {
protected:
    SmartSelectClipboardCopyTest() {
        desktop.focus(field);
        field.select(6, 5);
        desktop.pasteboard.put(u"user's"_s);
        desktop.advance(5);
    }
    ~SmartSelectClipboardCopyTest() override {
        EXPECT_EQ(desktop.runLoop.blockedSeconds(), expectedBlocked) << "the main thread went on meanwhile";
    }

    Result begin() { return follow(clipboardCopy->copySelectedTextViaClipboard()); }
    std::optional<QString> finish(const Result& result, double limit = 5) {
        const double end = desktop.now() + limit;
        while (!result->finished() && desktop.now() < end)
            desktop.advance(0.005);
        EXPECT_TRUE(result->finished());
        return result->value.value_or(std::nullopt);
    }
    std::optional<QString> copy() { return finish(begin()); }
    /// What the application does with the copy key, in place of copying its selection.
    void answerWith(std::function<void()> action) {
        field.placeCaret(0);
        desktop.keyPoster.onPosted = [this, action = std::move(action)](const auto&) {
            desktop.later(0.02, action);
        };
    }
    void expectUntouched() {
        EXPECT_EQ(desktop.keyPoster.records.size(), 0U);
        EXPECT_EQ(desktop.log.count("pasteboard cleared"), 0);
        EXPECT_EQ(desktop.log.count("pasteboard restored"), 0);
    }

    LogCapture log;
    double expectedBlocked = 0;
    FakeDesktop desktop;
    FakeApplication& app = desktop.launch(u"Writer"_s, u"org.example.Writer"_s);
    FakeTextField& field = app.addField(u"hello world"_s);
    PasteboardLoan loan{desktop.pasteboard, desktop.runLoop};
    ClipboardFallbackInterferenceGuard guard{desktop.runLoop};
    std::optional<SmartSelectClipboardCopy> clipboardCopy{
        std::in_place, desktop.workspace, desktop.pasteboard, loan, desktop.keyPoster, desktop.runLoop,
        guard};
};

TEST_F(SmartSelectClipboardCopyTest, givesTheSelectionAndThePasteboardBack) {
    const double begin = desktop.now();
    EXPECT_EQ(copy(), u"world");
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
    EXPECT_EQ(field.value, u"hello world");
    EXPECT_EQ(app.pressesOf(KeyCode::c), 1);
    // The pause after activating, the time that the key would be held, and one look.
    EXPECT_NEAR(desktop.now() - begin, 0.12 + 0.06 + 0.015, 0.011);
    EXPECT_TRUE(log.hasStartingWith(
        u"SmartSelect clipboard fallback begin: app: Writer bundle: org.example.Writer pid:"_s));
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback copy attempt: 1"_s));
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect clipboard fallback success: length: 5 elapsedMS: 19"_s));
    ASSERT_EQ(desktop.workspace.activations.size(), 1U);
    EXPECT_EQ(desktop.workspace.activations.front().options, ActivateOptions::none);
}

TEST_F(SmartSelectClipboardCopyTest, everyTypeComesBackInItsBytes) {
    const QMap<QString, QByteArray> types{{u"image/png"_s, "\x89PNG\0x"}, {u"text/html"_s, "<b>user's</b>"}};
    desktop.pasteboard.copyRichFrom(0, u"user's"_s, types);
    const auto before = desktop.pasteboard.snapshot();
    EXPECT_EQ(copy(), u"world");
    EXPECT_EQ(desktop.pasteboard.snapshot(), before);
}

TEST_F(SmartSelectClipboardCopyTest, anItemWithoutReadableDataComesBackAsAnEmptyItem) {
    desktop.pasteboard.copyOtherFrom(0, {});
    const auto snapshot = [this] { return desktop.pasteboard.snapshot(); };
    ASSERT_TRUE(snapshot());
    EXPECT_TRUE(snapshot()->items.empty()) << "an empty pasteboard has no item";
    desktop.pasteboard.copyRichFrom(0, {}, {}, {u"application/x-silent"_s});
    const auto before = snapshot();
    ASSERT_EQ(before->items.size(), 1U);
    EXPECT_EQ(copy(), u"world");
    expectedBlocked = desktop.runLoop.blockedSeconds();
    EXPECT_EQ(desktop.log.count("pasteboard restored"), 1);
    EXPECT_TRUE(desktop.pasteboard.restore(PasteboardSnapshot{{PasteboardItem{}}}));
}

TEST_F(SmartSelectClipboardCopyTest, anEmptyPasteboardComesBackEmpty) {
    desktop.pasteboard.ownerDied(0);
    desktop.pasteboard.copyOtherFrom(0, {});
    EXPECT_EQ(copy(), u"world");
    EXPECT_FALSE(desktop.pasteboard.peek());
    EXPECT_TRUE(desktop.pasteboard.types().isEmpty());
}

TEST_F(SmartSelectClipboardCopyTest, aPictureInABrowserIsRefusedAndThePasteboardStays) {
    app.name = u"Chromium"_s;
    answerWith([this] { desktop.pasteboard.copyOtherFrom(app.pid, {u"image/png"_s, u"text/html"_s}); });
    EXPECT_EQ(copy(), std::nullopt);
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback rejected non-text selection"_s));
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectClipboardCopyTest, filesAreRefusedEvenWithATextBesideThem) {
    for (const QString& type :
         {u"text/uri-list"_s, u"x-special/gnome-copied-files"_s, u"image/tiff"_s, u"image/bmp"_s}) {
        answerWith([this, type] { desktop.pasteboard.copyRichFrom(app.pid, u"/a/file"_s, {{type, "x"}}); });
        EXPECT_EQ(copy(), std::nullopt) << qPrintable(type);
        EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
        desktop.advance(2);
    }
    answerWith([this] { desktop.pasteboard.copyRichFrom(app.pid, u"words"_s, {{u"text/html"_s, "x"}}); });
    EXPECT_EQ(copy(), u"words");
}

TEST_F(SmartSelectClipboardCopyTest, theUsersOwnCopyJustBeforeSuppressesIt) {
    guard.recordPotentialUserCopyKeyDown(desktop.pasteboard.changeCount());
    desktop.pasteboard.copyFrom(app.pid, u"user's newer"_s);
    desktop.advance(1.2);
    EXPECT_EQ(copy(), std::nullopt);
    expectUntouched();
    desktop.advance(0.1);
    EXPECT_EQ(copy(), u"world");
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's newer");
}

TEST_F(SmartSelectClipboardCopyTest, theUsersCopyBeforeTheKeyGoesOutSuppressesItToo) {
    const Result result = begin();
    desktop.advance(0.05);
    desktop.pasteboard.copyFrom(app.pid, u"user's newer"_s);
    EXPECT_EQ(finish(result), std::nullopt);
    expectUntouched();
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's newer");
}

TEST_F(SmartSelectClipboardCopyTest, itsOwnKeyIsNotTakenForTheUsers) {
    const Result result = begin();
    desktop.advance(0.13);
    guard.recordPotentialUserCopyKeyDown(0);  // what the tap makes of the posted key
    EXPECT_EQ(finish(result), u"world");
    EXPECT_FALSE(guard.shouldSkipFallback(desktop.pasteboard.changeCount(), 1.25));
}

TEST_F(SmartSelectClipboardCopyTest, nothingInFrontAndOurOwnWindowAreNotTouched) {
    desktop.workspace.bringToFront(nullptr);
    EXPECT_EQ(copy(), std::nullopt);
    desktop.workspace.bringToFront(&desktop.workspace.program());
    EXPECT_EQ(copy(), std::nullopt);
    EXPECT_FALSE(log.hasStartingWith(u"SmartSelect clipboard fallback begin"_s));
    expectUntouched();
}

TEST_F(SmartSelectClipboardCopyTest, nothingCopiedEndsAfterOneAttempt) {
    field.placeCaret(0);
    const double begin = desktop.now();
    EXPECT_EQ(copy(), std::nullopt);
    EXPECT_NEAR(desktop.now() - begin, 0.12 + 0.06 + 0.85 + 0.18, 0.03);
    EXPECT_EQ(app.pressesOf(KeyCode::c), 1);
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback failed: no copied text"_s));
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectClipboardCopyTest, aSlowApplicationIsAskedTwiceAndGivenMoreTime) {
    app.name = u"WeChat"_s;
    field.placeCaret(0);
    const double begin = desktop.now();
    EXPECT_EQ(copy(), std::nullopt);
    EXPECT_NEAR(desktop.now() - begin, 0.24 + 2 * (0.09 + 1.15 + 0.24), 0.05);
    EXPECT_EQ(app.pressesOf(KeyCode::c), 2);
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback copy attempt: 2"_s));

    desktop.advance(2);
    int keys = 0;
    desktop.keyPoster.onPosted = [&](const auto&) {
        if (++keys == 2) desktop.later(1.1, [&] { desktop.pasteboard.copyFrom(app.pid, u"late"_s); });
    };
    EXPECT_EQ(copy(), u"late");
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectClipboardCopyTest, aConversationIsSlowToo) {
    app.bundleIdentifier = u"com.openai.chat"_s;
    field.placeCaret(0);
    copy();
    EXPECT_EQ(app.pressesOf(KeyCode::c), 2);
}

TEST_F(SmartSelectClipboardCopyTest, whatIsCopiedInPiecesIsTakenWhenItHasText) {
    answerWith([this] {
        desktop.pasteboard.copyFrom(app.pid, u" \n"_s);
        desktop.later(0.3, [this] { desktop.pasteboard.copyFrom(app.pid, u" words \n"_s); });
    });
    EXPECT_EQ(copy(), u" words \n") << "as it came";
}

TEST_F(SmartSelectClipboardCopyTest, aRefusedKeyLeavesThePasteboardAsItWas) {
    desktop.keyPoster.refusal = u"a terminal has no such key"_s;
    EXPECT_EQ(copy(), std::nullopt);
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback key refused: a terminal has no such key"_s));
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
    EXPECT_EQ(app.pressesOf(KeyCode::c), 0);
}

TEST_F(SmartSelectClipboardCopyTest, anOwnerThatDoesNotAnswerIsLeftAlone) {
    desktop.pasteboard.stopAnswering();
    EXPECT_EQ(copy(), std::nullopt);
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback refused: pasteboard owner does not answer"_s));
    expectUntouched();
    expectedBlocked = desktop.pasteboard.unansweredSnapshotCost;
}

TEST_F(SmartSelectClipboardCopyTest, aCopyWhoseOwnerNeverAnswersIsAskedOnce) {
    answerWith([this] {
        desktop.pasteboard.copyFrom(app.pid, u"never"_s);
        desktop.pasteboard.stopAnswering();
    });
    EXPECT_EQ(copy(), std::nullopt);
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
    expectedBlocked = desktop.pasteboard.unansweredCost;
}

TEST_F(SmartSelectClipboardCopyTest, anApplicationThatDiesMeanwhileCostsNothing) {
    field.placeCaret(0);
    const Result result = begin();
    desktop.advance(0.3);
    app.quit();
    EXPECT_EQ(finish(result), std::nullopt);
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectClipboardCopyTest, anotherWindowInFrontGetsNoKey) {
    FakeApplication& other = desktop.launch(u"Other"_s, u"org.example.Other"_s);
    other.addField(u"secret"_s).selectAll();
    const Result result = begin();
    desktop.workspace.refusesActivation = true;
    desktop.workspace.bringToFront(&other);
    EXPECT_EQ(finish(result), std::nullopt);
    EXPECT_EQ(other.pressesOf(KeyCode::c), 0);
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectClipboardCopyTest, whoeverBorrowsThePasteboardNextGetsTheUsers) {
    field.placeCaret(0);
    const Result result = begin();
    desktop.advance(0.4);
    EXPECT_NE(desktop.pasteboard.peek(), u"user's");
    const auto remembered = loan.remember();
    ASSERT_TRUE(remembered);
    EXPECT_EQ(remembered->text, u"user's");
    EXPECT_EQ(finish(result), std::nullopt) << "what was given back is not taken for the copy";
    EXPECT_EQ(desktop.log.count("pasteboard restored"), 1);
}

TEST_F(SmartSelectClipboardCopyTest, theEndOfTheProcessGivesItBackAtOnce) {
    field.placeCaret(0);
    const Result result = begin();
    desktop.advance(0.4);
    clipboardCopy->giveBackPending();
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
    clipboardCopy.reset();
    EXPECT_TRUE(result->finished()) << "nothing waits for what is gone";
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
    EXPECT_EQ(desktop.log.count("pasteboard restored"), 1);
}

TEST_F(SmartSelectClipboardCopyTest, itsOwnerMayGoInEveryMoment) {
    for (double moment = 0; moment < 1.3; moment += 0.07) {
        desktop.pasteboard.put(u"user's"_s);
        desktop.advance(3);
        clipboardCopy.emplace(desktop.workspace, desktop.pasteboard, loan, desktop.keyPoster, desktop.runLoop,
                              guard);
        field.placeCaret(0);
        const Result result = begin();
        desktop.advance(moment);
        clipboardCopy.reset();
        EXPECT_TRUE(result->finished());
        EXPECT_EQ(desktop.pasteboard.peek(), u"user's") << moment;
    }
}

TEST_F(SmartSelectClipboardCopyTest, saysWhenThePasteboardIsNotTheUsers) {
    std::vector<std::pair<bool, std::optional<QString>>> told;
    clipboardCopy->onBorrowed = [&](bool isBorrowed) {
        told.emplace_back(isBorrowed, desktop.pasteboard.peek());
    };
    copy();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[0], std::pair(true, std::optional(u"user's"_s)));
    EXPECT_EQ(told[1], std::pair(false, std::optional(u"user's"_s)));
}

TEST_F(SmartSelectClipboardCopyTest, aPasteboardThatCannotBeTakenIsTriedTwice) {
    desktop.pasteboard.refusesOwnership = true;
    EXPECT_EQ(copy(), u"world");
    EXPECT_TRUE(log.has(u"SmartSelect pasteboard was not given back, attempt: 2"_s));
}

}  // namespace
}  // namespace veltrin
