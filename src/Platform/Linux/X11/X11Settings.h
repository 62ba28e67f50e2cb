#pragma once

#include "Platform/Linux/X11/ClickCounter.h"
#include "Platform/Linux/X11/X11Connection.h"

namespace veltrin {

/// The integer of that name in the settings that the desktop's settings daemon publishes, as the bytes of
/// their property; none when it is not there, of another type, or the bytes are broken.
std::optional<std::int32_t> xsettingsInteger(const QByteArray& settings, const QByteArray& name);

/// What counts as a double click now; the usual values where the desktop says nothing or nonsense.
DoubleClick doubleClickOf(const X11Connection& connection);

}  // namespace veltrin
