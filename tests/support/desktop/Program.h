#pragma once

#include "support/desktop/RealDesktop.h"

#include <QString>
#include <QStringList>

namespace veltrin {

/// A foreign application on a test desktop; killed at the end of its life. Its standard output and error are
/// kept.
class Program {
public:
    /// Starts it; throws std::runtime_error when it cannot be found. Does not wait for a window.
    Program(RealDesktop& desktop, const QStringList& command, const Environment& extra = {});
    Program(Program&&) = default;
    Program& operator=(Program&&) = default;
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() = default;

    // Applications the way tests want them: an own process each, and ready (window active) when the call
    // returns.
    static Program mousepad(RealDesktop& desktop, const QString& text = {});         ///< GTK 3 text view
    static Program gedit(RealDesktop& desktop, const QString& text = {});            ///< GTK 3 source view
    static Program gnomeTextEditor(RealDesktop& desktop, const QString& text = {});  ///< GTK 4
    static Program zenityEntry(RealDesktop& desktop, const QString& text = {});      ///< GTK 3 one-line entry
    /// One-line entry with bullets.
    static Program zenityPassword(RealDesktop& desktop);
    static Program xterm(RealDesktop& desktop, const QStringList& command = {QStringLiteral("cat")});
    /// Our Qt editor, with as many windows as it is told to have, the first one active; see
    /// tests/support/apps/TestEditor.cpp for its arguments.
    static Program qtEditor(RealDesktop& desktop, const QStringList& arguments = {});

    pid_t pid() const { return process_.pid(); }
    bool isRunning() { return process_.isRunning(); }
    /// Everything it has printed so far.
    QByteArray output() const;

    /// Waits until it has a window on the screen, makes that active unless it is, and returns it. Found by
    /// _NET_WM_PID, or by either part of WM_CLASS when one is given. Throws std::runtime_error with the
    /// program's output when there is none in time.
    /// With a `count` it waits for so many, and takes the last one to appear.
    xcb_window_t waitForWindow(double seconds = 20, const QString& windowClass = {}, int count = 1);
    /// Its windows on the screen now.
    QList<xcb_window_t> windows(const QString& windowClass = {}) const;
    /// The window that waitForWindow found; 0 before.
    xcb_window_t window() const { return window_; }

    /// Stops it as a hung program would hang: it answers nothing until `resume`. Returns when it stands
    /// still.
    void stop();
    void resume();
    /// Ends it at once, and returns when it is gone.
    void kill() { process_.kill(); }
    /// Asks it to end (SIGTERM).
    void terminate() { process_.terminate(); }
    bool waitForExit(double seconds) { return process_.waitForExit(seconds); }
    std::optional<int> exitStatus() { return process_.exitStatus(); }

private:
    RealDesktop* desktop_;
    QString log_;
    ChildProcess process_;
    xcb_window_t window_ = 0;
};

}  // namespace veltrin
