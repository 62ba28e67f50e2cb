#include "support/desktop/ChildProcess.h"

#include "support/desktop/Waiting.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

namespace veltrin {
namespace {

std::vector<char*> pointersTo(std::vector<QByteArray>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (QByteArray& string : strings)
        pointers.push_back(string.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// What waits to be reaped by its object and by nobody else.
struct Running {
    std::mutex mutex;
    std::set<pid_t> pids;

    static Running& shared() {
        static Running running;
        return running;
    }
    void insert(pid_t pid) {
        const std::lock_guard lock(mutex);
        pids.insert(pid);
    }
    void erase(pid_t pid) {
        const std::lock_guard lock(mutex);
        pids.erase(pid);
    }
};

/// File actions and attributes of one start, released again.
class SpawnSettings {
public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &all);
        // A session of its own, so that a Ctrl+C on the test program reaches the keeper's orderly end first.
        posix_spawnattr_setflags(&attributes_,
                                 POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }

    void open(int descriptor, const QByteArray& path, int flags) {
        posix_spawn_file_actions_addopen(&actions_, descriptor, path.constData(), flags, 0600);
    }
    void duplicate(int from, int to) { posix_spawn_file_actions_adddup2(&actions_, from, to); }
    void closeFrom(int first) { posix_spawn_file_actions_addclosefrom_np(&actions_, first); }

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

}  // namespace

ChildProcess::ChildProcess(const Start& start) {
    std::vector<QByteArray> arguments;
    for (const QString& part : start.command)
        arguments.push_back(part.toLocal8Bit());
    std::vector<QByteArray> variables;
    for (auto entry = start.environment.begin(); entry != start.environment.end(); ++entry) {
        variables.push_back(entry.key().toLocal8Bit() + '=' + entry.value().toLocal8Bit());
    }
    if (arguments.empty()) throw std::runtime_error("no program to start");

    SpawnSettings settings;
    const QByteArray file = start.outputFile.isEmpty() ? "/dev/null" : start.outputFile.toLocal8Bit();
    constexpr int append = O_WRONLY | O_CREAT | O_APPEND;
    // The extra descriptor goes first: a descriptor that stands on 0 to 2 here would be lost otherwise.
    if (start.extra >= 0) settings.duplicate(start.extra, 3);
    if (start.input >= 0) {
        settings.duplicate(start.input, STDIN_FILENO);
    } else {
        settings.open(STDIN_FILENO, "/dev/null", O_RDONLY);
    }
    settings.open(STDERR_FILENO, file, append);
    settings.duplicate(start.output >= 0 ? start.output : STDERR_FILENO, STDOUT_FILENO);
    settings.closeFrom(start.extra >= 0 ? 4 : 3);

    const int error =
        posix_spawnp(&pid_, arguments.front().constData(), settings.actions(), settings.attributes(),
                     pointersTo(arguments).data(), pointersTo(variables).data());
    if (error != 0) {
        pid_ = 0;
        throw std::runtime_error("cannot start " + arguments.front().toStdString() + ": " +
                                 std::strerror(error));
    }
    ended_ = false;
    Running::shared().insert(pid_);
}

std::set<pid_t> ChildProcess::all() {
    const std::lock_guard lock(Running::shared().mutex);
    return Running::shared().pids;
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(other.pid_), ended_(std::exchange(other.ended_, true)), status_(other.status_) {
}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this != &other) {
        kill();
        pid_ = other.pid_;
        ended_ = std::exchange(other.ended_, true);
        status_ = other.status_;
    }
    return *this;
}

std::optional<int> ChildProcess::exitStatus() {
    if (!ended_) {
        const pid_t result = waitpid(pid_, &status_, WNOHANG);
        // Somebody else who reaps all children leaves no status; the process is gone all the same.
        if (result == pid_ || (result < 0 && errno == ECHILD)) {
            ended_ = true;
            Running::shared().erase(pid_);
        }
    }
    if (!ended_) return std::nullopt;
    return WIFSIGNALED(status_) ? -WTERMSIG(status_) : WEXITSTATUS(status_);
}

bool ChildProcess::isRunning() {
    return !exitStatus();
}

bool ChildProcess::waitForExit(double seconds) {
    return waitUntil(seconds, [this] { return !isRunning(); });
}

void ChildProcess::send(int signalNumber) {
    if (isRunning()) ::kill(pid_, signalNumber);
}

void ChildProcess::terminate(double limit) {
    send(SIGTERM);
    if (!waitForExit(limit)) kill();
}

void ChildProcess::kill() {
    if (ended_) return;
    send(SIGKILL);
    waitForExit(10);
}

Pipe::Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    read = ends[0];
    write = ends[1];
}

Pipe::~Pipe() {
    closeRead();
    closeWrite();
}

void Pipe::closeRead() {
    if (read >= 0) close(std::exchange(read, -1));
}

void Pipe::closeWrite() {
    if (write >= 0) close(std::exchange(write, -1));
}

std::optional<QByteArray> readLine(int descriptor, QByteArray& pending, double seconds) {
    const double deadline = monotonicSeconds() + seconds;
    for (;;) {
        if (const auto end = pending.indexOf('\n'); end >= 0) {
            const QByteArray line = pending.left(end);
            pending.remove(0, end + 1);
            return line;
        }
        const double left = deadline - monotonicSeconds();
        pollfd readable{descriptor, POLLIN, 0};
        if (left <= 0 || poll(&readable, 1, static_cast<int>(left * 1000) + 1) <= 0) return std::nullopt;
        char buffer[4096];
        const ssize_t got = ::read(descriptor, buffer, sizeof buffer);
        if (got <= 0) return std::nullopt;
        pending.append(buffer, got);
    }
}

}  // namespace veltrin
