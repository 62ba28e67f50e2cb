#pragma once

#include <QString>

namespace veltrin {

/// The desktop's own log, which is there before the program's file and after its death. Main thread.
class SystemLog {
public:
    virtual ~SystemLog() = default;
    /// Leaves an informational line. Never waits; where nobody keeps a log, nothing happens.
    virtual void info(const QString& subsystem, const QString& category, const QString& text) = 0;
    /// From now on a crash of this process leaves a line too; the process then ends as it would have.
    virtual void watchForCrashes() = 0;
};

}  // namespace veltrin
