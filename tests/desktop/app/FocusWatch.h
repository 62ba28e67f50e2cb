#pragma once

#include "support/desktop/RealDesktop.h"

#include <QStringList>

#include <vector>

namespace veltrin {

/// Listens to what a foreign window is told about the keyboard focus, and to the window manager's word of who
/// is active. A grab of the keyboard is no loss of the focus, and applications do not take it for one.
class FocusWatch {
public:
    /// From now on; the window, or one inside it, must have the focus.
    FocusWatch(RealDesktop& desktop, xcb_window_t window);
    ~FocusWatch();
    FocusWatch(const FocusWatch&) = delete;
    FocusWatch& operator=(const FocusWatch&) = delete;

    /// Every moment at which the focus was taken away, in words; empty when it never was.
    QStringList losses();

private:
    void listen(xcb_window_t window, uint32_t mask);
    void take(const xcb_generic_event_t& event);

    XDesktop x_;
    xcb_window_t window_;
    xcb_atom_t active_;
    QStringList losses_;
};

}  // namespace veltrin
