#pragma once

#include "ExternalAccess/SmartSelectedContent.h"
#include "Foundation/Lifetime.h"
#include "Platform/MouseEventTap.h"
#include "Platform/RunLoop.h"

#include <QCoro/QCoroTask>

#include <functional>
#include <memory>

namespace veltrin {

class AppSettings;
class Screens;
class SmartSelectContentReader;
class SmartSelectSurface;
class SpaceGestureAppPolicy;

/// The watch over selections: a listen-only tap of the mouse that tells a selection from a click, the gates
/// and the debounce behind it, and the read that ends in an icon beside the text. The same tap feeds the
/// overlay for drops. Nothing here is shown to the user but the icon; every refusal is a log line. Main
/// thread.
class SmartSelectTrigger {
public:
    struct Parts {
        RunLoop& runLoop;
        MouseEventTaps& taps;
        const Screens& screens;
        const AppSettings& settings;
        const SpaceGestureAppPolicy& policy;
        SmartSelectContentReader& reader;
        SmartSelectSurface& surface;
    };
    explicit SmartSelectTrigger(const Parts& parts) : parts_(parts) {}
    SmartSelectTrigger(const SmartSelectTrigger&) = delete;
    SmartSelectTrigger& operator=(const SmartSelectTrigger&) = delete;

    /// Makes the tap; without the right to listen the feature stays silent.
    void setupMouseSelectionMonitor();
    void stopMouseEventTap();

    /// Something may have been selected: looks at it after a moment, unless a gate says no.
    void handlePotentialSmartSelection(SmartSelectTriggerReason reason, QPointF anchorPoint);
    /// The user's own shortcut: the same beside the mouse.
    void handleShortcut();

    /// A drag that went far enough, told again and again while it goes on; may be empty.
    std::function<void()> showGlobalDropOverlayIfNeeded;
    /// The button came up: the overlay for drops goes after so many seconds; may be empty.
    std::function<void(double)> scheduleDropOverlayDismiss;

private:
    struct Check {
        SmartSelectTriggerReason reason;
        QPointF fallbackAnchorPoint;
    };

    void handleMouse(const MouseEvent& event);
    void mouseDown(const MouseEvent& event);
    void mouseDragged(const MouseEvent& event);
    void mouseUp(const MouseEvent& event);
    void dismissUnlessInside(QPointF point);
    void checkAndShowSmartSelect(const Check& check);
    void finishCheck(const Check& check, const std::optional<SmartSelectedContent>& content);
    void show(const Check& check, const SmartSelectedContent& content);
    static QCoro::Task<void> run(SmartSelectTrigger* self, Lifetime::Token alive, Check check);

    Parts parts_;
    std::unique_ptr<MouseEventTap> mouseEventTap_;
    QPointF mouseDownLocation_;
    bool mouseDragExceededThreshold_ = false;
    qint64 dragPasteboardChangeCountAtMouseDown_ = 0;
    std::optional<double> lastSmartSelectCheck_;  ///< on the run loop's clock, as all times here
    Timer smartSelectWorkItem_;
    std::optional<QString> lastSmartSelectSignature_;
    double lastSmartSelectSignatureDate_ = 0;
    bool isChecking_ = false;
    std::optional<Check> nextCheck_;   ///< came due while another one was under way
    bool clickedDuringCheck_ = false;  ///< outside of what is shown
    Lifetime lifetime_;
};

}  // namespace veltrin
