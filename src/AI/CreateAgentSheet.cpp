#include "AI/CreateAgentSheet.h"

#include "AI/AgentGeneration.h"

namespace veltrin {

CreateAgentSheet::CreateAgentSheet(const std::optional<AgentPreset>& prefillPreset)
    : icon(AgentGeneration::defaultIcon),
      colorHex(AgentGeneration::defaultColorHex),
      category(QStringLiteral("general")) {
    if (!prefillPreset) return;
    name = prefillPreset->name;
    description = prefillPreset->description;
    icon = prefillPreset->icon;
    colorHex = prefillPreset->colorHex;
    systemPrompt = prefillPreset->systemPrompt;
    category = rawValue(prefillPreset->category);
    skills = prefillPreset->suggestedSkills;
    outputStyle = prefillPreset->suggestedOutputStyle;
}

AgentProfile CreateAgentSheet::createAgent(Date now) const {
    AgentProfile agent = AgentProfile::made(now);
    agent.name = name;
    agent.description = description;
    agent.icon = icon;
    agent.colorHex = colorHex;
    agent.systemPrompt = systemPrompt;
    agent.category = category;
    agent.skills = skills;
    agent.outputStyle = outputStyle;
    return agent;
}

}  // namespace veltrin
