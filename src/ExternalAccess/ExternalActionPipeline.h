#pragma once

#include "ExternalAccess/ExternalAIAction.h"
#include "ExternalAccess/ExternalActionFeedback.h"
#include "ExternalAccess/ExternalAppContext.h"
#include "ExternalAccess/ExternalTextReadResult.h"
#include "ExternalAccess/ExternalTextWriteback.h"
#include "ExternalAccess/InteractionSoundChannel.h"
#include "ExternalAccess/WritebackTargetSnapshot.h"

#include <QCoro/QCoroTask>
#include <QRectF>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace veltrin {

/// One run of one action on one piece of foreign text: checks the read, shows the busy state, asks the
/// expression engine, writes back or copies, records, and turns every failure into a card. All contact with
/// the outside is through closures, so it runs without any desktop. Built afresh for each run; keeps no
/// state. Main thread.
class ExternalActionPipeline {
public:
    /// The closures must hold their owner weakly: a run waits for the model and may outlive it. Those marked
    /// optional may be empty and are then skipped; all others must be set.
    struct Dependencies {
        using Anchor = std::optional<QRectF>;

        ExternalAIActionRunner aiActionRunner;  ///< carried along; no stage calls it
        std::function<void(ExternalAIActionState, Anchor)> showState;
        std::function<void(const ExternalActionFeedback&, Anchor)> showFeedback;
        std::function<void()> dismissOverlay;
        std::function<void(const QString& text, const ExternalGestureAIAction&)> showCopiedResult;
        std::function<bool(const WritebackTargetSnapshot&)> shouldCopyInstead;
        std::function<ExternalTextWritebackResult(const QString& text, const ExternalTextReadResult&,
                                                  bool forceReplaceAll)>
            writeback;
        std::function<bool(const ExternalGestureAIAction&, const ExternalTextReadResult&)> forceReplaceAll;
        /// Optional: the record of the user's behaviour.
        std::function<void(const ExternalGestureAIAction&, const ExternalTextReadResult&)> recordSuccess;
        std::function<QCoro::Task<ExpressionResult>(ExpressionRequest)> runExpression;

        /// The title of the process's focused window at the moment, see WritebackTargetSnapshot.
        std::function<std::optional<QString>(std::optional<qint32> processIdentifier)> focusedWindowTitle;
        /// The raw value of the language to translate to.
        std::function<QString()> translationTargetLanguage;
        /// Optional: keeps the outcome of an expression.
        std::function<void(const ExpressionResult&, bool writebackSucceeded)> recordMemoryEvent;
        /// Optional; without it a recommendation fails with words for the user. Takes the prompt block of the
        /// text and the application around it.
        std::function<QCoro::Task<std::vector<CommandRecommendation>>(QString context, ExternalAppContext)>
            recommendCommands;
        /// Optional: told once for every recommendation shown, with the application's name.
        std::function<void(const CommandRecommendation&, const QString& appName)> recordCommandUsed;
        /// Optional sounds.
        std::function<void(InteractionSoundChannel)> startThinking;
        std::function<void(InteractionSoundChannel)> playCompletion;
        std::function<void(InteractionSoundChannel)> playCancel;
    };

    explicit ExternalActionPipeline(Dependencies dependencies);

    /// Never throws. The run owns what it needs: the pipeline may be destroyed while it waits.
    QCoro::Task<void> run(ExternalGestureAIAction action, ExternalTextSession session) const;

    static QString formatRecommendations(const std::vector<CommandRecommendation>& recommendations);

private:
    std::shared_ptr<const Dependencies> dependencies_;
};

}  // namespace veltrin
