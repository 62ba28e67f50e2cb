#pragma once

#include "AI/AgentProfile.h"

#include <QString>

#include <vector>

namespace veltrin {

/// What came of applying a scene, in the scene's order.
struct SceneApplyResult {
    struct Assignment {
        QString shortcut;  ///< key of the shortcut
        int slot = 0;      ///< from 0
        AgentProfile agent;
    };

    std::vector<AgentProfile> created;
    std::vector<AgentProfile> reused;
    std::vector<Assignment> assignments;

    /// The words that tell the user.
    QString summary() const;
};

}  // namespace veltrin
