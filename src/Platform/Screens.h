#pragma once

#include <QPointF>
#include <QRectF>

#include <optional>
#include <vector>

namespace veltrin {

/// Rectangles of the windowing layer: x to the right, y upwards, the origin at the bottom left of the
/// desktop. In a QRectF of this kind `top()` is the lower edge; these names say what is meant.
namespace ScreenRect {
inline double minX(const QRectF& r) {
    return r.x();
}
inline double midX(const QRectF& r) {
    return r.x() + r.width() * 0.5;
}
inline double maxX(const QRectF& r) {
    return r.x() + r.width();
}
inline double minY(const QRectF& r) {
    return r.y();
}
inline double midY(const QRectF& r) {
    return r.y() + r.height() * 0.5;
}
inline double maxY(const QRectF& r) {
    return r.y() + r.height();
}
}  // namespace ScreenRect

struct Screen {
    QRectF frame;
    QRectF visibleFrame;  ///< without bars and docks
};

/// The screens and the pointer, in the windowing layer's coordinates. Main thread.
class Screens {
public:
    virtual ~Screens() = default;
    virtual std::vector<Screen> screens() const = 0;
    virtual std::optional<Screen> mainScreen() const = 0;
    virtual QPointF mouseLocation() const = 0;
};

}  // namespace veltrin
