#include "Platform/Linux/X11/X11KeyGuard.h"

#include "Foundation/MVPLog.h"
#include "Platform/Linux/X11/X11KeyGuardWire.h"

#include <QByteArray>
#include <QRandomGenerator>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <vector>

namespace veltrin {
namespace {

constexpr int guardsDescriptor = 3;

/// Beside this program, or where an installation puts programs that nobody starts by hand.
QByteArray guardProgram() {
    char self[PATH_MAX];
    const auto length = readlink("/proc/self/exe", self, sizeof self);
    if (length <= 0) return {};
    QByteArray folder(self, length);
    folder.truncate(folder.lastIndexOf('/'));
    for (const char* place : {"/veltrin-keyguard", "/../libexec/veltrin/veltrin-keyguard"}) {
        QByteArray path = folder + place;
        if (access(path.constData(), X_OK) == 0) return path;
    }
    return {};
}

/// In a session of its own, so that what stops this program at a terminal does not stop its guard.
pid_t spawn(const QByteArray& program, const std::vector<QByteArray>& arguments, int socket) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, socket, guardsDescriptor);
    posix_spawn_file_actions_addclosefrom_np(&actions, guardsDescriptor + 1);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    std::vector<char*> list{const_cast<char*>(program.constData())};
    for (const auto& argument : arguments)
        list.push_back(const_cast<char*>(argument.constData()));
    list.push_back(nullptr);
    pid_t process = -1;
    if (posix_spawn(&process, program.constData(), &actions, &attributes, list.data(), environ) != 0)
        process = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

}  // namespace

std::unique_ptr<X11KeyGuard> X11KeyGuard::start(const X11Connection& connection) {
    const QByteArray program = guardProgram();
    int sockets[2] = {-1, -1};
    if (program.isEmpty() || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        MVPLog::write("Key guard not started: veltrin-keyguard is missing");
        return nullptr;
    }
    auto* xcb = connection.xcb();
    const xcb_window_t window = xcb_generate_id(xcb);
    const std::uint32_t token = QRandomGenerator::system()->generate();
    xcb_create_window(xcb, 0, window, connection.root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, window, connection.atom(KeyGuardWire::tokenProperty),
                        XCB_ATOM_CARDINAL, 32, 1, &token);
    connection.flush();
    const pid_t process = spawn(
        program, {connection.display(), QByteArray::number(window), QByteArray::number(token)}, sockets[1]);
    close(sockets[1]);
    if (process < 0) {
        close(sockets[0]);
        MVPLog::write("Key guard not started: veltrin-keyguard cannot be run");
        return nullptr;
    }
    return std::unique_ptr<X11KeyGuard>(new X11KeyGuard(sockets[0], process));
}

X11KeyGuard::~X11KeyGuard() {
    close(socket_);
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

void X11KeyGuard::answer() {
    char words[64];
    const auto count = recv(socket_, words, sizeof words, MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (count <= 0) {
        MVPLog::write("Key guard ended");
        hasEnded_ = true;
        return;
    }
    const char word = KeyGuardWire::answer;
    [[maybe_unused]] const auto sent = send(socket_, &word, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
}

void X11KeyGuard::watchClosely(bool closely) const {
    const char word = closely ? KeyGuardWire::watchClosely : KeyGuardWire::relax;
    [[maybe_unused]] const auto sent = send(socket_, &word, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
}

}  // namespace veltrin
