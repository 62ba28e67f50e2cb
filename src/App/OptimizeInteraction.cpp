#include "App/OptimizeInteraction.h"

#include "AI/AgentTeamManager.h"
#include "App/ChosenAction.h"
#include "Data/AppSettings.h"
#include "Data/MemoryActionStore.h"
#include "Debug/MVPDebugPanel.h"
#include "ExternalAccess/ExternalTextInputLocator.h"
#include "Foundation/MVPLog.h"
#include "Gesture/SpaceGestureEngine.h"
#include "System/InteractionSoundPlayer.h"

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {

constexpr double anchorInterval = 0.18;
/// How much longer than its last look at the caret took the choice waits for the next one at least. Where an
/// application is slow to answer, the main thread must be there for the keys most of the time.
constexpr double restAfterLook = 4;

/// The keys of the number row; the keypad's digits are text.
struct SlotKey {
    qint64 keyCode;
    int slot;
};
constexpr SlotKey slotKeys[] = {
    {KeyCode::one, 1}, {KeyCode::returnKey, 1}, {KeyCode::space, 1},
    {KeyCode::two, 2}, {KeyCode::three, 3},     {KeyCode::four, 4},
};

std::vector<ClaimableKey> claimableKeys() {
    std::vector<ClaimableKey> keys;
    for (const SlotKey& key : slotKeys)
        keys.push_back({key.keyCode, 0, false});
    keys.push_back({KeyCode::slash, 0, false});
    keys.push_back({KeyCode::escape, 0, true});
    return keys;
}

const MemoryActionPreset* actionOf(const std::vector<MemoryActionPreset>& actions, int slot) {
    const auto found = std::find_if(actions.begin(), actions.end(), [slot](const MemoryActionPreset& action) {
        return action.shortcutSlot == slot;
    });
    if (found != actions.end()) return &*found;
    const auto position = static_cast<std::size_t>(slot) - 1;
    return slot >= 1 && position < actions.size() ? &actions[position] : nullptr;
}

}  // namespace

void OptimizeInteraction::showOptimizeChoicePanel() {
    const auto anchor = parts_.locator.bestAnchorRect();
    optimizeAnchorTimer_.invalidate();
    pendingOptimizeSession_ =
        PendingOptimizeSession{anchor, parts_.memoryActions.quickActions(), ++lastNumber_};
    // Before the panel is made, so that the key of a user who knows it by heart is not typed.
    parts_.engine.setInteractionKeys(claimableKeys());
    parts_.sounds.playPopup(InteractionSoundChannel::optimize);
    showPanel();
    if (isWaiting() && anchor) startOptimizeAnchorTracking(anchorInterval);
}

void OptimizeInteraction::showPanel() {
    const PendingOptimizeSession session = *pendingOptimizeSession_;
    parts_.agents.ensureDefaultShortcutAssignments();
    parts_.panel.showOptimizeChoicePanel(
        session.actions, parts_.agents.assignedAgentSlots(QStringLiteral("optimize")), session.anchor,
        lifetime_.bind([this](int slot) {
            parts_.runLoop.post(lifetime_.bind([this, slot] { beginPendingOptimize(slot); }));
        }),
        lifetime_.bind([this, number = session.number] { panelClosed(number); }),
        parts_.settings.usesEnglishInterface());
}

// MARK: Following the caret

void OptimizeInteraction::startOptimizeAnchorTracking(double seconds) {
    optimizeAnchorTimer_ = parts_.runLoop.after(seconds, lifetime_.bind([this] { followAnchor(); }));
}

void OptimizeInteraction::followAnchor() {
    const double start = parts_.runLoop.now();
    const auto anchor = parts_.locator.bestAnchorRect();
    if (!isWaiting()) return;
    // Without one the panel stays where it is.
    if (anchor) {
        pendingOptimizeSession_->anchor = anchor;
        parts_.panel.repositionPanel(anchor);
    }
    startOptimizeAnchorTracking(std::max(anchorInterval, restAfterLook * (parts_.runLoop.now() - start)));
}

// MARK: The choice

bool OptimizeInteraction::handleKeyDown(qint64 keyCode) {
    if (!isWaiting()) return false;
    if (keyCode == KeyCode::escape) {
        cancel();
        return true;
    }
    if (keyCode == KeyCode::slash) {
        beginCommandRecommend();
        return true;
    }
    const auto* key = std::find_if(std::begin(slotKeys), std::end(slotKeys),
                                   [keyCode](const SlotKey& each) { return each.keyCode == keyCode; });
    if (key == std::end(slotKeys)) return false;
    beginPendingOptimize(key->slot);
    return true;
}

void OptimizeInteraction::beginPendingOptimize(int slot) {
    if (!isWaiting()) return;
    const MemoryActionPreset* found = actionOf(pendingOptimizeSession_->actions, slot);
    if (found == nullptr) {
        MVPLog::write("Memory action slot missing:", slot);
        return;
    }
    const MemoryActionPreset action = *found;
    MVPLog::write("Memory action selected:", "slot:", slot, "title:", action.title);
    const auto session = close();
    parts_.chosen.start(ExternalGestureAIAction::memoryAction(action, slot - 1), session.anchor);
}

void OptimizeInteraction::beginCommandRecommend() {
    if (!isWaiting()) return;
    const auto session = close();
    parts_.chosen.start(ExternalGestureAIAction::commandRecommend(), session.anchor);
}

// MARK: The end

void OptimizeInteraction::cancel() {
    MVPLog::write("Optimize panel dismissed by Escape");
    forget();
    parts_.sounds.playCancel(InteractionSoundChannel::optimize);
    parts_.panel.dismissPanel();
}

OptimizeInteraction::PendingOptimizeSession OptimizeInteraction::close() {
    PendingOptimizeSession session = *std::move(pendingOptimizeSession_);
    forget();
    parts_.panel.dismissPanel();
    return session;
}

void OptimizeInteraction::forget() {
    pendingOptimizeSession_.reset();
    optimizeAnchorTimer_.invalidate();
    parts_.engine.setInteractionKeys({});
}

/// The panel of an earlier run may take the place of the choice, or send it away. Keys of a choice that
/// nobody sees would be lost to the text, so it ends with its panel.
void OptimizeInteraction::panelClosed(int number) {
    if (pendingOptimizeSession_ && pendingOptimizeSession_->number == number) forget();
}

}  // namespace veltrin
