#pragma once

#include "Platform/Screens.h"

#include <memory>

namespace veltrin {

class X11Connection;

/// The monitors of RandR, the window manager's work area, and the pointer. Each question is asked of the server anew
/// (about 0.1 ms), so that a screen that came or went is never missed.
class X11Screens final : public Screens {
public:
    /// `connection` outlives this object.
    explicit X11Screens(const X11Connection& connection) : connection_(connection) {}

    std::vector<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;
    QPointF mouseLocation() const override;

private:
    struct Monitor {
        QRectF frame;  ///< origin at the top left
        bool primary = false;
    };
    std::vector<Monitor> monitors() const;
    /// The part of the desktop that bars leave free, origin at the top left; none without a window manager.
    std::optional<QRectF> workArea() const;

    const X11Connection& connection_;
};

}  // namespace veltrin
