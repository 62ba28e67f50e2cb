#pragma once

#include "AI/AgentPreset.h"
#include "AI/AgentProfile.h"
#include "AI/OllamaClient.h"
#include "AI/SceneApplyResult.h"
#include "AI/ShortcutAssignments.h"
#include "Data/JSONStore.h"
#include "Foundation/Observers.h"

#include <QCoro/QCoroTask>

#include <optional>
#include <vector>

namespace veltrin {

class Preferences;
class RunLoop;
struct SceneConfig;

/// The user's agents and which of them serves which slot of which shortcut. After every read of a slot, each
/// slot holds a living agent as long as there is one. Every change is written at once; a file or preference
/// that cannot be read or written is passed over in silence. Main thread.
///
/// The agents are the file "agents.json"; the slots are the preference "shortcut_agent_assignments", whose
/// data is the JSON object {"optimize":["UUID","UUID",…],…}.
class AgentTeamManager {
public:
    /// Reads "agents.json" in `directory`. The builtin agents are written there when it holds none, also when
    /// it could not be read.
    AgentTeamManager(const QString& directory, Preferences& preferences, RunLoop& runLoop);
    AgentTeamManager(const AgentTeamManager&) = delete;
    AgentTeamManager& operator=(const AgentTeamManager&) = delete;

    const std::vector<AgentProfile>& agents() const { return agents_; }
    /// The agent of that identifier; null when there is none. Valid until the list changes.
    const AgentProfile* agent(const QUuid& id) const;
    /// The first agent of exactly that name; null when there is none. Valid until the list changes.
    const AgentProfile* agentNamed(const QString& name) const;

    // In the order of the list.
    std::vector<AgentProfile> activeAgents() const;
    std::vector<AgentProfile> builtinAgents() const;
    std::optional<AgentProfile> primaryAgent() const;

    /// As many entries as the shortcut has slots.
    std::vector<std::optional<AgentProfile>> assignedAgentSlots(const QString& key);
    /// None for a slot that the shortcut does not have.
    std::optional<AgentProfile> assignedAgent(const QString& key, int slot);
    /// The agents of the table as it stands, with repeats, without those that do not exist.
    std::vector<AgentProfile> assignedAgents(const QString& key) const;
    /// Puts an agent into a slot; nothing happens for a slot that the shortcut does not have.
    void assignAgent(const QUuid& id, const QString& key, int slot);
    /// Gives an agent to every slot that lacks a living one.
    void ensureDefaultShortcutAssignments();
    const ShortcutAssignments& shortcutAssignments() const { return assignments_; }

    /// What a prompt of a shortcut says of its agents: of the one in `slot`, or, without one there, of all
    /// that serve the shortcut, or else of the active ones. Empty without agents.
    QString runtimeContractPromptFor(const QString& key, std::optional<int> slot);

    // An unknown identifier does nothing.
    void activate(const QUuid& id);
    void toggle(const QUuid& id);
    /// Stores a changed agent under its identifier and raises its version.
    void update(const AgentProfile& agent);
    /// Removes an agent, a builtin one too, and takes it out of every slot; later slots move up.
    void remove(const QUuid& id);
    void duplicate(const AgentProfile& agent);

    // Lists change in memory first: whoever adds agents calls `persist`.
    void append(AgentProfile agent);
    void insertFirst(AgentProfile agent);
    void persist();

    /// The bytes of the agent's card; none when it holds what no file can.
    std::optional<QByteArray> exportAgentCard(const AgentProfile& agent) const;
    /// Puts the card's agent at the head of the list. The agent that is returned has another identifier than
    /// the one in the list: use its name only. None for bytes that are no card.
    std::optional<AgentProfile> importAgentCard(const QByteArray& utf8);

    /// Makes the agents of a scene that are not there by name, at the head of the list, and puts each agent
    /// of the scene into its slot; other slots keep theirs.
    SceneApplyResult applyScene(const SceneConfig& scene);

    /// An agent made by the model, in no list yet. Throws what the client throws.
    QCoro::Task<AgentProfile> generateAgent(const OllamaClient& client, const QString& description) const;
    /// A copy with a better prompt, in no list yet. Throws what the client throws.
    QCoro::Task<AgentProfile> optimizeAgent(const OllamaClient& client, const AgentProfile& agent) const;

    static const std::vector<AgentPreset>& presets() { return AgentContents::presets(); }

    /// After every change of the agents or of the slots.
    Observers<> changed;

private:
    void seedBuiltins();
    void loadAssignments();
    void persistAssignments();
    const AgentProfile* agentOfText(const QString& idText) const;
    const AgentProfile* fallbackAgent() const;
    AgentProfile* found(const QUuid& id);
    template <typename Change>
    void setActive(const QUuid& id, Change change);
    AgentProfile asNew(const AgentProfile& agent) const;
    Date now() const;

    Preferences& preferences_;
    RunLoop& runLoop_;
    JSONStore<AgentProfile> file_;
    std::vector<AgentProfile> agents_;
    ShortcutAssignments assignments_;
};

}  // namespace veltrin
