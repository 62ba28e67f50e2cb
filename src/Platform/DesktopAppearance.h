#pragma once

#include "Foundation/Observers.h"

namespace veltrin {

/// How the user likes the desktop to look and to move. Main thread.
class DesktopAppearance {
public:
    virtual ~DesktopAppearance() = default;
    virtual bool isDark() const = 0;
    /// Things shall appear at their place and not move there.
    virtual bool reducesMotion() const = 0;

    /// Told after one of them has changed.
    Observers<> changed;
};

}  // namespace veltrin
