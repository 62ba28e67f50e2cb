#pragma once

#include <cstdint>
#include <functional>
#include <utility>

namespace veltrin {

class RunLoop;

/// One scheduled action; cancelled when destroyed or assigned over. Must not outlive its run loop.
class [[nodiscard]] Timer {
public:
    Timer() = default;
    Timer(RunLoop& loop, std::uint64_t id) : loop_(&loop), id_(id) {}
    Timer(Timer&& other) noexcept
        : loop_(std::exchange(other.loop_, nullptr)), id_(std::exchange(other.id_, 0)) {}
    Timer& operator=(Timer&& other) noexcept;
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer() { invalidate(); }

    void invalidate();
    /// True until it was invalidated; a one-shot timer that has fired still says true.
    bool isSet() const { return loop_ != nullptr; }

private:
    RunLoop* loop_ = nullptr;
    std::uint64_t id_ = 0;
};

/// The main run loop and the only clock of the core. Everything runs on the main thread; `post` may be called
/// from any thread, the rest from the main thread only.
class RunLoop {
public:
    RunLoop() = default;
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;
    virtual ~RunLoop() = default;

    /// Seconds on a monotonic clock, the one that stamps key events.
    virtual double now() const = 0;
    /// Seconds since 1970-01-01 UTC.
    virtual double wallNow() const = 0;

    /// Runs `action` once, `seconds` from now.
    Timer after(double seconds, std::function<void()> action) {
        return Timer(*this, schedule(seconds, false, std::move(action)));
    }
    /// Runs `action` every `seconds`, first after one interval.
    Timer every(double seconds, std::function<void()> action) {
        return Timer(*this, schedule(seconds, true, std::move(action)));
    }
    /// Runs `action` once, `seconds` from now, with nobody to cancel it.
    void afterDetached(double seconds, std::function<void()> action) {
        schedule(seconds, false, std::move(action));
    }
    /// Runs `action` on the next turn of the loop. Any thread.
    virtual void post(std::function<void()> action) = 0;
    virtual bool isMainThread() const = 0;

    /// Blocks the main thread; never runs a nested loop.
    virtual void sleepFor(double seconds) = 0;

protected:
    friend class Timer;
    virtual std::uint64_t schedule(double seconds, bool repeats, std::function<void()> action) = 0;
    /// Unknown and spent identifiers are ignored.
    virtual void cancel(std::uint64_t id) = 0;
};

inline void Timer::invalidate() {
    if (RunLoop* loop = std::exchange(loop_, nullptr)) loop->cancel(id_);
}

inline Timer& Timer::operator=(Timer&& other) noexcept {
    if (this != &other) {
        invalidate();
        loop_ = std::exchange(other.loop_, nullptr);
        id_ = std::exchange(other.id_, 0);
    }
    return *this;
}

}  // namespace veltrin
