#include "support/fake/FakeRunLoop.h"

#include <algorithm>
#include <stdexcept>

namespace veltrin {
namespace {

class Mark {
public:
    explicit Mark(int& depth) : depth_(depth) { ++depth_; }
    ~Mark() { --depth_; }

private:
    int& depth_;
};

}  // namespace

void FakeRunLoop::enqueueMain(double at, std::uint64_t id, Action action) {
    due_.emplace(id, at);
    if (action.isTimer) timers_.insert(id);
    main_.emplace(Moment{at, id}, std::move(action));
}

void FakeRunLoop::post(std::function<void()> action) {
    enqueueMain(now_, ++lastId_, Action{std::move(action), -1, false});
}

std::uint64_t FakeRunLoop::schedule(double seconds, bool repeats, std::function<void()> action) {
    const std::uint64_t id = ++lastId_;
    const double delay = std::max(0.0, seconds);
    enqueueMain(now_ + delay, id, Action{std::move(action), repeats ? delay : -1, true});
    return id;
}

void FakeRunLoop::cancel(std::uint64_t id) {
    const auto found = due_.find(id);
    if (found == due_.end()) return;
    main_.erase(Moment{found->second, id});
    due_.erase(found);
    timers_.erase(id);
}

void FakeRunLoop::inWorld(double seconds, std::function<void()> action) {
    world_.emplace(Moment{now_ + std::max(0.0, seconds), ++lastId_}, Action{std::move(action), -1, false});
}

void FakeRunLoop::sleepFor(double seconds) {
    if (seconds <= 0) return;
    blockedSeconds_ += seconds;
    const Mark mark(blocked_);
    runWorldUntil(now_ + seconds);
}

void FakeRunLoop::runWorldUntil(double end) {
    while (!world_.empty() && world_.begin()->first.first <= end)
        runWorld(world_.begin());
    now_ = std::max(now_, end);
}

void FakeRunLoop::runMain(Queue::iterator next) {
    const std::uint64_t id = next->first.second;
    now_ = std::max(now_, next->first.first);
    Action action = std::move(next->second);
    main_.erase(next);
    due_.erase(id);
    if (action.interval >= 0) {
        // Back in the queue before it runs, so that it can cancel itself. A loop that comes late skips the
        // missed rounds, and one that asks for no interval at all must not stop the clock.
        enqueueMain(now_ + std::max(action.interval, 1e-6), id, action);
    } else {
        timers_.erase(id);
    }
    const Mark mark(running_);
    action.run();
}

void FakeRunLoop::runWorld(Queue::iterator next) {
    now_ = std::max(now_, next->first.first);
    const Action action = std::move(next->second);
    world_.erase(next);
    const Mark mark(running_);
    action.run();
}

void FakeRunLoop::advance(double seconds) {
    if (running_ > 0 || blocked_ > 0) throw std::logic_error("the run loop was entered from inside itself");
    double end = now_ + std::max(0.0, seconds);
    for (;;) {
        end = std::max(end, now_);  // an action that slept past the end made more things due
        const auto main = main_.begin();
        const auto world = world_.begin();
        const bool mainDue = main != main_.end() && main->first.first <= end;
        const bool worldDue = world != world_.end() && world->first.first <= end;
        if (!mainDue && !worldDue) break;
        if (mainDue && (!worldDue || main->first < world->first)) {
            runMain(main);
        } else {
            runWorld(world);
        }
    }
    now_ = std::max(now_, end);
}

}  // namespace veltrin
