#pragma once

#include "Platform/Linux/X11/ClickCounter.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/MouseEventTap.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace veltrin {

/// Listens to the left mouse button of the session on a thread and connection of its own, and to the
/// pointer's motion only while that button is down. It grabs nothing, so nobody ever waits for it.
///
/// The drag pasteboard is the selection that drags are made with. Its changes come on the same connection as
/// the buttons, and so in the server's order.
class X11MouseListener {
public:
    struct Callbacks {
        /// Both on the listening thread.
        std::function<void(const MouseEvent&)> tell;
        /// The connection was lost; the listener is of no use then.
        std::function<void()> onLoss;
    };
    /// Null when the server has no XInput 2.2 or no XFixes.
    static std::unique_ptr<X11MouseListener> start(const QByteArray& display, Callbacks callbacks);
    ~X11MouseListener();
    X11MouseListener(const X11MouseListener&) = delete;
    X11MouseListener& operator=(const X11MouseListener&) = delete;

private:
    X11MouseListener(std::unique_ptr<X11Connection> connection, Callbacks callbacks);
    void run();
    void waitForMore();
    void handle(const xcb_generic_event_t& event);
    void press(std::uint8_t button, xcb_timestamp_t time);
    void release(std::uint8_t button);
    void sampleMotion();
    void tell(MouseEventType type, int clickState);
    void selectEvents(bool withMotion);
    void readButtonMap();
    bool isLeft(std::uint8_t button) const;
    void locate();

    std::unique_ptr<X11Connection> connection_;
    Callbacks callbacks_;
    int wake_ = -1;
    std::atomic<bool> stopping_{false};

    // The listening thread's own.
    std::vector<std::uint8_t> buttonMap_;  ///< what each button of the device stands for
    ClickCounter clicks_;
    qint64 dragPasteboardChangeCount_ = 1;
    QPoint location_;
    double height_ = 0;
    std::uint8_t buttonDown_ = 0;     ///< the one that is taken for the left button; 0 when none is down
    bool hasMoved_ = false;           ///< since the place was looked at last
    std::uint64_t nextSampleAt_ = 0;  ///< nanoseconds on the monotonic clock

    std::thread thread_;
};

}  // namespace veltrin
