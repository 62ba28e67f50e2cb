#include "AI/SceneConfirmSheet.h"

#include "AI/AgentTeamManager.h"
#include "AI/SceneLibrary.h"

namespace veltrin::SceneConfirmSheet {

QString Row::target(const QString& shortcutWord) const {
    return QStringLiteral("→ ") + shortcutWord + QStringLiteral(" 槽位 ") + QString::number(slot + 1);
}

std::vector<Row> rows(const SceneConfig& scene, const AgentTeamManager& manager) {
    std::vector<Row> rows;
    rows.reserve(scene.agents.size());
    for (const SceneAgentDef& agent : scene.agents)
        rows.push_back({agent.name, manager.agentNamed(agent.name) != nullptr, agent.shortcut, agent.slot});
    return rows;
}

}  // namespace veltrin::SceneConfirmSheet
