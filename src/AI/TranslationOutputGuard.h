#pragma once

#include "Data/SettingsEnumerations.h"

#include <QString>

#include <optional>

namespace veltrin {

namespace TranslationOutputGuard {
/// Whether `output` is no usable translation of `source`. Without a target language the direction (Chinese to
/// Latin script or back) is inferred from the source.
bool needsRetry(const QString& source, const QString& output,
                std::optional<TranslationLanguage> targetLanguage);
}  // namespace TranslationOutputGuard

}  // namespace veltrin
