#pragma once

#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Screens.h"

namespace veltrin {

/// The monitors of an X11 session, the primary one first. The server's coordinates have the origin at the top
/// left.
class X11Screens final : public Screens {
public:
    explicit X11Screens(const X11Connection& connection) : connection_(connection) {}

    std::vector<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;
    QPointF mouseLocation() const override;

private:
    double height() const;

    const X11Connection& connection_;
};

}  // namespace veltrin
