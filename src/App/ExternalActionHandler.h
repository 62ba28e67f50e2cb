#pragma once

#include "ExternalAccess/ExternalActionPipeline.h"
#include "Foundation/Lifetime.h"

#include <QCoro/QCoroTask>

namespace veltrin {

class AppSettings;
class Accessibility;
class ExpressionMemoryStore;
class ExpressionRunner;
class InteractionSoundPlayer;
class MVPDebugPanel;
class ModelTasks;
class OllamaClient;
class RunLoop;
class SpaceGestureEngine;
class UserBehaviorTracker;
class WritebackTargetValidator;

/// Runs actions on foreign text: binds the pipeline to the panels, the writeback and the expression engine of
/// this process. Main thread.
class ExternalActionHandler {
public:
    struct Parts {
        RunLoop& runLoop;
        Accessibility& accessibility;
        AppSettings& settings;
        SpaceGestureEngine& engine;
        MVPDebugPanel& panel;
        ExternalTextWriteback& writeback;
        WritebackTargetValidator& validator;
        ExpressionRunner& expressions;
        ExpressionMemoryStore& memory;
        UserBehaviorTracker& behaviors;
        OllamaClient& client;
        ModelTasks& tasks;
        InteractionSoundPlayer& sounds;
    };

    explicit ExternalActionHandler(const Parts& parts) : parts_(parts) {}

    /// One run of the pipeline; never throws.
    QCoro::Task<void> handleExternalAIAction(ExternalGestureAIAction action, ExternalTextSession session);

    /// The plain tasks as the pipeline carries them.
    static ExternalAIActionRunner aiActionRunner(const ModelTasks& tasks);

private:
    ExternalActionPipeline::Dependencies dependencies();
    void showAIState(ExternalAIActionState state, const std::optional<QRectF>& anchor);
    void showCopiedFallbackResult(const QString& text, const ExternalGestureAIAction& action);
    ExternalTextWritebackResult write(const QString& text, const ExternalTextReadResult& read,
                                      bool forceReplaceAll);
    void recordBehavior(const ExternalGestureAIAction& action, const ExternalTextReadResult& read);
    void recordMemoryEvent(const ExpressionResult& result, bool writebackSucceeded);

    Parts parts_;
    Lifetime lifetime_;
};

}  // namespace veltrin
