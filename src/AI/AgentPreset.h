#pragma once

#include "AI/AgentProfile.h"
#include "Foundation/RawValues.h"

#include <QStringList>

#include <vector>

namespace veltrin {

/// What an agent is for; `all` is only a filter.
enum class AgentPresetCategory { all, writing, coding, analysis, creative, business, academic, life };
template <>
inline constexpr auto rawValuesOf<AgentPresetCategory> = std::to_array<const char*>(
    {"all", "writing", "coding", "analysis", "creative", "business", "academic", "life"});
/// The word that is shown.
QString displayName(AgentPresetCategory category);

/// A ready-made agent that the user can start from.
struct AgentPreset {
    QString id;
    QString name;
    QString icon;
    QString colorHex;
    QString description;
    AgentPresetCategory category = AgentPresetCategory::all;
    QString systemPrompt;
    QStringList suggestedSkills;
    QString suggestedOutputStyle;
};

namespace AgentContents {

/// The presets that come with the program, in the order in which they are shown.
const std::vector<AgentPreset>& presets();
/// Those of one category; every one for `all`.
std::vector<AgentPreset> presets(AgentPresetCategory category);

/// The agents that a user without any gets, each with an identifier of its own.
std::vector<AgentProfile> builtins(Date now);

}  // namespace AgentContents

}  // namespace veltrin
