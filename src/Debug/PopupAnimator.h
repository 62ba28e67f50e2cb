#pragma once

#include "Foundation/Lifetime.h"
#include "Platform/FloatingPanels.h"

#include <memory>
#include <vector>

namespace veltrin {

/// The one way in which floating panels come and go. Whoever sends a panel away hands it over and has done
/// with it: the panel fades and is closed at the end, or at once when this goes before. Main thread.
class PopupAnimator {
public:
    static constexpr double usualScale = 0.965;
    static constexpr double usualDuration = 0.17;  ///< seconds

    PopupAnimator() = default;
    PopupAnimator(const PopupAnimator&) = delete;
    PopupAnimator& operator=(const PopupAnimator&) = delete;

    /// Shows the panel: transparent and scaled at first, whole after `duration` seconds.
    static void animateIn(FloatingPanel& panel, double scale = usualScale, double duration = usualDuration) {
        panel.animateIn(scale, duration);
    }

    /// Fades the panel and closes it; nothing for none. Where nothing fades it is closed before this returns.
    void animateOut(std::unique_ptr<FloatingPanel> panel);

    /// Panels that are on their way out.
    int leavingCount() const { return static_cast<int>(leaving_.size()); }

private:
    std::vector<std::unique_ptr<FloatingPanel>> leaving_;
    Lifetime lifetime_;
};

}  // namespace veltrin
