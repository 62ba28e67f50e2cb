#pragma once

#include "Platform/Linux/AtSpi/FocusTracker.h"

#include <QThread>

namespace veltrin::AtSpi {

/// What a question may use, on the worker's thread.
struct Room {
    AtSpiBus bus;
    ApplicationDirectory directory{bus};
    FocusTracker tracker{bus, directory};
};

/// The thread that talks to the accessibility bus, and the way to ask it something from the main thread: the
/// question runs over there while the caller waits, at most 0.6 s and without an event loop.
class AtSpiWorker {
public:
    AtSpiWorker();
    ~AtSpiWorker();
    AtSpiWorker(const AtSpiWorker&) = delete;
    AtSpiWorker& operator=(const AtSpiWorker&) = delete;

    bool isReady() const { return room_->bus.isReady(); }
    /// Waits, within the bound of a question, for the connection that is being made at the start.
    bool waitUntilReady();
    /// Starts another attempt to turn accessibility on and waits for it, within the same bound.
    bool tryToConnect();

    /// The answer, or `apiDisabled` without the bus, or `cannotComplete` when the time is up. A question that
    /// had not begun by then is dropped.
    template <typename T, typename Question>
    AXResult<T> ask(Question question) {
        if (!isReady()) return AXError::apiDisabled;
        // Shared, since the worker may finish after the caller has left.
        auto answer = std::make_shared<AXResult<T>>(AXError::cannotComplete);
        const bool isAnswered =
            run([answer, question = std::move(question)](Room& room, Conversation& conversation) {
                *answer = question(room, conversation);
            });
        return isAnswered ? std::move(*answer) : AXResult<T>(AXError::cannotComplete);
    }

private:
    using Task = std::function<void(Room&, Conversation&)>;
    bool run(Task task);
    bool post(std::function<void()> action, std::chrono::milliseconds limit);

    struct Ticket;

    std::unique_ptr<QThread> thread_;
    std::unique_ptr<Room> room_;
    std::shared_ptr<Ticket> last_;
};

}  // namespace veltrin::AtSpi
