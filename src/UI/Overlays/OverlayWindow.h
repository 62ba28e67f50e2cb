#pragma once

#include "Platform/FloatingPanels.h"

#include <QPointer>
#include <QQuickWindow>

class QPropertyAnimation;
class QQmlEngine;
class QQuickItem;

namespace veltrin {

/// A window that floats above all others on every desktop and never takes the focus: on X11 an
/// override-redirect window. Its content is one QML card that fills it.
class OverlayWindow : public QQuickWindow {
    Q_OBJECT
public:
    /// `card` becomes the window's content and is deleted with it.
    OverlayWindow(QQuickItem* card, QSize size, bool takesMouseEvents);

    /// Shows the window raised, growing from `scale` and, where windows are blended, fading in.
    void animateIn(double scale, double seconds);
    void animateOut(double seconds, std::function<void()> completion);

Q_SIGNALS:
    /// A row of the card was clicked.
    void slotChosen(int slot);

private:
    /// Fits the window to the desktop: with nothing to blend it, it is cut to its card's shape.
    void adaptToCompositor();
    void animate(QObject* target, const char* property, double from, double to, double seconds);

    QQuickItem* card_;
    bool takesMouseEvents_;
};

/// True while somebody blends windows on this display.
bool isCompositorRunning();

}  // namespace veltrin
