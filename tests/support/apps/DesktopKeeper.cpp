// Outlives a test program by a moment: when the program is gone, however it ended, the keeper ends what is
// left of the desktop it had started. Usage: veltrin_desktop_keeper FOLDER, with a pipe from the test program
// as standard input. Lines on it: "server PID" and "display :N" as soon as they are known, and "done" when
// the program has cleaned up itself.
#include "support/desktop/ProcessSweep.h"

#include <signal.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <iostream>
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
    if (argc != 2) return 2;
    // A terminal's Ctrl+C and a runner that ends the whole group must not take the keeper along.
    setsid();
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        signal(number, SIG_IGN);

    std::string display;
    pid_t server = 0;
    std::string word;
    while (std::cin >> word) {
        if (word == "server") std::cin >> server;
        if (word == "display") std::cin >> display;
        if (word == "done") return 0;
    }
    endDesktop(argv[1], display, server);
    return 0;
}
