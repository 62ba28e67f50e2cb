#include "ExternalAccess/ExternalActionPipeline.h"

#include "Agents/AgentSpecCompiler.h"
#include "Engines/TransformEngineError.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

#include <QStringList>
#include <QUuid>

#include <exception>
#include <utility>

namespace veltrin {

namespace {

using Dependencies = ExternalActionPipeline::Dependencies;

/// What one run is about; frozen at its start, so that a later run does not disturb it.
struct Run {
    std::shared_ptr<const Dependencies> outside;
    ExternalGestureAIAction action;
    ExternalTextSession session;
    QString id;
    QString name;

    const ExternalTextReadResult& read() const { return session.readResult; }
    InteractionSoundChannel channel() const {
        return action.isTranslate() ? InteractionSoundChannel::translate : InteractionSoundChannel::optimize;
    }
    ExternalAIActionState state() const {
        return action.isTranslate() ? ExternalAIActionState::translating : ExternalAIActionState::optimizing;
    }
};

class RecommendationUnavailable : public Error {
public:
    QString errorDescription() const override { return QStringLiteral("命令推荐功能当前不可用。"); }
};

class UnknownFailure : public Error {
public:
    QString errorDescription() const override { return {}; }
};

/// Calls a closure that may be left out.
template <typename Function, typename... Arguments>
void tell(const Function& closure, const Arguments&... arguments) {
    if (closure) closure(arguments...);
}

ExternalActionFeedback unreadableCard() {
    ExternalActionFeedback feedback;
    feedback.title = QStringLiteral("没有读到可处理的文本");
    feedback.detail = QStringLiteral("请先点进真实的可编辑文本框，或选中一段文字后再触发 Veltrin。");
    feedback.suggestion = QStringLiteral("如果是在网页或 Electron 应用里，先用鼠标点击输入区，再重试一次。");
    return feedback;
}

ExternalActionFeedback unwritableCard(const QString& text) {
    ExternalActionFeedback feedback;
    feedback.title = QStringLiteral("没有识别到可替换的文本框");
    feedback.detail = QStringLiteral("当前内容可以读取，但目标区域不支持自动替换。");
    feedback.suggestion = QStringLiteral("你可以复制当前读取到的内容，或先点进可编辑文本框后再试。");
    feedback.copyableText = text;
    feedback.primaryActionTitle = QStringLiteral("复制内容");
    return feedback;
}

ExternalActionFeedback emptyOutputCard(const QString& title, const QString& text) {
    ExternalActionFeedback feedback;
    feedback.title = title;
    feedback.detail = QStringLiteral("模型没有返回可用内容。");
    feedback.suggestion = QStringLiteral("请重试，或在设置里换一个更稳定的模型。");
    feedback.copyableText = text;
    feedback.primaryActionTitle = QStringLiteral("复制原文");
    return feedback;
}

ExternalActionFeedback emptyInputCard() {
    ExternalActionFeedback feedback;
    feedback.title = QStringLiteral("没有读到可处理的文本");
    feedback.detail = QStringLiteral("Veltrin 没有从当前 App 读取到文字。");
    feedback.suggestion = QStringLiteral("请先选中文字，或把光标放进可编辑文本框后重试。");
    return feedback;
}

ExpressionRequest expressionRequest(const Run& run) {
    using Action = ExternalGestureAIAction;
    const ExternalTextReadResult& read = run.read();
    ExpressionRequest request;
    request.context.fullText = read.fullText;
    request.context.text = read.text;
    request.context.contextBefore = read.textContext.contextBefore;
    request.context.contextAfter = read.textContext.contextAfter;
    request.context.appName = read.frontmostAppName;
    request.context.bundleIdentifier = read.bundleIdentifier;
    request.requiresTransform = true;
    if (const auto* optimize = std::get_if<Action::Optimize>(&run.action.payload())) {
        request.trigger = ExpressionTrigger::optimize;
        request.optimizeMode = static_cast<OptimizeCompileMode>(static_cast<int>(optimize->mode) - 1);
    } else if (const auto* memory = std::get_if<Action::MemoryAction>(&run.action.payload())) {
        const MemoryActionPreset& preset = memory->preset;
        ExpressionMode mode;
        mode.name = preset.title;
        mode.agentSpec = AgentSpecCompiler::compile(preset.title, preset.description, preset.instruction);
        mode.slot = memory->agentSlot + 1;
        request.trigger = ExpressionTrigger::shortcut;
        request.mode = mode;
    } else {
        request.trigger = ExpressionTrigger::translate;
        request.targetLanguage = run.outside->translationTargetLanguage();
    }
    return request;
}

QString successTitle(const ExternalGestureAIAction& action) {
    if (const auto* memory = std::get_if<ExternalGestureAIAction::MemoryAction>(&action.payload()))
        return memory->preset.title;
    return action.isTranslate() ? QStringLiteral("翻译完成") : QStringLiteral("优化完成");
}

// The coroutines below hold the run by a shared pointer of their own: whoever started them may be gone
// meanwhile.

QCoro::Task<ExternalAIActionOutput> recommend(std::shared_ptr<const Run> run) {
    const Dependencies& outside = *run->outside;
    const ExternalTextReadResult& read = run->read();
    std::optional<QString> title;
    if (read.processIdentifier) title = outside.focusedWindowTitle(read.processIdentifier);
    const auto application =
        ExternalAppContext::make(read.frontmostAppName, read.bundleIdentifier, title.value_or(QString()));
    if (!outside.recommendCommands) throw RecommendationUnavailable();
    auto task = outside.recommendCommands(read.textContext.promptBlock(), application);
    const std::vector<CommandRecommendation> list = co_await task;
    for (const CommandRecommendation& recommendation : list)
        tell(outside.recordCommandUsed, recommendation, read.frontmostAppName);
    ExternalAIActionOutput output;
    output.title = QStringLiteral("命令推荐");
    output.sourceLine = read.actionSourceLine();
    output.input = read.text;
    // An empty list gives an empty text, and that goes on to the target like any other: meant so.
    output.text = ExternalActionPipeline::formatRecommendations(list);
    co_return output;
}

QCoro::Task<ExternalAIActionOutput> express(std::shared_ptr<const Run> run) {
    auto task = run->outside->runExpression(expressionRequest(*run));
    ExpressionResult result = co_await task;
    ExternalAIActionOutput output;
    output.title = successTitle(run->action);
    output.sourceLine = run->read().actionSourceLine();
    output.input = result.sourceText;
    output.text = Text::trimmed(result.outputText);
    if (output.text.isEmpty()) throw ExternalAIActionError(ExternalAIActionError::Kind::emptyOutput);
    output.expressionResult = std::move(result);
    co_return output;
}

QCoro::Task<ExternalAIActionOutput> execute(const std::shared_ptr<const Run>& run) {
    tell(run->outside->startThinking, run->channel());
    run->outside->showState(run->state(), run->session.anchor);
    return run->action.isCommandRecommend() ? recommend(run) : express(run);
}

void finish(const Run& run, const WritebackTargetSnapshot& snapshot, const ExternalAIActionOutput& output) {
    const Dependencies& outside = *run.outside;
    const qsizetype inputLength = Characters::count(run.read().text);
    const qsizetype outputLength = Characters::count(output.text);
    MVPLog::write("ActionPipeline completed:", "id:", run.id, "action:", run.name,
                  "inputLength:", inputLength, "outputLength:", outputLength);
    MVPLog::write("AI action completed:", "action:", run.name, "inputLength:", inputLength,
                  "outputLength:", outputLength);
    const auto remember = [&](bool succeeded) {
        if (output.expressionResult) tell(outside.recordMemoryEvent, *output.expressionResult, succeeded);
    };

    if (outside.shouldCopyInstead(snapshot)) {
        MVPLog::write("AI action target changed before writeback; copying result instead:", "id:", run.id,
                      "action:", run.name, "target:", snapshot.debugDescription());
        outside.showCopiedResult(output.text, run.action);
        // The user has the result, so the behaviour counts as a success; the memory says how it arrived.
        tell(outside.recordSuccess, run.action, run.read());
        remember(false);
    } else {
        const bool force = outside.forceReplaceAll(run.action, run.read());
        const ExternalTextWritebackResult result = outside.writeback(output.text, run.read(), force);
        MVPLog::write("ActionPipeline writeback:", "id:", run.id, "action:", run.name,
                      "forceReplaceAll:", force, "success:", result.success,
                      "strategy:", rawValue(result.strategy), "message:", result.message);
        MVPLog::write("AI action direct writeback:", "action:", run.name, "success:", result.success,
                      "strategy:", rawValue(result.strategy), "message:", result.message);
        if (result.success) {
            tell(outside.recordSuccess, run.action, run.read());
            remember(true);
            outside.dismissOverlay();
        } else {
            outside.dismissOverlay();
            MVPLog::write("AI action writeback failed; copying result instead:", "id:", run.id,
                          "action:", run.name,
                          "reason:", result.failure ? rawValue(*result.failure) : QStringLiteral("unknown"));
            outside.showCopiedResult(output.text, run.action);
            remember(false);
        }
    }
    // Also a result that was only copied sounds as completed.
    tell(outside.playCompletion, run.channel());
}

/// Logs the failure and makes its card.
ExternalActionFeedback failureCard(const Run& run, const std::exception_ptr& failure) {
    const QString title = run.action.failureTitle();
    try {
        std::rethrow_exception(failure);
    } catch (const TransformEngineError& error) {
        const bool rejected = error.kind() == TransformEngineError::Kind::contractRejected;
        const QString violation = rawValue(error.violation());
        MVPLog::write(
            rejected ? "AI action output contract rejected:" : "AI action output contract repair requested:",
            "action:", run.name, "reason:", violation);
        MVPLog::write("ActionPipeline failed:", "id:", run.id, "action:", run.name,
                      rejected ? "contractRejected:" : "contractNeedsRepair:", violation);
        return ExternalActionFeedback::message(error, title);
    } catch (const ExternalAIActionError& error) {
        const bool output = error.kind() == ExternalAIActionError::Kind::emptyOutput;
        MVPLog::write(output ? "AI action failed: empty output" : "AI action failed: empty input",
                      "action:", run.name);
        MVPLog::write(output ? "ActionPipeline failed: empty output" : "ActionPipeline failed: empty input",
                      "id:", run.id, "action:", run.name);
        return output ? emptyOutputCard(title, run.read().text) : emptyInputCard();
    } catch (const std::exception& error) {
        MVPLog::write("AI action failed:", "action:", run.name, describe(error));
        MVPLog::write("ActionPipeline failed:", "id:", run.id, "action:", run.name, describe(error));
        return ExternalActionFeedback::message(error, title);
    } catch (...) {
        MVPLog::write("AI action failed:", "action:", run.name, "unknown");
        MVPLog::write("ActionPipeline failed:", "id:", run.id, "action:", run.name, "unknown");
        return ExternalActionFeedback::message(UnknownFailure(), title);
    }
}

void skip(const Run& run, const QString& why, const ExternalActionFeedback& card) {
    MVPLog::write("AI action skipped: " + why, "action:", run.name);
    MVPLog::write("ActionPipeline skipped: " + why, "id:", run.id, "action:", run.name);
    run.outside->showFeedback(card, run.session.anchor);
}

QCoro::Task<void> perform(std::shared_ptr<const Run> run) {
    const ExternalTextReadResult& read = run->read();
    const WritebackTargetSnapshot snapshot(read, run->outside->focusedWindowTitle(read.processIdentifier));
    MVPLog::write("ActionPipeline started:", "id:", run->id, "action:", run->name,
                  "source:", rawValue(read.source), "length:", Characters::count(read.text));
    if (!read.hasText()) {
        skip(*run, QStringLiteral("no readable external text"), unreadableCard());
        co_return;
    }
    if (!read.element && !read.requiresClipboardWriteback) {
        skip(*run, QStringLiteral("no writable target"), unwritableCard(read.text));
        co_return;
    }

    std::optional<ExternalAIActionOutput> output;
    std::exception_ptr failure;
    try {
        auto task = execute(run);
        output = co_await task;
    } catch (...) {
        failure = std::current_exception();
    }
    if (output) {
        finish(*run, snapshot, *output);
        co_return;
    }
    const ExternalActionFeedback feedback = failureCard(*run, failure);
    run->outside->dismissOverlay();
    run->outside->showFeedback(feedback, run->session.anchor);
    tell(run->outside->playCancel, run->channel());
}

}  // namespace

ExternalActionPipeline::ExternalActionPipeline(Dependencies dependencies)
    : dependencies_(std::make_shared<const Dependencies>(std::move(dependencies))) {
}

QCoro::Task<void> ExternalActionPipeline::run(ExternalGestureAIAction action,
                                              ExternalTextSession session) const {
    QString name = action.logName();
    return perform(std::make_shared<const Run>(Run{dependencies_, std::move(action), std::move(session),
                                                   QUuid::createUuid().toString(QUuid::WithoutBraces).left(8),
                                                   std::move(name)}));
}

QString ExternalActionPipeline::formatRecommendations(
    const std::vector<CommandRecommendation>& recommendations) {
    QStringList lines;
    for (const CommandRecommendation& each : recommendations) {
        QString mark = QStringLiteral("·");
        if (each.confidence == u"high") mark = QStringLiteral("★");
        if (each.confidence == u"medium") mark = QStringLiteral("☆");
        lines << mark + u' ' + each.command + QStringLiteral(" — ") + each.explanation;
    }
    return lines.join(u'\n');
}

}  // namespace veltrin
