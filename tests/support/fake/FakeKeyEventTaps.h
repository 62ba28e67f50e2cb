#pragma once

#include "Platform/KeyEventTap.h"
#include "support/fake/FakeRunLoop.h"

#include <cstdint>
#include <map>

namespace veltrin {

/// The taps of the simulated desktop, the newest asked first. They keep the port's word to the letter: only
/// claimable keys can be swallowed and only by an answer within 50 ms; every other key reaches its
/// application first and is reported afterwards; a swallowed press takes its repeats and its release with it;
/// and what passes while a tap is off is never told to it.
class FakeKeyEventTaps final : public KeyEventTaps {
public:
    explicit FakeKeyEventTaps(FakeRunLoop& loop) : loop_(loop) {}

    std::unique_ptr<KeyEventTap> create(KeyEventMask mask, KeyEventTap::Handler handler) override;
    bool preflightListenEventAccess() const override { return granted; }
    bool requestListenEventAccess() override;

    /// Runs one physical key through the taps; `deliver` hands it to the application that has the keyboard,
    /// at once, later or never.
    void send(const KeyEvent& event, const std::function<void()>& deliver);
    /// The system turns every running tap off and says so, as it does with a tap that is slow.
    void disableByTimeout() { disable(KeyEventType::tapDisabledByTimeout); }
    void disableByUserInput() { disable(KeyEventType::tapDisabledByUserInput); }

    /// One tap as it stands; a record stays after its tap is gone.
    struct Record {
        KeyEventMask mask = KeyEventMask::keyDownAndKeyUp;
        KeyEventTap::Handler handler;
        bool exists = true;
        bool onRunLoop = false;
        bool enabled = false;
        double enabledSince = 0;
        std::vector<ClaimableKey> claimable;
        int enableCalls = 0;
        int disableCalls = 0;

        bool isRunning() const { return exists && onRunLoop && enabled; }
        bool wants(const KeyEvent& event) const;
        bool mayClaim(const KeyEvent& event) const;
    };
    /// Every tap ever made, oldest first.
    std::vector<std::shared_ptr<Record>> taps;

    bool granted = true;            ///< whether taps can be made
    bool grantedOnRequest = false;  ///< whether asking for the right brings it
    int requests = 0;
    double answerLimit = 0.05;  ///< seconds a claimable key waits for its answer
    int swallowed = 0;          ///< key events that reached no application

private:
    void disable(KeyEventType reason);
    bool ask(Record& tap, const KeyEvent& event);
    void tellLater(const std::shared_ptr<Record>& tap, const KeyEvent& event);

    FakeRunLoop& loop_;
    /// Keys whose press was swallowed and that are still down, and by whom.
    std::map<qint64, std::shared_ptr<Record>> claimed_;
};

}  // namespace veltrin
