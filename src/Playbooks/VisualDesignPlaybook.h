#pragma once

#include "Intent/IntentTaxonomy.h"

namespace veltrin {

namespace VisualDesignPlaybook {
/// Standards of visual design, those of minimalism for a text that asks for it; empty outside `visualDesign`.
QString guidance(const ActionSpec& actionSpec, const ContextDocument& context);
}  // namespace VisualDesignPlaybook

}  // namespace veltrin
