#include "Platform/Linux/X11/X11Workspace.h"

#include <QFile>
#include <QFileInfo>

#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace veltrin {
namespace {

/// So many windows are remembered; then everything is asked anew.
constexpr std::size_t mostKnown = 256;
/// How long a window manager may take to bring a window to front.
constexpr std::chrono::milliseconds activationLimit{200};

QString executableOf(qint32 process) {
    QString path = QFile::symLinkTarget(QStringLiteral("/proc/%1/exe").arg(process));
    // The file of a program that was updated while it runs.
    if (path.endsWith(QStringLiteral(" (deleted)"))) path.chop(10);
    return QFileInfo(path).fileName();
}

bool isRunning(qint32 process) {
    return process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
}

std::optional<QString> orNone(const QString& text) {
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

}  // namespace

X11Workspace::X11Workspace(const X11Windows& windows, const DesktopEntries& entries)
    : windows_(windows), entries_(entries) {
}

std::optional<RunningApplication> X11Workspace::frontmostApplication() const {
    const auto active = windows_.active();
    if (!active) return std::nullopt;
    if (active->process) lastActive_[*active->process] = active->window;
    return describe(active->window, active->process);
}

RunningApplication X11Workspace::describe(xcb_window_t window, std::optional<qint32> process) const {
    const auto found = known_.find(window);
    if (found != known_.end() && found->second.processIdentifier == process.value_or(0)) return found->second;
    if (known_.size() >= mostKnown) known_.clear();
    return known_[window] = identify(window, process);
}

RunningApplication X11Workspace::identify(xcb_window_t window, std::optional<qint32> process) const {
    RunningApplication result;
    result.processIdentifier = process.value_or(0);
    result.window = window;
    const QStringList windowClass = window != XCB_NONE ? windows_.windowClass(window) : QStringList();
    const QString className = windowClass.value(1, windowClass.value(0));
    if (process == static_cast<qint32>(getpid())) {
        result.bundleIdentifier = mainBundleIdentifier();
        result.localizedName = QStringLiteral("Veltrin");
        return result;
    }
    const QString gtkId = window != XCB_NONE ? windows_.gtkApplicationId(window) : QString();
    const QString executable = process ? executableOf(*process) : QString();
    auto entry = gtkId.isEmpty() ? std::nullopt : entries_.byId(gtkId);
    if (!entry && gtkId.isEmpty()) entry = entries_.byWindowClass(windowClass);
    if (!entry && gtkId.isEmpty()) entry = entries_.byExecutable(executable);

    if (!gtkId.isEmpty())
        result.bundleIdentifier = gtkId;
    else if (entry)
        result.bundleIdentifier = entry->id;
    else
        result.bundleIdentifier = orNone(executable.isEmpty() ? className : executable);
    result.localizedName = orNone(entry && !entry->name.isEmpty() ? entry->name : className);
    if (!result.localizedName) result.localizedName = orNone(executable);
    if (entry) result.icon = orNone(entry->icon);
    return result;
}

std::optional<RunningApplication> X11Workspace::runningApplication(qint32 process) const {
    if (!isRunning(process)) return std::nullopt;
    const auto last = lastActive_.find(process);
    if (last != lastActive_.end() && windows_.process(last->second) == process) {
        return describe(last->second, process);
    }
    const auto windows = windows_.windowsOf(process);
    if (windows.empty()) return identify(XCB_NONE, process);
    return describe(windows.back(), process);
}

bool X11Workspace::activate(qint32 process, ActivateOptions options) {
    // X11 has one way of bringing an application to front; it always ignores the others.
    static_cast<void>(options);
    if (!isRunning(process)) return false;
    const auto front = windows_.active();
    if (front && front->process == process) return true;
    // The window that was used last, else the topmost.
    const auto windows = windows_.windowsOf(process);
    if (windows.empty()) return false;
    const auto last = lastActive_.find(process);
    const bool knowsLast =
        last != lastActive_.end() && std::find(windows.begin(), windows.end(), last->second) != windows.end();
    return windows_.activate(knowsLast ? last->second : windows.back(), activationLimit);
}

std::optional<QString> X11Workspace::executablePath() const {
    return orNone(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
}

}  // namespace veltrin
