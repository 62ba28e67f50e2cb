#include "Platform/Linux/FieldInspector.h"

namespace veltrin {

PostTargetState FieldInspector::inspect(const AXElementRef& element) {
    const ElementState state = accessibility_.inspect(element);
    return {state.isAnswered, state.isEditable, state.isPassword,
            state.isAnswered && !state.isFocused && isFocusElsewhere(element)};
}

/// Asked only of a field that does not call itself focused: not all do that are.
bool FieldInspector::isFocusElsewhere(const AXElementRef& element) {
    const auto process = element->processIdentifier();
    if (!process) return false;
    const auto focused = accessibility_.copyAttributeValue(accessibility_.applicationElement(*process),
                                                           AXAttribute::focusedUIElement);
    const auto* other = std::get_if<AXElementRef>(&focused.value);
    return focused.ok() && other && *other && !(*other)->isEqual(*element);
}

}  // namespace veltrin
