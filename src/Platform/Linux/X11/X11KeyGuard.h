#pragma once

#include "Platform/Linux/X11/X11Connection.h"

#include <sys/types.h>

#include <atomic>
#include <memory>

namespace veltrin {

/// The program `veltrin-keyguard` beside ours: when this process stands still (stopped, hung, writing a core
/// file), it ends the given connection, whose grabs would keep the keyboard frozen. Whoever owns the
/// connection opens another one then. Ends with this object.
class X11KeyGuard {
public:
    /// Null, with a line in the log, when the program is not there.
    static std::unique_ptr<X11KeyGuard> start(const X11Connection& connection);
    ~X11KeyGuard();
    X11KeyGuard(const X11KeyGuard&) = delete;
    X11KeyGuard& operator=(const X11KeyGuard&) = delete;

    /// Readable when the guard asks; -1 once it is gone.
    int descriptor() const { return hasEnded_ ? -1 : socket_; }
    /// Answers what it asked. Only the thread that frees the keyboard may do this.
    void answer();
    /// Whether keys without a modifier may be claimed. Any thread.
    void watchClosely(bool closely) const;

private:
    X11KeyGuard(int socket, pid_t process) : socket_(socket), process_(process) {}

    const int socket_;
    const pid_t process_;
    std::atomic<bool> hasEnded_{false};
};

}  // namespace veltrin
