#pragma once

#include "Platform/Linux/X11/X11Connection.h"

namespace veltrin {

/// Whether another client has the whole keyboard: an open menu, a virtual machine, a screen locker. Asking
/// disturbs nobody. Any thread, one at a time.
class X11KeyboardHolder {
public:
    explicit X11KeyboardHolder(const X11Connection& connection);
    X11KeyboardHolder(const X11KeyboardHolder&) = delete;
    X11KeyboardHolder& operator=(const X11KeyboardHolder&) = delete;
    ~X11KeyboardHolder();

    /// True also when this connection has it by an XInput grab.
    bool isHeld() const;
    /// Whether what holds it is a screen locker: a window past the window manager covers the whole screen and
    /// takes all input.
    bool isLockScreen() const;

private:
    bool takesInput(xcb_window_t window) const;

    const X11Connection& connection_;
    xcb_window_t window_;
};

}  // namespace veltrin
