#pragma once

#include "Agents/AgentSpecCompiler.h"
#include "Intent/IntentTaxonomy.h"

#include <QCoro/QCoroTask>

#include <functional>
#include <optional>

namespace veltrin {

/// Carries out a compiled intent: makes the prompt, asks the model once, holds the answer against its
/// contract, and at most once asks for a repair. Knows no provider: the model is a function.
struct TransformEngine {
    /// `limit` in tokens.
    using Generate = std::function<QCoro::Task<QString>(QString prompt, QString sourceText, int limit)>;

    Generate generate;
    std::function<void(const QString&)> logger;  ///< may be empty
    QString source;                              ///< a label for the logs

    /// The text to write back. Throws TransformEngineError when the answer broke its contract, and what
    /// `generate` throws. The engine itself may go while the task is under way.
    QCoro::Task<QString> run(ContextDocument context, ActionSpec actionSpec,
                             std::optional<AgentSpec> agentSpec) const;
};

}  // namespace veltrin
