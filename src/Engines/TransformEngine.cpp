#include "Engines/TransformEngine.h"

#include "AI/GenerationTokenBudget.h"
#include "Engines/TransformEngineError.h"
#include "Engines/TransformEnginePromptBuilder.h"
#include "Foundation/Characters.h"
#include "Foundation/Text.h"
#include "Intent/IntentDiagnostics.h"
#include "Intent/OutputContractValidator.h"

#include <utility>

namespace veltrin {
namespace {

int outputLimit(const ContextDocument& context, const ActionSpec& actionSpec) {
    constexpr int cushion = 512;
    constexpr int maximum = 16000;
    const qsizetype characters = Characters::count(context.text);
    if (actionSpec.operation == ActionOperation::structureOrganization)
        return GenerationTokenBudget::replacementOutputLimit(characters, 1400, 5.0, cushion, maximum);
    return GenerationTokenBudget::replacementOutputLimit(characters, 1024, 4.0, cushion, maximum);
}

OutputContractDecision judge(const TransformEngine& engine, const QString& output,
                             const ContextDocument& context, const ActionSpec& actionSpec,
                             const QString& stage) {
    const auto decision = OutputContractValidator::validate(output, context.text, actionSpec);
    if (engine.logger) engine.logger(IntentDiagnostics::contract(decision, Characters::count(output), stage));
    if (decision.kind == OutputContractDecision::Kind::reject)
        throw TransformEngineError(TransformEngineError::Kind::contractRejected, decision.violation);
    return decision;
}

/// Holds its own copy of the engine, so that a caller need not keep one.
QCoro::Task<QString> runTransform(TransformEngine engine, ContextDocument context, ActionSpec actionSpec,
                                  std::optional<AgentSpec> agentSpec) {
    if (engine.logger)
        engine.logger(IntentDiagnostics::summary(context, actionSpec, agentSpec, engine.source));
    const int limit = outputLimit(context, actionSpec);
    auto primary = engine.generate(TransformEnginePromptBuilder::buildPrompt(context, actionSpec, agentSpec),
                                   context.text, limit);
    const QString output = co_await primary;
    const auto decision = judge(engine, output, context, actionSpec, QStringLiteral("primary"));
    // An accepted answer goes back untrimmed, a repaired one trimmed: meant so.
    if (decision.kind == OutputContractDecision::Kind::accept) co_return output;

    auto repair = engine.generate(
        TransformEnginePromptBuilder::buildRepairPrompt(context, actionSpec, decision.violation, output),
        context.text, limit);
    const QString answer = co_await repair;
    const QString repaired = Text::trimmed(answer);
    const auto second = judge(engine, repaired, context, actionSpec, QStringLiteral("repair"));
    if (second.kind == OutputContractDecision::Kind::repair)
        throw TransformEngineError(TransformEngineError::Kind::contractNeedsRepair, second.violation);
    co_return repaired;
}

}  // namespace

QCoro::Task<QString> TransformEngine::run(ContextDocument context, ActionSpec actionSpec,
                                          std::optional<AgentSpec> agentSpec) const {
    return runTransform(*this, std::move(context), std::move(actionSpec), std::move(agentSpec));
}

}  // namespace veltrin
