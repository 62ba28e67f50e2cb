#include "Engines/ExpressionRunner.h"

#include "Engines/TransformEngineRuntime.h"
#include "Foundation/Text.h"

#include <utility>

namespace veltrin {

namespace {

QCoro::Task<ExpressionResult> carryOut(OllamaClient client, ExpressionRequest request, QString source) {
    ExpressionResult result;
    result.plan = ExpressionIntentEngine::plan(request);
    result.sourceText = result.plan.context.text;
    switch (result.plan.decision) {
        case ExpressionDecision::proceed: {
            if (source.isEmpty()) source = QStringLiteral("external-") + rawValue(result.plan.trigger);
            const TransformEngine engine = TransformEngineRuntime::engine(client, source);
            std::optional<AgentSpec> agent;
            if (result.plan.mode) agent = result.plan.mode->agentSpec;
            auto transform = engine.run(result.plan.context, result.plan.actionSpec, agent);
            const QString output = co_await transform;
            result.outputText = Text::trimmed(output);
            break;
        }
        case ExpressionDecision::passThrough:
            result.outputText = Text::trimmed(result.sourceText);
            break;
        case ExpressionDecision::clarify:
        case ExpressionDecision::suggest:
        case ExpressionDecision::needsInput:
            throw ExpressionIntentEngineError::unsupportedRequest(request.trigger);
    }
    co_return result;
}

}  // namespace

QCoro::Task<ExpressionResult> ExpressionRunner::runExpression(ExpressionRequest request,
                                                              QString source) const {
    return carryOut(client_, std::move(request), std::move(source));
}

}  // namespace veltrin
