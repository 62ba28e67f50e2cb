#pragma once

#include "Platform/FloatingPanels.h"

#include <functional>
#include <utility>

/// The one way in which floating panels come and go.
namespace veltrin::PopupAnimator {

inline constexpr double usualScale = 0.965;
inline constexpr double usualDuration = 0.17;  ///< seconds

/// Shows the panel: transparent and scaled at first, whole after `duration` seconds.
inline void animateIn(FloatingPanel& panel, double scale = usualScale, double duration = usualDuration) {
    panel.animateIn(scale, duration);
}

/// Fades the panel, then calls `completion`, which closes it.
inline void animateOut(FloatingPanel& panel, std::function<void()> completion) {
    panel.animateOut(std::move(completion));
}

}  // namespace veltrin::PopupAnimator
