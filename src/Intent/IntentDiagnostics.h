#pragma once

#include "Agents/AgentSpecCompiler.h"
#include "Intent/IntentTaxonomy.h"
#include "Intent/OutputContractValidator.h"

#include <optional>

namespace veltrin {

/// The log lines of an intent and of its contract. They hold lengths and raw values, never the user's text.
namespace IntentDiagnostics {

QString summary(const ContextDocument& context, const ActionSpec& actionSpec,
                const std::optional<AgentSpec>& agentSpec, const QString& source);
/// `outputLength` in characters; `stage` is "primary" or "repair".
QString contract(const OutputContractDecision& decision, qsizetype outputLength, const QString& stage);

}  // namespace IntentDiagnostics

}  // namespace veltrin
