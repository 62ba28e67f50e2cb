#pragma once

#include "AI/AgentPreset.h"

#include <optional>

namespace veltrin {

/// The form that makes an agent by hand, blank or filled from a preset. Plain value.
struct CreateAgentSheet {
    explicit CreateAgentSheet(const std::optional<AgentPreset>& prefillPreset = std::nullopt);

    QString name;
    QString description;
    QString icon;
    QString colorHex;
    QString systemPrompt;
    QString category;
    QStringList skills;
    QString outputStyle;

    /// The agent of the form; it is in no list yet.
    AgentProfile createAgent(Date now) const;
};

}  // namespace veltrin
