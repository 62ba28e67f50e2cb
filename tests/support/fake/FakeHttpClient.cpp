#include "support/fake/FakeHttpClient.h"

#include <utility>

namespace veltrin {
namespace {

/// Where a held request waits.
struct Gate {
    std::deque<std::coroutine_handle<>>& held;
    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting) { held.push_back(waiting); }
    void await_resume() const noexcept {}
};

}  // namespace

FakeHttpClient::FakeHttpClient() = default;

FakeHttpClient::~FakeHttpClient() = default;

QCoro::Task<HttpResponse> FakeHttpClient::data(HttpRequest request) {
    requests.push_back(request);
    if (holding) {
        Gate gate{held_};
        co_await gate;
    }
    co_return answerTo(request);
}

void FakeHttpClient::answer(int status, QByteArray body) {
    HttpResponse response;
    response.status = status;
    response.body = std::move(body);
    script_.push_back(Answer{std::move(response), nullptr});
}

void FakeHttpClient::fail(int code, QString description) {
    script_.push_back(Answer{{}, std::make_exception_ptr(UrlError(code, std::move(description)))});
}

bool FakeHttpClient::release() {
    if (held_.empty()) return false;
    const auto waiting = held_.front();
    held_.pop_front();
    waiting.resume();
    return true;
}

HttpResponse FakeHttpClient::answerTo(const HttpRequest& request) {
    if (script_.empty()) {
        if (responder) return responder(request);
        throw UrlError(UrlError::unknown, QStringLiteral("no answer scripted"));
    }
    const Answer answer = std::move(script_.front());
    script_.pop_front();
    if (answer.failure) std::rethrow_exception(answer.failure);
    return answer.response;
}

}  // namespace veltrin
