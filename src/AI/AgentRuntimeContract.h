#pragma once

#include "Foundation/RawValues.h"

#include <QStringList>

namespace veltrin {

enum class AgentTransformEffect { none, addEmoji, makeConcise, rewriteTone, formatOutput, translate, custom };
template <>
inline constexpr auto rawValuesOf<AgentTransformEffect> = std::to_array<const char*>(
    {"none", "addEmoji", "makeConcise", "rewriteTone", "formatOutput", "translate", "custom"});

enum class AgentRuntimeContractKind { persona, transform, knowledge };
template <>
inline constexpr auto rawValuesOf<AgentRuntimeContractKind> =
    std::to_array<const char*>({"persona", "transform", "knowledge"});

/// A whole agent profile, compiled from free text into what a fast prompt may say of it.
struct AgentRuntimeContract {
    QString name;
    AgentRuntimeContractKind kind = AgentRuntimeContractKind::persona;
    AgentTransformEffect effect = AgentTransformEffect::none;
    QString instruction;
    QString outputStyle;

    static AgentRuntimeContract build(const QString& name, const QString& description,
                                      const QString& systemPrompt, const QStringList& skills,
                                      const QString& outputStyle, const QString& category,
                                      const QStringList& tags);

    /// The block appended to a prompt.
    QString promptBlock() const;
};

}  // namespace veltrin
