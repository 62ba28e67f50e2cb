#pragma once

#include "AI/AgentProfile.h"

#include <optional>

namespace veltrin {

/// An agent as a file that users hand to each other. Its dates are numbers of seconds since 2001-01-01,
/// inside the agent too.
struct AgentCard {
    QString veltrinVersion;
    Date exportedAt;
    AgentProfile agent;

    friend bool operator==(const AgentCard& a, const AgentCard& b) = default;

    /// The content type of a card file.
    static const QString contentType;

    /// The bytes of a card of `agent`; none when it holds what no file can.
    static std::optional<QByteArray> encoded(const AgentProfile& agent, Date now);
    /// None for bytes that are no card.
    static std::optional<AgentCard> decoded(const QByteArray& utf8, Date now);
    /// The name that is proposed for the file: the agent's, as far as a file can be named so.
    static QString fileName(const AgentProfile& agent);
};

template <>
inline constexpr auto recordFields<AgentCard> = std::tuple{
    required(u"veltrinVersion", &AgentCard::veltrinVersion),
    required(u"exportedAt", &AgentCard::exportedAt),
    required(u"agent", &AgentCard::agent),
};

}  // namespace veltrin
