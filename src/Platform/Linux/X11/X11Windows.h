#pragma once

#include "Platform/Linux/X11/X11Connection.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>
#include <unordered_map>
#include <vector>

namespace veltrin {

/// The application windows of the session and the questions one can ask about them. Main thread.
class X11Windows {
public:
    explicit X11Windows(const X11Connection& connection);

    struct Active {
        xcb_window_t window = XCB_NONE;
        std::optional<qint32> process;
    };
    /// The window that has the keyboard, by the window manager's word, or without one by the input focus. Two
    /// round trips.
    std::optional<Active> active() const;
    bool hasWindowManager() const;
    /// Application windows, the topmost last.
    std::vector<xcb_window_t> windows() const;
    std::vector<xcb_window_t> windowsOf(qint32 process) const;

    /// From _NET_WM_PID, else from the server's own knowledge of the client.
    std::optional<qint32> process(xcb_window_t window) const;
    /// Both parts of WM_CLASS: instance and class.
    QStringList windowClass(xcb_window_t window) const;
    QString gtkApplicationId(xcb_window_t window) const;
    bool exists(xcb_window_t window) const;

    /// Asks for a window to be brought to front, and waits a little until it is: at most `limit`.
    bool activate(xcb_window_t window, std::chrono::milliseconds limit) const;

    const X11Connection& connection() const { return connection_; }

private:
    std::optional<qint32> processByServer(xcb_window_t window) const;
    xcb_window_t focusedTopLevel() const;

    const X11Connection& connection_;
    xcb_atom_t activeWindow_;
    xcb_atom_t managerCheck_;
    xcb_atom_t processId_;
};

/// Asks windows whether their application is alive (_NET_WM_PING), on a connection of its own. Main thread.
class X11WindowPing {
public:
    explicit X11WindowPing(const QByteArray& display);

    enum class Answer {
        alive,
        unanswered,    ///< in time; the window counts as hung from now on, and is not waited for again
        notSupported,  ///< the window never said that it answers
    };
    /// Waits at most `limit`. A window that did not answer before fails at once, until its answer has come.
    Answer ask(xcb_window_t window, std::chrono::milliseconds limit);

private:
    bool takeAnswer(const xcb_generic_event_t& event);
    void listen(bool on);

    std::unique_ptr<X11Connection> connection_;
    std::unordered_map<xcb_window_t, std::uint32_t> waiting_;  ///< by window: the stamp its answer carries
    std::uint32_t lastStamp_ = 0;
};

}  // namespace veltrin
