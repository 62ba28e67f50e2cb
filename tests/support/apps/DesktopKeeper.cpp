// Outlives a test program by a moment: when the program is gone, however it ended, the keeper ends what is
// left of the desktop it had started. Usage: veltrin_desktop_keeper FOLDER DISPLAY SERVER_PID, with a pipe
// from the test program as standard input. A line "done" on it means that the program cleaned up itself.
#include "support/desktop/ProcessSweep.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

namespace {

void nap() {
    const timespec time{0, 10000000};
    nanosleep(&time, nullptr);
}

/// Signals everything but the X server, then the server, which unlinks its socket on SIGTERM.
void endDesktop(const std::string& folder, const std::string& display, pid_t server) {
    for (int round = 0; round < 300; ++round) {
        const auto left = veltrin::processesMarked(folder);
        if (left.empty()) break;
        const bool onlyServer = left.size() == 1 && left.front() == server;
        for (const pid_t pid : left) {
            if (pid != server) kill(pid, SIGKILL);
        }
        if (onlyServer) kill(server, round < 200 ? SIGTERM : SIGKILL);
        nap();
    }
    veltrin::removeDisplayLeftovers(display, server);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    // A terminal's Ctrl+C and a runner that ends the whole group must not take the keeper along.
    setsid();
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        signal(number, SIG_IGN);

    std::string told;
    char buffer[64];
    for (ssize_t got = 0; (got = read(STDIN_FILENO, buffer, sizeof buffer)) > 0;) {
        told.append(buffer, static_cast<std::size_t>(got));
    }
    if (told != "done\n") endDesktop(argv[1], argv[2], static_cast<pid_t>(std::atol(argv[3])));
    return 0;
}
