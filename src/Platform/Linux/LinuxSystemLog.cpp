#include "Platform/Linux/LinuxSystemLog.h"

#include <QCoreApplication>

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <utility>

namespace veltrin {
namespace {

constexpr auto crashes = std::to_array<int>({SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT});
/// A line and no more, whatever somebody puts into it.
constexpr qsizetype mostBytes = 1024;

QByteArray datagram(int priority, const QByteArray& text) {
    QByteArray line = "<" + QByteArray::number(LOG_USER | priority) + ">Veltrin[" +
                      QByteArray::number(QCoreApplication::applicationPid()) + "]: " + text;
    line.replace('\n', ' ');
    return line.left(mostBytes);
}

// What the handler of a crash needs, made ready while the process is whole.
int crashSocket = -1;
std::array<char, 128> crashLine{};
std::size_t crashLineSize = 0;
std::array<struct sigaction, crashes.size()> formerActions{};
std::array<char, 32'768> crashStack{};

/// Runs in signal context: only async-signal-safe calls.
void onCrash(int number, siginfo_t* info, void*) {
    crashLine[crashLineSize] = static_cast<char>('0' + number / 10);
    crashLine[crashLineSize + 1] = static_cast<char>('0' + number % 10);
    [[maybe_unused]] const auto sent = ::send(crashSocket, crashLine.data(), crashLineSize + 2, MSG_NOSIGNAL);
    for (std::size_t i = 0; i < crashes.size(); ++i) {
        if (crashes[i] == number) sigaction(number, &formerActions[i], nullptr);
    }
    // A fault comes again by itself as soon as this returns; a signal that was sent does not.
    if (info->si_code <= 0) raise(number);
}

/// So that a stack that ran over can be told of as well.
void giveHandlersAStack() {
    stack_t now{};
    if (sigaltstack(nullptr, &now) != 0 || (now.ss_flags & SS_DISABLE) == 0) return;
    stack_t stack{};
    stack.ss_sp = crashStack.data();
    stack.ss_size = crashStack.size();
    sigaltstack(&stack, nullptr);
}

}  // namespace

LinuxSystemLog::LinuxSystemLog(QByteArray socketPath) : socketPath_(std::move(socketPath)) {
    connect();
}

LinuxSystemLog::~LinuxSystemLog() {
    if (crashSocket >= 0 && crashSocket == socket_) {
        for (std::size_t i = 0; i < crashes.size(); ++i)
            sigaction(crashes[i], &formerActions[i], nullptr);
        crashSocket = -1;
    }
    if (socket_ >= 0) close(socket_);
}

bool LinuxSystemLog::connect() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socketPath_.size() >= static_cast<qsizetype>(sizeof address.sun_path)) return false;
    std::memcpy(address.sun_path, socketPath_.constData(), static_cast<std::size_t>(socketPath_.size()));
    if (socket_ < 0) socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    return socket_ >= 0 &&
           ::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

void LinuxSystemLog::info(const QString& subsystem, const QString& category, const QString& text) {
    send(datagram(LOG_INFO, (subsystem + u' ' + category + QStringLiteral(": ") + text).toUtf8()));
}

void LinuxSystemLog::send(const QByteArray& datagram) {
    const auto once = [&] {
        return ::send(socket_, datagram.constData(), static_cast<std::size_t>(datagram.size()),
                      MSG_NOSIGNAL) >= 0;
    };
    // The daemon may have been started again since.
    if (!once() && connect()) once();
}

void LinuxSystemLog::watchForCrashes() {
    if (crashSocket >= 0 || socket_ < 0) return;
    const QByteArray line = datagram(LOG_CRIT, "com.veltrin.app crash: signal ");
    if (line.size() + 2 > static_cast<qsizetype>(crashLine.size())) return;
    std::memcpy(crashLine.data(), line.constData(), static_cast<std::size_t>(line.size()));
    crashLineSize = static_cast<std::size_t>(line.size());
    crashSocket = socket_;
    giveHandlersAStack();
    struct sigaction action {};
    action.sa_sigaction = onCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (std::size_t i = 0; i < crashes.size(); ++i)
        sigaction(crashes[i], &action, &formerActions[i]);
}

}  // namespace veltrin
