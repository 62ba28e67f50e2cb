#pragma once

#include "Foundation/Json.h"

#include <optional>

namespace veltrin {

namespace AIJSONExtractor {
/// The JSON object that stands somewhere in a model's free text, in code fences or among words; none when the
/// text from the first `{` to the last `}` is no object.
std::optional<Json> object(const QString& text);
}  // namespace AIJSONExtractor

}  // namespace veltrin
