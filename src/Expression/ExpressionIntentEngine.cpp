#include "Expression/ExpressionIntentEngine.h"

#include "Expression/ExpressionMemoryStore.h"
#include "Foundation/Characters.h"
#include "Foundation/Text.h"
#include "Intent/IntentCompiler.h"

namespace veltrin {
namespace {

constexpr qsizetype sourcePreviewCharacters = 80;
constexpr qsizetype outputPreviewCharacters = 120;
constexpr qsizetype highValueCharacters = 80;

ActionSpec translateSpec(const ExpressionRequest& request) {
    ActionSpec spec;
    spec.operation = ActionOperation::translate;
    spec.inputKind = IntentCompiler::classifyInputKind(request.context.text);
    spec.domain = IntentDomain::translation;
    spec.strategy = OptimizationStrategy::languageTransfer;
    spec.preservation.preserveStructure = true;
    spec.preservation.allowExpansion = true;
    spec.outputContract = OutputContractKind::translation;
    spec.targetLanguage = request.targetLanguage.value_or(QStringLiteral("en"));
    return spec;
}

ActionSpec shortcutSpec(const ExpressionRequest& request) {
    ActionSpec spec;
    spec.operation = ActionOperation::agentTransform;
    spec.inputKind = IntentCompiler::classifyInputKind(request.context.text);
    spec.domain = IntentCompiler::classifyDomain(request.context.text);
    spec.strategy = OptimizationStrategy::exactTransform;
    spec.preservation.preserveStructure = true;
    spec.outputContract = OutputContractKind::plainTextTransform;
    return spec;
}

ActionSpec compile(const ExpressionRequest& request) {
    if (request.actionSpec) return *request.actionSpec;
    switch (request.trigger) {
        case ExpressionTrigger::optimize:
            return IntentCompiler::compileOptimize(
                request.context, request.optimizeMode.value_or(OptimizeCompileMode::refine));
        case ExpressionTrigger::translate:
            return translateSpec(request);
        case ExpressionTrigger::shortcut:
            return shortcutSpec(request);
        case ExpressionTrigger::smartSelectReply:
            return IntentCompiler::compileSmartSelect(
                request.context, request.smartSelectMode.value_or(SmartSelectCompileMode::reply));
        case ExpressionTrigger::smartSelectOrganize:
            return IntentCompiler::compileSmartSelect(
                request.context, request.smartSelectMode.value_or(SmartSelectCompileMode::organize));
        case ExpressionTrigger::inApp:
            return IntentCompiler::compileOptimize(request.context, OptimizeCompileMode::refine);
        case ExpressionTrigger::drag:
        case ExpressionTrigger::voice:
            break;
    }
    // Drag and voice know more about their material than a text test can tell, so they bring their spec.
    throw ExpressionIntentEngineError::unsupportedRequest(request.trigger);
}

/// Whatever a spec says, past this point nothing may be invented, and an agent can only narrow the expansion.
void tighten(PreservationPolicy& policy, const std::optional<ExpressionMode>& mode) {
    policy.preserveIntent = true;
    policy.preserveSubject = true;
    policy.preserveFacts = true;
    policy.allowNewFacts = false;
    policy.allowSubjectInvention = false;
    if (mode && mode->agentSpec)
        policy.allowExpansion = policy.allowExpansion && mode->agentSpec->allowExpansion;
}

bool isHighValue(const ExpressionResult& result) {
    return Characters::count(result.outputText) >= highValueCharacters ||
           result.plan.actionSpec.domain == IntentDomain::visualDesign ||
           result.plan.trigger == ExpressionTrigger::drag;
}

}  // namespace

QString ExpressionIntentEngineError::errorDescription() const {
    if (unsupported_) return QStringLiteral("当前表达入口暂不支持：") + rawValue(*unsupported_);
    return QStringLiteral("没有可校准的表达内容。");
}

namespace ExpressionIntentEngine {

ExpressionPlan plan(const ExpressionRequest& request) {
    if (Text::isBlank(request.context.text)) throw ExpressionIntentEngineError::emptyInput();
    ExpressionPlan plan;
    plan.trigger = request.trigger;
    plan.context = request.context;
    plan.actionSpec = compile(request);
    plan.mode = request.mode;
    tighten(plan.actionSpec.preservation, request.mode);
    plan.decision = ClarificationPolicy::decision(request, plan.actionSpec);
    return plan;
}

ExpressionMemoryEvent memoryEvent(const ExpressionResult& result, std::optional<bool> writebackSucceeded,
                                  double wallNow) {
    ExpressionMemoryEvent event;
    event.trigger = rawValue(result.plan.trigger);
    if (result.plan.mode) event.modeName = result.plan.mode->name;
    event.inputKind = rawValue(result.plan.actionSpec.inputKind);
    event.domain = rawValue(result.plan.actionSpec.domain);
    event.sourcePreview = Characters::prefix(Text::singleLine(result.sourceText), sourcePreviewCharacters);
    event.outputPreview = Characters::prefix(Text::singleLine(result.outputText), outputPreviewCharacters);
    event.writebackSucceeded = writebackSucceeded;
    event.isHighValueCandidate = isHighValue(result);
    event.createdAt = wallNow;
    return event;
}

}  // namespace ExpressionIntentEngine

namespace ClarificationPolicy {

ExpressionDecision decision(const ExpressionRequest& request, const ActionSpec&) {
    if (Text::isBlank(request.context.text)) return ExpressionDecision::needsInput;
    return request.requiresTransform ? ExpressionDecision::proceed : ExpressionDecision::passThrough;
}

}  // namespace ClarificationPolicy

}  // namespace veltrin
