#include "ExternalAccess/PasteboardLoan.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class PasteboardLoanTest : public testing::Test {
protected:
    FakePasteboard& pasteboard() { return desktop.pasteboard; }
    FakeDesktop desktop;
    PasteboardLoan loan{desktop.pasteboard, desktop.runLoop};
};

TEST_F(PasteboardLoanTest, remembersThePlainStringAndItsMark) {
    EXPECT_FALSE(loan.remember()->text);
    pasteboard().put(QStringLiteral("word"));
    EXPECT_EQ(loan.remember()->text, QStringLiteral("word"));
    EXPECT_FALSE(loan.remember()->isSecret);
    pasteboard().copySecretFrom(0, QStringLiteral("pass"));
    EXPECT_TRUE(loan.remember()->isSecret);
    pasteboard().putOther({QStringLiteral("image/png")});
    EXPECT_FALSE(loan.remember()->text);
}

TEST_F(PasteboardLoanTest, anOwnerThatDoesNotAnswerIsNotAnEmptyPasteboard) {
    pasteboard().put(QStringLiteral("word"));
    pasteboard().stopAnswering();
    EXPECT_FALSE(loan.remember());
}

TEST_F(PasteboardLoanTest, offersTemporarilyAndGivesBackForGood) {
    pasteboard().put(QStringLiteral("word"));
    const auto remembered = *loan.remember();
    EXPECT_TRUE(loan.offer(QStringLiteral("ours")));
    EXPECT_EQ(pasteboard().current().content, PasteboardContent::temporary);
    EXPECT_TRUE(loan.giveBackUnlessNewer(remembered, QStringLiteral("ours")));
    EXPECT_EQ(pasteboard().peek(), QStringLiteral("word"));
    EXPECT_EQ(pasteboard().current().content, PasteboardContent::lasting);
}

TEST_F(PasteboardLoanTest, aSecretIsGivenBackMarked) {
    pasteboard().copySecretFrom(0, QStringLiteral("pass"));
    const auto remembered = *loan.remember();
    loan.offer(QStringLiteral("ours"));
    loan.giveBack(remembered);
    EXPECT_EQ(pasteboard().peek(), QStringLiteral("pass"));
    EXPECT_EQ(pasteboard().current().content, PasteboardContent::secret);
    EXPECT_TRUE(pasteboard().current().isSecret);
}

TEST_F(PasteboardLoanTest, aNewerCopyThatAReadGivesBackStaysWhenAnEarlierLoanEnds) {
    pasteboard().put(QStringLiteral("word"));
    const auto first = *loan.remember();
    loan.offer(QStringLiteral("ours"));
    loan.giveBackLater(0.6, first, QStringLiteral("ours"), QStringLiteral("Test"));
    desktop.advance(0.2);
    pasteboard().put(QStringLiteral("newer"));
    const auto newer = *loan.remember();
    loan.empty();
    loan.giveBack(newer);
    desktop.advance(1);
    EXPECT_EQ(pasteboard().peek(), QStringLiteral("newer"));
}

TEST_F(PasteboardLoanTest, aReadThatTookOurTextForTheUsersDoesNotKeepTheUsersFromComingBack) {
    pasteboard().put(QStringLiteral("word"));
    const auto first = *loan.remember();
    loan.offer(QStringLiteral("ours"));
    loan.giveBackLater(0.6, first, QStringLiteral("ours"), QStringLiteral("Test"));
    const auto taken = *loan.remember();
    loan.empty();
    loan.giveBack(taken);
    EXPECT_EQ(pasteboard().peek(), QStringLiteral("ours"));
    desktop.advance(1);
    EXPECT_EQ(pasteboard().peek(), QStringLiteral("word"));
}

TEST_F(PasteboardLoanTest, aNewerCopyStays) {
    pasteboard().put(QStringLiteral("word"));
    const auto remembered = *loan.remember();
    loan.offer(QStringLiteral("ours"));
    pasteboard().put(QStringLiteral("newer"));
    EXPECT_FALSE(loan.giveBackUnlessNewer(remembered, QStringLiteral("ours")));
    EXPECT_EQ(pasteboard().peek(), QStringLiteral("newer"));
}

TEST_F(PasteboardLoanTest, aPasteboardThatCannotBeTakenIsTriedAgainAndTold) {
    pasteboard().put(QStringLiteral("word"));
    const auto remembered = *loan.remember();
    loan.offer(QStringLiteral("ours"));
    pasteboard().refusesOwnership = true;
    LogCapture log;
    loan.giveBack(remembered);
    EXPECT_TRUE(log.has(QStringLiteral("Pasteboard was not given back, attempt: 1")));
    EXPECT_TRUE(log.has(QStringLiteral("Pasteboard was not given back, attempt: 2")));
    pasteboard().refusesOwnership = false;
    loan.giveBack(remembered);
    EXPECT_EQ(pasteboard().peek(), QStringLiteral("word"));
}

TEST_F(PasteboardLoanTest, ofTwoRoadsWaitingAtTheEndTheUsersOwnComesLast) {
    pasteboard().put(QStringLiteral("word"));
    for (const auto* ours : {"first", "second"}) {
        const auto remembered = *loan.remember();
        loan.offer(QString::fromLatin1(ours));
        loan.giveBackLater(0.85, remembered, QString::fromLatin1(ours), QStringLiteral("Test"));
    }
    LogCapture log;
    loan.giveBackPending();
    EXPECT_EQ(pasteboard().peek(), QStringLiteral("word"));
    EXPECT_EQ(log.lines().count(QStringLiteral("Test clipboard restored")), 2);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
}

}  // namespace
}  // namespace veltrin
