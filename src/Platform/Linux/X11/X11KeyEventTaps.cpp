#include "Platform/Linux/X11/X11KeyEventTaps.h"

#include "Foundation/MVPLog.h"
#include "Platform/Linux/X11/KeyQuestions.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11KeyListener.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace veltrin {
namespace {

/// Seconds.
constexpr double restartDelay = 0.1;

struct TapState {
    KeyEventMask mask = KeyEventMask::keyDown;
    KeyEventTap::Handler handler;
    bool onRunLoop = false;
    bool enabled = false;
    bool gone = false;
    std::uint64_t enabledAt = 0;  ///< milliseconds of the monotonic clock
    std::vector<ClaimableKey> claimable;

    bool isOn() const { return onRunLoop && enabled && !gone; }
    bool takes(const KeyEvent& event) const {
        if (!isOn()) return false;
        if (event.type == KeyEventType::keyUp && mask != KeyEventMask::keyDownAndKeyUp) return false;
        // Strictly later: the server's stamps have no parts of a millisecond, and what we posted ourselves
        // just before the tap went on again is not the user's.
        return event.timestamp / 1'000'000 > enabledAt;
    }
    bool mayClaim(const KeyEvent& event) const {
        return std::any_of(claimable.begin(), claimable.end(), [&](const ClaimableKey& key) {
            return key.keyCode == event.keyCode &&
                   (key.anyFlags ? (event.flags & key.flags) == key.flags : event.flags == key.flags);
        });
    }
};

}  // namespace

/// What the taps share: the list of them and the listening thread. Main thread.
class X11KeyEventTaps::Switchboard : public std::enable_shared_from_this<Switchboard> {
public:
    Switchboard(RunLoop& runLoop, QByteArray display, std::chrono::milliseconds answerLimit)
        : runLoop_(runLoop), display_(std::move(display)), answerLimit_(answerLimit) {}

    bool start() {
        if (listener_) return true;
        questions_ =
            std::make_unique<KeyQuestions>(runLoop_, [weak = weak_from_this()](const KeyEvent& event) {
                const auto self = weak.lock();
                return !self || self->dispatch(event);
            });
        listener_ =
            X11KeyListener::start(display_, *questions_, answerLimit_, [this, weak = weak_from_this()] {
                runLoop_.post([weak] {
                    if (const auto self = weak.lock()) self->restartSoon();
                });
            });
        return listener_ != nullptr;
    }
    void stop() {
        listener_.reset();
        questions_.reset();
    }
    bool isPossible() const {
        // Under Wayland the server sees the keys of its own clients only.
        if (qgetenv("XDG_SESSION_TYPE") == "wayland") return false;
        if (listener_) return true;
        const auto connection = X11Connection::open(display_);
        return connection && connection->hasXInput22() && connection->hasXkb() && connection->hasXTest();
    }
    void letGo(std::chrono::milliseconds limit) {
        if (listener_) listener_->letGo(limit);
    }

    void setSilent(bool silent) {
        if (silent == isSilent_) return;
        isSilent_ = silent;
        // What was typed before is as little the taps' as after a pause.
        for (const auto& tap : taps_)
            tap->enabledAt = now();
        changed();
    }

    void add(std::shared_ptr<TapState> tap) { taps_.insert(taps_.begin(), std::move(tap)); }
    void remove(const std::shared_ptr<TapState>& tap) {
        tap->gone = true;
        std::erase(taps_, tap);
        changed();
    }
    void changed() {
        if (!listener_) return;
        bool listening = false;
        std::vector<ClaimableKey> claimable;
        for (const auto& tap : taps_) {
            if (isSilent_ || !tap->isOn()) continue;
            listening = true;
            for (const auto& key : tap->claimable) {
                if (std::find(claimable.begin(), claimable.end(), key) == claimable.end())
                    claimable.push_back(key);
            }
        }
        listener_->configure(listening, claimable);
    }
    std::uint64_t now() const { return static_cast<std::uint64_t>(std::floor(runLoop_.now() * 1000)); }

private:
    /// The connection is lost while the server may well be there: something ended it, for one the key guard
    /// while this process stood still.
    void restartSoon() {
        runLoop_.afterDetached(restartDelay, [weak = weak_from_this()] {
            const auto self = weak.lock();
            if (!self || !self->listener_) return;
            self->stop();
            const bool again = self->start();
            MVPLog::write("Key listening lost; started again:", again);
            self->changed();
        });
    }

    /// Whether the event goes on. A handler may make, change and destroy taps.
    bool dispatch(const KeyEvent& event) {
        if (isSilent_) return true;
        const auto taps = taps_;
        for (const auto& tap : taps) {
            if (!tap->takes(event)) continue;
            const bool mayClaim = tap->mayClaim(event);
            const auto handler = tap->handler;
            if (!handler(event) && mayClaim) return false;
        }
        return true;
    }

    RunLoop& runLoop_;
    QByteArray display_;
    std::chrono::milliseconds answerLimit_;
    bool isSilent_ = false;
    std::vector<std::shared_ptr<TapState>> taps_;  ///< newest first
    std::unique_ptr<KeyQuestions> questions_;
    std::unique_ptr<X11KeyListener> listener_;
};

class X11KeyEventTaps::Tap final : public KeyEventTap {
public:
    Tap(std::shared_ptr<Switchboard> switchboard, std::shared_ptr<TapState> state)
        : switchboard_(std::move(switchboard)), state_(std::move(state)) {}
    ~Tap() override { switchboard_->remove(state_); }
    Tap(const Tap&) = delete;
    Tap& operator=(const Tap&) = delete;

    bool addToRunLoop() override {
        state_->onRunLoop = true;
        state_->enabledAt = switchboard_->now();
        switchboard_->changed();
        return true;
    }
    void removeFromRunLoop() override {
        state_->onRunLoop = false;
        switchboard_->changed();
    }
    void setEnabled(bool enabled) override {
        // Enabling a tap that is on already drops nothing that is queued for it.
        if (enabled && !state_->enabled) state_->enabledAt = switchboard_->now();
        if (enabled == state_->enabled) return;
        state_->enabled = enabled;
        switchboard_->changed();
    }
    void setClaimable(std::vector<ClaimableKey> keys) override {
        if (keys == state_->claimable) return;
        state_->claimable = std::move(keys);
        switchboard_->changed();
    }

private:
    std::shared_ptr<Switchboard> switchboard_;
    std::shared_ptr<TapState> state_;
};

X11KeyEventTaps::X11KeyEventTaps(RunLoop& runLoop, QByteArray display, std::chrono::milliseconds answerLimit)
    : switchboard_(std::make_shared<Switchboard>(runLoop, std::move(display), answerLimit)) {
}

X11KeyEventTaps::~X11KeyEventTaps() {
    switchboard_->stop();
}

std::unique_ptr<KeyEventTap> X11KeyEventTaps::create(KeyEventMask mask, KeyEventTap::Handler handler) {
    if (!handler || !switchboard_->isPossible() || !switchboard_->start()) return nullptr;
    auto state = std::make_shared<TapState>();
    state->mask = mask;
    state->handler = std::move(handler);
    switchboard_->add(state);
    return std::make_unique<Tap>(switchboard_, std::move(state));
}

bool X11KeyEventTaps::preflightListenEventAccess() const {
    return switchboard_->isPossible();
}
bool X11KeyEventTaps::requestListenEventAccess() {
    return preflightListenEventAccess();
}
void X11KeyEventTaps::setSilent(bool silent) {
    switchboard_->setSilent(silent);
}
void X11KeyEventTaps::letGo(std::chrono::milliseconds limit) {
    switchboard_->letGo(limit);
}

}  // namespace veltrin
