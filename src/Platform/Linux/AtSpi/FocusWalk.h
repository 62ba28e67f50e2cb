#pragma once

#include "Platform/Linux/AtSpi/Conversation.h"
#include "Platform/Linux/AtSpi/TextOffsets.h"

namespace veltrin::AtSpi {

/// Looks through an application's objects, breadth first, for the one that has the focus. In a chain of
/// focused objects the editable one wins, else the innermost. Bounded in objects and by the conversation's
/// deadline.
///
/// For want of better only: browsers leave the focus flag on what has lost the focus.
std::optional<ObjectAddress> walkToFocus(const QString& bus, Toolkit toolkit, Conversation& conversation);

/// Looks inside an object that has the focus for the field that has it, too.
std::optional<ObjectAddress> focusedFieldInside(const ObjectAddress& object, Toolkit toolkit,
                                                Conversation& conversation);

}  // namespace veltrin::AtSpi
