#include "AI/AgentProfile.h"

#include "Foundation/Text.h"

namespace veltrin {

AgentProfile AgentProfile::made(Date now) {
    AgentProfile agent;
    agent.id = QUuid::createUuid();
    agent.createdAt = now;
    agent.updatedAt = now;
    return agent;
}

QString AgentProfile::modelSummary() const {
    QStringList parts;
    if (temperature) parts << QStringLiteral("T=") + QString::number(*temperature, 'f', 1);
    if (topP) parts << QStringLiteral("TopP=") + QString::number(*topP, 'f', 1);
    if (maxTokens) parts << QStringLiteral("Max") + QString::number(*maxTokens);
    const QString style = Text::trimmed(outputStyle);
    if (!style.isEmpty()) parts << style;
    return parts.isEmpty() ? QStringLiteral("默认参数") : parts.join(QStringLiteral(" · "));
}

}  // namespace veltrin
