#pragma once

#include "Intent/IntentTaxonomy.h"

#include <vector>

namespace veltrin {

enum class AgentEffect { none, addEmoji, makeConcise, rewriteTone, formatOutput, translate, custom };
template <>
inline constexpr auto rawValuesOf<AgentEffect> = std::to_array<const char*>(
    {"none", "addEmoji", "makeConcise", "rewriteTone", "formatOutput", "translate", "custom"});

enum class AgentSpecKind { transform, style, knowledge, workflow, persona };
template <>
inline constexpr auto rawValuesOf<AgentSpecKind> =
    std::to_array<const char*>({"transform", "style", "knowledge", "workflow", "persona"});

enum class AgentInvocationPolicy { executeEffectOnly, useAsKnowledge, useAsWorkflow, useAsPersona };
template <>
inline constexpr auto rawValuesOf<AgentInvocationPolicy> =
    std::to_array<const char*>({"executeEffectOnly", "useAsKnowledge", "useAsWorkflow", "useAsPersona"});

enum class AgentStrength { light, medium, strong };
template <>
inline constexpr auto rawValuesOf<AgentStrength> = std::to_array<const char*>({"light", "medium", "strong"});

/// A shortcut action's free text, compiled into what the transform prompt may say of it.
struct AgentSpec {
    QString name;
    AgentSpecKind kind = AgentSpecKind::persona;
    AgentEffect effect = AgentEffect::none;
    std::vector<IntentDomain> domains;
    std::vector<ActionOperation> operations;
    AgentInvocationPolicy invocationPolicy = AgentInvocationPolicy::useAsPersona;
    AgentStrength strength = AgentStrength::light;
    bool allowExpansion = true;
    // The hard boundary: no agent can change these, so the compiler never sets them.
    bool canChangeAction = false;
    bool canChangeReplacementScope = false;
    bool canChangeWriteback = false;
    QString instruction;
};

namespace AgentSpecCompiler {
AgentSpec compile(const QString& title, const QString& description, const QString& instruction);
}  // namespace AgentSpecCompiler

}  // namespace veltrin
