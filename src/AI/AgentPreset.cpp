#include "AI/AgentPreset.h"

#include "AI/AgentGeneration.h"
#include "Foundation/Resource.h"

namespace veltrin {
namespace {

using AgentGeneration::stringIn;
using AgentGeneration::stringsIn;

AgentPreset presetOf(const Json& row) {
    AgentPreset preset;
    preset.id = stringIn(row, u"id");
    preset.name = stringIn(row, u"name");
    preset.icon = stringIn(row, u"icon");
    preset.colorHex = stringIn(row, u"colorHex");
    preset.description = stringIn(row, u"description");
    preset.category = fromRawValue<AgentPresetCategory>(stringIn(row, u"category")).value_or(preset.category);
    preset.systemPrompt = stringIn(row, u"systemPrompt");
    preset.suggestedSkills = stringsIn(row, u"suggestedSkills");
    preset.suggestedOutputStyle = stringIn(row, u"suggestedOutputStyle");
    return preset;
}

std::vector<AgentPreset> loadedPresets() {
    const Json rows = Resource::json(QStringLiteral("agents/presets.json"));
    std::vector<AgentPreset> presets;
    for (const Json& row : *rows.array())
        presets.push_back(presetOf(row));
    return presets;
}

AgentProfile builtinOf(const Json& row, Date now) {
    AgentProfile agent = AgentProfile::made(now);
    agent.name = stringIn(row, u"name");
    agent.systemPrompt = stringIn(row, u"systemPrompt");
    agent.icon = stringIn(row, u"icon");
    agent.colorHex = stringIn(row, u"colorHex");
    agent.description = stringIn(row, u"description");
    agent.isBuiltin = true;
    agent.isActive = row.find(u"isActive")->toBool().value_or(false);
    agent.skills = stringsIn(row, u"skills");
    agent.outputStyle = stringIn(row, u"outputStyle");
    agent.category = stringIn(row, u"category");
    agent.tags = stringsIn(row, u"tags");
    return agent;
}

}  // namespace

QString displayName(AgentPresetCategory category) {
    static constexpr const char16_t* names[] = {u"全部", u"写作", u"代码", u"分析",
                                                u"创意", u"商业", u"学术", u"生活"};
    return QString::fromUtf16(names[static_cast<std::size_t>(category)]);
}

const std::vector<AgentPreset>& AgentContents::presets() {
    static const std::vector<AgentPreset> presets = loadedPresets();
    return presets;
}

std::vector<AgentPreset> AgentContents::presets(AgentPresetCategory category) {
    std::vector<AgentPreset> chosen;
    for (const AgentPreset& preset : presets()) {
        if (category == AgentPresetCategory::all || preset.category == category) chosen.push_back(preset);
    }
    return chosen;
}

std::vector<AgentProfile> AgentContents::builtins(Date now) {
    const Json rows = Resource::json(QStringLiteral("agents/builtins.json"));
    std::vector<AgentProfile> agents;
    for (const Json& row : *rows.array())
        agents.push_back(builtinOf(row, now));
    return agents;
}

}  // namespace veltrin
