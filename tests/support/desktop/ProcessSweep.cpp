#include "support/desktop/ProcessSweep.h"

#include <dirent.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace veltrin {
namespace {

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

std::vector<pid_t> processesMarked(const std::string& folder) {
    std::vector<pid_t> found;
    const std::string wanted = std::string(1, '\0') + desktopMarker + '=' + folder + '\0';
    DIR* processes = opendir("/proc");
    if (!processes) return found;
    while (const dirent* entry = readdir(processes)) {
        const auto pid = static_cast<pid_t>(std::atol(entry->d_name));
        if (pid <= 1 || pid == getpid()) continue;
        const std::string environment =
            std::string(1, '\0') + contentOf("/proc/" + std::to_string(pid) + "/environ");
        if (environment.find(wanted) != std::string::npos) found.push_back(pid);
    }
    closedir(processes);
    return found;
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
