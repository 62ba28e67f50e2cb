#pragma once

#include "Platform/SystemLog.h"

#include <QByteArray>

namespace veltrin {

/// The system's log by its local socket, which syslog daemons and the journal read alike. A line is dropped
/// rather than waited for.
class LinuxSystemLog final : public SystemLog {
public:
    explicit LinuxSystemLog(QByteArray socketPath = QByteArrayLiteral("/dev/log"));
    ~LinuxSystemLog() override;
    LinuxSystemLog(const LinuxSystemLog&) = delete;
    LinuxSystemLog& operator=(const LinuxSystemLog&) = delete;

    void info(const QString& subsystem, const QString& category, const QString& text) override;
    /// For one object a process.
    void watchForCrashes() override;

private:
    void send(const QByteArray& datagram);
    bool connect();

    QByteArray socketPath_;
    int socket_ = -1;
};

}  // namespace veltrin
