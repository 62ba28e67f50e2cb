#include "Engines/ExpressionRunner.h"
#include "ExternalAccess/ExternalActionPipeline.h"
#include "ExternalAccess/ExternalTextInputLocator.h"
#include "ExternalAccess/ExternalTextInputReader.h"
#include "ExternalAccess/WritebackTargetValidator.h"
#include "Foundation/Json.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using Action = ExternalGestureAIAction;

/// One action from the read to the write, with the real parts on the simulated desktop.
class ActionOnDesktopTest : public testing::Test {
protected:
    ActionOnDesktopTest() {
        desktop.focus(field);
        desktop.pasteboard.put(QStringLiteral("user's"));
    }

    ExternalActionPipeline::Dependencies dependencies() {
        ExternalActionPipeline::Dependencies outside;
        outside.showState = [this](ExternalAIActionState state, std::optional<QRectF> at) {
            shown << rawValue(state);
            anchor = at;
        };
        outside.showFeedback = [this](const ExternalActionFeedback& card, std::optional<QRectF>) {
            shown << QStringLiteral("card ") + card.compactMessage();
        };
        outside.dismissOverlay = [this] { shown << QStringLiteral("dismissed"); };
        outside.showCopiedResult = [this](const QString& text, const Action&) {
            shown << QStringLiteral("copied");
            desktop.pasteboard.clearContents();
            desktop.pasteboard.setString(text, PasteboardContent::lasting);
        };
        outside.shouldCopyInstead = [this](const WritebackTargetSnapshot& target) {
            return validator.shouldCopyResultInsteadOfWriteback(target);
        };
        outside.writeback = [this](const QString& text, const ExternalTextReadResult& to, bool all) {
            return writer.apply(text, to, all);
        };
        outside.forceReplaceAll = [this](const Action& action, const ExternalTextReadResult& read) {
            return validator.shouldForceReplaceAll(action, read);
        };
        outside.runExpression = [this](ExpressionRequest request) {
            return ExpressionRunner(OllamaClient(desktop.httpClient, settings))
                .runExpression(std::move(request));
        };
        outside.focusedWindowTitle = [this](std::optional<qint32> pid) {
            return WritebackTargetSnapshot::currentFocusedWindowTitle(desktop.accessibility, pid);
        };
        outside.translationTargetLanguage = [this] { return rawValue(settings.translationTargetLang()); };
        outside.playCompletion = [this](InteractionSoundChannel) {
            shown << QStringLiteral("completion sound");
        };
        outside.playCancel = [this](InteractionSoundChannel) { shown << QStringLiteral("cancel sound"); };
        return outside;
    }

    void translate() {
        ExternalTextSession session;
        session.anchor = ExternalTextInputLocator(desktop.accessibility, desktop.workspace, desktop.screens)
                             .bestAnchorRect();
        session.readResult =
            ExternalTextInputReader(desktop.accessibility, desktop.workspace, desktop.preferences)
                .readFocusedText();
        const ExternalActionPipeline pipeline(dependencies());
        auto task = pipeline.run(Action::translate(), session);
    }
    void modelAnswers(const QString& text) {
        Json body;
        body.set(QStringLiteral("response"), text);
        desktop.httpClient.answer(200, body.serialized());
    }

    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.editor"));
    FakeTextField& field = editor.addWindow(QStringLiteral("notes")).addField(QStringLiteral("早上好。   "));
    NotificationCenter notifications;
    AppSettings settings{desktop.preferences, notifications, desktop.environment};
    WritebackTargetValidator validator{desktop.accessibility, desktop.workspace, settings};
    PasteboardLoan loan{desktop.pasteboard, desktop.runLoop};
    ExternalTextWriteback writer{desktop.accessibility, desktop.workspace, loan, desktop.keyPoster,
                                 desktop.runLoop};
    QStringList shown;
    std::optional<QRectF> anchor;
};

TEST_F(ActionOnDesktopTest, aTranslationReplacesTheFieldAndGivesTheClipboardBack) {
    modelAnswers(QStringLiteral("Good morning."));
    translate();
    desktop.advance(0.1);
    EXPECT_EQ(field.value, QStringLiteral("Good morning."));
    EXPECT_TRUE(anchor);
    EXPECT_EQ(shown, (QStringList{QStringLiteral("translating"), QStringLiteral("dismissed"),
                                  QStringLiteral("completion sound")}));
    desktop.advance(1);
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("user's"));
    EXPECT_TRUE(field.undo());
    EXPECT_EQ(field.value, QStringLiteral("早上好。   "));
}

TEST_F(ActionOnDesktopTest, aTextThatOnlyShowsIsLeftAloneAndTheResultCopied) {
    field.editable = false;
    modelAnswers(QStringLiteral("Good morning."));
    translate();
    desktop.advance(1);
    EXPECT_EQ(field.value, QStringLiteral("早上好。   "));
    EXPECT_EQ(shown, (QStringList{QStringLiteral("translating"), QStringLiteral("dismissed"),
                                  QStringLiteral("copied"), QStringLiteral("completion sound")}));
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("Good morning."));
}

TEST_F(ActionOnDesktopTest, aUserWhoMovedOnGetsTheResultOnTheClipboard) {
    desktop.httpClient.holding = true;
    modelAnswers(QStringLiteral("Good morning."));
    translate();
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), std::nullopt);
    FakeTextField& foreign = other.addField(QStringLiteral("foreign"));
    desktop.focus(foreign);
    desktop.advance(2);
    ASSERT_TRUE(desktop.httpClient.release());
    desktop.advance(1);
    EXPECT_EQ(field.value, QStringLiteral("早上好。   "));
    EXPECT_EQ(foreign.value, QStringLiteral("foreign"));
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("Good morning."));
}

TEST_F(ActionOnDesktopTest, aFailedModelLeavesEverythingAsItWas) {
    desktop.httpClient.fail(UrlError::timedOut, QStringLiteral("slow"));
    const qint64 count = desktop.pasteboard.changeCount();
    translate();
    desktop.advance(1);
    EXPECT_EQ(field.value, QStringLiteral("早上好。   "));
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    EXPECT_EQ(shown, (QStringList{QStringLiteral("translating"), QStringLiteral("dismissed"),
                                  QStringLiteral("card 翻译失败\n请重试或切换模型"),
                                  QStringLiteral("cancel sound")}));
}

TEST_F(ActionOnDesktopTest, aHungApplicationCostsABoundedWaitAndNoText) {
    desktop.httpClient.holding = true;
    modelAnswers(QStringLiteral("Good morning."));
    translate();
    editor.hang();
    const double before = desktop.runLoop.blockedSeconds();
    ASSERT_TRUE(desktop.httpClient.release());
    EXPECT_LT(desktop.runLoop.blockedSeconds() - before, 3);
    editor.resume();
    desktop.advance(1);
    EXPECT_EQ(field.value, QStringLiteral("早上好。   "));
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("Good morning."));
}

TEST_F(ActionOnDesktopTest, anApplicationThatGivesAccessibilityNothingIsToldSo) {
    editor.accessible = false;
    translate();
    EXPECT_EQ(shown, QStringList(QStringLiteral("card 没有读到可处理的文本\n请先选中或点进文本框")));
    EXPECT_TRUE(desktop.httpClient.requests.empty());
}

}  // namespace
}  // namespace veltrin
