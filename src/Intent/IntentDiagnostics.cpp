#include "Intent/IntentDiagnostics.h"

#include "Foundation/Characters.h"

#include <QStringList>

namespace veltrin::IntentDiagnostics {
namespace {

QString flag(bool value) {
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

}  // namespace

QString summary(const ContextDocument& context, const ActionSpec& actionSpec,
                const std::optional<AgentSpec>& agentSpec, const QString& source) {
    QStringList tokens{
        QStringLiteral("IntentCompiler"),
        QStringLiteral("source=") + source,
        QStringLiteral("operation=") + rawValue(actionSpec.operation),
        QStringLiteral("strategy=") + rawValue(actionSpec.strategy),
        QStringLiteral("input=") + rawValue(actionSpec.inputKind),
        QStringLiteral("domain=") + rawValue(actionSpec.domain),
        QStringLiteral("contract=") + rawValue(actionSpec.outputContract),
        QStringLiteral("length=") + QString::number(Characters::count(context.text)),
    };
    if (actionSpec.targetLanguage) tokens << QStringLiteral("target=") + *actionSpec.targetLanguage;
    if (agentSpec) {
        tokens << QStringLiteral("agent=") + agentSpec->name
               << QStringLiteral("agentKind=") + rawValue(agentSpec->kind)
               << QStringLiteral("agentEffect=") + rawValue(agentSpec->effect)
               << QStringLiteral("agentPolicy=") + rawValue(agentSpec->invocationPolicy);
    } else {
        tokens << QStringLiteral("agent=none");
    }
    tokens << QStringLiteral("preserveSubject=") + flag(actionSpec.preservation.preserveSubject)
           << QStringLiteral("allowNewFacts=") + flag(actionSpec.preservation.allowNewFacts)
           << QStringLiteral("allowSubjectInvention=") + flag(actionSpec.preservation.allowSubjectInvention);
    return tokens.join(u' ');
}

QString contract(const OutputContractDecision& decision, qsizetype outputLength, const QString& stage) {
    QString line = QStringLiteral("OutputContract stage=") + stage;
    switch (decision.kind) {
        case OutputContractDecision::Kind::accept:
            line += QStringLiteral(" decision=accept");
            break;
        case OutputContractDecision::Kind::repair:
            line += QStringLiteral(" decision=repair reason=") + rawValue(decision.violation);
            break;
        case OutputContractDecision::Kind::reject:
            line += QStringLiteral(" decision=reject reason=") + rawValue(decision.violation);
            break;
    }
    return line + QStringLiteral(" outputLength=") + QString::number(outputLength);
}

}  // namespace veltrin::IntentDiagnostics
