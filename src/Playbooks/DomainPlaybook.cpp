#include "Playbooks/DomainPlaybook.h"

#include "Playbooks/VisualDesignPlaybook.h"

namespace veltrin::DomainPlaybook {

QString guidance(const ActionSpec& actionSpec, const ContextDocument& context) {
    switch (actionSpec.domain) {
        case IntentDomain::visualDesign:
            return VisualDesignPlaybook::guidance(actionSpec, context);
        default:
            return {};
    }
}

}  // namespace veltrin::DomainPlaybook
