#include "Debug/MVPDebugPanel.h"

#include "Debug/OptimizeChoiceBubble.h"
#include "ExternalAccess/ExternalActionFeedback.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {

constexpr QSizeF textPanelSize{300, 84};
constexpr QSizeF statusPillSize{72, 40};
constexpr QSizeF choicePanelSize{310, 248};
constexpr double failureCardDuration = 2.2;
constexpr double anchorGap = 10;
constexpr double mouseGap = 24;
constexpr double screenMargin = 12;
/// Characters of a panel's text that the log repeats.
constexpr qsizetype logPreview = 80;

QString describe(QPointF point) {
    return QStringLiteral("(%1, %2)").arg(point.x()).arg(point.y());
}

/// On a screen too small for the panel the lower left margin wins.
double clamped(double value, double low, double high) {
    return std::max(low, std::min(value, high));
}

}  // namespace

MVPDebugPanel::MVPDebugPanel(RunLoop& runLoop, FloatingPanels& panels, const Screens& screens,
                             Pasteboard& pasteboard, const Preferences& preferences)
    : runLoop_(runLoop),
      panels_(panels),
      screens_(screens),
      pasteboard_(pasteboard),
      preferences_(preferences) {
}

template <typename Operation>
void MVPDebugPanel::onMainThread(const Operation& operation) {
    if (runLoop_.isMainThread())
        operation();
    else
        runLoop_.post(lifetime_.bind(operation));
}

// MARK: Showing

void MVPDebugPanel::showPanel(const QString& text, std::optional<QRectF> anchorRect,
                              std::optional<double> autoDismiss) {
    onMainThread([this, text, anchorRect, autoDismiss] {
        showMessage(text, anchorRect, autoDismiss, PanelTone::plain);
    });
}

void MVPDebugPanel::showMessage(const QString& text, std::optional<QRectF> anchorRect,
                                std::optional<double> autoDismiss, PanelTone tone) {
    logRequest("UI showPanel requested:", text, anchorRect);
    PanelSpec spec{PanelKind::text, textPanelSize, false, text};
    spec.tone = tone;
    if (!replace(panel_, spec)) return;
    // In the middle of the main screen whatever the anchor: meant so.
    positionCentered(panel_);
    animateIn(panel_, autoDismiss);
}

void MVPDebugPanel::showFailureCard(const QString& title, const QString& detail, const QString& suggestion,
                                    std::optional<QRectF> anchorRect,
                                    const std::optional<QString>& copyableText,
                                    const std::optional<QString>& primaryActionTitle) {
    const ExternalActionFeedback feedback{title, detail, suggestion, copyableText, primaryActionTitle};
    onMainThread([this, message = feedback.compactMessage(), anchorRect] {
        logRequest("UI showFailureCard requested:", message, anchorRect);
        showMessage(message, anchorRect, failureCardDuration, PanelTone::failure);
    });
}

void MVPDebugPanel::showCopiedResult(const QString& text, const QString& label,
                                     std::optional<double> autoDismiss) {
    onMainThread([this, text, label, autoDismiss] {
        if (text.isEmpty()) {
            MVPLog::write("UI showCopiedResult requested: empty generated text");
            showMessage(QStringLiteral("没有生成结果\n请重试或切换模型"), std::nullopt, autoDismiss,
                        PanelTone::failure);
            return;
        }
        logRequest("UI showCopiedResult requested:", text, std::nullopt);
        pasteboard_.clearContents();
        if (!pasteboard_.setString(text, PasteboardContent::lasting)) {
            showMessage(QStringLiteral("复制失败\n请手动复制结果"), std::nullopt, autoDismiss,
                        PanelTone::failure);
            return;
        }
        showMessage(ExternalActionFeedback::copiedResultMessage(text, label), std::nullopt, autoDismiss,
                    PanelTone::success);
        MVPLog::write("UI copied result panel shown:", "length:", Characters::count(text));
    });
}

void MVPDebugPanel::showStatusPill(const QString& text, std::optional<QRectF> anchorRect,
                                   std::optional<double> autoDismiss) {
    onMainThread([this, text, anchorRect, autoDismiss] {
        logRequest("UI showStatusPill requested:", text, anchorRect);
        if (!replace(overlay_, {PanelKind::statusPill, statusPillSize, false, text})) return;
        positionStatusPill(overlay_, anchorRect);
        animateIn(overlay_, autoDismiss);
    });
}

void MVPDebugPanel::showOptimizeChoicePanel(const std::vector<MemoryActionPreset>& actions,
                                            const std::vector<std::optional<AgentProfile>>& agentSlots,
                                            std::optional<QRectF> anchorRect,
                                            const std::function<void(int)>& onSelectSlot,
                                            const std::function<void()>& onClosed,
                                            bool usesEnglishInterface) {
    const auto content = optimizeChoiceBubble(actions, agentSlots, usesEnglishInterface);
    onMainThread([this, content, anchorRect, onSelectSlot, onClosed] {
        logRequest("UI showOptimizeChoicePanel requested:", content.title, anchorRect);
        dismissOverlay();
        const PanelSpec spec{PanelKind::choice, choicePanelSize, true, content.title, content, onSelectSlot};
        const bool made = replace(overlay_, spec);
        overlay_.onClosed = onClosed;
        if (!made) return tellClosed(overlay_);
        position(overlay_, anchorRect);
        animateIn(overlay_, std::nullopt);
    });
}

bool MVPDebugPanel::replace(Slot& slot, const PanelSpec& spec) {
    slot.dismissTask.invalidate();
    slot.panel.reset();
    tellClosed(slot);
    slot.panel = panels_.create(spec);
    slot.kind = spec.kind;
    return slot.panel != nullptr;
}

void MVPDebugPanel::tellClosed(Slot& slot) {
    if (const auto closed = std::exchange(slot.onClosed, nullptr)) closed();
}

void MVPDebugPanel::animateIn(Slot& slot, std::optional<double> autoDismiss) {
    PopupAnimator::animateIn(*slot.panel);
    if (autoDismiss && *autoDismiss > 0)
        slot.dismissTask = scheduleDismiss(*autoDismiss, [this, &slot] { dismiss(slot); });
}

Timer MVPDebugPanel::scheduleDismiss(double delay, std::function<void()> action) {
    return runLoop_.after(delay, std::move(action));
}

// MARK: Dismissing

void MVPDebugPanel::dismissPanel() {
    onMainThread([this] {
        dismiss(panel_);
        if (overlay_.kind == PanelKind::choice) dismiss(overlay_);
    });
}

void MVPDebugPanel::dismissOverlay() {
    onMainThread([this] { dismiss(overlay_); });
}

void MVPDebugPanel::dismiss(Slot& slot) {
    slot.dismissTask.invalidate();
    if (!slot.panel) return;
    animator_.animateOut(std::move(slot.panel));
    tellClosed(slot);
}

// MARK: Placing

void MVPDebugPanel::repositionPanel(std::optional<QRectF> anchorRect) {
    onMainThread([this, anchorRect] {
        if (overlay_.panel) position(overlay_, anchorRect);
    });
}

void MVPDebugPanel::positionCentered(Slot& slot) {
    const auto screen = screens_.mainScreen();
    if (!screen) return slot.panel->center();
    const QRectF& visible = screen->visibleFrame;
    const QSizeF size = slot.panel->frame().size();
    slot.panel->setFrameOrigin(
        {ScreenRect::midX(visible) - size.width() * 0.5, ScreenRect::midY(visible) - size.height() * 0.5});
}

void MVPDebugPanel::position(Slot& slot, const std::optional<QRectF>& anchorRect) {
    if (isVerbose(preferences_))
        MVPLog::write(anchorRect ? "UI positioning source: anchor rect"
                                 : "UI positioning source: mouse fallback");
    if (anchorRect)
        positionAnchored(slot, *anchorRect);
    else
        positionNearMouse(slot);
}

void MVPDebugPanel::positionAnchored(Slot& slot, const QRectF& rect) {
    const auto screen = screenFor(rect);
    if (!screen) return slot.panel->center();
    const QSizeF size = slot.panel->frame().size();
    const QPointF preferred(ScreenRect::midX(rect) - size.width() * 0.5,
                            ScreenRect::minY(rect) - size.height() - anchorGap);
    place(slot, preferred, *screen, "UI anchor positioning:");
}

void MVPDebugPanel::positionNearMouse(Slot& slot) {
    const auto screen = screens_.mainScreen();
    if (!screen) return slot.panel->center();
    const QPointF mouse = screens_.mouseLocation();
    place(slot, {mouse.x() - slot.panel->frame().size().width() * 0.5, mouse.y() + mouseGap}, *screen,
          "UI mouse fallback positioning:");
}

void MVPDebugPanel::positionStatusPill(Slot& slot, const std::optional<QRectF>& anchorRect) {
    if (!anchorRect) return positionNearMouse(slot);
    const auto screen = screenFor(*anchorRect);
    if (!screen) return slot.panel->center();
    // In the middle of the anchor, not below it: the pill stands for the text itself.
    const QSizeF size = slot.panel->frame().size();
    const QPointF preferred(ScreenRect::midX(*anchorRect) - size.width() * 0.5,
                            ScreenRect::midY(*anchorRect) - size.height() * 0.5);
    place(slot, preferred, *screen, "UI status pill positioning:");
}

void MVPDebugPanel::place(Slot& slot, QPointF preferred, const Screen& screen, const char* words) {
    const QRectF& visible = screen.visibleFrame;
    const QSizeF size = slot.panel->frame().size();
    const QPointF origin(clamped(preferred.x(), ScreenRect::minX(visible) + screenMargin,
                                 ScreenRect::maxX(visible) - size.width() - screenMargin),
                         clamped(preferred.y(), ScreenRect::minY(visible) + screenMargin,
                                 ScreenRect::maxY(visible) - size.height() - screenMargin));
    if (isVerbose(preferences_))
        MVPLog::write(words, "preferred:", describe(preferred), "result:", describe(origin),
                      "visible frame:", visible);
    slot.panel->setFrameOrigin(origin);
}

std::optional<Screen> MVPDebugPanel::screenFor(const QRectF& rect) const {
    const auto containing = screenContaining(rect);
    return containing ? containing : screens_.mainScreen();
}

std::optional<Screen> MVPDebugPanel::screenContaining(const QRectF& rect) const {
    const auto screens = screens_.screens();
    const QPointF middle(ScreenRect::midX(rect), ScreenRect::midY(rect));
    const auto find = [&](const auto& holds) -> std::optional<Screen> {
        const auto found = std::find_if(screens.begin(), screens.end(), holds);
        return found == screens.end() ? std::nullopt : std::optional<Screen>(*found);
    };
    // Half of a field may hang over the edge; where its middle is, the user looks.
    const auto holder = find([&](const Screen& screen) { return screen.frame.contains(middle); });
    return holder ? holder : find([&](const Screen& screen) { return screen.frame.intersects(rect); });
}

void MVPDebugPanel::logRequest(const char* words, const QString& text,
                               const std::optional<QRectF>& anchorRect) const {
    const auto screen = screens_.mainScreen();
    MVPLog::write(words, Text::preview(text, logPreview), "anchor:", anchorRect,
                  "visible frame:", screen ? std::optional<QRectF>(screen->visibleFrame) : std::nullopt);
}

}  // namespace veltrin
