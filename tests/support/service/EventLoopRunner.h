#pragma once

#include "support/fake/TaskRunner.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <functional>
#include <stdexcept>

namespace veltrin {

/// Runs the event loop until the condition holds; false when it did not within `seconds`.
inline bool runUntil(const std::function<bool()>& condition, double seconds = 10) {
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
        if (condition() || clock.hasExpired(static_cast<qint64>(seconds * 1e3))) loop.quit();
    });
    tick.start(1);
    if (!condition()) loop.exec();
    return condition();
}

/// Lets everything that is queued happen, deferred deletions included.
inline void runFor(double seconds) {
    QElapsedTimer clock;
    clock.start();
    runUntil([&] { return clock.hasExpired(static_cast<qint64>(seconds * 1e3)); }, seconds + 1);
}

/// Runs the event loop until the task ends, by value or by error.
template <typename T>
std::shared_ptr<Outcome<T>> finish(QCoro::Task<T> task, double seconds = 20) {
    auto outcome = follow(std::move(task));
    if (!runUntil([&] { return outcome->finished(); }, seconds))
        outcome->failure = std::make_exception_ptr(std::runtime_error("the task did not end"));
    return outcome;
}

}  // namespace veltrin
