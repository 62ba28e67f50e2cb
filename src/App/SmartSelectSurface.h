#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>

#include <optional>

namespace veltrin {

/// The icon beside a selection and the popup that it opens, as the watch over selections sees them. At most
/// one of each exists; while either does, no selection is looked at.
class SmartSelectSurface {
public:
    virtual ~SmartSelectSurface() = default;

    /// Frames of what is shown, in screen coordinates with y upwards; nothing when it is not shown.
    virtual std::optional<QRectF> iconFrame() const = 0;
    virtual std::optional<QRectF> popupFrame() const = 0;

    /// Offers the text beside `point` (screen coordinates with y upwards), in place of what was shown before.
    virtual void showIcon(QPointF point, const QString& selectedText) = 0;
    virtual void dismissIcon() = 0;
    virtual void dismissPopup() = 0;
};

}  // namespace veltrin
