#include "Platform/Linux/LinuxSystemLog.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace veltrin {
namespace {

/// The reader of the system's log, for one test.
class LogDaemon {
public:
    explicit LogDaemon(const QString& path) : path_(QFile::encodeName(path)) { start(); }
    ~LogDaemon() { stop(); }
    LogDaemon(const LogDaemon&) = delete;
    LogDaemon& operator=(const LogDaemon&) = delete;

    void start() {
        socket_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path_.constData(), sizeof address.sun_path);
        EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    void stop() {
        close(socket_);
        unlink(path_.constData());
    }
    /// The next line; "nothing" when none comes.
    QByteArray line(int milliseconds = 5000) {
        pollfd wait{socket_, POLLIN, 0};
        if (poll(&wait, 1, milliseconds) != 1) return "nothing";
        QByteArray bytes(4096, '\0');
        const auto size = recv(socket_, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
        return bytes.left(size);
    }

private:
    QByteArray path_;
    int socket_ = -1;
};

class LinuxSystemLogTest : public testing::Test {
protected:
    QString path() const { return folder_.filePath(QStringLiteral("log")); }
    static QByteArray start(int priority, pid_t process) {
        return "<" + QByteArray::number(priority) + ">Veltrin[" + QByteArray::number(process) + "]: ";
    }
    static void tell(LinuxSystemLog& log, const QString& text) {
        log.info(QStringLiteral("com.veltrin.app"), QStringLiteral("test"), text);
    }
    /// A process that crashes; what `end` does is the crash. The status with which it ended.
    int crash(LinuxSystemLog& log, const std::function<void()>& end, pid_t* process) {
        *process = fork();
        if (*process == 0) {
            // What a sanitizer has to say of it belongs to nobody.
            [[maybe_unused]] const auto* out = std::freopen("/dev/null", "w", stderr);
            log.watchForCrashes();
            end();
            _exit(0);
        }
        int status = 0;
        EXPECT_EQ(waitpid(*process, &status, 0), *process);
        return status;
    }

    QTemporaryDir folder_;
};

TEST_F(LinuxSystemLogTest, aLineIsAnInformationOfTheUser) {
    LogDaemon daemon(path());
    LinuxSystemLog log(QFile::encodeName(path()));
    tell(log, QStringLiteral("launch 启动"));
    EXPECT_EQ(daemon.line(), start(14, getpid()) + "com.veltrin.app test: launch 启动");
}

TEST_F(LinuxSystemLogTest, whateverIsToldStaysOneLineOfBoundedLength) {
    LogDaemon daemon(path());
    LinuxSystemLog log(QFile::encodeName(path()));
    tell(log, QStringLiteral("a\nb"));
    EXPECT_TRUE(daemon.line().endsWith("test: a b"));
    tell(log, QString(100'000, u'x'));
    EXPECT_EQ(daemon.line().size(), 1024);
}

TEST_F(LinuxSystemLogTest, withoutADaemonNothingHappensAndALaterOneIsFound) {
    LinuxSystemLog log(QFile::encodeName(path()));
    tell(log, QStringLiteral("lost"));
    LogDaemon daemon(path());
    tell(log, QStringLiteral("kept"));
    EXPECT_TRUE(daemon.line().endsWith("kept"));
    daemon.stop();
    tell(log, QStringLiteral("lost"));
    daemon.start();
    tell(log, QStringLiteral("kept again"));
    EXPECT_TRUE(daemon.line().endsWith("kept again"));
}

TEST_F(LinuxSystemLogTest, aDaemonThatReadsNothingHoldsNobodyUp) {
    LogDaemon daemon(path());
    LinuxSystemLog log(QFile::encodeName(path()));
    for (int i = 0; i < 5000; ++i)
        tell(log, QString(500, u'x'));
    EXPECT_EQ(daemon.line().size(), 500 + start(14, getpid()).size() + 22);
}

TEST_F(LinuxSystemLogTest, aPathTooLongForASocketIsNoLog) {
    LinuxSystemLog log("/tmp/" + QByteArray(200, 'x'));
    tell(log, QStringLiteral("lost"));
}

TEST_F(LinuxSystemLogTest, aFaultLeavesALineAndEndsTheProcessAllTheSame) {
    LogDaemon daemon(path());
    LinuxSystemLog log(QFile::encodeName(path()));
    pid_t process = 0;
    const int status = crash(
        log,
        [] {
            void* page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            *static_cast<volatile char*>(page) = 1;
        },
        &process);
    EXPECT_EQ(daemon.line(), start(10, process) + "com.veltrin.app crash: signal 11");
    // A sanitizer takes the fault next and ends the process in its own way.
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) != 0) << status;
    EXPECT_EQ(daemon.line(200), "nothing");
}

TEST_F(LinuxSystemLogTest, soDoesAnAbort) {
    LogDaemon daemon(path());
    LinuxSystemLog log(QFile::encodeName(path()));
    pid_t process = 0;
    const int status = crash(
        log, [] { std::abort(); }, &process);
    EXPECT_EQ(daemon.line(), start(10, process) + "com.veltrin.app crash: signal 06");
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) != 0) << status;
}

TEST_F(LinuxSystemLogTest, aCrashWithoutADaemonIsACrashLikeAnyOther) {
    LinuxSystemLog log(QFile::encodeName(path()));
    pid_t process = 0;
    const int status = crash(
        log, [] { raise(SIGSEGV); }, &process);
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) != 0) << status;
}

TEST_F(LinuxSystemLogTest, goneItWatchesNoMore) {
    struct sigaction before {};
    sigaction(SIGSEGV, nullptr, &before);
    {
        LinuxSystemLog log(QFile::encodeName(path()));
        log.watchForCrashes();
        struct sigaction meanwhile {};
        sigaction(SIGSEGV, nullptr, &meanwhile);
        EXPECT_NE(meanwhile.sa_sigaction, before.sa_sigaction);
    }
    struct sigaction after {};
    sigaction(SIGSEGV, nullptr, &after);
    EXPECT_EQ(after.sa_sigaction, before.sa_sigaction);
}

}  // namespace
}  // namespace veltrin
