#pragma once

#include <QPointF>
#include <QString>

#include <optional>

namespace veltrin {

/// What made a look at the selection worth while.
enum class SmartSelectTriggerReason { drag, multiClick };

/// As it stands in the log.
inline const char* rawValue(SmartSelectTriggerReason reason) {
    return reason == SmartSelectTriggerReason::drag ? "drag" : "multiClick";
}

/// A text that the user has selected in some application.
struct SmartSelectedContent {
    QString text;  ///< as read, not trimmed
    /// Where to show something beside it: the right end of the selection's upper edge as accessibility has
    /// it, taken as it is, or for a copy the place of the mouse.
    std::optional<QPointF> anchorPoint;
    /// Which way it was read: "AXFocusedSelectedText", "AXFocusedRange", "AXTreeSelectedText", "AXTreeRange"
    /// or "clipboardSelection".
    QString source;
    QString appName;           ///< "unknown" when it has none
    QString bundleIdentifier;  ///< "unknown" when it has none
    friend bool operator==(const SmartSelectedContent&, const SmartSelectedContent&) = default;
};

}  // namespace veltrin
