#include "UI/Overlays/OverlayWindow.h"

#include "UI/Overlays/XDisplay.h"

#include <QMouseEvent>
#include <QQuickItem>
#include <QScreen>

#include <xcb/shape.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace veltrin {
namespace {

constexpr int roomOfShadow = 24;
/// Pixels that the pointer may stray from where it went down before a click is a drag.
constexpr double clickSlack = 4;

/// A rectangle with round corners, row by row.
std::vector<xcb_rectangle_t> roundedRows(QSize size, double radius) {
    std::vector<xcb_rectangle_t> rows;
    for (int y = 0; y < size.height(); ++y) {
        // From the middle of the row to the nearer corner's centre.
        const double up = radius - std::min(y + 0.5, size.height() - y - 0.5);
        const double left = up > 0 ? radius - std::sqrt(radius * radius - up * up) : 0;
        const int inset = static_cast<int>(std::lround(left));
        rows.push_back({static_cast<std::int16_t>(inset), static_cast<std::int16_t>(y),
                        static_cast<std::uint16_t>(size.width() - 2 * inset), 1});
    }
    return rows;
}

}  // namespace

bool isCompositorRunning() {
    xcb_connection_t* connection = windowsConnection();
    if (connection == nullptr) return false;
    static const xcb_atom_t manager = atomNamed("_NET_WM_CM_S0");
    const XReplyOf<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, manager), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

OverlayWindow::OverlayWindow(QQuickItem* card, QSize size, bool takesMouseEvents)
    : card_(card), takesMouseEvents_(takesMouseEvents), cardSize_(size) {
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
    if (card_->metaObject()->indexOfSignal("slotChosen(int)") >= 0)
        connect(card_, SIGNAL(slotChosen(int)), this, SIGNAL(slotChosen(int)));
    if (card_->metaObject()->indexOfSignal("acted(int)") >= 0)
        connect(card_, SIGNAL(acted(int)), this, SIGNAL(acted(int)));

    motion_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&motion_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        const double shown = value.toDouble();
        setOpacity(blended_ ? shown : 1);
        card_->setScale(fromScale_ + (1 - fromScale_) * shown);
    });
    connect(&motion_, &QVariantAnimation::finished, this, [this] {
        const auto completion = std::exchange(completion_, nullptr);
        if (!completion) return;
        hide();
        completion();
    });
}

void OverlayWindow::setContent(const QVariantMap& properties) {
    for (auto property = properties.cbegin(); property != properties.cend(); ++property)
        card_->setProperty(property.key().toLatin1().constData(), property.value());
}

void OverlayWindow::setCardSize(QSize size) {
    if (size == cardSize_) return;
    cardSize_ = size;
    applyShadowRoom(shadowRoom_);
}

void OverlayWindow::setCardPosition(QPoint position) {
    position_ = position;
    place();
}

QRect OverlayWindow::cardGeometry() const {
    return {position_, cardSize_ * devicePixelRatio()};
}

void OverlayWindow::place() {
    // Screens keep the corner of their native geometry; what is inside them is scaled.
    const QPoint native = position_ - QPoint(shadowRoom_, shadowRoom_) * devicePixelRatio();
    const QPoint corner = screen() != nullptr ? screen()->geometry().topLeft() : QPoint();
    setPosition(corner + (native - corner) / devicePixelRatio());
}

/// The opposite of what `place` does.
QPointF OverlayWindow::native(QPointF position) const {
    const QPointF corner = screen() != nullptr ? screen()->geometry().topLeft() : QPoint();
    return corner + (position - corner) * devicePixelRatio();
}

// MARK: Mouse

bool OverlayWindow::event(QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseMove)
        tellOfMouse(*static_cast<const QMouseEvent*>(event));
    const bool isRelease = event->type() == QEvent::MouseButtonRelease;
    const bool result = QQuickWindow::event(event);
    // Only now: what was released at the end of a drag was no click.
    if (isRelease) card_->setProperty("dragged", false);
    return result;
}

void OverlayWindow::tellOfMouse(const QMouseEvent& event) {
    const QPointF position = native(event.globalPosition());
    if (event.type() == QEvent::MouseMove) {
        if (!event.buttons().testFlag(Qt::LeftButton)) return;
        const QPointF way = position - mouseDown_;
        if (std::hypot(way.x(), way.y()) > clickSlack) card_->setProperty("dragged", true);
        Q_EMIT mouseDragged(position);
    } else if (event.button() == Qt::LeftButton) {
        mouseDown_ = position;
        Q_EMIT mouseDown(position);
    }
}

// MARK: The desktop's kinds

void OverlayWindow::adaptToCompositor() {
    blended_ = isCompositorRunning();
    card_->setProperty("translucent", blended_);
    // Where nothing blends, the card's smooth corners must not fade into black.
    setColor(blended_ ? QColor(Qt::transparent) : card_->property("surfaceColor").value<QColor>());
    applyShadowRoom(blended_ ? roomOfShadow : 0);
    shapeOutline();
    shapeInput();
}

void OverlayWindow::applyShadowRoom(int room) {
    shadowRoom_ = room;
    const QSize whole = cardSize_ + QSize(2 * room, 2 * room);
    resize(whole);
    card_->setSize(whole);
    card_->setProperty("shadowRoom", room);
    place();
}

/// Not by the toolkit's mask: that knows points only, and where two pixels make one its corners are stairs.
void OverlayWindow::shapeOutline() {
    xcb_connection_t* connection = windowsConnection();
    if (connection == nullptr) return;
    const auto window = static_cast<xcb_window_t>(winId());
    if (blended_) {
        xcb_shape_mask(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, window, 0, 0, XCB_PIXMAP_NONE);
        return;
    }
    const double scale = devicePixelRatio();
    const double radius = card_->property("cornerRadius").toDouble() * scale;
    const auto rows = roundedRows(cardSize_ * scale, radius);
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_YX_BANDED,
                         window, 0, 0, static_cast<std::uint32_t>(rows.size()), rows.data());
}

void OverlayWindow::shapeInput() {
    xcb_connection_t* connection = windowsConnection();
    if (connection == nullptr) return;
    const double scale = devicePixelRatio();
    const auto pixels = [scale](int length) {
        return static_cast<std::int16_t>(std::lround(length * scale));
    };
    const xcb_rectangle_t card{pixels(shadowRoom_), pixels(shadowRoom_),
                               static_cast<std::uint16_t>(pixels(cardSize_.width())),
                               static_cast<std::uint16_t>(pixels(cardSize_.height()))};
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         static_cast<xcb_window_t>(winId()), 0, 0, takesMouseEvents_ ? 1 : 0, &card);
}

void OverlayWindow::animateIn(double scale, double seconds) {
    motion_.stop();
    completion_ = nullptr;
    create();
    adaptToCompositor();
    fromScale_ = scale;
    motion_.setStartValue(0.0);
    motion_.setEndValue(1.0);
    motion_.setDuration(static_cast<int>(std::lround(seconds * 1000)));
    setOpacity(blended_ && seconds > 0 ? 0 : 1);
    card_->setScale(seconds > 0 ? scale : 1);
    show();
    raise();
    flushWindows();
    if (seconds > 0) motion_.start();
}

void OverlayWindow::animateOut(double seconds, std::function<void()> completion) {
    motion_.stop();
    completion_ = std::move(completion);
    // Only the window fades on its way out; where nothing blends it leaves at once.
    fromScale_ = 1;
    motion_.setStartValue(opacity());
    motion_.setEndValue(0.0);
    motion_.setDuration(blended_ ? static_cast<int>(std::lround(seconds * 1000)) : 0);
    motion_.start();
}

void OverlayWindow::dismiss() {
    completion_ = nullptr;
    motion_.stop();
    hide();
    flushWindows();
}

void OverlayWindow::warmUp() {
    create();
    adaptToCompositor();
    static_cast<void>(grabWindow());
}

}  // namespace veltrin
