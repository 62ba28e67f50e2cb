#pragma once

#include "Agents/AgentSpecCompiler.h"
#include "Foundation/Error.h"
#include "Intent/IntentTaxonomy.h"

#include <optional>

namespace veltrin {

enum class ExpressionTrigger {
    optimize,
    translate,
    shortcut,
    smartSelectReply,
    smartSelectOrganize,
    drag,
    voice,
    inApp,
};
template <>
inline constexpr auto rawValuesOf<ExpressionTrigger> =
    std::to_array<const char*>({"optimize", "translate", "shortcut", "smartSelectReply",
                                "smartSelectOrganize", "drag", "voice", "inApp"});

/// What the user's bound agent contributes.
struct ExpressionMode {
    QString name;
    std::optional<AgentSpec> agentSpec;
    std::optional<int> slot;  ///< counted from one
};

struct ExpressionRequest {
    ExpressionTrigger trigger = ExpressionTrigger::optimize;
    ContextDocument context;
    std::optional<ExpressionMode> mode;
    std::optional<OptimizeCompileMode> optimizeMode;
    std::optional<SmartSelectCompileMode> smartSelectMode;
    std::optional<QString> targetLanguage;  ///< a language code
    std::optional<ActionSpec> actionSpec;   ///< a ready spec; voice and drag bring theirs
    bool requiresTransform = true;          ///< false: the text passes through without a model
};

/// `clarify` and `suggest` are kept for clarifying questions; no rule produces them.
enum class ExpressionDecision { proceed, clarify, suggest, passThrough, needsInput };

struct ExpressionPlan {
    ExpressionTrigger trigger = ExpressionTrigger::optimize;
    ContextDocument context;
    ActionSpec actionSpec;
    std::optional<ExpressionMode> mode;
    ExpressionDecision decision = ExpressionDecision::proceed;
};

struct ExpressionResult {
    ExpressionPlan plan;
    QString sourceText;
    QString outputText;
};

class ExpressionIntentEngineError : public Error {
public:
    static ExpressionIntentEngineError unsupportedRequest(ExpressionTrigger trigger) {
        return ExpressionIntentEngineError(trigger);
    }
    static ExpressionIntentEngineError emptyInput() { return ExpressionIntentEngineError(std::nullopt); }

    bool isEmptyInput() const { return !unsupported_; }
    QString errorDescription() const override;

private:
    explicit ExpressionIntentEngineError(std::optional<ExpressionTrigger> unsupported)
        : unsupported_(unsupported) {}
    std::optional<ExpressionTrigger> unsupported_;
};

struct ExpressionMemoryEvent;

/// Decides which ActionSpec a request stands for. Pure: no model, no store.
namespace ExpressionIntentEngine {
/// Throws ExpressionIntentEngineError.
ExpressionPlan plan(const ExpressionRequest& request);
/// `wallNow` is the event's moment, in seconds since 1970.
ExpressionMemoryEvent memoryEvent(const ExpressionResult& result, std::optional<bool> writebackSucceeded,
                                  double wallNow);
}  // namespace ExpressionIntentEngine

namespace ClarificationPolicy {
ExpressionDecision decision(const ExpressionRequest& request, const ActionSpec& actionSpec);
}  // namespace ClarificationPolicy

}  // namespace veltrin
