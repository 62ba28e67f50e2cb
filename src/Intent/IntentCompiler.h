#pragma once

#include "Intent/IntentTaxonomy.h"

namespace veltrin {

/// Turns a text and the user's gesture into an ActionSpec by plain text tests: no model, no platform, no
/// failure.
namespace IntentCompiler {

/// `visualDesign` or `unknown`: the other domains arrive through the compile functions or from the callers.
IntentDomain classifyDomain(const QString& text);
/// `unknown`, `structuredText`, `codeOrError`, `conceptPhrase` or `writingDraft`.
IntentInputKind classifyInputKind(const QString& text);

ActionSpec compileOptimize(const ContextDocument& context, OptimizeCompileMode mode);
ActionSpec compileSmartSelect(const ContextDocument& context, SmartSelectCompileMode mode);

}  // namespace IntentCompiler

}  // namespace veltrin
