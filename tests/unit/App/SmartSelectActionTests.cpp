#include "unit/App/SmartSelectWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Stage = SelectionContent::Stage;

const QString text = u" 明天下午三点可以开会吗？ "_s;

/// What the popup has a model do.
class SmartSelectActionTest : public testing::Test, protected SmartSelectWorld {
protected:
    SmartSelectActionTest() {
        desktop.pasteboard.put(u"mine"_s);
        settings.popupSoundEnabled.set(true);
    }

    QString prompt(std::size_t request = 0) const {
        return *Json::parse(desktop.httpClient.requests.at(request).body).find(u"prompt")->toString();
    }
    qsizetype sounds() const { return static_cast<qsizetype>(desktop.soundOutput.played.size()); }
    /// Presses a button while the model takes its time.
    void pressAndHold(PanelAction action, const QString& answer = u"可以的，明天见。"_s) {
        desktop.httpClient.holding = true;
        modelAnswers(answer);
        click(action);
    }
};

TEST_F(SmartSelectActionTest, aReplyIsThoughtAboutAndThenCopied) {
    open(text);
    pressAndHold(PanelAction::reply);
    EXPECT_EQ(content().stage, Stage::thinking);
    EXPECT_EQ(content().title, u"思考中"_s);
    EXPECT_EQ(content().subtitle, u"文本 · 12 字"_s);
    EXPECT_TRUE(overlay->popupView()->isWorking());
    EXPECT_EQ(pasteboard(), u"mine"_s);
    ASSERT_TRUE(desktop.httpClient.release());
    EXPECT_EQ(content().stage, Stage::result);
    EXPECT_EQ(content().title, u"思考结果"_s);
    EXPECT_EQ(content().subtitle, u"已复制"_s);
    EXPECT_EQ(content().tone, PanelTone::success);
    EXPECT_EQ(content().text, u"可以的，明天见。"_s);
    EXPECT_FALSE(overlay->popupView()->isWorking());
    EXPECT_EQ(pasteboard(), u"可以的，明天见。"_s);
    desktop.advance(60);
    EXPECT_NE(popup(), nullptr) << "the result stays";
}

TEST_F(SmartSelectActionTest, aGeneratedTextReplacesThePasteboardForGood) {
    open(text);
    modelAnswers(u"好的"_s);
    click(PanelAction::reply);
    EXPECT_EQ(pasteboard(), u"好的"_s);
    click(PanelAction::close);
    desktop.advance(60);
    EXPECT_EQ(pasteboard(), u"好的"_s) << "nothing is put back";
}

TEST_F(SmartSelectActionTest, pressingReplyTwiceRunsTheModelOnce) {
    open(text);
    pressAndHold(PanelAction::reply);
    click(PanelAction::reply);
    click(PanelAction::organize);
    EXPECT_EQ(desktop.httpClient.requests.size(), 1U);
    EXPECT_EQ(history.entries().size(), 1U);
    ASSERT_TRUE(desktop.httpClient.release());
    EXPECT_EQ(content().stage, Stage::result);
    modelAnswers(u"再来"_s);
    desktop.httpClient.holding = false;
    click(PanelAction::organize);
    EXPECT_EQ(desktop.httpClient.requests.size(), 2U) << "afterwards it may be asked again";
    EXPECT_EQ(pasteboard(), u"再来"_s);
}

TEST_F(SmartSelectActionTest, eachActionIsLoggedAndRecordedAndAsksInItsOwnWay) {
    assign(0, u"评论回复"_s);
    assign(1, u"聊天整理"_s);
    open(text);
    modelAnswers(u"好的"_s);
    click(PanelAction::reply);
    modelAnswers(u"会议：明天三点"_s);
    click(PanelAction::organize);
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect reply requested:"_s));
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect organize requested:"_s));
    ASSERT_EQ(history.entries().size(), 2U);
    EXPECT_EQ(history.entries()[1].type, u"smartSelectReply"_s);
    EXPECT_EQ(history.entries()[0].type, u"smartSelectOrganize"_s);
    EXPECT_EQ(history.entries()[0].snippet, text);
    EXPECT_EQ(history.entries()[0].appName, u"Veltrin"_s);
    EXPECT_EQ(history.entries()[0].typeWord(), u"对话"_s);
    ASSERT_EQ(desktop.httpClient.requests.size(), 2U);
    EXPECT_TRUE(prompt(0).contains(u"动作：reply\n策略：replyGeneration\n输出契约：replyDraft\n"_s));
    EXPECT_TRUE(prompt(0).contains(u"- 名称：评论回复\n"_s));
    EXPECT_TRUE(prompt(0).contains(text)) << "as it was selected";
    EXPECT_TRUE(prompt(1).contains(
        u"动作：structureOrganization\n策略：structureExtraction\n输出契约：analysis\n"_s));
    EXPECT_TRUE(prompt(1).contains(u"- 名称：聊天整理\n"_s));
    EXPECT_TRUE(log.hasStartingWith(u"IntentCompiler source=smartSelect-reply "_s));
    EXPECT_TRUE(log.hasStartingWith(u"IntentCompiler source=smartSelect-organize "_s));
}

TEST_F(SmartSelectActionTest, anAnswerThatRepeatsInstructionsIsAskedForAgain) {
    open(text);
    modelAnswers(u"请你为以下文本写一段回复，保持礼貌。"_s);
    modelAnswers(u"好的"_s);
    click(PanelAction::reply);
    EXPECT_EQ(desktop.httpClient.requests.size(), 2U);
    EXPECT_EQ(pasteboard(), u"好的"_s);
}

TEST_F(SmartSelectActionTest, aFailureStaysInThePopupAndCanBeTriedAgain) {
    open(text);
    desktop.httpClient.fail(UrlError::timedOut, u"timed out"_s);
    click(PanelAction::organize);
    EXPECT_EQ(content().stage, Stage::failure);
    EXPECT_EQ(content().title, u"已选中"_s) << "no feedback any more";
    EXPECT_EQ(content().subtitle, u"需要处理"_s);
    EXPECT_EQ(content().tone, PanelTone::failure);
    EXPECT_EQ(content().failureTitle, u"处理失败"_s);
    EXPECT_EQ(content().failureDetail, u"模型请求超时，当前服务响应太慢或文本较长。"_s);
    EXPECT_FALSE(content().failureSuggestion.isEmpty());
    EXPECT_TRUE(log.hasStartingWith(u"SmartSelect action failed: "_s));
    EXPECT_EQ(pasteboard(), u"mine"_s);
    EXPECT_FALSE(overlay->popupView()->isWorking());
    modelAnswers(u"会议：明天三点"_s);
    click(PanelAction::retry);
    EXPECT_TRUE(prompt(1).contains(u"动作：structureOrganization"_s)) << "the same action";
    EXPECT_EQ(content().stage, Stage::result);
    EXPECT_EQ(pasteboard(), u"会议：明天三点"_s);
}

TEST_F(SmartSelectActionTest, theOriginalCanBeCopiedInstead) {
    open(text);
    desktop.httpClient.fail(UrlError::timedOut, u"timed out"_s);
    click(PanelAction::reply);
    click(PanelAction::copyOriginal);
    EXPECT_EQ(pasteboard(), text) << "as it was selected";
    EXPECT_EQ(content().stage, Stage::failure);
}

TEST_F(SmartSelectActionTest, retryWithoutAnActionDoesNothing) {
    open(text);
    click(PanelAction::retry);
    EXPECT_TRUE(desktop.httpClient.requests.empty());
    EXPECT_EQ(content().stage, Stage::offer);
}

TEST_F(SmartSelectActionTest, anEmptyAnswerIsAFailureOfItsOwn) {
    SmartSelectPopupView::Callbacks callbacks;
    callbacks.onReply = [](const QString&, int) -> QCoro::Task<QString> { co_return u" \n "_s; };
    const Lifetime owner;
    const auto view = std::make_shared<SmartSelectPopupView>(
        SmartSelectPopupView::Parts{desktop.runLoop, desktop.pasteboard, agents, settings,
                                    SmartSelectWorld::sounds},
        text, callbacks, owner.token());
    view->reply();
    ASSERT_TRUE(view->failureFeedback());
    EXPECT_EQ(view->failureFeedback()->title, u"没有生成结果"_s);
    EXPECT_EQ(view->failureFeedback()->detail, u"模型没有返回可用内容。"_s);
    EXPECT_EQ(view->failureFeedback()->suggestion, u"可以重试一次，或在设置里切换更稳定的模型。"_s);
    EXPECT_EQ(view->feedback(), std::nullopt);
    EXPECT_FALSE(view->isWorking());
    EXPECT_EQ(pasteboard(), u"mine"_s);
}

TEST_F(SmartSelectActionTest, aBlankSelectionFailsWithoutAQuestion) {
    open(u"  "_s);
    click(PanelAction::reply);
    EXPECT_TRUE(desktop.httpClient.requests.empty());
    EXPECT_EQ(content().stage, Stage::failure);
    EXPECT_EQ(content().failureDetail, u"没有可校准的表达内容。"_s);
}

TEST_F(SmartSelectActionTest, whileItWorksSavingSavesButClosesNothing) {
    open(text);
    pressAndHold(PanelAction::reply);
    click(PanelAction::save);
    EXPECT_EQ(prompts.prompts().front().content, u"明天下午三点可以开会吗？"_s);
    EXPECT_EQ(content().title, u"思考中"_s);
    desktop.advance(1);
    EXPECT_NE(popup(), nullptr);
    ASSERT_TRUE(desktop.httpClient.release());
}

TEST_F(SmartSelectActionTest, aPopupDismissedMeanwhileLeavesTheAnswerToComeUnseen) {
    open(text);
    pressAndHold(PanelAction::reply);
    click(PanelAction::close);
    desktop.advance(1);
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    ASSERT_TRUE(desktop.httpClient.release());
    EXPECT_EQ(pasteboard(), u"可以的，明天见。"_s);
    EXPECT_EQ(desktop.floatingPanels.openCount(), 0);
    desktop.advance(2);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U) << "nothing thinks any more";
}

TEST_F(SmartSelectActionTest, anAnswerOfAnEarlierPopupDoesNotShowInALaterOne) {
    open(text);
    pressAndHold(PanelAction::reply);
    open(u"other"_s);
    ASSERT_TRUE(desktop.httpClient.release());
    EXPECT_EQ(content().stage, Stage::offer);
    EXPECT_EQ(content().text, u"other"_s);
}

TEST_F(SmartSelectActionTest, anAnswerAfterTheEndIsDropped) {
    open(text);
    pressAndHold(PanelAction::reply);
    overlay.reset();
    ASSERT_TRUE(desktop.httpClient.release());
    EXPECT_EQ(pasteboard(), u"mine"_s);
}

TEST_F(SmartSelectActionTest, thinkingSoundsUntilTheAnswerIsThere) {
    open(text);
    desktop.advance(1);
    const auto before = sounds();
    pressAndHold(PanelAction::reply);
    const auto pressed = sounds();
    EXPECT_GE(pressed, before + 2) << "the button and the first breath";
    desktop.advance(4);
    EXPECT_GE(sounds(), pressed + 2) << "it goes on";
    ASSERT_TRUE(desktop.httpClient.release());
    desktop.advance(1);
    const auto done = sounds();
    desktop.advance(10);
    EXPECT_EQ(sounds(), done);
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0U);
}

}  // namespace
}  // namespace veltrin
