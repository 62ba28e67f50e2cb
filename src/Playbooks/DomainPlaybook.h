#pragma once

#include "Intent/IntentTaxonomy.h"

namespace veltrin {

/// What a field knows about good work, for the prompt.
namespace DomainPlaybook {
/// The guidance of the action's domain; empty for a domain without a playbook.
QString guidance(const ActionSpec& actionSpec, const ContextDocument& context);
}  // namespace DomainPlaybook

}  // namespace veltrin
