#include "Debug/PopupAnimator.h"

#include <utility>

namespace veltrin {

void PopupAnimator::animateOut(std::unique_ptr<FloatingPanel> panel) {
    if (!panel) return;
    FloatingPanel* fading = panel.get();
    leaving_.push_back(std::move(panel));
    fading->animateOut(lifetime_.bind([this, fading] {
        std::erase_if(leaving_, [fading](const auto& leaving) { return leaving.get() == fading; });
    }));
}

}  // namespace veltrin
