#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace veltrin {

/// The environment variable that marks every process of one test desktop; its value is the desktop's folder.
inline constexpr const char* desktopMarker = "VELTRIN_TEST_DESKTOP";

/// The processes whose environment carries the marker with exactly this value: all that was started on that
/// desktop, however deep, orphans included. Never this process.
std::vector<pid_t> processesMarked(const std::string& folder);

/// The X server writes its pid into a lock file and unlinks it when it ends orderly; this removes what a
/// killed one left. `display` is ":N"; anything else is ignored.
void removeDisplayLeftovers(const std::string& display, pid_t server);

}  // namespace veltrin
