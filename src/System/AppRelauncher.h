#pragma once

#include "Platform/ProcessControl.h"
#include "Platform/RunLoop.h"
#include "Platform/Workspace.h"

#include <QString>

namespace veltrin {

/// Ends this program and has it started again.
class AppRelauncher {
public:
    AppRelauncher(ProcessControl& process, RunLoop& runLoop, const Workspace& workspace)
        : process_(process), runLoop_(runLoop), workspace_(workspace) {}

    /// Schedules the new start through a detached shell and ends the program, in the ordinary way and, when
    /// that does not finish within a second, at once. A start that cannot be scheduled ends the program all
    /// the same.
    void relaunchCurrentAppAndTerminate();

    /// The shell command that starts the program again after `delay` seconds: an application bundle, whose
    /// path ends in ".app", through its opener, anything else by its executable. `executablePath` may be
    /// absent.
    static QString relaunchShellCommand(const QString& bundlePath,
                                        const std::optional<QString>& executablePath, double delay);

private:
    ProcessControl& process_;
    RunLoop& runLoop_;
    const Workspace& workspace_;
};

}  // namespace veltrin
