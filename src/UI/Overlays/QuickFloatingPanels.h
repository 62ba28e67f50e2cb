#pragma once

#include "Platform/FloatingPanels.h"
#include "Platform/Screens.h"

#include <QObject>
#include <QQmlEngine>

#include <functional>
#include <memory>
#include <vector>

namespace veltrin {

class OverlayStack;
class OverlayWindow;
class VtLook;

/// The floating panels as QML windows. A window that is done is kept and used again by the next panel of its
/// kind, so that a panel's appearing costs little and panels without number cost no more windows than stood
/// at one time.
class QuickFloatingPanels final : public QObject, public FloatingPanels {
    Q_OBJECT
public:
    QuickFloatingPanels(Screens& screens, VtLook& look);
    ~QuickFloatingPanels() override;

    std::unique_ptr<FloatingPanel> create(const PanelSpec& spec) override;

    /// Makes a window of each kind ahead of its need, one a turn of the event loop.
    void prepare();
    /// Windows that exist, shown or kept.
    int windowCount() const { return static_cast<int>(windows_.size()); }

Q_SIGNALS:
    /// A panel's first picture is on the screen.
    void firstFrameShown();

private:
    class Panel;
    struct Kept;

    QQmlEngine& engine();
    OverlayWindow* makeWindow(PanelKind kind, QSize size, bool takesMouseEvents);
    OverlayWindow* take(const PanelSpec& spec);
    void giveBack(OverlayWindow* window);
    /// Brings panels back onto a screen when theirs has gone.
    void keepOnScreens();

    Screens& screens_;
    VtLook& look_;
    std::unique_ptr<QQmlEngine> engine_;
    std::unique_ptr<OverlayStack> stack_;
    std::vector<std::unique_ptr<Kept>> windows_;
};

}  // namespace veltrin
