#include "Foundation/Error.h"

namespace veltrin {

const char* Error::what() const noexcept {
    return "veltrin::Error";
}

QString describe(const std::exception& error) {
    if (const auto* own = dynamic_cast<const Error*>(&error)) return own->errorDescription();
    return QString::fromUtf8(error.what());
}

}  // namespace veltrin
