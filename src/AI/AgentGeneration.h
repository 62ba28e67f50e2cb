#pragma once

#include "AI/AgentProfile.h"
#include "AI/OllamaClient.h"

#include <QCoro/QCoroTask>

namespace veltrin {

class RunLoop;

/// The model calls that make an agent of a sentence and improve one. The results are in no list yet. Throw
/// what the client throws; the run loop must outlive the call.
namespace AgentGeneration {

inline const QString defaultIcon = QStringLiteral("sparkles");
inline const QString defaultColorHex = QStringLiteral("#FFD98A");

QString generationPrompt(const QString& description);
/// The agent of a model's answer; an answer without a JSON object becomes the prompt as it is.
AgentProfile generated(const QString& answer, const QString& description, Date now);
QCoro::Task<AgentProfile> generate(OllamaClient client, RunLoop* runLoop, QString description);

QString optimizationPrompt(const AgentProfile& agent);
/// A copy with the prompt of the answer; unchanged when the answer holds none.
AgentProfile optimized(const AgentProfile& agent, const QString& answer, Date now);
QCoro::Task<AgentProfile> optimize(OllamaClient client, RunLoop* runLoop, AgentProfile agent);

/// The members of a model's JSON object that are of their type; `fallback` for the others.
QString stringIn(const Json& object, QStringView key, const QString& fallback = {});
/// Empty unless every element is a string.
QStringList stringsIn(const Json& object, QStringView key);

}  // namespace AgentGeneration

}  // namespace veltrin
