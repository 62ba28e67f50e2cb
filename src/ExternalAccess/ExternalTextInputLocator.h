#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Screens.h"
#include "Platform/Workspace.h"

#include <QRectF>

#include <optional>

namespace veltrin {

/// Where on the screen the user's caret is, so that panels can stand beside it. Touches no text. Main thread,
/// synchronous.
class ExternalTextInputLocator {
public:
    ExternalTextInputLocator(Accessibility& accessibility, Workspace& workspace, const Screens& screens)
        : accessibility_(accessibility), workspace_(workspace), screens_(screens) {}

    /// In the windowing layer's coordinates; none when not even the window is known.
    std::optional<QRectF> bestAnchorRect();

private:
    std::optional<QRectF> selectedTextRangeBounds(const AXElementRef& element);
    std::optional<QRectF> elementBounds(const AXElementRef& element);
    std::optional<QRectF> focusedWindowBounds(const AXElementRef& application);
    std::optional<QRectF> frontmostWindowInputAnchor(const AXElementRef& application);
    void logFocusedElement(const AXElementRef& element);
    QRectF convertAccessibilityRectToAppKit(const QRectF& rect) const;
    static bool isUsable(const QRectF& rect);

    Accessibility& accessibility_;
    Workspace& workspace_;
    const Screens& screens_;
};

}  // namespace veltrin
