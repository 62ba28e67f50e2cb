#pragma once

#include "Platform/Accessibility.h"

#include <optional>
#include <utility>
#include <variant>

namespace veltrin {

/// One attribute read in the form that is wanted: the call's error, and the value when there was one of that
/// form.
template <typename T>
struct AttributeReading {
    AXError error = AXError::failure;
    std::optional<T> value;

    bool failed() const { return error != AXError::success; }
};

template <typename T>
AttributeReading<T> attributeReading(AXResult<AXValue> result) {
    AttributeReading<T> reading;
    reading.error = result.error;
    if (result.ok()) {
        if (T* typed = std::get_if<T>(&result.value)) reading.value = std::move(*typed);
    }
    if constexpr (std::is_same_v<T, AXElementRef>) {
        if (reading.value && !*reading.value) reading.value.reset();
    }
    return reading;
}

template <typename T>
AttributeReading<T> readAttribute(Accessibility& accessibility, const AXElementRef& element,
                                  AXAttribute attribute) {
    return attributeReading<T>(accessibility.copyAttributeValue(element, attribute));
}

/// The number of an error, for the log.
constexpr qint32 code(AXError error) {
    return static_cast<qint32>(error);
}

}  // namespace veltrin
