#include "Platform/Linux/QtRunLoop.h"

#include <QMetaObject>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>

namespace veltrin {
namespace {

double secondsOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace

QtRunLoop::QtRunLoop() = default;
QtRunLoop::~QtRunLoop() = default;

double QtRunLoop::now() const {
    return secondsOf(CLOCK_MONOTONIC);
}
double QtRunLoop::wallNow() const {
    return secondsOf(CLOCK_REALTIME);
}

void QtRunLoop::post(std::function<void()> action) {
    {
        const std::scoped_lock lock(postedLock_);
        posted_.push_back(std::move(action));
    }
    // By name, so that nothing of ours but the queue crosses the threads.
    QMetaObject::invokeMethod(this, "runPosted", Qt::QueuedConnection);
}

/// Runs one action, so that what is posted meanwhile waits for its own turn.
void QtRunLoop::runPosted() {
    std::function<void()> action;
    {
        const std::scoped_lock lock(postedLock_);
        if (posted_.empty()) return;
        action = std::move(posted_.front());
        posted_.pop_front();
    }
    action();
}

bool QtRunLoop::isMainThread() const {
    return QThread::currentThread() == thread();
}

void QtRunLoop::sleepFor(double seconds) {
    if (seconds > 0) QThread::usleep(static_cast<unsigned long>(std::llround(seconds * 1e6)));
}

std::uint64_t QtRunLoop::schedule(double seconds, bool repeats, std::function<void()> action) {
    const std::uint64_t id = ++lastId_;
    auto timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeats);
    timer->setInterval(std::chrono::milliseconds(std::max<long long>(0, std::llround(seconds * 1e3))));
    connect(timer.get(), &QTimer::timeout, this, [this, id, repeats, action = std::move(action)] {
        const auto run = action;  // the action may cancel its own timer
        if (!repeats) cancel(id);
        run();
    });
    timer->start();
    timers_.emplace(id, std::move(timer));
    return id;
}

void QtRunLoop::cancel(std::uint64_t id) {
    const auto found = timers_.find(id);
    if (found == timers_.end()) return;
    // A timer may be cancelled from inside its own timeout signal, so it dies on a later turn.
    found->second->stop();
    found->second.release()->deleteLater();
    timers_.erase(found);
}

}  // namespace veltrin
