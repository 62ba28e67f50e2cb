#pragma once

#include "AI/AgentProfile.h"
#include "AI/OllamaClient.h"
#include "Foundation/Lifetime.h"
#include "Foundation/Observers.h"

#include <optional>

namespace veltrin {

class AgentTeamManager;
struct SceneConfig;

/// A short message over the page; the icon is a symbol's name, or empty.
struct StudioToast {
    QString text;
    QString icon;

    friend bool operator==(const StudioToast& a, const StudioToast& b) = default;
};

/// What the agent page does with agents: takes new ones in, has the model make and improve them, and
/// exchanges them as card files. Says how each ended by a toast. Main thread.
class AgentStudio {
public:
    AgentStudio(AgentTeamManager& manager, OllamaClient client) : manager_(manager), client_(client) {}

    /// Takes in an agent that one of the sheets has made.
    void create(const AgentProfile& agent);

    /// Has the model make an agent of one sentence. Nothing happens when that is blank or one is being made.
    void generateForReplace(const QString& description);
    bool isGenerating() const { return isGenerating_; }
    /// The agent made last, until it is taken or another one is asked for.
    const std::optional<AgentProfile>& generatedAgent() const { return generatedAgent_; }
    /// Takes that agent in and gives it a slot; `slotWord` is the slot's name as it is shown.
    void replace(const QString& key, int slot, const QString& slotWord);

    /// Has the model improve an agent's prompt. What the user changes meanwhile stays.
    void optimize(const QUuid& id);
    /// Whether an agent is being improved.
    bool isOptimizing() const { return isOptimizing_; }

    /// Puts a scene's agents into the list and the slots, once the user has confirmed it.
    void applyScene(const SceneConfig& scene);

    /// Takes in the agent of a card file.
    void handleImport(const QString& path);
    /// Writes an agent's card to the path that the user chose.
    void exportAgent(const AgentProfile& agent, const QString& path);

    Observers<StudioToast> toasts;
    Observers<> changed;

private:
    // Coroutines that look whether the studio is still there after the model has answered.
    static QCoro::Task<void> generating(AgentStudio* studio, QString description);
    static QCoro::Task<void> optimizing(AgentStudio* studio, AgentProfile agent);

    void add(const AgentProfile& agent);
    void takeImprovement(const AgentProfile& before, const AgentProfile& improved);
    void show(const QString& text, const QString& icon = {});

    AgentTeamManager& manager_;
    OllamaClient client_;
    std::optional<AgentProfile> generatedAgent_;
    bool isGenerating_ = false;
    bool isOptimizing_ = false;
    Lifetime lifetime_;
};

}  // namespace veltrin
