#pragma once

#include "Platform/FloatingPanels.h"
#include "Platform/Screens.h"

#include <functional>
#include <memory>

class QQmlEngine;

namespace veltrin {

/// The floating panels as QML windows. The QML engine is made with the first panel.
class QuickFloatingPanels final : public FloatingPanels {
public:
    /// `usesDarkLook` is asked each time a panel is made.
    QuickFloatingPanels(Screens& screens, std::function<bool()> usesDarkLook);
    ~QuickFloatingPanels() override;

    std::unique_ptr<FloatingPanel> create(const PanelSpec& spec) override;

private:
    Screens& screens_;
    std::function<bool()> usesDarkLook_;
    std::unique_ptr<QQmlEngine> engine_;
};

}  // namespace veltrin
