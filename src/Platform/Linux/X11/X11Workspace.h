#pragma once

#include "Platform/Linux/DesktopEntries.h"
#include "Platform/Linux/X11/X11Windows.h"
#include "Platform/Workspace.h"

#include <unordered_map>

namespace veltrin {

/// The applications of an X11 session. The frontmost one costs two round trips; everything else about a
/// window is remembered as long as the window belongs to the same process.
class X11Workspace final : public Workspace {
public:
    X11Workspace(const X11Windows& windows, const DesktopEntries& entries);

    std::optional<RunningApplication> frontmostApplication() const override;
    std::optional<RunningApplication> runningApplication(qint32 processIdentifier) const override;
    bool activate(qint32 processIdentifier, ActivateOptions options) override;
    QString mainBundleIdentifier() const override { return QStringLiteral("com.veltrin.app"); }
    std::optional<QString> executablePath() const override;

private:
    RunningApplication describe(xcb_window_t window, std::optional<qint32> process) const;
    RunningApplication identify(xcb_window_t window, std::optional<qint32> process) const;

    const X11Windows& windows_;
    const DesktopEntries& entries_;
    mutable std::unordered_map<xcb_window_t, RunningApplication> known_;
    mutable std::unordered_map<qint32, xcb_window_t> lastActive_;
};

}  // namespace veltrin
