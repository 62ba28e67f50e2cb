#include "App/ExternalActionHandler.h"

#include "AI/AdaptiveRecommender.h"
#include "AI/ModelTasks.h"
#include "Data/AppSettings.h"
#include "Debug/MVPDebugPanel.h"
#include "Engines/ExpressionRunner.h"
#include "Expression/ExpressionMemoryStore.h"
#include "ExternalAccess/ExternalTextWriteback.h"
#include "ExternalAccess/WritebackTargetValidator.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Gesture/SpaceGestureEngine.h"
#include "Platform/RunLoop.h"
#include "Session/UserBehaviorTracker.h"
#include "System/InteractionSoundPlayer.h"

#include <utility>

namespace veltrin {
namespace {

using BehaviorType = TrackedBehavior::BehaviorType;

constexpr double copiedResultSeconds = 2.4;

OptimizeOption optionOf(ExternalOptimizeMode mode) {
    switch (mode) {
        case ExternalOptimizeMode::refine:
            return OptimizeOption::refine;
        case ExternalOptimizeMode::restructure:
            return OptimizeOption::restructure;
        case ExternalOptimizeMode::modelAdapt:
            return OptimizeOption::modelAdapt;
        case ExternalOptimizeMode::outputFormat:
            break;
    }
    return OptimizeOption::outFmt;
}

}  // namespace

QCoro::Task<void> ExternalActionHandler::handleExternalAIAction(ExternalGestureAIAction action,
                                                                ExternalTextSession session) {
    const ExternalActionPipeline pipeline(dependencies());
    auto run = pipeline.run(std::move(action), std::move(session));
    co_await run;
}

ExternalAIActionRunner ExternalActionHandler::aiActionRunner(const ModelTasks& tasks) {
    ExternalAIActionRunner runner;
    runner.translateHandler = [tasks](QString text) { return tasks.translate(std::move(text)); };
    runner.optimizeHandler = [tasks](QString text, ExternalOptimizeMode mode) {
        return tasks.optimize(std::move(text), optionOf(mode));
    };
    return runner;
}

ExternalActionPipeline::Dependencies ExternalActionHandler::dependencies() {
    ExternalActionPipeline::Dependencies to;
    to.aiActionRunner = aiActionRunner(parts_.tasks);
    to.showState = lifetime_.bind([this](ExternalAIActionState state, const std::optional<QRectF>& anchor) {
        showAIState(state, anchor);
    });
    to.showFeedback =
        lifetime_.bind([this](const ExternalActionFeedback& card, const std::optional<QRectF>& anchor) {
            parts_.panel.showFailureCard(card.title, card.detail, card.suggestion, anchor, card.copyableText,
                                         card.primaryActionTitle);
        });
    to.dismissOverlay = lifetime_.bind([this] { parts_.panel.dismissOverlay(); });
    to.showCopiedResult = lifetime_.bind([this](const QString& text, const ExternalGestureAIAction& action) {
        showCopiedFallbackResult(text, action);
    });
    to.shouldCopyInstead = [this, token = lifetime_.token()](const WritebackTargetSnapshot& snapshot) {
        return !token.alive() || parts_.validator.shouldCopyResultInsteadOfWriteback(snapshot);
    };
    to.writeback = [this, token = lifetime_.token()](const QString& text, const ExternalTextReadResult& read,
                                                     bool forceReplaceAll) {
        if (token.alive()) return write(text, read, forceReplaceAll);
        ExternalTextWritebackResult gone;
        gone.message = QStringLiteral("AppDelegate unavailable");
        return gone;
    };
    to.forceReplaceAll =
        lifetime_.bind([this](const ExternalGestureAIAction& action, const ExternalTextReadResult& read) {
            return parts_.validator.shouldForceReplaceAll(action, read);
        });
    to.recordSuccess =
        lifetime_.bind([this](const ExternalGestureAIAction& action, const ExternalTextReadResult& read) {
            recordBehavior(action, read);
        });
    to.runExpression = [runner = parts_.expressions](ExpressionRequest request) {
        return runner.runExpression(std::move(request));
    };
    to.focusedWindowTitle =
        lifetime_.bind([this](std::optional<qint32> processIdentifier) -> std::optional<QString> {
            return WritebackTargetSnapshot::currentFocusedWindowTitle(parts_.accessibility,
                                                                      processIdentifier);
        });
    to.translationTargetLanguage =
        lifetime_.bind([this] { return rawValue(parts_.settings.translationTargetLang()); });
    to.recordMemoryEvent = lifetime_.bind([this](const ExpressionResult& result, bool writebackSucceeded) {
        recordMemoryEvent(result, writebackSucceeded);
    });
    using Channel = InteractionSoundChannel;
    to.startThinking = lifetime_.bind([this](Channel channel) { parts_.sounds.startThinking(channel); });
    to.playCompletion = lifetime_.bind([this](Channel channel) { parts_.sounds.playCompletion(channel); });
    to.playCancel = lifetime_.bind([this](Channel channel) { parts_.sounds.playCancel(channel); });
    // The client and the tracker outlive this object, and with it every run.
    to.recommendCommands = [client = parts_.client, &tracker = parts_.behaviors](
                               const QString& context, const ExternalAppContext& application) {
        return AdaptiveRecommender::recommend(context, application.appName, client, tracker);
    };
    to.recordCommandUsed = lifetime_.bind([this](const CommandRecommendation& shown, const QString& appName) {
        parts_.behaviors.record(BehaviorType::commandUsed, shown.command, appName, shown.category, true);
    });
    return to;
}

void ExternalActionHandler::showAIState(ExternalAIActionState state, const std::optional<QRectF>& anchor) {
    MVPLog::write("AI action state:", rawValue(state));
    parts_.panel.showStatusPill(statusText(state), anchor, std::nullopt);
}

void ExternalActionHandler::showCopiedFallbackResult(const QString& text,
                                                     const ExternalGestureAIAction& action) {
    MVPLog::write("Copied fallback requested:", "action:", action.logName(),
                  "length:", Characters::count(text));
    parts_.panel.dismissOverlay();
    parts_.panel.showCopiedResult(text, action.copiedResultLabel(), copiedResultSeconds);
}

ExternalTextWritebackResult ExternalActionHandler::write(const QString& text,
                                                         const ExternalTextReadResult& read,
                                                         bool forceReplaceAll) {
    parts_.engine.setEventTapEnabled(false, QStringLiteral("external text writeback"));
    auto result = parts_.writeback.apply(text, read, forceReplaceAll);
    parts_.engine.setEventTapEnabled(true, QStringLiteral("external text writeback finished"));
    return result;
}

/// A recommendation is not recorded here: each of its rows is, when it is shown.
void ExternalActionHandler::recordBehavior(const ExternalGestureAIAction& action,
                                           const ExternalTextReadResult& read) {
    using Action = ExternalGestureAIAction;
    const auto record = [&](BehaviorType type, const QString& detail, const QString& category) {
        parts_.behaviors.record(type, detail, read.frontmostAppName, category, true);
    };
    if (const auto* optimize = std::get_if<Action::Optimize>(&action.payload())) {
        record(BehaviorType::optimizeAction, QString::number(static_cast<int>(optimize->mode)),
               QStringLiteral("optimize"));
    } else if (const auto* memory = std::get_if<Action::MemoryAction>(&action.payload())) {
        record(BehaviorType::memoryAction, memory->preset.title, QStringLiteral("memory-action"));
    } else if (action.isTranslate()) {
        record(BehaviorType::optimizeAction, QStringLiteral("translate"), QStringLiteral("optimize"));
    }
}

void ExternalActionHandler::recordMemoryEvent(const ExpressionResult& result, bool writebackSucceeded) {
    parts_.memory.record(
        ExpressionIntentEngine::memoryEvent(result, writebackSucceeded, parts_.runLoop.wallNow()));
}

}  // namespace veltrin
