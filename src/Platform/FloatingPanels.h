#pragma once

#include <QPointF>
#include <QSizeF>
#include <QString>

#include <functional>
#include <memory>

namespace veltrin {

/// What a floating panel shows.
enum class PanelKind { text, statusPill };

struct PanelSpec {
    PanelKind kind = PanelKind::text;
    QSizeF size;
    bool takesMouseEvents = false;
    QString text;
};

/// A panel that floats above every window on every desktop and never takes the keyboard focus. Coordinates
/// are the windowing layer's (origin at the bottom left). Destroying it closes it without animation. Main
/// thread.
class FloatingPanel {
public:
    virtual ~FloatingPanel() = default;

    /// Moves the panel's lower left corner, without animation.
    virtual void setFrameOrigin(QPointF origin) = 0;
    /// The platform's own idea of the middle, for when no screen is known.
    virtual void center() = 0;
    /// Shows the panel: from transparent and scaled by `scale` to full in `duration` seconds.
    virtual void animateIn(double scale, double duration) = 0;
    /// Fades the panel out, then calls `completion`; the panel may be destroyed in it.
    virtual void animateOut(std::function<void()> completion) = 0;
};

class FloatingPanels {
public:
    virtual ~FloatingPanels() = default;
    /// A panel that does not show yet; null when the desktop offers no windows.
    virtual std::unique_ptr<FloatingPanel> create(const PanelSpec& spec) = 0;
};

}  // namespace veltrin
