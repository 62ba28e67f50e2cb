#pragma once

#include "Gesture/CustomShortcut.h"
#include "Platform/KeyEventTap.h"
#include "Platform/Pasteboard.h"
#include "Platform/RunLoop.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace veltrin {

/// The one global keyboard listener: turns key events of all applications into double and triple taps of the
/// space bar, custom shortcuts, and questions to the interaction that is open.
///
/// Ordinary typing does not suffer from it. Spaces are never swallowed and nothing is ever deleted or posted;
/// a key is swallowed only when a hook claims it or when it is a stored shortcut, and the tap is told
/// beforehand which combinations those may be. What was typed is kept nowhere: only times are.
///
/// Main thread. Callbacks and hooks are entered inside the tap's callback and must return at once; they must
/// not call `stop`.
class SpaceGestureEngine {
public:
    /// `printEventTapFailureHint` is called when no tap can be made. `recordPotentialUserCopyKeyDown` is told
    /// what the pasteboard's change count was at every copy key of the user, before any hook sees the key.
    /// Both may be absent.
    SpaceGestureEngine(RunLoop& runLoop, KeyEventTaps& taps, Preferences& preferences,
                       const Pasteboard& pasteboard, std::function<void()> printEventTapFailureHint = {},
                       std::function<void(qint64 changeCount)> recordPotentialUserCopyKeyDown = {});
    SpaceGestureEngine(const SpaceGestureEngine&) = delete;
    SpaceGestureEngine& operator=(const SpaceGestureEngine&) = delete;

    // All of these are set before the start. An absent callback is skipped; an absent hook claims nothing.
    std::function<void()> onDouble;
    std::function<void()> onTriple;
    /// Raised by nobody.
    std::function<void()> onCommandSpace;
    std::function<void(CustomShortcutAction)> onCustomShortcut;
    /// Second hook on a key-down; true swallows the key.
    std::function<bool(qint64 keyCode)> onKeyDown;
    /// First hook on a key-down; true swallows the key.
    std::function<bool(qint64 keyCode, bool isAutoRepeat)> onKeyDownEvent;
    /// Hook on a key-up; true swallows the key.
    std::function<bool(qint64 keyCode)> onKeyUpEvent;
    /// Asked by both gates, on the second and on the third tap.
    std::function<bool()> isFrontmostAppAllowedForDouble = [] { return true; };
    /// Asked on the first tap; the character goes into the log and decides nothing.
    std::function<std::optional<QString>()> characterBeforeCursorProvider;
    // Seconds, asked at every use, so that a changed setting counts from the very next tap.
    std::function<double()> doubleSpaceMaximumInterval = [] { return 0.34; };
    std::function<double()> doubleSpaceIdleGuard = [] { return 0.45; };
    std::function<double()> tripleSpaceMaximumTailInterval = [] { return 0.22; };
    std::function<double()> tripleSpaceMaximumTotalInterval = [] { return 0.56; };
    /// Whether an action exists in this program. A shortcut whose action does not exist is neither claimed
    /// nor consumed: its key belongs to the application.
    std::function<bool(CustomShortcutAction)> isActionAvailable = [](CustomShortcutAction) { return true; };

    /// Starts the tap if it is not running. True when it runs afterwards; there is no later attempt but a
    /// further call.
    bool start();
    /// Ends the tap and forgets the taps of the space bar.
    void stop();
    bool isRunning() const { return eventTap_ != nullptr; }
    /// Suspends the tap (false) and resumes it (true) around synthetic input. Suspensions nest. Does nothing
    /// without a tap.
    void setEventTapEnabled(bool enabled, const QString& reason);
    int eventTapSuspendCount() const { return eventTapSuspendCount_; }

    /// The keys that the hooks may claim while an interaction is open; empty when none is. A key that was
    /// pressed before they were set has reached its application, and no hook is asked about it.
    void setInteractionKeys(std::vector<ClaimableKey> keys);
    /// Tells the tap again which combinations may be swallowed. Needed only after what `isActionAvailable`
    /// says has changed; changes of the stored shortcuts are followed.
    void refreshClaimableKeys();

    /// The first action whose stored combination is this key with exactly these modifiers.
    std::optional<CustomShortcutAction> matchingCustomShortcut(qint64 keyCode, quint64 flags) const;

private:
    bool createTap();
    void install(std::unique_ptr<KeyEventTap> tap);
    /// True passes the event on, false swallows it.
    bool handle(const KeyEvent& event);
    void handleTapDisabled(const KeyEvent& event);
    bool mayBeClaimed(const KeyEvent& event) const;
    bool isClaimedByInteraction(const KeyEvent& event, bool verbose) const;
    bool handleKeyDown(const KeyEvent& event, bool verbose);
    void handleSpaceKeyDown(double timestamp, std::optional<double> lastKeyDownBeforeThisEvent,
                            const KeyEvent& event);
    void handleSpaceKeyUp(double timestamp);
    void scheduleCommit(double delay);
    void commitTapSequence();
    void resetTapSequence();
    bool doubleGate() const;
    bool tripleGate(double thirdSpaceDownTime) const;
    double idleBeforeFirstSpace() const;

    RunLoop& runLoop_;
    KeyEventTaps& taps_;
    Preferences& preferences_;
    const Pasteboard& pasteboard_;
    std::function<void()> printEventTapFailureHint_;
    std::function<void(qint64)> recordPotentialUserCopyKeyDown_;

    int eventTapSuspendCount_ = 0;
    std::vector<ClaimableKey> interactionKeys_;
    double interactionKeysSince_ = 0;  ///< on the events' own clock

    // The running sequence; times are seconds of the events' own clock.
    int tapCount_ = 0;
    double firstSpaceDownTime_ = 0;
    double secondSpaceDownTime_ = 0;
    std::optional<double> lastKeyDownTime_;  ///< of any key that was not consumed; outlives every sequence
    std::optional<double> lastKeyInputBeforeSpaceSequenceTime_;
    std::optional<QString> characterBeforeFirstSpace_;
    bool doubleSpaceCandidateAllowed_ = false;
    bool tripleSpaceCandidateAllowed_ = false;
    double lastSpaceUpTime_ = 0;
    double currentSpaceDownTime_ = 0;  ///< of the space held now; 0 when none is
    bool isSpaceDown_ = false;
    Timer commitTimer_;

    Subscription preferencesChanged_;
    std::unique_ptr<KeyEventTap> eventTap_;  ///< last, so that it ends before anything it tells
};

}  // namespace veltrin
