#pragma once

#include "Platform/HttpClient.h"

#include <coroutine>
#include <deque>
#include <exception>
#include <functional>
#include <utility>
#include <vector>

namespace veltrin {

/// A network that records what is asked and answers from a script: the queued answers first, in order, then
/// `responder`, and with neither a UrlError "no answer scripted". Answers at once, or, while `holding`, when
/// told by `release`. A held request must be released before its client's owner goes, else its task is never
/// freed.
class FakeHttpClient : public HttpClient {
public:
    QCoro::Task<HttpResponse> data(HttpRequest request) override {
        requests.push_back(request);
        if (holding) {
            Gate gate{held_};
            co_await gate;
        }
        co_return answerTo(request);
    }

    /// Queues an answer.
    void answer(int status, QByteArray body) {
        HttpResponse response;
        response.status = status;
        response.body = std::move(body);
        script_.push_back(Answer{std::move(response), nullptr});
    }
    /// Queues a failure of the transport.
    void fail(int code, QString description) {
        script_.push_back(Answer{{}, std::make_exception_ptr(UrlError(code, std::move(description)))});
    }

    /// Lets the oldest held request have its answer; false when none is held.
    bool release() {
        if (held_.empty()) return false;
        const auto waiting = held_.front();
        held_.pop_front();
        waiting.resume();
        return true;
    }
    std::size_t heldCount() const { return held_.size(); }

    /// Every request, in order; the last one is `requests.back()`.
    std::vector<HttpRequest> requests;
    bool holding = false;
    /// Answers when the queue is empty; may throw.
    std::function<HttpResponse(const HttpRequest&)> responder;

private:
    struct Answer {
        HttpResponse response;
        std::exception_ptr failure;
    };
    struct Gate {
        std::deque<std::coroutine_handle<>>& held;
        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> waiting) { held.push_back(waiting); }
        void await_resume() const noexcept {}
    };

    HttpResponse answerTo(const HttpRequest& request) {
        if (script_.empty()) {
            if (responder) return responder(request);
            throw UrlError(UrlError::unknown, QStringLiteral("no answer scripted"));
        }
        const Answer answer = std::move(script_.front());
        script_.pop_front();
        if (answer.failure) std::rethrow_exception(answer.failure);
        return answer.response;
    }

    std::deque<Answer> script_;
    std::deque<std::coroutine_handle<>> held_;
};

}  // namespace veltrin
