#pragma once

#include "Foundation/Observers.h"

#include <vector>

namespace veltrin {

class AppSettings;
class DesktopAppearance;
class VtLook;

/// Keeps the interface's look true to the user's settings and, where those say so, to the desktop's own look.
class LookSource {
public:
    LookSource(VtLook& look, AppSettings& settings, DesktopAppearance& appearance);

private:
    void update();

    VtLook& look_;
    AppSettings& settings_;
    DesktopAppearance& appearance_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace veltrin
