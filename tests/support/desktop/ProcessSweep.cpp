#include "support/desktop/ProcessSweep.h"

#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace veltrin {
namespace {

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Calls `each` with the numbers that name entries of a folder of /proc.
template <typename Function>
void forEachNumber(const char* folder, Function each) {
    DIR* entries = opendir(folder);
    if (!entries) return;
    while (const dirent* entry = readdir(entries)) {
        const auto number = static_cast<pid_t>(std::atol(entry->d_name));
        if (number > 0) each(number);
    }
    closedir(entries);
}

}  // namespace

std::vector<pid_t> processesMarked(const std::string& folder) {
    std::vector<pid_t> found;
    std::string wanted(1, '\0');
    for (const std::string& piece :
         {std::string(desktopMarker), std::string("="), folder, std::string(1, '\0')})
        wanted += piece;
    forEachNumber("/proc", [&](pid_t pid) {
        if (pid == 1 || pid == getpid()) return;
        std::string environment(1, '\0');
        environment += contentOf("/proc/" + std::to_string(pid) + "/environ");
        if (environment.find(wanted) != std::string::npos) found.push_back(pid);
    });
    return found;
}

void reapOrphans(const std::set<pid_t>& started) {
    forEachNumber("/proc/self/task", [&](pid_t thread) {
        std::istringstream children(contentOf("/proc/self/task/" + std::to_string(thread) + "/children"));
        for (pid_t child = 0; children >> child;) {
            const bool inherited = getsid(child) != getsid(0) && !started.contains(child);
            if (inherited) waitpid(child, nullptr, WNOHANG);
        }
    });
}

void removeDisplayLeftovers(const std::string& display, pid_t server) {
    if (display.size() < 2 || display[0] != ':') return;
    const std::string number = display.substr(1);
    const std::string lock = "/tmp/.X" + number + "-lock";
    // Somebody else may have taken the number meanwhile.
    if (std::atol(contentOf(lock).c_str()) != server) return;
    unlink(lock.c_str());
    unlink(("/tmp/.X11-unix/X" + number).c_str());
}

}  // namespace veltrin
