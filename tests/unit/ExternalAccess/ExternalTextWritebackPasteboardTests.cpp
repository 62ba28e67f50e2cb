#include "WritebackFixture.h"

namespace veltrin {
namespace {

using namespace test;

TEST_F(WritebackTest, theUsersClipboardComesBackAfterTheDelay) {
    LogCapture log;
    apply(QStringLiteral("NEW"), readSelecting(0, 3));
    EXPECT_EQ(pasteboard(), QStringLiteral("NEW"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::temporary);
    desktop.advance(0.49);
    EXPECT_EQ(pasteboard(), QStringLiteral("NEW"));
    EXPECT_FALSE(log.has(QStringLiteral("Writeback clipboard restored")));
    desktop.advance(0.02);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::lasting);
    EXPECT_TRUE(log.has(QStringLiteral("Writeback clipboard restored")));
}

// Accepted: only a plain string survives the round trip.
TEST_F(WritebackTest, aPictureOnTheClipboardIsGoneAfterTheWrite) {
    desktop.pasteboard.putOther({QStringLiteral("image/png")});
    apply(QStringLiteral("NEW"), readSelecting(0, 3));
    desktop.advance(1);
    EXPECT_FALSE(pasteboard());
    EXPECT_TRUE(desktop.pasteboard.current().otherTypes.isEmpty());
}

TEST_F(WritebackTest, aCopyTheUserMakesMeanwhileStays) {
    LogCapture log;
    apply(QStringLiteral("NEW"), readSelecting(0, 3));
    desktop.pasteboard.copyFrom(editor.pid, QStringLiteral("newer"));
    desktop.advance(1);
    EXPECT_EQ(pasteboard(), QStringLiteral("newer"));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback clipboard restore skipped: pasteboard has newer content")));
    EXPECT_FALSE(log.has(QStringLiteral("Writeback clipboard restored")));
}

TEST_F(WritebackTest, aPictureTheUserCopiesMeanwhileStays) {
    apply(QStringLiteral("NEW"), readSelecting(0, 3));
    desktop.pasteboard.copyOtherFrom(editor.pid, {QStringLiteral("image/png")});
    desktop.advance(1);
    EXPECT_EQ(desktop.pasteboard.current().otherTypes, QStringList(QStringLiteral("image/png")));
}

TEST_F(WritebackTest, aCopyWhoseOwnerHangsIsTheUsersToo) {
    apply(QStringLiteral("NEW"), readSelecting(0, 3));
    desktop.pasteboard.copyFrom(editor.pid, QStringLiteral("newer"));
    desktop.pasteboard.stopAnswering();
    desktop.advance(2);
    EXPECT_EQ(pasteboard(), QStringLiteral("newer"));
}

TEST_F(WritebackTest, aClipboardManagerThatTookOurTextOverDoesNotKeepIt) {
    apply(QStringLiteral("NEW"), readSelecting(0, 3));
    desktop.pasteboard.copyFrom(0, QStringLiteral("NEW"));
    desktop.advance(1);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

// Accepted: two writes within the delay can lose the user's clipboard, and nothing guards against it.
TEST_F(WritebackTest, ofTwoWritesWithinTheDelayTheSecondRemembersTheFirst) {
    const auto target = readSelecting(0, 0);
    apply(QStringLiteral("A"), target);
    desktop.advance(0.2);
    apply(QStringLiteral("B"), target);
    EXPECT_EQ(pasteboard(), QStringLiteral("B"));
    desktop.advance(0.25);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));  // the first restore, while the second is pending
    desktop.advance(0.5);
    EXPECT_EQ(pasteboard(), QStringLiteral("A"));
}

TEST_F(WritebackTest, pendingRestoresRunAtOnceWhenAsked) {
    apply(QStringLiteral("A"), readSelecting(0, 0));
    loan->giveBackPending();
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    const qint64 count = desktop.pasteboard.changeCount();
    desktop.advance(1);
    loan->giveBackPending();
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);  // once only
}

TEST_F(WritebackTest, ofTwoPendingRestoresTheUsersOwnComesLast) {
    apply(QStringLiteral("A"), readSelecting(0, 0));
    apply(QStringLiteral("B"), readSelecting(0, 0));
    loan->giveBackPending();
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(WritebackTest, theEndOfTheLoanGivesTheClipboardBack) {
    apply(QStringLiteral("A"), readSelecting(0, 0));
    writer.reset();
    loan.reset();
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    desktop.advance(1);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(WritebackTest, aRefusedPostGivesTheClipboardBackAtOnce) {
    refusePaste();
    field.selectedTextSettable = false;
    field.valueSettable = false;
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(0, 3)), failed);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::lasting);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
    EXPECT_TRUE(log.has(QStringLiteral("Writeback Cmd+V refused: no")));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback clipboard fallback failed: could not post Cmd+V")));
    EXPECT_EQ(log.lines().last(), QStringLiteral("Writeback failed: all strategies failed"));
}

TEST_F(WritebackTest, aRefusedPostWithNothingRememberedLeavesOurText) {
    desktop.pasteboard.putOther({QStringLiteral("image/png")});
    refusePaste();
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(0, 3)), written);
    EXPECT_EQ(pasteboard(), QStringLiteral("NEW"));
}

TEST_F(WritebackTest, aCopyMadeWhileThePostIsRefusedStays) {
    const auto target = readSelecting(0, 0);
    editor.hang();
    desktop.later(0.3, [this] { desktop.pasteboard.copyFrom(0, QStringLiteral("newer")); });
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), failed);
    EXPECT_EQ(pasteboard(), QStringLiteral("newer"));
}

TEST_F(WritebackTest, aClipboardWhoseOwnerDoesNotAnswerIsNotTouched) {
    desktop.pasteboard.stopAnswering();
    const qint64 count = desktop.pasteboard.changeCount();
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(0, 3)), written);
    EXPECT_EQ(field.value, QStringLiteral("NEW3456789abcde fin"));
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    EXPECT_TRUE(desktop.keyPoster.records.empty());
    EXPECT_TRUE(
        log.has(QStringLiteral("Writeback clipboard paste refused: pasteboard owner does not answer")));
}

TEST_F(WritebackTest, aPasteboardThatCannotBeTakenIsNotPasted) {
    desktop.pasteboard.refusesOwnership = true;
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(0, 3)), written);
    EXPECT_EQ(field.value, QStringLiteral("NEW3456789abcde fin"));
    EXPECT_TRUE(desktop.keyPoster.records.empty());
}

TEST_F(WritebackTest, textWithALineBreakIsNeverPastedIntoATerminal) {
    editor.terminal = true;
    field.valueSettable = false;
    field.selectedTextSettable = false;
    EXPECT_EQ(apply(QStringLiteral("rm -rf x\n"), readSelecting(3, 0)), failed);
    EXPECT_EQ(field.value, QStringLiteral("0123456789abcde fin"));
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_EQ(apply(QStringLiteral("ls"), readSelecting(0, 0)), pasted);
}

}  // namespace
}  // namespace veltrin
