#pragma once

#include "AI/AgentProfile.h"
#include "Data/MemoryActionPreset.h"
#include "Platform/FloatingPanels.h"

#include <optional>
#include <vector>

namespace veltrin {

/// What the optimise choice shows: a row for each agent slot, numbered from 1, then the actions as presets
/// under their own slots. A row's number is that of the key that chooses the same.
ChoiceContent optimizeChoiceBubble(const std::vector<MemoryActionPreset>& actions,
                                   const std::vector<std::optional<AgentProfile>>& agentSlots,
                                   bool usesEnglishInterface);

}  // namespace veltrin
