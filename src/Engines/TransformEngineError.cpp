#include "Engines/TransformEngineError.h"

namespace veltrin {

QString TransformEngineError::errorDescription() const {
    switch (kind_) {
        case Kind::contractNeedsRepair:
            return QStringLiteral("模型输出没有通过 Veltrin 输出检查，需要修复：") + rawValue(violation_);
        case Kind::contractRejected:
            break;
    }
    return QStringLiteral("模型输出被 Veltrin 阻止自动写回：") + rawValue(violation_);
}

}  // namespace veltrin
