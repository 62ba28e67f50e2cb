#pragma once

#include "Foundation/Date.h"
#include "Foundation/Records.h"

#include <QString>
#include <QStringList>
#include <QUuid>

#include <cstdint>
#include <optional>

namespace veltrin {

/// A persona that the user attaches to shortcuts. In files its dates are numbers of seconds since 2001-01-01.
struct AgentProfile {
    QUuid id;
    QString name;
    QString systemPrompt;
    QString icon;      ///< a symbol's name
    QString colorHex;  ///< a hash sign and six hexadecimal digits
    QString description;
    bool isBuiltin = false;
    bool isActive = false;  ///< takes part when a shortcut has no agent of its own
    QStringList skills;
    QStringList memories;
    QString outputStyle;
    std::optional<double> temperature;
    std::optional<double> topP;
    std::optional<std::int64_t> maxTokens;
    QString category = QStringLiteral("general");
    QStringList tags;
    Date createdAt;
    Date updatedAt;
    std::int64_t version = 1;

    /// An agent with an identifier of its own and nothing in it.
    static AgentProfile made(Date now);

    /// The line of the model parameters on an agent's card.
    QString modelSummary() const;

    friend bool operator==(const AgentProfile& a, const AgentProfile& b) = default;
};

// Older files lack the later fields; those that were there from the beginning must be there.
template <>
inline constexpr auto recordFields<AgentProfile> = std::tuple{
    required(u"id", &AgentProfile::id),
    required(u"name", &AgentProfile::name),
    required(u"systemPrompt", &AgentProfile::systemPrompt),
    required(u"icon", &AgentProfile::icon),
    required(u"colorHex", &AgentProfile::colorHex),
    required(u"description", &AgentProfile::description),
    required(u"isBuiltin", &AgentProfile::isBuiltin),
    required(u"isActive", &AgentProfile::isActive),
    defaulted(u"skills", &AgentProfile::skills),
    defaulted(u"memories", &AgentProfile::memories),
    defaulted(u"outputStyle", &AgentProfile::outputStyle),
    optional(u"temperature", &AgentProfile::temperature),
    optional(u"topP", &AgentProfile::topP),
    optional(u"maxTokens", &AgentProfile::maxTokens),
    defaulted(u"category", &AgentProfile::category),
    defaulted(u"tags", &AgentProfile::tags),
    defaultedToNow(u"createdAt", &AgentProfile::createdAt),
    defaultedToNow(u"updatedAt", &AgentProfile::updatedAt),
    defaulted(u"version", &AgentProfile::version),
};

}  // namespace veltrin
