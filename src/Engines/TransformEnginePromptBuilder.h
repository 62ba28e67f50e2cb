#pragma once

#include "Agents/AgentSpecCompiler.h"
#include "Intent/IntentTaxonomy.h"
#include "Intent/OutputContractValidator.h"

#include <optional>

namespace veltrin {

/// Every fixed text of the transform prompts.
namespace TransformEnginePromptBuilder {

/// The text before and after `context.text` never enters the prompt, and neither does an agent's free
/// instruction.
QString buildPrompt(const ContextDocument& context, const ActionSpec& actionSpec,
                    const std::optional<AgentSpec>& agentSpec);
QString buildRepairPrompt(const ContextDocument& context, const ActionSpec& actionSpec,
                          OutputContractViolation violation, const QString& failedOutput);

}  // namespace TransformEnginePromptBuilder

}  // namespace veltrin
