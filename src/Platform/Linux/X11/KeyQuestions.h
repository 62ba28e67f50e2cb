#pragma once

#include "Platform/KeyEventTap.h"
#include "Platform/RunLoop.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>

namespace veltrin {

/// Carries key events to the main run loop, in order, and brings answers back in a bounded time.
///
/// A question that nobody answers in time has gone stale: its event is then never handled at all, because the
/// key was passed on. While the main thread still owes a stale question its turn, no further question waits.
class KeyQuestions {
public:
    /// Runs on the main thread; whether the event goes on.
    using Handler = std::function<bool(const KeyEvent&)>;

    KeyQuestions(RunLoop& loop, Handler handler);

    /// Tells the main thread after the fact.
    void tell(const KeyEvent& event);
    /// Asks and waits; true ("goes on") when no answer came within `limit`. One thread only.
    bool ask(const KeyEvent& event, std::chrono::milliseconds limit);
    /// Ends a wait at once, and every later one. Any thread.
    void giveUp();

private:
    struct Question;
    struct Shared {
        Handler handler;
        std::atomic<int> owed{0};  ///< stale questions that are still in the main thread's queue
    };

    RunLoop& loop_;
    std::shared_ptr<Shared> shared_;
    std::mutex mutex_;  ///< guards what follows
    std::shared_ptr<Question> current_;
    bool givenUp_ = false;
};

}  // namespace veltrin
