#include "support/desktop/Waiting.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <ctime>

namespace veltrin {

double monotonicSeconds() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

bool eventually(double seconds, const std::function<bool()>& condition) {
    const double deadline = monotonicSeconds() + seconds;
    QTimer tick;  // wakes the loop for conditions that no event of this thread announces
    tick.setTimerType(Qt::PreciseTimer);
    tick.start(5);
    while (!condition()) {
        if (monotonicSeconds() >= deadline) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        // processEvents leaves deleteLater to an outer loop, and there is none in a test.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

bool waitUntil(double seconds, const std::function<bool()>& condition) {
    const double deadline = monotonicSeconds() + seconds;
    while (!condition()) {
        if (monotonicSeconds() >= deadline) return false;
        const timespec nap{0, 1000000};
        clock_nanosleep(CLOCK_MONOTONIC, 0, &nap, nullptr);
    }
    return true;
}

void runEventLoopFor(double seconds) {
    const double end = monotonicSeconds() + seconds;
    eventually(seconds + 1, [end] { return monotonicSeconds() >= end; });
}

}  // namespace veltrin
