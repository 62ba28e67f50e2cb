#pragma once

#include "Platform/Screens.h"

namespace veltrin {

/// One screen of 1920 by 1080 with a bar of 30 along its upper edge, the pointer in its middle; all of it to
/// be changed by the test. The first screen is the main one.
class FakeScreens final : public Screens {
public:
    std::vector<Screen> screens() const override { return list; }
    std::optional<Screen> mainScreen() const override {
        return list.empty() ? std::nullopt : std::optional<Screen>(list.front());
    }
    QPointF mouseLocation() const override { return mouse; }

    std::vector<Screen> list{{QRectF(0, 0, 1920, 1080), QRectF(0, 0, 1920, 1050)}};
    QPointF mouse{960, 540};
};

}  // namespace veltrin
