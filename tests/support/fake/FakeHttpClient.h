#pragma once

#include "Platform/HttpClient.h"

#include <coroutine>
#include <deque>
#include <exception>
#include <functional>
#include <vector>

namespace veltrin {

/// A network that records what is asked and answers from a script: the queued answers first, in order, then
/// `responder`, and with neither a UrlError "no answer scripted". Answers at once, or, while `holding`, when
/// told by `release`. A held request must be released before its client's owner goes, else its task is never
/// freed.
class FakeHttpClient : public HttpClient {
public:
    FakeHttpClient();
    ~FakeHttpClient() override;

    QCoro::Task<HttpResponse> data(HttpRequest request) override;

    /// Queues an answer.
    void answer(int status, QByteArray body);
    /// Queues a failure of the transport.
    void fail(int code, QString description);

    /// Lets the oldest held request have its answer; false when none is held.
    bool release();
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
    HttpResponse answerTo(const HttpRequest& request);

    std::deque<Answer> script_;
    std::deque<std::coroutine_handle<>> held_;
};

}  // namespace veltrin
