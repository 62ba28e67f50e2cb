#include "Platform/Linux/AtSpi/AtSpiWorker.h"

#include <QMetaObject>
#include <QSemaphore>

#include <atomic>

namespace veltrin::AtSpi {
namespace {

using namespace std::chrono_literals;

constexpr Milliseconds operationLimit = 590ms;
constexpr Milliseconds conversationLimit = 560ms;  // the worker gives up a little before its caller does
constexpr Milliseconds limitWhenBehind = 50ms;
constexpr unsigned long farewellMilliseconds = 2000;

}  // namespace

/// A question between its caller and the worker.
struct AtSpiWorker::Ticket {
    enum State { waiting, begun, withdrawn };
    std::atomic<State> state = waiting;
    QSemaphore done;
};

AtSpiWorker::AtSpiWorker() : thread_(std::make_unique<QThread>()), room_(std::make_unique<Room>()) {
    thread_->setObjectName(QStringLiteral("accessibility"));
    room_->bus.moveToThread(thread_.get());
    room_->directory.moveToThread(thread_.get());
    room_->tracker.moveToThread(thread_.get());
    QObject::connect(thread_.get(), &QThread::started, &room_->bus, &AtSpiBus::connectNow);
    thread_->start();
}

AtSpiWorker::~AtSpiWorker() {
    // The objects end on their own thread, where their timers live.
    std::shared_ptr<Room> room = std::move(room_);
    QObject::connect(thread_.get(), &QThread::finished, [last = std::move(room)]() mutable { last.reset(); });
    thread_->quit();
    // A bus daemon that has stopped in the middle of a greeting can hold the thread; better leave it than
    // hang.
    if (!thread_->wait(farewellMilliseconds)) static_cast<void>(thread_.release());
}

bool AtSpiWorker::post(std::function<void()> action, Milliseconds limit) {
    // The one before was left unanswered and is still at work: whatever holds it may hold this one as well.
    const bool isBehind = last_ && last_->done.available() == 0;
    auto ticket = std::make_shared<Ticket>();
    last_ = ticket;
    QMetaObject::invokeMethod(
        &room_->bus,
        [ticket, action = std::move(action)] {
            Ticket::State expected = Ticket::waiting;
            if (ticket->state.compare_exchange_strong(expected, Ticket::begun)) action();
            ticket->done.release();
        },
        Qt::QueuedConnection);
    const Milliseconds patience = isBehind ? std::min(limit, limitWhenBehind) : limit;
    if (ticket->done.tryAcquire(1, static_cast<int>(patience.count()))) {
        last_.reset();
        return true;
    }
    Ticket::State expected = Ticket::waiting;
    ticket->state.compare_exchange_strong(expected, Ticket::withdrawn);
    return false;
}

bool AtSpiWorker::run(Task task) {
    const QDeadlineTimer deadline(conversationLimit);
    return post(
        [room = room_.get(), deadline, task = std::move(task)] {
            Conversation conversation(room->bus, deadline);
            task(*room, conversation);
        },
        operationLimit);
}

bool AtSpiWorker::waitUntilReady() {
    return room_->bus.waitForFirstAttempt(operationLimit) && isReady();
}

bool AtSpiWorker::tryToConnect() {
    if (!isReady()) post([room = room_.get()] { room->bus.connectNow(); }, operationLimit);
    return isReady();
}

}  // namespace veltrin::AtSpi
