#include "UI/Overlays/OverlayWindow.h"

#include <QGuiApplication>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QQuickItem>
#include <QRegion>

#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <cmath>
#include <cstdlib>
#include <memory>

namespace veltrin {
namespace {

constexpr int cornerRadius = 16;  // VtTheme.radiusPopup

xcb_connection_t* xConnection() {
    auto* native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native ? native->connection() : nullptr;
}

template <typename T>
struct Free {
    void operator()(T* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free<T>>;

QRegion roundedRegion(QSize size) {
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(0, 0), size), cornerRadius, cornerRadius);
    return QRegion(path.toFillPolygon().toPolygon());
}

}  // namespace

bool isCompositorRunning() {
    xcb_connection_t* connection = xConnection();
    if (connection == nullptr) return false;
    static const char name[] = "_NET_WM_CM_S0";
    const Reply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, sizeof(name) - 1, name), nullptr));
    if (!atom) return false;
    const Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

OverlayWindow::OverlayWindow(QQuickItem* card, QSize size, bool takesMouseEvents)
    : card_(card), takesMouseEvents_(takesMouseEvents) {
    Qt::WindowFlags flags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                            Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint |
                            Qt::X11BypassWindowManagerHint;
    if (!takesMouseEvents) flags |= Qt::WindowTransparentForInput;
    setFlags(flags);
    setColor(Qt::transparent);
    resize(size);
    card_->setParent(contentItem());
    card_->setParentItem(contentItem());
    card_->setSize(size);
}

void OverlayWindow::adaptToCompositor() {
    const bool blended = isCompositorRunning();
    card_->setProperty("translucent", blended);
    // Where nothing blends, the card's smooth corners must not fade into black.
    setColor(blended ? QColor(Qt::transparent) : card_->property("surfaceColor").value<QColor>());
    setMask(blended ? QRegion() : roundedRegion(size()));
    if (takesMouseEvents_) return;
    // A mask replaces the empty input shape that lets clicks through, so it is set again.
    if (xcb_connection_t* connection = xConnection()) {
        xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                             static_cast<xcb_window_t>(winId()), 0, 0, 0, nullptr);
    }
}

void OverlayWindow::animate(QObject* target, const char* property, double from, double to, double seconds) {
    auto* animation = new QPropertyAnimation(target, property, this);
    animation->setStartValue(from);
    animation->setEndValue(to);
    animation->setDuration(static_cast<int>(std::lround(seconds * 1000)));
    animation->setEasingCurve(QEasingCurve::OutCubic);
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void OverlayWindow::animateIn(double scale, double seconds) {
    create();
    adaptToCompositor();
    setOpacity(0);
    card_->setScale(scale);
    show();
    raise();
    if (xcb_connection_t* connection = xConnection()) xcb_flush(connection);
    animate(this, "opacity", 0, 1, seconds);
    animate(card_, "scale", scale, 1, seconds);
}

void OverlayWindow::animateOut(double seconds, std::function<void()> completion) {
    auto* fade = new QPropertyAnimation(this, "opacity", this);
    fade->setEndValue(0.0);
    fade->setDuration(static_cast<int>(std::lround(seconds * 1000)));
    connect(fade, &QPropertyAnimation::finished, this, [this, completion = std::move(completion)] {
        hide();
        completion();
    });
    fade->start(QAbstractAnimation::DeleteWhenStopped);
}

}  // namespace veltrin
