#pragma once

#include "support/desktop/RealDesktop.h"

#include <xcb/xcb.h>

namespace veltrin {

/// A program that wants keys too: a window manager with shortcuts, an application with an open menu, a screen
/// locker. What it took is free again at the end of its life.
class RivalClient {
public:
    explicit RivalClient(RealDesktop& desktop);
    ~RivalClient();
    RivalClient(const RivalClient&) = delete;
    RivalClient& operator=(const RivalClient&) = delete;

    /// Takes a combination on the whole display by the core protocol, as most window managers do.
    bool take(quint8 key, quint16 modifiers);
    void giveBack(quint8 key, quint16 modifiers);
    /// The same by XInput 2. False when another client of that kind has it.
    bool takeByXInput(quint8 key, quint32 modifiers);
    void giveBackByXInput(quint8 key, quint32 modifiers);

    /// Takes the whole keyboard, as an open menu does.
    bool holdKeyboard();
    void freeKeyboard();
    /// Lays a window over the whole screen, past the window manager, as screen lockers do.
    void coverScreen();
    void uncoverScreen();

    /// Key presses that came here so far.
    int presses();

private:
    xcb_connection_t* connection_ = nullptr;
    xcb_screen_t* screen_ = nullptr;
    xcb_window_t cover_ = XCB_NONE;
    quint16 keyboard_ = 0;
    int presses_ = 0;

    void sync();
};

}  // namespace veltrin
