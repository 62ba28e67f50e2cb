#include "AI/TaskMaterial.h"

#include "AI/AgentTeamManager.h"
#include "Data/DictionaryStore.h"
#include "Data/HistoryStore.h"

namespace veltrin {

ModelTaskMaterial taskMaterial(AgentTeamManager& agents, const DictionaryStore& dictionary,
                               HistoryStore& history) {
    ModelTaskMaterial material;
    material.runtimeContractPromptFor = [&agents](const QString& shortcut, std::optional<int> slot) {
        return agents.runtimeContractPromptFor(shortcut, slot);
    };
    material.contextPrompt = [&dictionary](int limit) { return dictionary.contextPrompt(limit); };
    material.recordHistory = [&history](const QString& type, const QString& snippet, const QString& appName) {
        history.record(type, snippet, appName);
    };
    return material;
}

}  // namespace veltrin
