#pragma once

#include "Data/MemoryActionPreset.h"
#include "ExternalAccess/ExternalAIAction.h"
#include "Foundation/Lifetime.h"
#include "Platform/KeyEventTap.h"
#include "Platform/RunLoop.h"

#include <QRectF>

#include <optional>
#include <vector>

namespace veltrin {

class AgentTeamManager;
class AppSettings;
class ChosenAction;
class ExternalTextInputLocator;
class InteractionSoundPlayer;
class MVPDebugPanel;
class MemoryActionStore;
class SpaceGestureEngine;

/// The choice beside the caret: opened by a double tap or the optimise shortcut, it waits for one key or one
/// click. Only the keys of the choice may be claimed meanwhile, everything else goes to the application; the
/// text is read after the choice and not before. It waits for as long as its panel shows. Main thread.
class OptimizeInteraction {
public:
    struct Parts {
        RunLoop& runLoop;
        SpaceGestureEngine& engine;
        MVPDebugPanel& panel;
        ExternalTextInputLocator& locator;
        const MemoryActionStore& memoryActions;
        AgentTeamManager& agents;
        const AppSettings& settings;
        ChosenAction& chosen;
        InteractionSoundPlayer& sounds;
    };

    explicit OptimizeInteraction(const Parts& parts) : parts_(parts) {}

    /// Opens the choice; one that is open already is replaced.
    void showOptimizeChoicePanel();
    /// Runs the action of a slot (from 1): the one with that slot, else the one at that position. Without one
    /// the choice goes on waiting.
    void beginPendingOptimize(int slot);
    /// Asks for commands that fit the text.
    void beginCommandRecommend();
    /// What an unmodified key, or Escape, means to the choice; true swallows it. An auto-repeat counts like a
    /// press.
    bool handleKeyDown(qint64 keyCode);
    bool isWaiting() const { return pendingOptimizeSession_.has_value(); }

private:
    struct PendingOptimizeSession {
        std::optional<QRectF> anchor;
        std::vector<MemoryActionPreset> actions;  ///< as they were when the choice opened
        int number = 0;                           ///< tells this choice from every other
    };

    void showPanel();
    void startOptimizeAnchorTracking(double seconds);
    void followAnchor();
    void cancel();
    /// The end of a choice: what it was, with its panel on its way out. It must be waiting.
    PendingOptimizeSession close();
    void forget();
    void panelClosed(int number);

    Parts parts_;
    std::optional<PendingOptimizeSession> pendingOptimizeSession_;
    Timer optimizeAnchorTimer_;
    int lastNumber_ = 0;
    Lifetime lifetime_;
};

}  // namespace veltrin
