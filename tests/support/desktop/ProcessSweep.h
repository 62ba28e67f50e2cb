#pragma once

#include <sys/types.h>

#include <set>
#include <string>
#include <vector>

namespace veltrin {

/// The environment variable that marks every process of one test desktop; its value is the desktop's folder.
inline constexpr const char* desktopMarker = "VELTRIN_TEST_DESKTOP";

/// The processes whose environment carries the marker with exactly this value: all that was started on that
/// desktop, however deep, orphans included. Never this process.
std::vector<pid_t> processesMarked(const std::string& folder);

/// Takes the last status of children that this process did not start but inherited as a subreaper, so that
/// they do not stay zombies. They are told by their session: what was started here is in this process's
/// session, or leads one of its own and is in `started`.
void reapOrphans(const std::set<pid_t>& started);

/// The X server writes its pid into a lock file and unlinks it when it ends orderly; this removes what a
/// killed one left. `display` is ":N"; anything else is ignored.
void removeDisplayLeftovers(const std::string& display, pid_t server);

}  // namespace veltrin
