#pragma once

#include "Platform/Linux/AtSpi/ApplicationDirectory.h"

namespace veltrin::AtSpi {

/// Looks at what is below an object, level by level, many objects at a time: of each only whether something
/// is selected in it, and what it holds. What has not answered by the conversation's end is missing. Worker
/// thread only.
AXTree readTree(const ObjectAddress& object, qint32 processIdentifier, const AXTreeLimits& limits,
                ApplicationDirectory& directory, Conversation& conversation);

/// The top-level object of a process that stands for one of its windows: the only one, or the one of that
/// title, or else the active one when the window is. None when it can't be told.
std::optional<ObjectAddress> topLevelObject(qint32 processIdentifier, const QString& title, bool isActive,
                                            ApplicationDirectory& directory, Conversation& conversation);

}  // namespace veltrin::AtSpi
