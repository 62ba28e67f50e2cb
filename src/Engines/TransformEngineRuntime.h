#pragma once

#include "AI/OllamaClient.h"
#include "Engines/TransformEngine.h"

namespace veltrin {

/// What every caller of TransformEngine hands it.
namespace TransformEngineRuntime {

/// The shared recipe: a non-empty answer at temperature 0.2, its retry at a raised limit, then the repair of
/// an answer that repeats instructions.
TransformEngine::Generate generation(const OllamaClient& client);

/// An engine on that recipe which writes to the log. `source` is "external-" and a trigger for the pipelines.
TransformEngine engine(const OllamaClient& client, const QString& source);

}  // namespace TransformEngineRuntime

}  // namespace veltrin
