#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace veltrin {

/// This process and its children. Main thread.
class ProcessControl {
public:
    virtual ~ProcessControl() = default;

    /// Starts a process that outlives this one; the words of the failure, or nothing.
    virtual std::optional<QString> launchDetached(const QString& program, const QStringList& arguments) = 0;
    /// Asks the application to end in the ordinary way, through its delegate.
    virtual void terminate() = 0;
    /// Ends the process at once, running nothing.
    virtual void exitImmediately(int status) = 0;
    virtual void closeAllWindows() = 0;
    /// A line for the system's own log.
    virtual void systemLog(const QString& line) = 0;
};

}  // namespace veltrin
