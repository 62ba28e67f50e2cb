#pragma once

#include <QPointer>
#include <QQuickWindow>
#include <QVariantAnimation>
#include <QVariantMap>

#include <functional>

class QMouseEvent;
class QQuickItem;

namespace veltrin {

/// A window that floats above all others on every desktop and never takes the focus: on X11 an
/// override-redirect window. Its content is one QML card. Where the desktop blends windows, the window is
/// larger than the card by the room of the card's shadow, and lets clicks there through; elsewhere it is cut
/// to the card's shape.
class OverlayWindow : public QQuickWindow {
    Q_OBJECT
public:
    /// `card` becomes the window's content and is deleted with it. `size` is that of the visible card.
    OverlayWindow(QQuickItem* card, QSize size, bool takesMouseEvents);

    void setContent(const QVariantMap& properties);
    void setCardSize(QSize size);
    QSize cardSize() const { return cardSize_; }
    /// The card's upper left corner, in the display's own pixels.
    void setCardPosition(QPoint position);
    QRect cardGeometry() const;

    /// Shows the window above all others, growing from `scale` and, where windows are blended, fading in.
    void animateIn(double scale, double seconds);
    /// Fades out and hides, then calls `completion`; the window may be reused in it.
    void animateOut(double seconds, std::function<void()> completion);
    /// Hides at once; a completion that was waiting is not called.
    void dismiss();
    /// Makes everything that the first showing would wait for: the native window, the fonts, a first picture.
    void warmUp();

Q_SIGNALS:
    /// A row of the card was clicked.
    void slotChosen(int slot);
    /// What the card's buttons do, by the number of its action.
    void acted(int action);
    /// The left button went down at this place, or the pointer is there with the button down; in the
    /// display's own pixels. The card hears of it afterwards.
    void mouseDown(QPointF position);
    void mouseDragged(QPointF position);

protected:
    bool event(QEvent* event) override;

private:
    /// Fits the window to the desktop, which may have begun or ceased to blend windows.
    void adaptToCompositor();
    void applyShadowRoom(int room);
    void shapeOutline();
    void shapeInput();
    void place();
    QPointF native(QPointF position) const;
    void tellOfMouse(const QMouseEvent& event);

    QQuickItem* card_;
    bool takesMouseEvents_;
    QSize cardSize_;
    QPoint position_;
    int shadowRoom_ = 0;
    bool blended_ = false;
    QVariantAnimation motion_;  ///< of opacity and scale together
    double fromScale_ = 1;
    QPointF mouseDown_;
    std::function<void()> completion_;
};

/// True while somebody blends windows on this display.
bool isCompositorRunning();

}  // namespace veltrin
