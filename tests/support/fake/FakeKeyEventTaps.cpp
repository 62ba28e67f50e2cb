#include "support/fake/FakeKeyEventTaps.h"

#include <algorithm>

namespace veltrin {
namespace {

class FakeKeyEventTap final : public KeyEventTap {
public:
    FakeKeyEventTap(FakeRunLoop& loop, std::shared_ptr<FakeKeyEventTaps::Record> record)
        : loop_(loop), record_(std::move(record)) {}
    ~FakeKeyEventTap() override { record_->exists = false; }

    bool addToRunLoop() override {
        record_->onRunLoop = true;
        return true;
    }
    void removeFromRunLoop() override { record_->onRunLoop = false; }
    void setEnabled(bool enabled) override {
        ++(enabled ? record_->enableCalls : record_->disableCalls);
        if (enabled && !record_->enabled) record_->enabledSince = loop_.now();
        record_->enabled = enabled;
    }
    void setClaimable(std::vector<ClaimableKey> keys) override { record_->claimable = std::move(keys); }

private:
    FakeRunLoop& loop_;
    std::shared_ptr<FakeKeyEventTaps::Record> record_;
};

}  // namespace

bool FakeKeyEventTaps::Record::wants(const KeyEvent& event) const {
    return isRunning() && (event.type == KeyEventType::keyDown || mask == KeyEventMask::keyDownAndKeyUp);
}

bool FakeKeyEventTaps::Record::mayClaim(const KeyEvent& event) const {
    return std::any_of(claimable.begin(), claimable.end(), [&](const ClaimableKey& key) {
        if (key.keyCode != event.keyCode) return false;
        const quint64 held = event.flags & KeyFlags::all;
        return key.anyFlags ? (held & key.flags) == key.flags : held == key.flags;
    });
}

std::unique_ptr<KeyEventTap> FakeKeyEventTaps::create(KeyEventMask mask, KeyEventTap::Handler handler) {
    if (!granted) return nullptr;
    auto record = std::make_shared<Record>();
    record->mask = mask;
    record->handler = std::move(handler);
    taps.push_back(record);
    return std::make_unique<FakeKeyEventTap>(loop_, std::move(record));
}

bool FakeKeyEventTaps::requestListenEventAccess() {
    ++requests;
    granted = granted || grantedOnRequest;
    return granted;
}

bool FakeKeyEventTaps::ask(Record& tap, const KeyEvent& event) {
    const double asked = loop_.now();
    const bool passes = tap.handler(event);
    return passes || loop_.now() - asked > answerLimit;
}

void FakeKeyEventTaps::tellLater(const std::shared_ptr<Record>& tap, const KeyEvent& event) {
    loop_.post([tap, event, at = loop_.now()] {
        if (tap->wants(event) && tap->enabledSince <= at) tap->handler(event);
    });
}

void FakeKeyEventTaps::send(const KeyEvent& event, const std::function<void()>& deliver) {
    // Handlers may make and drop taps while they are asked.
    const auto present = std::vector<std::shared_ptr<Record>>(taps.rbegin(), taps.rend());
    const auto held = claimed_.find(event.keyCode);
    const bool firstPress = event.type == KeyEventType::keyDown && !event.isAutoRepeat;
    if (held != claimed_.end() && !firstPress) {
        // What belongs to a swallowed press is swallowed, whatever the answer and whatever became of the tap.
        const auto tap = held->second;
        if (event.type == KeyEventType::keyUp) claimed_.erase(held);
        ++swallowed;
        if (!tap->wants(event)) return;
        if (loop_.isBlocked())
            tellLater(tap, event);
        else
            tap->handler(event);
        return;
    }
    claimed_.erase(event.keyCode);

    // A release follows its press, so only key-downs can be claimed.
    const auto claims = [&](const auto& tap) {
        return event.type == KeyEventType::keyDown && tap->wants(event) && tap->mayClaim(event);
    };
    if (loop_.isBlocked()) {
        const bool waits = std::any_of(present.begin(), present.end(), claims);
        if (waits)
            loop_.inWorld(answerLimit, deliver);
        else
            deliver();
        for (const auto& tap : present) {
            // A key that waited for an answer in vain is passed on and never acted on afterwards.
            if (tap->wants(event) && !claims(tap)) tellLater(tap, event);
        }
        return;
    }
    std::vector<std::shared_ptr<Record>> told;
    for (const auto& tap : present) {
        if (!tap->wants(event)) continue;
        if (!claims(tap)) {
            told.push_back(tap);
            continue;
        }
        if (ask(*tap, event)) continue;
        if (firstPress) claimed_[event.keyCode] = tap;
        ++swallowed;
        return;
    }
    deliver();
    for (const auto& tap : told) {
        if (tap->wants(event)) tap->handler(event);
    }
}

void FakeKeyEventTaps::disable(KeyEventType reason) {
    KeyEvent event;
    event.type = reason;
    const auto present = taps;
    for (const auto& tap : present) {
        if (!tap->exists || !tap->onRunLoop) continue;
        tap->enabled = false;
        tap->handler(event);
    }
}

}  // namespace veltrin
