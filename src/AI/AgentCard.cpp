#include "AI/AgentCard.h"

namespace veltrin {

const QString AgentCard::contentType = QStringLiteral("com.veltrin.agentcard");

std::optional<QByteArray> AgentCard::encoded(const AgentProfile& agent, Date now) {
    // The version of the format's producer, which stays as the format does.
    const AgentCard card{QStringLiteral("1.0.10"), now, agent};
    const auto json = writeRecord(card, DateStrategy::referenceDate);
    return json ? std::optional(json->prettyPrinted()) : std::nullopt;
}

std::optional<AgentCard> AgentCard::decoded(const QByteArray& utf8, Date now) {
    const auto json = Json::tryParse(utf8);
    return json ? readRecord<AgentCard>(*json, {DateStrategy::referenceDate, now}) : std::nullopt;
}

QString AgentCard::fileName(const AgentProfile& agent) {
    QString name = agent.name;
    // A slash would name a file in another folder.
    name.replace(u'/', u'-').remove(QChar(u'\0'));
    return name + QStringLiteral(".agentcard.json");
}

}  // namespace veltrin
