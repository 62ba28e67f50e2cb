#include "Platform/Linux/X11/KeyQuestions.h"

#include <condition_variable>
#include <utility>

namespace veltrin {
namespace {

using Clock = std::chrono::steady_clock;

/// A handler that starts this close to the end would answer too late, and the key would be both acted on and
/// passed.
constexpr std::chrono::milliseconds lastStart{10};

}  // namespace

struct KeyQuestions::Question {
    enum class State { waiting, handling, answered, stale };

    std::mutex mutex;
    std::condition_variable changed;
    State state = State::waiting;
    bool passes = true;
    bool turnDone = false;  ///< the main thread has had its turn
    bool owed = false;      ///< counted as owed until then
    Clock::time_point deadline;

    /// Whether the handler may still run.
    bool begin() {
        const std::lock_guard guard(mutex);
        if (state == State::waiting && Clock::now() <= deadline - lastStart) {
            state = State::handling;
            return true;
        }
        state = State::stale;
        changed.notify_all();
        return false;
    }
    void answer(bool goesOn) {
        const std::lock_guard guard(mutex);
        if (state != State::handling) return;
        passes = goesOn;
        state = State::answered;
        changed.notify_all();
    }
    void spoil() {
        const std::lock_guard guard(mutex);
        if (state != State::answered) state = State::stale;
        changed.notify_all();
    }
};

KeyQuestions::KeyQuestions(RunLoop& loop, Handler handler)
    : loop_(loop), shared_(std::make_shared<Shared>()) {
    shared_->handler = std::move(handler);
}

void KeyQuestions::tell(const KeyEvent& event) {
    loop_.post([shared = shared_, event] { shared->handler(event); });
}

bool KeyQuestions::ask(const KeyEvent& event, std::chrono::milliseconds limit) {
    if (shared_->owed.load() > 0) return true;
    const auto question = std::make_shared<Question>();
    question->deadline = Clock::now() + limit;
    {
        const std::lock_guard guard(mutex_);
        if (givenUp_) return true;
        current_ = question;
    }
    loop_.post([shared = shared_, question, event] {
        if (question->begin()) question->answer(shared->handler(event));
        const std::lock_guard guard(question->mutex);
        question->turnDone = true;
        if (question->owed) shared->owed.fetch_sub(1);
    });
    bool passes = true;
    {
        std::unique_lock lock(question->mutex);
        question->changed.wait_until(lock, question->deadline, [&] {
            return question->state == Question::State::answered || question->state == Question::State::stale;
        });
        if (question->state == Question::State::answered) {
            passes = question->passes;
        } else {
            question->state = Question::State::stale;
            question->owed = !question->turnDone;
            if (question->owed) shared_->owed.fetch_add(1);
        }
    }
    const std::lock_guard guard(mutex_);
    current_ = nullptr;
    return passes;
}

void KeyQuestions::giveUp() {
    std::shared_ptr<Question> current;
    {
        const std::lock_guard guard(mutex_);
        givenUp_ = true;
        current = current_;
    }
    if (current) current->spoil();
}

}  // namespace veltrin
