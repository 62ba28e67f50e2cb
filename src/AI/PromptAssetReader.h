#pragma once

#include "Data/PromptAsset.h"
#include "Foundation/Json.h"

namespace veltrin {

namespace PromptAssetReader {
/// A prompt asset out of a model's answer; what is missing has a default, `fallbackTitle` that of the title
/// and `fallbackSource` that of the source. Its blocks may be an array of objects with a kind and a content,
/// or an object from kind to content, which is what the prompts ask for. `now` is both its dates.
PromptAsset parseAsset(const Json& object, const QString& fallbackTitle, PromptAssetSource fallbackSource,
                       Date now);
}  // namespace PromptAssetReader

}  // namespace veltrin
