#pragma once

#include <QPointF>
#include <QtGlobal>

#include <functional>
#include <memory>

namespace veltrin {

/// The values are the numbers that stand in the log.
enum class MouseEventType : qint32 {
    tapDisabledByTimeout = -2,
    tapDisabledByUserInput = -1,
    leftMouseDown = 1,
    leftMouseUp = 2,
    leftMouseDragged = 6,
};

/// One event of the left button, whatever application it is meant for. Of the two "disabled" events only the
/// type counts.
struct MouseEvent {
    MouseEventType type = MouseEventType::leftMouseDown;
    QPointF location;       ///< pixels of the desktop, origin at its top left
    QPointF mouseLocation;  ///< the same place as the windowing layer has it, y upwards
    int clickState = 0;     ///< of downs and ups: 1 for a click, 2 for a double click, and so on
    /// Of the drag pasteboard as it stood at the event. Grows whenever something begins to be dragged.
    qint64 dragPasteboardChangeCount = 0;
};

/// A session-wide tap of the left button that only listens: nothing is ever held up or swallowed. Its handler
/// runs on the main thread, in the order of the events. While no button is down nobody pays for the pointer's
/// motion; during a drag the motion is told some 120 times a second.
///
/// A tap that the desktop has turned off says so by one of the two "disabled" events and is silent until it
/// is enabled again. Destroying the tap ends it.
class MouseEventTap {
public:
    using Handler = std::function<void(const MouseEvent&)>;

    virtual ~MouseEventTap() = default;
    virtual void setEnabled(bool enabled) = 0;
};

class MouseEventTaps {
public:
    virtual ~MouseEventTaps() = default;
    /// A new tap, disabled; null when the desktop does not let us listen.
    virtual std::unique_ptr<MouseEventTap> create(MouseEventTap::Handler handler) = 0;
};

}  // namespace veltrin
