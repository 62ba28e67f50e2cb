#include "App/SmartSelectTrigger.h"

#include "App/SmartSelectSurface.h"
#include "Data/AppSettings.h"
#include "ExternalAccess/SmartSelectContentReader.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"
#include "Gesture/SpaceGesturePolicy.h"
#include "Platform/Screens.h"

#include <cmath>
#include <utility>

namespace veltrin {
namespace {

/// Pixels on either axis: what is more than a click, and what is a drag of something.
constexpr double dragThreshold = 8.0;
constexpr double dropOverlayThreshold = 18.0;
constexpr double dropOverlayDismissDelay = 0.45;

constexpr double debounceSeconds = 0.25;
/// Applications settle what a double click selects sooner than what a drag does.
constexpr double multiClickDelay = 0.25;
constexpr double dragDelay = 0.5;
constexpr double repeatSeconds = 0.8;
constexpr qsizetype signatureLength = 120;

struct Distance {
    double dx;
    double dy;
    bool exceeds(double limit) const { return dx > limit || dy > limit; }
};

Distance distance(QPointF from, QPointF to) {
    return {std::abs(to.x() - from.x()), std::abs(to.y() - from.y())};
}

QString asText(QPointF point) {
    return QStringLiteral("(%1, %2)").arg(point.x()).arg(point.y());
}

QString signatureOf(const SmartSelectedContent& content) {
    return content.bundleIdentifier + u'|' + content.source + u'|' +
           Characters::prefix(content.text, signatureLength);
}

}  // namespace

void SmartSelectTrigger::setupMouseSelectionMonitor() {
    mouseEventTap_ =
        parts_.taps.create(lifetime_.bind([this](const MouseEvent& event) { handleMouse(event); }));
    if (!mouseEventTap_) {
        MVPLog::write("SmartSelect: CGEventTap creation FAILED");
        return;
    }
    mouseEventTap_->setEnabled(true);
    MVPLog::write("SmartSelect mouse event tap created");
}

void SmartSelectTrigger::stopMouseEventTap() {
    mouseEventTap_.reset();
    smartSelectWorkItem_.invalidate();
    nextCheck_.reset();
}

// MARK: The mouse

void SmartSelectTrigger::handleMouse(const MouseEvent& event) {
    switch (event.type) {
        case MouseEventType::leftMouseDown:
            mouseDown(event);
            break;
        case MouseEventType::leftMouseDragged:
            mouseDragged(event);
            break;
        case MouseEventType::leftMouseUp:
            mouseUp(event);
            break;
        case MouseEventType::tapDisabledByTimeout:
        case MouseEventType::tapDisabledByUserInput:
            if (mouseEventTap_) mouseEventTap_->setEnabled(true);
            MVPLog::write("SmartSelect mouse event tap re-enabled:", static_cast<qint32>(event.type));
            break;
    }
}

void SmartSelectTrigger::mouseDown(const MouseEvent& event) {
    mouseDownLocation_ = event.location;
    mouseDragExceededThreshold_ = false;
    dragPasteboardChangeCountAtMouseDown_ = event.dragPasteboardChangeCount;
    parts_.runLoop.post(lifetime_.bind([this, point = event.mouseLocation] { dismissUnlessInside(point); }));
}

void SmartSelectTrigger::dismissUnlessInside(QPointF point) {
    for (const auto& frame : {parts_.surface.iconFrame(), parts_.surface.popupFrame()}) {
        if (frame && frame->contains(point)) return;
    }
    clickedDuringCheck_ = true;
    parts_.surface.dismissIcon();
    parts_.surface.dismissPopup();
}

void SmartSelectTrigger::mouseDragged(const MouseEvent& event) {
    const Distance moved = distance(mouseDownLocation_, event.location);
    if (moved.exceeds(dragThreshold)) mouseDragExceededThreshold_ = true;
    if (moved.exceeds(dropOverlayThreshold)) {
        parts_.runLoop.post(lifetime_.bind([this] {
            if (showGlobalDropOverlayIfNeeded) showGlobalDropOverlayIfNeeded();
        }));
    }
}

void SmartSelectTrigger::mouseUp(const MouseEvent& event) {
    parts_.runLoop.post(lifetime_.bind([this] {
        if (scheduleDropOverlayDismiss) scheduleDropOverlayDismiss(dropOverlayDismissDelay);
    }));
    const Distance moved = distance(mouseDownLocation_, event.location);
    if (event.dragPasteboardChangeCount != dragPasteboardChangeCountAtMouseDown_) {
        MVPLog::write("SmartSelect ignored: drag pasteboard changed");
        return;
    }
    if (!mouseDragExceededThreshold_ && !moved.exceeds(dragThreshold) && event.clickState < 2) return;
    const auto reason =
        event.clickState < 2 ? SmartSelectTriggerReason::drag : SmartSelectTriggerReason::multiClick;
    MVPLog::write("SmartSelect trigger:", "reason:", rawValue(reason), "clickState:", event.clickState,
                  "dx:", static_cast<int>(moved.dx), "dy:", static_cast<int>(moved.dy),
                  "anchor:", asText(event.mouseLocation));
    parts_.runLoop.post(lifetime_.bind(
        [this, reason, anchor = event.mouseLocation] { handlePotentialSmartSelection(reason, anchor); }));
}

// MARK: Gates

void SmartSelectTrigger::handleShortcut() {
    handlePotentialSmartSelection(SmartSelectTriggerReason::multiClick, parts_.screens.mouseLocation());
}

void SmartSelectTrigger::handlePotentialSmartSelection(SmartSelectTriggerReason reason, QPointF anchorPoint) {
    const AppSettings& settings = parts_.settings;
    if (!settings.smartSelectEnabled()) {
        MVPLog::write("SmartSelect ignored: disabled by settings");
        return;
    }
    const auto blacklist = AppSettings::parseBundleList(settings.smartSelectBlacklistedBundleIDsText());
    if (!parts_.policy.isFrontmostAppAllowed(blacklist)) {
        MVPLog::write("SmartSelect ignored: frontmost app blacklisted");
        return;
    }
    const double now = parts_.runLoop.now();
    if (lastSmartSelectCheck_ && secondsBetween(*lastSmartSelectCheck_, now) <= debounceSeconds) {
        MVPLog::write("SmartSelect ignored: debounce");
        return;
    }
    lastSmartSelectCheck_ = now;
    nextCheck_.reset();
    const double delay = reason == SmartSelectTriggerReason::multiClick ? multiClickDelay : dragDelay;
    smartSelectWorkItem_ = parts_.runLoop.after(delay, lifetime_.bind([this, reason, anchorPoint] {
        checkAndShowSmartSelect({reason, anchorPoint});
    }));
}

// MARK: The check

void SmartSelectTrigger::checkAndShowSmartSelect(const Check& check) {
    // One that has begun runs on; the next one takes its turn behind it.
    if (isChecking_) {
        nextCheck_ = check;
        return;
    }
    if (parts_.surface.iconFrame() || parts_.surface.popupFrame()) {
        MVPLog::write("SmartSelect ignored: overlay already showing");
        return;
    }
    isChecking_ = true;
    clickedDuringCheck_ = false;
    run(this, lifetime_.token(), check);
}

QCoro::Task<void> SmartSelectTrigger::run(SmartSelectTrigger* self, Lifetime::Token alive, Check check) {
    auto task = self->parts_.reader.readSelectedContent(check.reason, check.fallbackAnchorPoint);
    const std::optional<SmartSelectedContent> content = co_await task;
    if (alive.alive()) self->finishCheck(check, content);
}

void SmartSelectTrigger::finishCheck(const Check& check, const std::optional<SmartSelectedContent>& content) {
    isChecking_ = false;
    if (!content || Text::isBlank(content->text)) {
        MVPLog::write("SmartSelect no selected text:", "reason:", rawValue(check.reason));
    } else {
        show(check, *content);
    }
    if (!nextCheck_) return;
    parts_.runLoop.post(lifetime_.bind(
        [this, next = *std::exchange(nextCheck_, std::nullopt)] { checkAndShowSmartSelect(next); }));
}

void SmartSelectTrigger::show(const Check& check, const SmartSelectedContent& content) {
    if (clickedDuringCheck_) {
        // The icon would have been closed by that click; and what was not shown is no repeat later.
        MVPLog::write("SmartSelect ignored: clicked meanwhile");
        return;
    }
    const QString signature = signatureOf(content);
    const double now = parts_.runLoop.now();
    if (lastSmartSelectSignature_ == signature &&
        secondsBetween(lastSmartSelectSignatureDate_, now) < repeatSeconds) {
        MVPLog::write("SmartSelect duplicate ignored:", content.source);
        return;
    }
    lastSmartSelectSignature_ = signature;
    lastSmartSelectSignatureDate_ = now;
    MVPLog::write("SmartSelect show:", "reason:", rawValue(check.reason), "source:", content.source,
                  "app:", content.appName, "bundle:", content.bundleIdentifier,
                  "length:", Characters::count(content.text));
    parts_.surface.showIcon(content.anchorPoint.value_or(check.fallbackAnchorPoint), content.text);
}

}  // namespace veltrin
