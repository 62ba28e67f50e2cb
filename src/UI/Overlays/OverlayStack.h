#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QPointer>

#include <functional>
#include <vector>

namespace veltrin {

class OverlayWindow;

/// Keeps the overlays that are shown above everything and on a screen, whatever the desktop does: windows
/// that are opened or brought to front later, and screens that go. Costs nothing while no overlay is shown.
class OverlayStack final : public QObject, public QAbstractNativeEventFilter {
    Q_OBJECT
public:
    OverlayStack();
    ~OverlayStack() override;

    /// From now on the window is looked after whenever it is visible.
    void add(OverlayWindow& window);
    /// Called when the screens have changed while an overlay is shown.
    std::function<void()> screensChanged;

    std::vector<OverlayWindow*> shown() const;

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

private:
    void visibilityChanged();
    /// Asks the server for the comings and goings of all windows, or no more.
    void watch(bool wanted);
    void raiseAll();
    bool concernsStacking(const void* event) const;

    std::vector<QPointer<OverlayWindow>> windows_;
    bool watching_ = false;
    unsigned activeWindow_ = 0;
    int randrEvent_ = -1;
};

}  // namespace veltrin
