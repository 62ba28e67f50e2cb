#pragma once

#include "AI/AgentProfile.h"
#include "Data/MemoryActionPreset.h"
#include "Debug/PopupAnimator.h"
#include "Foundation/Lifetime.h"
#include "Platform/FloatingPanels.h"
#include "Platform/Pasteboard.h"
#include "Platform/Preferences.h"
#include "Platform/RunLoop.h"
#include "Platform/Screens.h"

#include <memory>
#include <optional>
#include <vector>

namespace veltrin {

/// The feedback that floats over other applications. Two slots hold at most one panel each: `panel` a
/// message, `overlay` what stands beside the text. A new panel replaces the one in its slot without
/// animation, and with it the time at which that one would have gone.
///
/// Every operation may be called from any thread; off the main thread it is done on a later turn of the main
/// loop. The optimise choice takes the mouse, everything else lets it through. Rectangles are the windowing
/// layer's, with the origin at the bottom left. `autoDismiss` is in seconds; absent or not above 0, the panel
/// stays until it is replaced or dismissed.
class MVPDebugPanel {
public:
    MVPDebugPanel(RunLoop& runLoop, FloatingPanels& panels, const Screens& screens, Pasteboard& pasteboard,
                  const Preferences& preferences);
    MVPDebugPanel(const MVPDebugPanel&) = delete;
    MVPDebugPanel& operator=(const MVPDebugPanel&) = delete;

    /// A short message in the middle of the main screen; the anchor is only logged.
    void showPanel(const QString& text, std::optional<QRectF> anchorRect, std::optional<double> autoDismiss);
    /// The compact message of a failure, for 2.2 seconds.
    void showFailureCard(const QString& title, const QString& detail, const QString& suggestion,
                         std::optional<QRectF> anchorRect, const std::optional<QString>& copyableText,
                         const std::optional<QString>& primaryActionTitle);
    /// Puts a text on the general pasteboard and says so. An empty text leaves the pasteboard alone.
    void showCopiedResult(const QString& text, const QString& label, std::optional<double> autoDismiss);
    /// A small pill in the middle of the anchor, or near the pointer.
    void showStatusPill(const QString& text, std::optional<QRectF> anchorRect,
                        std::optional<double> autoDismiss);

    /// The choice beside the anchor, or near the pointer; it stays until it is dismissed or replaced.
    /// `onSelectSlot` is told the number of a row that is clicked. `onClosed` is called once, when the choice
    /// has left by whatever way, or could not be shown at all.
    void showOptimizeChoicePanel(const std::vector<MemoryActionPreset>& actions,
                                 const std::vector<std::optional<AgentProfile>>& agentSlots,
                                 std::optional<QRectF> anchorRect,
                                 const std::function<void(int slot)>& onSelectSlot,
                                 const std::function<void()>& onClosed = {},
                                 bool usesEnglishInterface = false);

    /// Closes the message, and the choice with it, although that stands in the overlay's slot; a pill there
    /// stays.
    void dismissPanel();
    void dismissOverlay();
    /// Moves the overlay's panel to a new anchor, without animation.
    void repositionPanel(std::optional<QRectF> anchorRect);

private:
    struct Slot {
        std::unique_ptr<FloatingPanel> panel;
        PanelKind kind = PanelKind::text;
        Timer dismissTask;
        std::function<void()> onClosed;
    };

    /// Runs the operation now, or on the main loop when this is another thread.
    template <typename Operation>
    void onMainThread(const Operation& operation);

    void showMessage(const QString& text, std::optional<QRectF> anchorRect, std::optional<double> autoDismiss,
                     PanelTone tone);
    /// Puts a new panel in the slot, not yet shown; false when the desktop offers none.
    bool replace(Slot& slot, const PanelSpec& spec);
    void animateIn(Slot& slot, std::optional<double> autoDismiss);
    void dismiss(Slot& slot);
    static void tellClosed(Slot& slot);
    Timer scheduleDismiss(double delay, std::function<void()> action);

    void positionCentered(Slot& slot);
    void position(Slot& slot, const std::optional<QRectF>& anchorRect);
    void positionAnchored(Slot& slot, const QRectF& rect);
    void positionNearMouse(Slot& slot);
    void positionStatusPill(Slot& slot, const std::optional<QRectF>& anchorRect);
    void place(Slot& slot, QPointF preferred, const Screen& screen, const char* words);
    std::optional<Screen> screenFor(const QRectF& rect) const;
    std::optional<Screen> screenContaining(const QRectF& rect) const;
    void logRequest(const char* words, const QString& text, const std::optional<QRectF>& anchorRect) const;

    RunLoop& runLoop_;
    FloatingPanels& panels_;
    const Screens& screens_;
    Pasteboard& pasteboard_;
    const Preferences& preferences_;
    Slot panel_;
    Slot overlay_;
    PopupAnimator animator_;
    Lifetime lifetime_;
};

}  // namespace veltrin
