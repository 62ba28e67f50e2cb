#include "RoadFixture.h"

namespace veltrin {
namespace {

/// However the model fails, the field and the clipboard stay as they were and a card says so.
class ModelFailureTest : public RoadTest {
protected:
    void SetUp() override { launch(); }
    void translate(const Reply& reply) {
        veltrin.model.answers(reply);
        veltrin.tapTranslate();
        for (int i = 0; i < 1000 && !message(); ++i)
            desktop.advance(0.1);
        card = message().value_or(QString());
        EXPECT_FALSE(pill());
        finish();
        EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));
        EXPECT_EQ(copied(), QStringLiteral("mine"));
        EXPECT_EQ(desktop.keyPoster.postedCount, 0);
        EXPECT_FALSE(remembered());
    }
    QString card;
};

TEST_F(ModelFailureTest, noConnection) {
    translate(Reply::failing(UrlError::cannotConnectToHost));
    EXPECT_EQ(card, QStringLiteral("翻译失败\n请重试或切换模型"));
}

TEST_F(ModelFailureTest, noAnswerInTime) {
    const double start = desktop.now();
    translate(Reply::text(QStringLiteral("Good day."), 400));
    EXPECT_EQ(card, QStringLiteral("翻译失败\n请重试或切换模型"));
    EXPECT_LT(desktop.now() - start, 60);
}

TEST_F(ModelFailureTest, anErrorStatus) {
    Reply reply = Reply::text(QStringLiteral("Good day."));
    reply.status = 500;
    translate(reply);
    EXPECT_EQ(card, QStringLiteral("翻译失败\n请重试或切换模型"));
}

TEST_F(ModelFailureTest, anAnswerThatIsNoJson) {
    Reply reply;
    reply.body = "<html>proxy</html>";
    translate(reply);
    EXPECT_TRUE(card.startsWith(QStringLiteral("翻译失败\n")));
}

TEST_F(ModelFailureTest, anEmptyAnswerAfterASecondAttempt) {
    translate(Reply::text(QStringLiteral(" \n ")));
    EXPECT_TRUE(card.startsWith(QStringLiteral("翻译失败\n")));
    EXPECT_EQ(veltrin.model.prompts, 2);
}

TEST_F(ModelFailureTest, rulesInPlaceOfAResultAreNeverWritten) {
    translate(Reply::text(QStringLiteral("请你为以下文本翻译成英文。")));
    EXPECT_TRUE(card.startsWith(QStringLiteral("翻译失败\n")));
}

TEST_F(ModelFailureTest, theProgramEndsWhileTheModelThinks) {
    modelAnswers("Good day.", 5);
    veltrin.tapTranslate();
    desktop.advance(1);
    veltrin.quit();
    veltrin.destroy();
    desktop.advance(10);
    EXPECT_EQ(veltrin.model.pending(), 0u);
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
}

class ClipboardTest : public RoadTest {
protected:
    void SetUp() override { launch(); }
};

TEST_F(ClipboardTest, whatTheUserCopiesDuringTheRestoreDelayStays) {
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    desktop.advance(0.3);
    ASSERT_EQ(field.value, QStringLiteral("Good day."));
    field.selectAll();
    desktop.pasteboard.copyFrom(browser.pid, QStringLiteral("newer"));
    finish();
    EXPECT_EQ(copied(), QStringLiteral("newer"));
}

TEST_F(ClipboardTest, anOwnerThatNeverAnswersKeepsItsContent) {
    desktop.pasteboard.stopAnswering();
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    const double blocked = desktop.runLoop.blockedSeconds();
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Good day."));  // by accessibility
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(desktop.pasteboard.current().owner, FakePasteboard::Owner::application);
    EXPECT_LT(desktop.runLoop.blockedSeconds() - blocked, 1.1);
}

TEST_F(ClipboardTest, anOwnerThatHangsKeepsItsContent) {
    desktop.pasteboard.copyFrom(browser.pid, QStringLiteral("from the browser"));
    browser.hang();
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    finish();
    browser.resume();
    EXPECT_EQ(field.value, QStringLiteral("Good day."));
    EXPECT_EQ(copied(), QStringLiteral("from the browser"));
}

TEST_F(ClipboardTest, contentWithoutAPlainStringComesBackEmpty) {
    desktop.pasteboard.copyOtherFrom(0, {QStringLiteral("image/png")});
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    finish();
    EXPECT_FALSE(desktop.pasteboard.peek());  // accepted: only the plain string is kept
}

TEST_F(ClipboardTest, anApplicationThatHangsAfterThePasteKeyStillGetsTheRightText) {
    modelAnswers("Good day.");
    editor.postedKeyLatency = 0.05;
    veltrin.tapTranslate();
    desktop.advance(0.22);
    ASSERT_EQ(desktop.keyPoster.postedCount, 1);
    editor.hang();
    finish();
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    editor.resume();
    desktop.advance(0.1);
    EXPECT_EQ(field.value, QStringLiteral("Good day."));
}

TEST_F(ClipboardTest, aHungApplicationCostsABoundedTimeAtTheGesture) {
    desktop.advance(3);
    editor.hang();
    const double blocked = desktop.runLoop.blockedSeconds();
    veltrin.tapTranslate();
    EXPECT_LT(desktop.runLoop.blockedSeconds() - blocked, 1.0);
    finish();
    EXPECT_EQ(veltrin.model.prompts, 0);
    editor.resume();
    desktop.advance(1);
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));
}

TEST_F(ClipboardTest, twoRunsApartKeepTheClipboardAndTheLaterAnswerStands) {
    modelAnswers("First.", 5);
    veltrin.tapTranslate();
    modelAnswers("Second.", 0.2);
    veltrin.tapTranslate();
    desktop.advance(0.25);
    EXPECT_EQ(field.value, QStringLiteral("Second."));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("First."));  // it read the field whole as well
    EXPECT_EQ(copied(), QStringLiteral("mine"));
}

TEST_F(ClipboardTest, twoWritesWithinTheRestoreDelayCanLoseTheFirstClipboard) {
    modelAnswers("First.", 1);
    veltrin.pressTranslateShortcut();
    modelAnswers("Second.", 1.2);
    veltrin.pressTranslateShortcut();
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Second."));
    EXPECT_EQ(copied(), QStringLiteral("First."));  // accepted: there is no guard between them
    EXPECT_EQ(veltrin.delegate().engine().eventTapSuspendCount(), 0);
}

}  // namespace
}  // namespace veltrin
