#include "Platform/Linux/AtSpi/ObjectReading.h"

#include "Platform/Linux/AtSpi/TextAccess.h"

#include <algorithm>

namespace veltrin::AtSpi {
namespace {

AXResult<AXValue> stringIn(const Reply& reply) {
    return reply.ok() ? AXResult<AXValue>(AXValue(reply.text())) : AXResult<AXValue>(reply.error);
}

bool contains(const std::vector<AXAttribute>& attributes, AXAttribute attribute) {
    return std::find(attributes.begin(), attributes.end(), attribute) != attributes.end();
}

AXResult<AXValue> subroleIn(const ElementFacts& facts) {
    const QString subrole = subroleName(facts.role);
    return subrole.isEmpty() ? AXResult<AXValue>(AXError::noValue) : AXResult<AXValue>(AXValue(subrole));
}

}  // namespace

std::vector<AXResult<AXValue>> ObjectReading::values(const std::vector<AXAttribute>& attributes) {
    // Sent before anything is awaited, so that they share a round trip with the facts.
    if (contains(attributes, AXAttribute::title))
        title_ = conversation_.property(object_, Name::accessible, "Name");
    if (contains(attributes, AXAttribute::description))
        description_ = conversation_.property(object_, Name::accessible, "Description");
    std::vector<AXResult<AXValue>> values;
    values.reserve(attributes.size());
    for (const AXAttribute attribute : attributes)
        values.push_back(value(attribute));
    return values;
}

const AXResult<ElementFacts>& ObjectReading::facts() {
    if (!facts_) facts_ = factsOf(object_, directory_, conversation_);
    return *facts_;
}

const AXResult<TextState>& ObjectReading::text() {
    if (!text_) {
        const AXResult<ElementFacts>& known = facts();
        text_ = known.ok() ? TextAccess(object_, directory_, conversation_).state(known.value)
                           : AXResult<TextState>(known.error);
    }
    return *text_;
}

AXResult<AXValue> ObjectReading::value(AXAttribute attribute) {
    switch (attribute) {
        case AXAttribute::title:
            return stringIn(conversation_.reply(std::exchange(title_, {})));
        case AXAttribute::description:
            return stringIn(conversation_.reply(std::exchange(description_, {})));
        case AXAttribute::role:
            if (!facts().ok()) return facts().error;
            return AXValue(roleName(facts().value.role, facts().value.states));
        case AXAttribute::subrole:
            return facts().ok() ? subroleIn(facts().value) : AXResult<AXValue>(facts().error);
        case AXAttribute::focused:
            if (!facts().ok()) return facts().error;
            return AXValue(facts().value.states.has(State::focused));
        case AXAttribute::value:
            if (!text().ok()) return text().error;
            return AXValue(text().value.text());
        case AXAttribute::selectedText:
            if (!text().ok()) return text().error;
            return AXValue(text().value.selection ? text().value.selectedText() : QString(QLatin1String("")));
        case AXAttribute::selectedTextRange:
            if (!text().ok()) return text().error;
            return AXValue(text().value.selectedRange());
        case AXAttribute::boundsForRange:
            return AXError::illegalArgument;
        default:
            return AXError::attributeUnsupported;
    }
}

}  // namespace veltrin::AtSpi
