#pragma once

#include <QStringList>
#include <QTemporaryDir>

namespace veltrin {

/// Sends the log into a file of its own while it lives.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines so far, without their dates.
    QStringList lines() const;
    bool has(const QString& line) const;
    bool hasStartingWith(const QString& start) const;

private:
    QString path() const;

    QTemporaryDir folder_;
    QString former_;
};

}  // namespace veltrin
