#pragma once

#include "AI/AgentProfile.h"
#include "AI/SmartSelectTextRecognizer.h"
#include "ExternalAccess/ExternalActionFeedback.h"
#include "Foundation/Lifetime.h"
#include "Foundation/Observers.h"
#include "Platform/FloatingPanels.h"
#include "Platform/RunLoop.h"

#include <QCoro/QCoroTask>

#include <functional>
#include <memory>
#include <optional>

namespace veltrin {

class AgentTeamManager;
class AppSettings;
class InteractionSoundPlayer;
class Pasteboard;

/// What the popup over a selection knows and does: it tells what the text is, has it answered or organised,
/// puts what comes back on the pasteboard, and keeps every failure to itself. It never writes into the
/// foreign application. Made as a shared object, since an answer may come after the popup has gone. Main
/// thread.
class SmartSelectPopupView final : public std::enable_shared_from_this<SmartSelectPopupView> {
public:
    /// The text that a model makes of the selection; it may fail.
    using Action = std::function<QCoro::Task<QString>(QString text, int agentSlot)>;

    struct Callbacks {
        std::function<void()> onSaveToKnowledge;
        Action onReply;
        Action onOrganize;
        std::function<void()> onDismiss;
    };
    struct Parts {
        RunLoop& runLoop;
        Pasteboard& pasteboard;
        AgentTeamManager& agents;
        const AppSettings& settings;
        InteractionSoundPlayer& sounds;
    };

    // The agents' slots that the buttons stand for.
    static constexpr int replySlot = 0;
    static constexpr int organizeSlot = 1;

    /// After `owner` has gone an answer that still comes is dropped, since the parts may have gone with it.
    SmartSelectPopupView(const Parts& parts, QString selectedText, Callbacks callbacks,
                         Lifetime::Token owner);
    SmartSelectPopupView(const SmartSelectPopupView&) = delete;
    SmartSelectPopupView& operator=(const SmartSelectPopupView&) = delete;

    /// The recogniser's label, which takes its time although the recognition itself takes none.
    void startRecognitionLabel();
    void save();
    void reply();
    void organize();
    /// The same action again.
    void retry();
    void copyOriginal();
    void close();
    /// The popup has gone: nothing is shown or dismissed any more. What was asked of a model goes on.
    void end();

    const QString& selectedText() const { return selectedText_; }
    const std::optional<QString>& feedback() const { return feedback_; }
    bool isWorking() const { return isWorking_; }
    const std::optional<QString>& generatedText() const { return generatedText_; }
    const std::optional<ExternalActionFeedback>& failureFeedback() const { return failureFeedback_; }
    const QString& recognitionAgentName() const { return recognitionAgentName_; }

    SelectionContent content() const;
    Observers<> changed;

private:
    struct Run {
        QString start;
        QString done;
        Action action;
        int agentSlot = 0;
    };

    void runSmartAction(const Run& run);
    static QCoro::Task<void> carryOut(std::shared_ptr<SmartSelectPopupView> view, Run run);
    void finish(const QString& text, const QString& done);
    void fail(ExternalActionFeedback feedback);
    void acknowledge(const QString& feedback);
    void putOnPasteboard(const QString& text);
    void showAgent(int slot);
    QString subtitle() const;
    /// The word in the interface's language.
    QString say(const char16_t* chinese, const char16_t* english) const;

    Parts parts_;
    QString selectedText_;
    Callbacks callbacks_;
    Lifetime::Token owner_;
    SmartSelectRecognition recognition_;
    qsizetype characters_ = 0;  ///< of the trimmed selection
    QString beginning_;         ///< of it, as much as the popup may show
    std::optional<AgentProfile> agent_;
    std::optional<Run> lastRun_;

    std::optional<QString> feedback_;
    bool isWorking_ = false;
    std::optional<QString> generatedText_;
    std::optional<ExternalActionFeedback> failureFeedback_;
    QString recognitionAgentName_;

    Timer recognitionTimer_;
    Timer dismissTimer_;
};

}  // namespace veltrin
