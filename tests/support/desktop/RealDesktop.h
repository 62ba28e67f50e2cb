#pragma once

#include "support/desktop/ChildProcess.h"
#include "support/desktop/XDesktop.h"

#include <QRect>
#include <QSize>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace veltrin {

struct DesktopOptions {
    QSize screen{1280, 800};
    /// The screens that RandR and Xinerama report, the first one primary; empty means one that covers
    /// everything. `screen` grows to hold them all.
    QList<QRect> monitors = {};
    QStringList serverArguments = {};  ///< appended to the X server's
    bool windowManager = true;
    bool accessibility = true;  ///< the accessibility bus, and applications told to use it
    QString locale = QStringLiteral("C.UTF-8");
    Environment environment = {};  ///< what every program gets besides
};

/// A desktop of the tests' own: X server, window manager, session bus, accessibility bus, and private home
/// and XDG folders. Nothing of the user's is read or written. Construction returns when all of it works
/// (about 0.2 s) and throws std::runtime_error with the servers' output when something does not. Works as
/// root and without systemd.
///
/// Destruction ends every process that was started on it, whatever became of them, and removes the folder.
/// When the test program dies without destructors (a crash, SIGTERM, SIGKILL), a keeper process does the
/// same.
///
/// Nothing on the session bus is started on demand unless a test puts a .service file into
/// `busServicesFolder`.
class RealDesktop {
public:
    explicit RealDesktop(const DesktopOptions& options = {});
    ~RealDesktop();
    RealDesktop(const RealDesktop&) = delete;
    RealDesktop& operator=(const RealDesktop&) = delete;

    /// A desktop with the default options that lives until the test program ends, for tests that share one.
    static RealDesktop& shared();

    QString display() const { return display_; }  ///< ":N"
    QString sessionBusAddress() const { return busAddress_; }
    QString folder() const { return folder_; }  ///< removed at the end
    QString home() const { return folder_ + QStringLiteral("/home"); }
    QString configHome() const { return folder_ + QStringLiteral("/config"); }
    QString dataHome() const { return folder_ + QStringLiteral("/data"); }
    QString runtimeDirectory() const { return folder_ + QStringLiteral("/run"); }
    QString busServicesFolder() const { return folder_ + QStringLiteral("/bus-services"); }
    /// A file for a program's output, and any scratch file of a test.
    QString file(const QString& name) const { return folder_ + QStringLiteral("/") + name; }

    /// Everything a program on this desktop gets.
    Environment environment() const { return environment_; }
    /// Sets the same variables in this process, for adapters that are constructed in it, until the desktop is
    /// gone. Qt's own sessionBus() keeps the first address it saw; adapters connect by address instead.
    void applyToThisProcess();

    /// The test's own connection to the display.
    XDesktop& x() { return *x_; }

    /// Ends the window manager, or starts it again.
    void stopWindowManager();
    void startWindowManager();
    /// Ends the X server under everybody, for tests of a lost connection. Only destruction is useful
    /// afterwards.
    void killServer();
    /// Loads a keyboard layout as setxkbmap names it ("de", "us,ru").
    void setKeyboardLayout(const QString& layout);

    /// Ends all programs started on this desktop but not the desktop itself.
    void endPrograms();
    /// Processes of this desktop that are running, its servers not counted.
    std::vector<pid_t> programs() const;

private:
    QString folder_;
    QString display_;
    QString busAddress_;
    Environment environment_;
    Environment replaced_;
    QStringList added_;
    ChildProcess server_;
    ChildProcess bus_;
    ChildProcess windowManager_;
    ChildProcess accessibility_;
    ChildProcess keeper_;
    Pipe keeperPipe_;
    std::unique_ptr<XDesktop> x_;
    bool applied_ = false;
    std::vector<pid_t> servers_;

    void makeFolders();
    void buildEnvironment(const DesktopOptions& options);
    void startServers(const DesktopOptions& options);
    void startKeeper();
    void tellKeeper(const QByteArray& line);
    void setMonitors(const DesktopOptions& options);
    void runTool(const QStringList& command);
    void startAccessibility();
    void waitForAccessibility();
    void end();
    void restoreThisProcess();
    QString outputOf(const QString& name) const;
};

}  // namespace veltrin
