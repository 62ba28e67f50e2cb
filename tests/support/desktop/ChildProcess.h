#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <optional>
#include <set>

namespace veltrin {

/// Name to value; a process gets exactly these, nothing of the test program's own.
using Environment = QMap<QString, QString>;

/// A process started by pid and ended by pid. Inherits no descriptor but the three named ones. Needs no event
/// loop. Throws std::runtime_error when the program cannot be started.
class ChildProcess {
public:
    struct Start {
        QStringList command;  ///< the program (searched in PATH) and its arguments
        Environment environment = {};
        QString outputFile = {};  ///< standard output and error are appended here
        int input = -1;           ///< descriptor that becomes standard input; -1 is /dev/null
        int output = -1;          ///< descriptor that becomes standard output instead of the file
        int extra = -1;           ///< descriptor handed on as descriptor 3
    };

    ChildProcess() = default;
    explicit ChildProcess(const Start& start);
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() { kill(); }

    /// The processes that stand behind all objects of this class and have not been seen to end. Any thread.
    static std::set<pid_t> all();

    pid_t pid() const { return pid_; }
    bool isRunning();
    /// Exit code, or minus the signal's number; nothing while it runs.
    std::optional<int> exitStatus();
    bool waitForExit(double seconds);

    /// Sends a signal unless the process has ended already.
    void send(int signalNumber);
    /// SIGTERM, and SIGKILL after `limit` seconds. Returns when it is gone.
    void terminate(double limit = 2);
    /// SIGKILL; returns when it is gone. Ends stopped processes as well.
    void kill();

private:
    pid_t pid_ = 0;
    bool ended_ = true;
    int status_ = 0;
};

/// A pipe whose ends are not inherited by processes that are not given them.
struct Pipe {
    int read = -1;
    int write = -1;
    Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe();
    void closeRead();
    void closeWrite();
};

/// The next line from a descriptor without its end, or nothing at the end of the stream or after `seconds`.
/// What was read past the line stays in `pending`.
std::optional<QByteArray> readLine(int descriptor, QByteArray& pending, double seconds);

}  // namespace veltrin
