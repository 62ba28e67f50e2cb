#pragma once

#include "Platform/RunLoop.h"

#include <coroutine>
#include <list>
#include <memory>
#include <utility>

namespace veltrin {

/// Waits of an object's coroutines on the run loop, which goes on meanwhile:
///
///     auto wait = pauses_.pause(0.1);
///     if (!co_await wait) co_return;
///
/// It gives true when the time has passed, and false when the pauses end before that: their owner is going
/// then, and the coroutine must return without touching it. To be its owner's last member. Main thread.
class Pauses {
    struct Waiting {
        Timer timer;
        std::coroutine_handle<> coroutine;
        bool isOver = false;
    };

public:
    class Awaiter {
    public:
        Awaiter(Pauses& pauses, double seconds) : pauses_(pauses), seconds_(seconds) {}
        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> coroutine) {
            waiting_->coroutine = coroutine;
            waiting_->timer = pauses_.runLoop_.after(
                seconds_, [&pauses = pauses_, waiting = waiting_] { pauses.resume(waiting, true); });
            pauses_.waiting_.push_back(waiting_);
        }
        bool await_resume() const noexcept { return waiting_->isOver; }

    private:
        Pauses& pauses_;
        double seconds_;
        std::shared_ptr<Waiting> waiting_ = std::make_shared<Waiting>();
    };

    explicit Pauses(RunLoop& runLoop) : runLoop_(runLoop) {}
    Pauses(const Pauses&) = delete;
    Pauses& operator=(const Pauses&) = delete;
    ~Pauses() {
        while (!waiting_.empty())
            resume(waiting_.front(), false);
    }

    Awaiter pause(double seconds) { return {*this, seconds}; }

private:
    void resume(const std::shared_ptr<Waiting>& waiting, bool isOver) {
        waiting->isOver = isOver;
        const auto coroutine = waiting->coroutine;
        const Timer ending = std::move(waiting->timer);
        waiting_.remove(waiting);  // and with it, it may be, what was named here
        coroutine.resume();
    }

    RunLoop& runLoop_;
    std::list<std::shared_ptr<Waiting>> waiting_;
};

}  // namespace veltrin
