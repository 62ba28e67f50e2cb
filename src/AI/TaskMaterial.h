#pragma once

#include "AI/ModelTasks.h"

namespace veltrin {

class AgentTeamManager;
class DictionaryStore;
class HistoryStore;

/// The tasks' material out of the user's stores, which outlive every task.
ModelTaskMaterial taskMaterial(AgentTeamManager& agents, const DictionaryStore& dictionary,
                               HistoryStore& history);

}  // namespace veltrin
