#pragma once

#include "Platform/RunLoop.h"

#include <cstddef>
#include <map>
#include <set>
#include <utility>

namespace veltrin {

/// A run loop on a virtual clock. Nothing happens between two calls of the test; `advance` lets time pass and
/// runs what becomes due, in the order of its time, and of two things due at the same time the one that was
/// asked for first.
///
/// Two kinds of action share the clock. Actions of the main loop are the program's own: timers and posted
/// work. They stand still while the main thread is blocked and run late afterwards. Actions of the world are
/// everybody else's: foreign applications, the user's hands. They go on whatever the main thread does.
class FakeRunLoop final : public RunLoop {
public:
    double now() const override { return now_; }
    double wallNow() const override { return wallStart + now_; }
    void post(std::function<void()> action) override;
    bool isMainThread() const override { return mainThread; }
    /// Time passes for the world only.
    void sleepFor(double seconds) override;

    /// Lets time pass. Not to be called from inside an action of the main loop, since no loop ever nests.
    void advance(double seconds);
    /// Runs what is due now, what that posts included.
    void runDue() { advance(0); }

    /// Schedules an action of the world.
    void inWorld(double seconds, std::function<void()> action);

    /// True while the main thread sleeps or waits for a foreign application.
    bool isBlocked() const { return blocked_ > 0; }
    /// Timers of the program that have not fired; posted work does not count.
    std::size_t pendingTimers() const { return timers_.size(); }
    /// Seconds the main thread has been blocked in all.
    double blockedSeconds() const { return blockedSeconds_; }

    /// What `isMainThread` answers.
    bool mainThread = true;
    /// The wall clock's reading when the virtual clock stands at 0.
    double wallStart = 1700000000.0;

protected:
    std::uint64_t schedule(double seconds, bool repeats, std::function<void()> action) override;
    void cancel(std::uint64_t id) override;

private:
    struct Action {
        std::function<void()> run;
        double interval = -1;  ///< negative for a one-shot action
        bool isTimer = false;
    };
    using Moment = std::pair<double, std::uint64_t>;
    using Queue = std::map<Moment, Action>;

    void enqueueMain(double at, std::uint64_t id, Action action);
    void runWorldUntil(double end);
    void runMain(Queue::iterator next);
    void runWorld(Queue::iterator next);

    double now_ = 1000.0;
    std::uint64_t lastId_ = 0;
    int blocked_ = 0;
    int running_ = 0;
    double blockedSeconds_ = 0;
    Queue main_;
    Queue world_;
    std::map<std::uint64_t, double> due_;
    std::set<std::uint64_t> timers_;
};

}  // namespace veltrin
