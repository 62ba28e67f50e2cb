#pragma once

#include "Platform/HttpClient.h"
#include "support/fake/FakeRunLoop.h"

#include <QString>

#include <coroutine>
#include <functional>
#include <map>
#include <optional>

namespace veltrin {

/// The local model service of the simulated desktop. Each prompt is answered by `reply`, on a turn of the
/// main loop after the answer's delay; answers overtake each other as their delays say. A request that would
/// take longer than its own time-out fails at that time, as the real transport lets it.
class SimulatedModel final : public HttpClient {
public:
    struct Reply {
        double delay = 0.2;  ///< seconds until the answer is there
        int status = 200;
        QByteArray body;
        std::optional<int> failure;  ///< code of the transport's failure, in place of an answer

        /// What the service says when all goes well.
        static Reply text(const QString& answer, double delay = 0.2);
        static Reply failing(int code, double delay = 0.2);
    };

    explicit SimulatedModel(FakeRunLoop& loop) : loop_(loop) {}
    SimulatedModel(const SimulatedModel&) = delete;
    SimulatedModel& operator=(const SimulatedModel&) = delete;
    ~SimulatedModel() override { cancelAll(); }

    QCoro::Task<HttpResponse> data(HttpRequest request) override;

    /// Answers a prompt; the warm-up at launch is answered without it.
    std::function<Reply(const QString& prompt)> reply;
    /// Sets `reply` to one answer for every prompt.
    void answers(const Reply& always) {
        reply = [always](const QString&) { return always; };
    }

    int prompts = 0;     ///< prompts so far, the warm-up's left out
    QString lastPrompt;  ///< the latest one of these
    bool serviceUp = true;
    /// Requests that have no answer yet.
    std::size_t pending() const { return waiting_.size(); }
    /// Every open request fails now, and every later one at once: the connection is gone for good.
    void cancelAll();

private:
    struct Delay {
        SimulatedModel& model;
        double seconds;
        bool await_ready() const { return model.cancelled_; }
        void await_suspend(std::coroutine_handle<> request) { model.resumeLater(seconds, request); }
        void await_resume() const {}
    };
    Reply replyTo(const HttpRequest& request);
    void resumeLater(double seconds, std::coroutine_handle<> request);
    void resume(quint64 id);

    FakeRunLoop& loop_;
    std::map<quint64, std::coroutine_handle<>> waiting_;
    quint64 lastId_ = 0;
    bool cancelled_ = false;
};

}  // namespace veltrin
