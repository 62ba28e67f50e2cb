#pragma once

#include "Platform/Linux/AtSpi/TextState.h"

namespace veltrin::AtSpi {

/// Reads attributes of one object. What several of them need, the object's facts and its text, is asked for
/// once: a field's value, its selection and its caret are of one moment, and a long text is fetched one time.
/// It lives for one question and keeps nothing beyond it, so that nobody is ever given a text that has
/// changed since. Worker thread only.
class ObjectReading {
public:
    ObjectReading(ObjectAddress object, ApplicationDirectory& directory, Conversation& conversation)
        : object_(std::move(object)), directory_(directory), conversation_(conversation) {}

    /// In the order asked for.
    std::vector<AXResult<AXValue>> values(const std::vector<AXAttribute>& attributes);

private:
    AXResult<AXValue> value(AXAttribute attribute);
    const AXResult<ElementFacts>& facts();
    const AXResult<TextState>& text();

    ObjectAddress object_;
    ApplicationDirectory& directory_;
    Conversation& conversation_;
    Pending title_, description_;
    std::optional<AXResult<ElementFacts>> facts_;
    std::optional<AXResult<TextState>> text_;
};

}  // namespace veltrin::AtSpi
