#pragma once

#include <QString>

namespace veltrin {

namespace AgentOutputGuard {
/// Whether `output` repeats instructions instead of being a result made of `sourceText`.
bool detectMetaInstructionLeak(const QString& output, const QString& sourceText);
}  // namespace AgentOutputGuard

}  // namespace veltrin
