#pragma once

#include "AI/OllamaClient.h"
#include "Expression/ExpressionIntentEngine.h"

namespace veltrin {

/// Carries an expression from its request to its text: plans it and, where the plan says so, has the model do
/// it. Copies are free, and a runner may go while its run is under way.
class ExpressionRunner {
public:
    explicit ExpressionRunner(const OllamaClient& client) : client_(client) {}

    /// The output is trimmed. `source` is the label of the run in the logs; empty means "external-" and the
    /// trigger. Throws ExpressionIntentEngineError, TransformEngineError and what the client throws.
    QCoro::Task<ExpressionResult> runExpression(ExpressionRequest request, QString source = {}) const;

private:
    OllamaClient client_;
};

}  // namespace veltrin
