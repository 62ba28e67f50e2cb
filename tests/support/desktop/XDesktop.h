#pragma once

#include <QByteArray>
#include <QColor>
#include <QHash>
#include <QImage>
#include <QList>
#include <QRect>
#include <QString>

#include <sys/types.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <optional>

namespace veltrin {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using XReply = std::unique_ptr<T, FreeReply>;

/// A test's own view of an X display: windows, what is on the screen, which keys are down. A connection of
/// its own, shared with nobody. Any thread, one at a time. Coordinates have the origin at the top left of the
/// root window.
class XDesktop {
public:
    /// Throws std::runtime_error when the display does not answer.
    explicit XDesktop(const QString& display);
    ~XDesktop();
    XDesktop(const XDesktop&) = delete;
    XDesktop& operator=(const XDesktop&) = delete;

    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_atom_t atom(const char* name);

    /// Bytes of a property, empty when there is none.
    QByteArray property(xcb_window_t window, const char* name);
    std::optional<quint32> cardinal(xcb_window_t window, const char* name);

    /// Top-level windows that are mapped: the window manager's list, or without one the root's viewable
    /// children.
    QList<xcb_window_t> windows();
    /// Every viewable child of the root, override-redirect ones (menus, overlays) included, topmost last.
    QList<xcb_window_t> rootChildren();
    /// _NET_ACTIVE_WINDOW; without a window manager the top-level window that holds the input focus. 0 for
    /// none.
    xcb_window_t activeWindow();
    bool isViewable(xcb_window_t window);
    QString title(xcb_window_t window);
    /// Both parts of WM_CLASS, instance and class.
    QStringList windowClass(xcb_window_t window);
    /// The process of a window, from _NET_WM_PID; 0 when it does not say.
    pid_t processOf(xcb_window_t window);
    /// On the root window, without the window manager's frame.
    QRect geometry(xcb_window_t window);
    bool hasWindowManager();

    /// Makes a window active: asks the window manager as a pager would, or sets the input focus without one.
    /// False when it did not become active within `seconds`.
    bool activate(xcb_window_t window, double seconds = 5);
    void moveResize(xcb_window_t window, const QRect& geometry);
    /// Asks a window to close, as its frame's button would.
    void close(xcb_window_t window);

    QPoint pointer();
    /// Number of keys that the server holds for down. 0 after every test.
    int keysDown();
    /// Modifiers and locks that are in effect (XCB_MOD_MASK_…).
    quint16 modifiers();
    /// Mouse buttons 1 to 5 that are down, as the bits XCB_BUTTON_MASK_….
    quint16 buttonsDown();

    QImage image(const QRect& area);
    QImage image() { return image(QRect(0, 0, screen_->width_in_pixels, screen_->height_in_pixels)); }
    QColor pixel(QPoint point);
    /// Writes the whole screen as a PNG file; false when it cannot be written.
    bool screenshot(const QString& path);

    /// Returns when the server has done all that this connection asked for.
    void sync();

private:
    xcb_connection_t* connection_ = nullptr;
    xcb_screen_t* screen_ = nullptr;
    QHash<QByteArray, xcb_atom_t> atoms_;

    void sendToRoot(xcb_window_t window, const char* type, std::initializer_list<quint32> data);
    QList<xcb_window_t> children(xcb_window_t window);
    quint16 pointerMask();
};

}  // namespace veltrin
