#pragma once

#include "Foundation/Error.h"
#include "Intent/OutputContractValidator.h"

namespace veltrin {

/// The model's answer did not pass its contract; nothing is written back.
class TransformEngineError : public Error {
public:
    enum class Kind { contractNeedsRepair, contractRejected };

    TransformEngineError(Kind kind, OutputContractViolation violation) : kind_(kind), violation_(violation) {}
    Kind kind() const { return kind_; }
    OutputContractViolation violation() const { return violation_; }
    QString errorDescription() const override;

private:
    Kind kind_;
    OutputContractViolation violation_;
};

}  // namespace veltrin
