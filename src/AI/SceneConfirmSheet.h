#pragma once

#include <QString>

#include <vector>

namespace veltrin {

class AgentTeamManager;
struct SceneConfig;

/// What a scene is about to do, shown before the user confirms it.
namespace SceneConfirmSheet {

struct Row {
    QString name;
    bool isReused = false;  ///< an agent of that name exists and stays as it is
    QString shortcut;       ///< key of the shortcut
    int slot = 0;           ///< from 0

    /// Where the agent goes; `shortcutWord` is the shortcut's name as it is shown.
    QString target(const QString& shortcutWord) const;
};

/// One row an agent, in the scene's order.
std::vector<Row> rows(const SceneConfig& scene, const AgentTeamManager& manager);

}  // namespace SceneConfirmSheet

}  // namespace veltrin
