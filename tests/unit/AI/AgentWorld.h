#pragma once

#include "AI/AgentTeamManager.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/FakeRunLoop.h"

#include <QFile>
#include <QTemporaryDir>

#include <optional>

namespace veltrin {

/// The user's agents on a folder of the test's own. Fill the folder and the preferences first; the manager is
/// made on first use, and made anew after `restart`.
struct AgentWorld {
    QTemporaryDir folder;
    FakePreferences preferences;
    FakeRunLoop runLoop;

    AgentTeamManager& manager() {
        if (!manager_) manager_.emplace(folder.path(), preferences, runLoop);
        return *manager_;
    }
    void restart() { manager_.reset(); }

    QString path() const { return folder.filePath(QStringLiteral("agents.json")); }
    QByteArray file() const {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void putFile(const QByteArray& bytes) const {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            throw std::runtime_error("the test's own folder cannot be written");
    }
    /// A list of agents as the file holds it.
    void putAgents(const std::vector<AgentProfile>& agents) const {
        putFile(writeRecords(agents, DateStrategy::referenceDate).value());
    }

    Date now() const { return Date{runLoop.wallNow()}; }
    AgentProfile named(const QString& name) const {
        AgentProfile agent = AgentProfile::made(now());
        agent.name = name;
        agent.systemPrompt = QStringLiteral("你是") + name;
        return agent;
    }
    QStringList names() {
        QStringList names;
        for (const AgentProfile& agent : manager().agents())
            names << agent.name;
        return names;
    }
    /// The names in a shortcut's slots, "-" for none.
    QStringList slotNames(const QString& key) {
        QStringList names;
        for (const auto& agent : manager().assignedAgentSlots(key))
            names << (agent ? agent->name : QStringLiteral("-"));
        return names;
    }
    QUuid idOf(const QString& name) { return manager().agentNamed(name)->id; }

    static inline const QString assignmentsKey = QStringLiteral("shortcut_agent_assignments");
    QByteArray storedAssignments() const { return preferences.data(assignmentsKey).value_or(QByteArray()); }
    int assignmentWrites() const {
        int count = 0;
        for (const auto& [key, value] : preferences.writes)
            count += key == assignmentsKey ? 1 : 0;
        return count;
    }

private:
    std::optional<AgentTeamManager> manager_;
};

}  // namespace veltrin
