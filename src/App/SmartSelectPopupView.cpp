#include "App/SmartSelectPopupView.h"

#include "AI/AgentTeamManager.h"
#include "Data/AppSettings.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"
#include "Platform/Pasteboard.h"
#include "System/InteractionSoundPlayer.h"

#include <utility>

namespace veltrin {
namespace {

using Channel = InteractionSoundChannel;
using Stage = SelectionContent::Stage;

constexpr double recognitionSeconds = 0.24;
constexpr double acknowledgementSeconds = 0.65;
/// Characters of the selection and of a result that the popup has room for, with some to scroll.
constexpr qsizetype shownOfSelection = 400;
constexpr qsizetype shownOfResult = 4000;
constexpr qsizetype shownOfName = 80;

}  // namespace

SmartSelectPopupView::SmartSelectPopupView(const Parts& parts, QString selectedText, Callbacks callbacks,
                                           Lifetime::Token owner)
    : parts_(parts),
      selectedText_(std::move(selectedText)),
      callbacks_(std::move(callbacks)),
      owner_(std::move(owner)) {
    const QString trimmed = Text::trimmed(selectedText_);
    characters_ = Characters::count(trimmed);
    beginning_ = Text::elided(trimmed, shownOfSelection);
    showAgent(replySlot);
}

void SmartSelectPopupView::startRecognitionLabel() {
    recognitionAgentName_ = say(u"识别中", u"Recognizing");
    recognition_ = SmartSelectTextRecognizer::recognize(selectedText_);
    recognitionTimer_ = parts_.runLoop.after(recognitionSeconds, [this] {
        recognitionAgentName_ = recognition_.label(parts_.settings.usesEnglishInterface());
        changed.notify();
    });
    changed.notify();
}

// MARK: What the buttons do

void SmartSelectPopupView::save() {
    parts_.sounds.playSmartSelectAction();
    callbacks_.onSaveToKnowledge();
    acknowledge(say(u"已入库", u"Saved"));
}

void SmartSelectPopupView::reply() {
    parts_.sounds.playSmartSelectAction();
    runSmartAction({say(u"思考中", u"Thinking"), say(u"思考结果", u"Result"), callbacks_.onReply, replySlot});
}

void SmartSelectPopupView::organize() {
    parts_.sounds.playSmartSelectAction();
    runSmartAction(
        {say(u"思考中", u"Thinking"), say(u"思考结果", u"Result"), callbacks_.onOrganize, organizeSlot});
}

void SmartSelectPopupView::retry() {
    if (lastRun_) runSmartAction(Run(*lastRun_));
}

void SmartSelectPopupView::copyOriginal() {
    putOnPasteboard(selectedText_);
}

void SmartSelectPopupView::close() {
    callbacks_.onDismiss();
}

void SmartSelectPopupView::acknowledge(const QString& feedback) {
    if (isWorking_) return;
    feedback_ = feedback;
    // The first acknowledgement closes the popup, whatever comes after it.
    if (!dismissTimer_.isSet())
        dismissTimer_ = parts_.runLoop.after(acknowledgementSeconds, [this] { callbacks_.onDismiss(); });
    changed.notify();
}

void SmartSelectPopupView::end() {
    recognitionTimer_.invalidate();
    dismissTimer_.invalidate();
    changed = {};
}

// MARK: A model's work

void SmartSelectPopupView::runSmartAction(const Run& run) {
    if (isWorking_) return;
    isWorking_ = true;
    lastRun_ = run;
    feedback_ = run.start;
    generatedText_.reset();
    failureFeedback_.reset();
    showAgent(run.agentSlot);
    changed.notify();
    parts_.sounds.startThinking(Channel::smartSelect);
    carryOut(shared_from_this(), run);
}

/// The view stays until the answer is there. A popup that was dismissed meanwhile changes nothing about it:
/// the answer still goes to the pasteboard, unseen. Meant so.
QCoro::Task<void> SmartSelectPopupView::carryOut(std::shared_ptr<SmartSelectPopupView> view, Run run) {
    std::optional<ExternalActionFeedback> failure;
    QString text;
    try {
        auto task = run.action(view->selectedText_, run.agentSlot);
        text = co_await task;
    } catch (const std::exception& error) {
        MVPLog::write("SmartSelect action failed:", describe(error));
        if (view->owner_.alive())
            failure = ExternalActionFeedback::message(error, view->say(u"处理失败", u"This did not work"));
    }
    if (!view->owner_.alive()) co_return;
    if (failure)
        view->fail(*failure);
    else
        view->finish(text, run.done);
}

void SmartSelectPopupView::finish(const QString& text, const QString& done) {
    if (Text::isBlank(text)) {
        ExternalActionFeedback feedback;
        feedback.title = say(u"没有生成结果", u"Nothing was generated");
        feedback.detail = say(u"模型没有返回可用内容。", u"The model gave nothing that can be used.");
        feedback.suggestion = say(u"可以重试一次，或在设置里切换更稳定的模型。",
                                  u"Try once more, or choose a steadier model in the settings.");
        return fail(std::move(feedback));
    }
    // What the user had there is not put back: the answer is what they asked for. Meant so.
    putOnPasteboard(text);
    feedback_ = done;
    generatedText_ = text;
    isWorking_ = false;
    changed.notify();
    parts_.sounds.playCompletion(Channel::smartSelect);
}

void SmartSelectPopupView::fail(ExternalActionFeedback feedback) {
    failureFeedback_ = std::move(feedback);
    feedback_.reset();
    isWorking_ = false;
    changed.notify();
    parts_.sounds.playCancel(Channel::smartSelect);
}

void SmartSelectPopupView::putOnPasteboard(const QString& text) {
    parts_.pasteboard.clearContents();
    parts_.pasteboard.setString(text, PasteboardContent::lasting);
}

// MARK: What is shown

void SmartSelectPopupView::showAgent(int slot) {
    agent_ = parts_.agents.assignedAgent(QStringLiteral("smartSelect"), slot);
}

SelectionContent SmartSelectPopupView::content() const {
    SelectionContent content;
    content.title = feedback_.value_or(say(u"已选中", u"Selected"));
    content.subtitle = subtitle();
    content.recognizerName = recognitionAgentName_;
    content.text = beginning_;
    if (agent_) {
        content.agentName = Text::preview(agent_->name, shownOfName);
        content.agentSymbol = agent_->icon;
        content.agentColorHex = agent_->colorHex;
    }
    if (failureFeedback_) {
        content.stage = Stage::failure;
        content.tone = PanelTone::failure;
        content.failureTitle = failureFeedback_->title;
        content.failureDetail = failureFeedback_->detail;
        content.failureSuggestion = failureFeedback_->suggestion;
    } else if (generatedText_) {
        content.stage = Stage::result;
        content.tone = PanelTone::success;
        content.text = Text::elided(*generatedText_, shownOfResult);
    } else if (isWorking_) {
        content.stage = Stage::thinking;
    }
    return content;
}

QString SmartSelectPopupView::subtitle() const {
    if (failureFeedback_) return say(u"需要处理", u"Needs attention");
    if (generatedText_) return say(u"已复制", u"Copied");
    const bool english = parts_.settings.usesEnglishInterface();
    const auto* unit = !english ? u" 字" : characters_ == 1 ? u" character" : u" characters";
    return recognition_.displayTitle(english) + QStringLiteral(" · ") + QString::number(characters_) +
           QString::fromUtf16(unit);
}

QString SmartSelectPopupView::say(const char16_t* chinese, const char16_t* english) const {
    return QString::fromUtf16(parts_.settings.usesEnglishInterface() ? english : chinese);
}

}  // namespace veltrin
