#include "Debug/OptimizeChoiceBubble.h"

#include "Foundation/Text.h"

namespace veltrin {
namespace {

ChoiceRow agentRow(int slot, const std::optional<AgentProfile>& agent, bool english) {
    ChoiceRow row;
    row.slot = slot;
    row.isVacant = !agent;
    if (agent) {
        row.title = Text::singleLine(agent->name);
        row.symbol = agent->icon;
        row.colorHex = agent->colorHex;
        return row;
    }
    row.title = english ? QStringLiteral("No agent set") : QStringLiteral("未设置优化 Agent");
    row.detail =
        english ? QStringLiteral("Choose one in Agent Studio") : QStringLiteral("前往 Agent Studio 配置");
    return row;
}

ChoiceRow presetRow(int slot, const MemoryActionPreset& action) {
    return {slot,
            Text::singleLine(action.title),
            Text::singleLine(action.description),
            action.icon,
            action.colorHex,
            false};
}

}  // namespace

ChoiceContent optimizeChoiceBubble(const std::vector<MemoryActionPreset>& actions,
                                   const std::vector<std::optional<AgentProfile>>& agentSlots,
                                   bool usesEnglishInterface) {
    ChoiceContent content;
    content.title = usesEnglishInterface ? QStringLiteral("Optimize Prompt") : QStringLiteral("优化提示词");
    content.presetMark = usesEnglishInterface ? QStringLiteral("Preset") : QStringLiteral("预设");
    for (const auto& agent : agentSlots) {
        const int slot = static_cast<int>(content.agents.size()) + 1;
        content.agents.push_back(agentRow(slot, agent, usesEnglishInterface));
    }
    for (const MemoryActionPreset& action : actions) {
        const int position = static_cast<int>(content.presets.size()) + 1;
        content.presets.push_back(presetRow(action.shortcutSlot.value_or(position), action));
    }
    return content;
}

}  // namespace veltrin
