#pragma once

#include "Platform/Linux/TopLevelWindows.h"

#include <xcb/xcb.h>

namespace veltrin {

/// Top-level windows over a connection of its own. Without a display, or when the connection breaks, there
/// are none. A window that names no process (`_NET_WM_PID`) belongs to nobody.
class X11TopLevelWindows final : public TopLevelWindows {
public:
    /// `display` as in $DISPLAY; empty takes that variable.
    explicit X11TopLevelWindows(const QByteArray& display = {});
    ~X11TopLevelWindows() override;
    X11TopLevelWindows(const X11TopLevelWindows&) = delete;
    X11TopLevelWindows& operator=(const X11TopLevelWindows&) = delete;

    std::optional<TopLevelWindow> activeWindow(qint32 processIdentifier) override;
    std::vector<TopLevelWindow> windows(qint32 processIdentifier) override;
    std::optional<TopLevelWindow> window(quint32 id) override;

private:
    enum Atom {
        activeWindowAtom,
        clientListStackingAtom,
        clientListAtom,
        processAtom,
        netNameAtom,
        frameExtentsAtom,
        shadowExtentsAtom,
        atomCount,
    };
    bool isUsable() const;
    xcb_get_property_cookie_t request(xcb_window_t window, xcb_atom_t property, quint32 words) const;
    std::vector<quint32> numbers(xcb_get_property_cookie_t cookie) const;
    std::vector<TopLevelWindow> described(const std::vector<quint32>& ids, qint32 processIdentifier) const;

    xcb_connection_t* connection_ = nullptr;
    xcb_window_t root_ = 0;
    xcb_atom_t atoms_[atomCount] = {};
};

}  // namespace veltrin
