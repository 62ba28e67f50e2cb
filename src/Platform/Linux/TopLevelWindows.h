#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>

#include <optional>
#include <vector>

namespace veltrin {

/// A top-level window of an application. Pixels of the desktop, origin at the top left.
struct TopLevelWindow {
    quint32 id = 0;
    QString title;
    QRectF frame;   ///< what the user sees: with the window manager's border, without a client-drawn shadow
    QRectF client;  ///< the application's own drawing, inside any shadow it draws
};

/// The top-level windows of other processes, as the window manager tells of them. Main thread.
class TopLevelWindows {
public:
    virtual ~TopLevelWindows() = default;
    /// The active window, if it is one of that process.
    virtual std::optional<TopLevelWindow> activeWindow(qint32 processIdentifier) = 0;
    /// All windows of that process that the window manager lists, the topmost first.
    virtual std::vector<TopLevelWindow> windows(qint32 processIdentifier) = 0;
    /// The window as it stands now; empty when it is gone.
    virtual std::optional<TopLevelWindow> window(quint32 id) = 0;
};

}  // namespace veltrin
