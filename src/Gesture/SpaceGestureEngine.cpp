#include "Gesture/SpaceGestureEngine.h"

#include "Foundation/MVPLog.h"
#include "Gesture/SpaceGesturePolicy.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace veltrin {
namespace {

/// Shorter than the configurable guard of the double tap, and fixed: three taps in a row are hardly ever
/// typing.
constexpr double tripleSpaceIdle = 0.15;

QString typeName(KeyEventType type) {
    return type == KeyEventType::keyDown ? QStringLiteral("keyDown") : QStringLiteral("keyUp");
}

template <typename Function>
void raise(const Function& callback) {
    if (callback) callback();
}

}  // namespace

SpaceGestureEngine::SpaceGestureEngine(RunLoop& runLoop, KeyEventTaps& taps, Preferences& preferences,
                                       const Pasteboard& pasteboard,
                                       std::function<void()> printEventTapFailureHint,
                                       std::function<void(qint64)> recordPotentialUserCopyKeyDown)
    : runLoop_(runLoop),
      taps_(taps),
      preferences_(preferences),
      pasteboard_(pasteboard),
      printEventTapFailureHint_(std::move(printEventTapFailureHint)),
      recordPotentialUserCopyKeyDown_(std::move(recordPotentialUserCopyKeyDown)) {
    preferencesChanged_ = preferences_.changed.subscribe([this](const QString& key) {
        for (const auto action : allCases<CustomShortcutAction>()) {
            if (key == CustomShortcuts::preferenceKey(action)) return refreshClaimableKeys();
        }
    });
}

// MARK: The tap

bool SpaceGestureEngine::start() {
    MVPLog::write("SpaceGestureEngine starting");
    if (eventTap_) {
        MVPLog::write("SpaceGestureEngine already running");
        return true;
    }
    if (createTap()) return true;
    MVPLog::write("CGEventTap creation failed");
    raise(printEventTapFailureHint_);
    MVPLog::write("Requesting Input Monitoring access");
    const bool granted = taps_.requestListenEventAccess();
    MVPLog::write("CGRequestListenEventAccess returned:", granted);
    if (granted && createTap()) return true;
    MVPLog::write("CGEventTap retry failed");
    return false;
}

bool SpaceGestureEngine::createTap() {
    auto tap =
        taps_.create(KeyEventMask::keyDownAndKeyUp, [this](const KeyEvent& event) { return handle(event); });
    if (!tap) return false;
    install(std::move(tap));
    return true;
}

void SpaceGestureEngine::install(std::unique_ptr<KeyEventTap> tap) {
    MVPLog::write("CGEventTap created");
    eventTap_ = std::move(tap);
    refreshClaimableKeys();
    if (!eventTap_->addToRunLoop()) return;
    eventTap_->setEnabled(true);
    MVPLog::write("CGEventTap runloop source added");
}

void SpaceGestureEngine::stop() {
    commitTimer_.invalidate();
    if (eventTap_) {
        eventTap_->removeFromRunLoop();
        eventTap_->setEnabled(false);
        eventTap_.reset();
    }
    eventTapSuspendCount_ = 0;
    currentSpaceDownTime_ = 0;
    isSpaceDown_ = false;
    resetTapSequence();
}

void SpaceGestureEngine::setEventTapEnabled(bool enabled, const QString& reason) {
    if (!eventTap_) return;
    if (!enabled) {
        ++eventTapSuspendCount_;
        if (eventTapSuspendCount_ == 1) {
            eventTap_->setEnabled(false);
            MVPLog::write("SpaceGestureEngine event tap suspended reason:", reason);
        } else if (isVerbose(preferences_)) {
            MVPLog::write("SpaceGestureEngine event tap already suspended reason:", reason,
                          "count:", eventTapSuspendCount_);
        }
        return;
    }
    eventTapSuspendCount_ = std::max(0, eventTapSuspendCount_ - 1);
    if (eventTapSuspendCount_ > 0) {
        if (isVerbose(preferences_))
            MVPLog::write("SpaceGestureEngine event tap resume deferred reason:", reason,
                          "count:", eventTapSuspendCount_);
        return;
    }
    eventTap_->setEnabled(true);
    MVPLog::write("SpaceGestureEngine event tap resumed reason:", reason);
}

void SpaceGestureEngine::setInteractionKeys(std::vector<ClaimableKey> keys) {
    if (keys == interactionKeys_) return;
    const bool opens = interactionKeys_.empty();
    interactionKeys_ = std::move(keys);
    refreshClaimableKeys();
    if (opens) interactionKeysSince_ = runLoop_.now();
}

void SpaceGestureEngine::refreshClaimableKeys() {
    if (!eventTap_) return;
    std::vector<ClaimableKey> keys = interactionKeys_;
    for (const auto action : allCases<CustomShortcutAction>()) {
        if (!isActionAvailable(action)) continue;
        const auto stored = CustomShortcuts::stored(preferences_, action);
        if (!stored) continue;
        const auto shortcut = ParsedShortcut::parse(*stored);
        if (!shortcut) continue;
        const auto key = shortcut->claimableKey();
        if (key && std::find(keys.begin(), keys.end(), *key) == keys.end()) keys.push_back(*key);
    }
    eventTap_->setClaimable(std::move(keys));
}

// MARK: The path of a key

bool SpaceGestureEngine::handle(const KeyEvent& event) {
    if (event.type == KeyEventType::tapDisabledByTimeout ||
        event.type == KeyEventType::tapDisabledByUserInput) {
        handleTapDisabled(event);
        return true;
    }
    // Asked once, and no line is put together unless it is wanted: this stands in the path of every key.
    const bool verbose = isVerbose(preferences_);
    if (verbose)
        MVPLog::write("Event callback:", typeName(event.type), "keyCode:", event.keyCode,
                      "timestamp:", event.timestamp);
    const bool isKeyDown = event.type == KeyEventType::keyDown;
    if (isKeyDown && !event.isAutoRepeat && event.keyCode == KeyCode::c &&
        (event.flags & KeyFlags::command) != 0 && recordPotentialUserCopyKeyDown_)
        recordPotentialUserCopyKeyDown_(pasteboard_.changeCountAt(event.timestamp));

    if (mayBeClaimed(event) && isClaimedByInteraction(event, verbose)) return false;
    if (isKeyDown) return handleKeyDown(event, verbose);
    if (event.keyCode == KeyCode::space) {
        if (verbose)
            MVPLog::write("Space event:", typeName(event.type), "keyCode:", event.keyCode,
                          "timestamp:", event.timestamp);
        handleSpaceKeyUp(static_cast<double>(event.timestamp) / 1e9);
    }
    return true;
}

void SpaceGestureEngine::handleTapDisabled(const KeyEvent& event) {
    const quint32 type = event.type == KeyEventType::tapDisabledByTimeout ? 0xFFFFFFFE : 0xFFFFFFFF;
    if (eventTapSuspendCount_ < 1) {
        MVPLog::write("CGEventTap disabled; re-enabling:", type);
        if (eventTap_) eventTap_->setEnabled(true);
    } else if (isVerbose(preferences_)) {
        MVPLog::write("CGEventTap disabled while suspended:", type);
    }
}

bool SpaceGestureEngine::mayBeClaimed(const KeyEvent& event) const {
    // Handled late, a key that the application already has would be acted on as well as typed. The stamps
    // have no parts of a millisecond.
    if (static_cast<double>(event.timestamp) / 1e6 < std::floor(interactionKeysSince_ * 1e3)) return false;
    // An ordinary chord is never claimed by an interaction; Escape always may be.
    return event.keyCode == KeyCode::escape || (event.flags & KeyFlags::all) == 0;
}

bool SpaceGestureEngine::isClaimedByInteraction(const KeyEvent& event, bool verbose) const {
    if (event.type == KeyEventType::keyUp) {
        if (!onKeyUpEvent || !onKeyUpEvent(event.keyCode)) return false;
        if (verbose) MVPLog::write("KeyUp consumed by active interaction:", "keyCode:", event.keyCode);
        return true;
    }
    if (onKeyDownEvent && onKeyDownEvent(event.keyCode, event.isAutoRepeat)) {
        if (verbose)
            MVPLog::write("Event consumed by active interaction:", "keyCode:", event.keyCode,
                          "repeat:", event.isAutoRepeat);
        return true;
    }
    if (onKeyDown && onKeyDown(event.keyCode)) {
        if (verbose) MVPLog::write("Event consumed by active interaction:", "keyCode:", event.keyCode);
        return true;
    }
    return false;
}

bool SpaceGestureEngine::handleKeyDown(const KeyEvent& event, bool verbose) {
    if (!event.isAutoRepeat) {
        if (const auto action = matchingCustomShortcut(event.keyCode, event.flags)) {
            currentSpaceDownTime_ = 0;
            isSpaceDown_ = false;
            resetTapSequence();
            if (onCustomShortcut) onCustomShortcut(*action);
            if (verbose) MVPLog::write("Custom shortcut consumed:", rawValue(*action));
            return false;
        }
    }
    const double now = static_cast<double>(event.timestamp) / 1e9;
    if (event.keyCode != KeyCode::space) {
        lastKeyDownTime_ = now;
        resetTapSequence();
        return true;
    }
    // Modifiers do not matter here: Shift-Space is a tap like a plain one.
    if (verbose)
        MVPLog::write("Space event:", typeName(event.type), "keyCode:", event.keyCode,
                      "timestamp:", event.timestamp);
    handleSpaceKeyDown(now, lastKeyDownTime_, event);
    lastKeyDownTime_ = now;
    return true;
}

std::optional<CustomShortcutAction> SpaceGestureEngine::matchingCustomShortcut(qint64 keyCode,
                                                                               quint64 flags) const {
    // Read anew at each key, without a cache: a changed shortcut works from the next key on.
    for (const auto action : allCases<CustomShortcutAction>()) {
        const auto stored = CustomShortcuts::stored(preferences_, action);
        if (!stored) continue;
        const auto shortcut = ParsedShortcut::parse(*stored);
        if (shortcut && shortcut->matches(keyCode, flags) && isActionAvailable(action)) return action;
    }
    return std::nullopt;
}

// MARK: Taps of the space bar

void SpaceGestureEngine::handleSpaceKeyDown(double timestamp,
                                            std::optional<double> lastKeyDownBeforeThisEvent,
                                            const KeyEvent& event) {
    if (event.isAutoRepeat) {
        MVPLog::write("Space keyDown ignored: key repeat");
        return;
    }
    if (isSpaceDown_) return;
    if (lastSpaceUpTime_ > 0 && secondsBetween(lastSpaceUpTime_, timestamp) > doubleSpaceMaximumInterval())
        resetTapSequence();

    isSpaceDown_ = true;
    currentSpaceDownTime_ = timestamp;
    ++tapCount_;
    if (tapCount_ == 1) {
        firstSpaceDownTime_ = timestamp;
        secondSpaceDownTime_ = 0;
        lastKeyInputBeforeSpaceSequenceTime_ = lastKeyDownBeforeThisEvent;
        characterBeforeFirstSpace_ =
            characterBeforeCursorProvider ? characterBeforeCursorProvider() : std::nullopt;
        doubleSpaceCandidateAllowed_ = false;
        tripleSpaceCandidateAllowed_ = false;
    } else if (tapCount_ == 2) {
        secondSpaceDownTime_ = timestamp;
        doubleSpaceCandidateAllowed_ = doubleGate();
    } else if (tapCount_ == 3) {
        tripleSpaceCandidateAllowed_ = tripleGate(timestamp);
    }
    commitTimer_.invalidate();
}

double SpaceGestureEngine::idleBeforeFirstSpace() const {
    return lastKeyInputBeforeSpaceSequenceTime_
               ? secondsBetween(*lastKeyInputBeforeSpaceSequenceTime_, firstSpaceDownTime_)
               : -1;
}

bool SpaceGestureEngine::doubleGate() const {
    const double interval = secondsBetween(firstSpaceDownTime_, secondSpaceDownTime_);
    const double idle = idleBeforeFirstSpace();
    const bool allowed = interval < doubleSpaceMaximumInterval() &&
                         (!lastKeyInputBeforeSpaceSequenceTime_ || idle >= doubleSpaceIdleGuard()) &&
                         isFrontmostAppAllowedForDouble();
    MVPLog::write("Double space safety gate:", "allowed:", allowed, "interval:", interval,
                  "idleBeforeFirst:", idle, "previousChar:", characterBeforeFirstSpace_);
    return allowed;
}

bool SpaceGestureEngine::tripleGate(double thirdSpaceDownTime) const {
    TripleSpaceSafetyGate gate;
    gate.firstSpaceDownAt = firstSpaceDownTime_;
    gate.secondSpaceDownAt = secondSpaceDownTime_;
    gate.thirdSpaceDownAt = thirdSpaceDownTime;
    gate.lastKeyInputBeforeFirstSpaceAt = lastKeyInputBeforeSpaceSequenceTime_;
    gate.frontmostAppAllowed = isFrontmostAppAllowedForDouble();
    gate.characterBeforeCursor = characterBeforeFirstSpace_;
    gate.maximumFirstToSecondInterval = doubleSpaceMaximumInterval();
    gate.maximumFirstToThirdInterval = tripleSpaceMaximumTotalInterval();
    gate.maximumSecondToThirdInterval = tripleSpaceMaximumTailInterval();
    gate.minimumIdleBeforeFirstSpace = tripleSpaceIdle;
    const bool allowed = gate.allowsTripleSpace();
    MVPLog::write("Triple space safety gate:", "allowed:", allowed,
                  "firstToSecond:", secondsBetween(firstSpaceDownTime_, secondSpaceDownTime_),
                  "secondToThird:", secondsBetween(secondSpaceDownTime_, thirdSpaceDownTime),
                  "firstToThird:", secondsBetween(firstSpaceDownTime_, thirdSpaceDownTime),
                  "idleBeforeFirst:", idleBeforeFirstSpace(), "previousChar:", characterBeforeFirstSpace_);
    return allowed;
}

void SpaceGestureEngine::handleSpaceKeyUp(double timestamp) {
    if (!isSpaceDown_) return;
    isSpaceDown_ = false;
    currentSpaceDownTime_ = 0;
    lastSpaceUpTime_ = timestamp;
    commitTimer_.invalidate();
    if (tapCount_ >= 3) {
        // A triple needs no waiting: there is no fourth tap to be told from it.
        const bool allowed = tripleSpaceCandidateAllowed_;
        if (allowed)
            raise(onTriple);
        else
            MVPLog::write("Triple space rejected by safety gate");
        resetTapSequence();
        return;
    }
    const double maximum = doubleSpaceMaximumInterval();
    scheduleCommit(tapCount_ == 2 && doubleSpaceCandidateAllowed_
                       ? std::min(tripleSpaceMaximumTailInterval(), maximum)
                       : maximum);
}

void SpaceGestureEngine::scheduleCommit(double delay) {
    // When the time is up, keys that came before and still wait in the queue go first: one of them may be the
    // third tap.
    commitTimer_ =
        runLoop_.after(delay, [this] { commitTimer_ = runLoop_.after(0, [this] { commitTapSequence(); }); });
}

void SpaceGestureEngine::commitTapSequence() {
    const bool isDouble = tapCount_ == 2;
    const bool allowed = doubleSpaceCandidateAllowed_;
    if (isDouble && allowed)
        raise(onDouble);
    else if (isDouble)
        MVPLog::write("Double space rejected by safety gate");
    resetTapSequence();
}

void SpaceGestureEngine::resetTapSequence() {
    tapCount_ = 0;
    firstSpaceDownTime_ = 0;
    secondSpaceDownTime_ = 0;
    lastKeyInputBeforeSpaceSequenceTime_.reset();
    characterBeforeFirstSpace_.reset();
    doubleSpaceCandidateAllowed_ = false;
    tripleSpaceCandidateAllowed_ = false;
    lastSpaceUpTime_ = 0;
    commitTimer_.invalidate();
}

}  // namespace veltrin
