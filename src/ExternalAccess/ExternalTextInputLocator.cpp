#include "ExternalAccess/ExternalTextInputLocator.h"

#include "ExternalAccess/AttributeReading.h"
#include "Foundation/MVPLog.h"

#include <algorithm>
#include <cmath>

namespace veltrin {

std::optional<QRectF> ExternalTextInputLocator::bestAnchorRect() {
    MVPLog::write("AX locator begin");
    if (!accessibility_.isProcessTrusted()) {
        MVPLog::write("AX locator fallback: AXIsProcessTrusted false");
        return std::nullopt;
    }
    const auto frontmost = workspace_.frontmostApplication();
    if (!frontmost) {
        MVPLog::write("AX locator fallback: no frontmost app");
        return std::nullopt;
    }
    const bool isSelf = frontmost->bundleIdentifier == workspace_.mainBundleIdentifier();
    MVPLog::write("AX frontmost app:", frontmost->localizedName.value_or(QStringLiteral("unknown")),
                  "pid:", frontmost->processIdentifier, "bundle:", frontmost->bundleIdentifier,
                  "isSelf:", isSelf);
    if (isSelf)
        MVPLog::write("AX locator note: frontmost app is Veltrin; this is not an external text target");

    const AXElementRef application = accessibility_.applicationElement(frontmost->processIdentifier);
    const auto focused =
        readAttribute<AXElementRef>(accessibility_, application, AXAttribute::focusedUIElement);
    if (!focused.value) {
        MVPLog::write("AX locator fallback: focused element error", code(focused.error));
        if (frontmost->bundleIdentifier == u"com.tencent.xinWeChat") {
            MVPLog::write("AX locator fallback: WeChat has no reliable caret; use mouse anchor");
            return std::nullopt;
        }
        return frontmostWindowInputAnchor(application);
    }
    logFocusedElement(*focused.value);

    if (const auto rect = selectedTextRangeBounds(*focused.value); rect && isUsable(*rect)) {
        MVPLog::write("AX anchor selected: source=selectedTextRange rect:", *rect);
        return rect;
    }
    MVPLog::write("AX anchor candidate rejected: selectedTextRange unavailable or unusable");
    if (const auto rect = elementBounds(*focused.value); rect && isUsable(*rect)) {
        MVPLog::write("AX anchor selected: source=focusedElementBounds rect:", *rect);
        return rect;
    }
    MVPLog::write("AX anchor candidate rejected: focusedElementBounds unavailable or unusable");
    MVPLog::write("AX locator fallback: no usable bounds");
    return frontmostWindowInputAnchor(application);
}

std::optional<QRectF> ExternalTextInputLocator::selectedTextRangeBounds(const AXElementRef& element) {
    const auto selected = readAttribute<TextRange>(accessibility_, element, AXAttribute::selectedTextRange);
    if (selected.failed()) {
        MVPLog::write("AX selected range unavailable: error", code(selected.error));
        return std::nullopt;
    }
    if (!selected.value) {
        MVPLog::write("AX selected range unavailable: could not decode CFRange");
        return std::nullopt;
    }
    TextRange range = *selected.value;
    MVPLog::write("AX selected range:", "location:", range.location, "length:", range.length);
    if (range.length == 0) {
        range.length = 1;  // a caret has no rectangle; the character after it has
        MVPLog::write("AX selected range adjusted for caret:", "location:", range.location,
                      "length:", range.length);
    }
    if (range.location < 0 || range.length < 0) {
        MVPLog::write("AX bounds for range unavailable: could not create range parameter");
        return std::nullopt;
    }
    const auto bounds = attributeReading<QRectF>(
        accessibility_.copyParameterizedAttributeValue(element, AXAttribute::boundsForRange, AXValue(range)));
    if (bounds.failed()) {
        MVPLog::write("AX bounds for range unavailable: error", code(bounds.error));
        return std::nullopt;
    }
    if (!bounds.value) {
        MVPLog::write("AX bounds for range unavailable: could not decode CGRect");
        return std::nullopt;
    }
    const QRectF converted = convertAccessibilityRectToAppKit(*bounds.value);
    MVPLog::write("AX bounds for range raw:", *bounds.value, "converted:", converted,
                  "usable:", isUsable(converted));
    return converted;
}

std::optional<QRectF> ExternalTextInputLocator::elementBounds(const AXElementRef& element) {
    const auto position = readAttribute<QPointF>(accessibility_, element, AXAttribute::position);
    if (position.failed()) {
        MVPLog::write("AX focused element position unavailable: error", code(position.error));
        return std::nullopt;
    }
    const auto size = readAttribute<QSizeF>(accessibility_, element, AXAttribute::size);
    if (size.failed()) {
        MVPLog::write("AX focused element size unavailable: error", code(size.error));
        return std::nullopt;
    }
    if (!position.value) {
        MVPLog::write("AX focused element position unavailable: could not decode CGPoint");
        return std::nullopt;
    }
    if (!size.value) {
        MVPLog::write("AX focused element size unavailable: could not decode CGSize");
        return std::nullopt;
    }
    const QRectF raw(*position.value, *size.value);
    const QRectF converted = convertAccessibilityRectToAppKit(raw);
    MVPLog::write("AX focused element bounds raw:", raw, "converted:", converted,
                  "usable:", isUsable(converted));
    return converted;
}

std::optional<QRectF> ExternalTextInputLocator::focusedWindowBounds(const AXElementRef& application) {
    const auto window = readAttribute<AXElementRef>(accessibility_, application, AXAttribute::focusedWindow);
    if (window.value) {
        if (const auto bounds = elementBounds(*window.value); bounds && isUsable(*bounds)) return bounds;
    } else {
        MVPLog::write("AX focused window unavailable: error", code(window.error));
    }
    const auto windows =
        readAttribute<std::vector<AXElementRef>>(accessibility_, application, AXAttribute::windows);
    if (!windows.value) {
        MVPLog::write("AX windows unavailable: error", code(windows.error));
        return std::nullopt;
    }
    if (windows.value->empty() || !windows.value->front()) return std::nullopt;
    const auto bounds = elementBounds(windows.value->front());
    return bounds && isUsable(*bounds) ? bounds : std::nullopt;
}

std::optional<QRectF> ExternalTextInputLocator::frontmostWindowInputAnchor(const AXElementRef& application) {
    const auto window = focusedWindowBounds(application);
    if (!window) {
        MVPLog::write("AX locator fallback: no focused window bounds");
        return std::nullopt;
    }
    // An input bar along the bottom edge, as chat applications have one.
    const double height = std::clamp(window->height() * 0.1, 44.0, 74.0);
    const double inset = std::clamp(window->width() * 0.04, 20.0, 56.0);
    const double width = std::max(window->width() - 2 * inset, 120.0);
    const QRectF rect(ScreenRect::minX(*window) + inset, ScreenRect::minY(*window) + 18.0, width, height);
    MVPLog::write("AX anchor selected: source=frontmostWindowInputEstimate rect:", rect);
    return rect;
}

void ExternalTextInputLocator::logFocusedElement(const AXElementRef& element) {
    auto read = accessibility_.copyAttributeValues(
        element, {AXAttribute::role, AXAttribute::subrole, AXAttribute::title, AXAttribute::description});
    const auto string = [&read](std::size_t index) {
        return attributeReading<QString>(std::move(read[index])).value;
    };
    MVPLog::write("AX focused element:", "role:", string(0), "subrole:", string(1), "title:", string(2),
                  "description:", string(3));
}

QRectF ExternalTextInputLocator::convertAccessibilityRectToAppKit(const QRectF& rect) const {
    // Of the union of all screens only the upper edge counts.
    const auto screens = screens_.screens();
    double maxY = 0;
    for (std::size_t i = 0; i < screens.size(); ++i) {
        const double edge = ScreenRect::maxY(screens[i].frame);
        maxY = i == 0 ? edge : std::max(maxY, edge);
    }
    return {rect.x(), maxY - rect.y() - rect.height(), rect.width(), rect.height()};
}

bool ExternalTextInputLocator::isUsable(const QRectF& rect) {
    return std::isfinite(rect.x()) && std::isfinite(rect.y()) && std::isfinite(rect.width()) &&
           std::isfinite(rect.height()) && rect.width() > 1.0 && rect.height() > 1.0;
}

}  // namespace veltrin
