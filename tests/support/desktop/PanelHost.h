#pragma once

#include "support/desktop/ChildProcess.h"
#include "support/desktop/RealDesktop.h"

#include <QByteArray>
#include <QRect>

namespace veltrin {

/// A process that shows the program's floating panels on a test desktop as it is told; see
/// tests/support/apps/PanelHost.cpp for its commands.
class PanelHost {
public:
    /// Returns when it listens; throws std::runtime_error when it does not start. `extra` goes over the
    /// desktop's environment.
    explicit PanelHost(RealDesktop& desktop, const Environment& extra = {});

    /// What it answers to a command; throws std::runtime_error when no answer comes.
    QByteArray ask(const QByteArray& command, double seconds = 30);
    pid_t pid() const { return process_.pid(); }

    /// Its windows on the screen, the topmost last.
    QList<xcb_window_t> windows();
    /// The place of its only window on the screen; null unless there is exactly one.
    QRect place();
    /// Waits until its only window stands there.
    bool waitForPlace(const QRect& place, double seconds = 5);

private:
    RealDesktop& desktop_;
    Pipe in_;
    Pipe out_;
    ChildProcess process_;
    QByteArray pending_;
};

}  // namespace veltrin
