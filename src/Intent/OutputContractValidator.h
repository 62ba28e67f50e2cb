#pragma once

#include "Intent/IntentTaxonomy.h"

namespace veltrin {

enum class OutputContractViolation {
    metaInstructionLeak,
    subjectInvented,
    targetLanguageMismatch,
    emptyOutput,
    formatMismatch,
};
template <>
inline constexpr auto rawValuesOf<OutputContractViolation> = std::to_array<const char*>(
    {"metaInstructionLeak", "subjectInvented", "targetLanguageMismatch", "emptyOutput", "formatMismatch"});

/// What is to become of a model's answer.
struct OutputContractDecision {
    enum class Kind { repair, reject, accept };
    Kind kind = Kind::accept;
    OutputContractViolation violation = OutputContractViolation::emptyOutput;  ///< meaningless on accept

    static OutputContractDecision repair(OutputContractViolation why) { return {Kind::repair, why}; }
    static OutputContractDecision reject(OutputContractViolation why) { return {Kind::reject, why}; }
    static OutputContractDecision accept() { return {}; }
    friend bool operator==(const OutputContractDecision& a, const OutputContractDecision& b) {
        return a.kind == b.kind && (a.kind == Kind::accept || a.violation == b.violation);
    }
};

namespace OutputContractValidator {
OutputContractDecision validate(const QString& output, const QString& sourceText,
                                const ActionSpec& actionSpec);
}  // namespace OutputContractValidator

}  // namespace veltrin
