#pragma once

#include "Platform/RunLoop.h"

#include <QObject>

#include <deque>
#include <memory>
#include <mutex>
#include <unordered_map>

class QTimer;

namespace veltrin {

/// The Qt event loop of the thread that made it. Timers are precise; `now` is CLOCK_MONOTONIC, which is also
/// the X server's clock.
class QtRunLoop final : public QObject, public RunLoop {
    Q_OBJECT
public:
    QtRunLoop();
    ~QtRunLoop() override;

    double now() const override;
    double wallNow() const override;
    void post(std::function<void()> action) override;
    bool isMainThread() const override;
    void sleepFor(double seconds) override;

protected:
    std::uint64_t schedule(double seconds, bool repeats, std::function<void()> action) override;
    void cancel(std::uint64_t id) override;

private:
    Q_INVOKABLE void runPosted();

    std::uint64_t lastId_ = 0;
    std::unordered_map<std::uint64_t, std::unique_ptr<QTimer>> timers_;
    /// What other threads hand over, behind a lock of our own that the thread sanitizer can see.
    std::mutex postedLock_;
    std::deque<std::function<void()>> posted_;
};

}  // namespace veltrin
