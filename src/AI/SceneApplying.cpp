#include "AI/AgentTeamManager.h"
#include "AI/SceneLibrary.h"

namespace veltrin {
namespace {

AgentProfile agentOf(const SceneAgentDef& definition, const SceneConfig& scene, Date now) {
    AgentProfile agent = AgentProfile::made(now);
    agent.name = definition.name;
    agent.systemPrompt = definition.systemPrompt;
    agent.icon = definition.icon;
    agent.colorHex = definition.colorHex;
    agent.description = definition.description;
    agent.skills = definition.skills;
    agent.outputStyle = definition.outputStyle;
    agent.category = scene.name;
    agent.tags = {scene.name, QStringLiteral("场景")};
    return agent;
}

}  // namespace

QString SceneApplyResult::summary() const {
    return QStringLiteral("场景已配置：") + QString::number(created.size()) + QStringLiteral(" 个新建，") +
           QString::number(reused.size()) + QStringLiteral(" 个复用");
}

SceneApplyResult AgentTeamManager::applyScene(const SceneConfig& scene) {
    SceneApplyResult result;
    for (const SceneAgentDef& definition : scene.agents) {
        std::optional<AgentProfile> agent;
        if (const AgentProfile* known = agentNamed(definition.name)) {
            // It may be another scene's, or changed by the user: it stays as it is.
            agent = *known;
            result.reused.push_back(*agent);
        } else {
            agent = agentOf(definition, scene, now());
            insertFirst(*agent);
            persist();
            result.created.push_back(*agent);
        }
        assignAgent(agent->id, definition.shortcut, definition.slot);
        result.assignments.push_back({definition.shortcut, definition.slot, *agent});
    }
    return result;
}

}  // namespace veltrin
