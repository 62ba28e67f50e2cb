#include "Foundation/Error.h"

namespace veltrin {

QString describe(const std::exception& error) {
    if (const auto* own = dynamic_cast<const Error*>(&error)) return own->errorDescription();
    return QString::fromUtf8(error.what());
}

}  // namespace veltrin
