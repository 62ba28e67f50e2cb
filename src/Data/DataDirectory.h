#pragma once

#include "Platform/SystemEnvironment.h"

#include <QString>

namespace veltrin {

/// The folder of the user's data files, "Veltrin" in the desktop's application support folder. Made (mode
/// 0700) when it is not there; a failure to make it is ignored, and the stores then work from memory.
QString appSupportDir(const SystemEnvironment& environment);

}  // namespace veltrin
