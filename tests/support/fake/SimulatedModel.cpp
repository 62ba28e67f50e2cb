#include "support/fake/SimulatedModel.h"

#include "Foundation/Json.h"

#include <algorithm>

namespace veltrin {
namespace {

constexpr double probeDelay = 0.01;

QByteArray answerBody(const QString& text) {
    Json body;
    body.set(QStringLiteral("response"), text);
    return body.serialized();
}

}  // namespace

SimulatedModel::Reply SimulatedModel::Reply::text(const QString& answer, double delay) {
    Reply made;
    made.delay = delay;
    made.body = answerBody(answer);
    return made;
}

SimulatedModel::Reply SimulatedModel::Reply::failing(int code, double delay) {
    Reply made;
    made.delay = delay;
    made.failure = code;
    return made;
}

SimulatedModel::Reply SimulatedModel::replyTo(const HttpRequest& request) {
    if (!serviceUp) return Reply::failing(UrlError::cannotConnectToHost, probeDelay);
    if (request.url.path().endsWith(QStringLiteral("/api/tags"))) {
        Reply tags;
        tags.delay = probeDelay;
        tags.body = "{\"models\":[]}";
        return tags;
    }
    const Json body = Json::parse(request.body);
    const Json* member = body.find(u"prompt");
    const QString prompt = member ? member->toString().value_or(QString()) : QString();
    if (prompt == u"Reply OK.") return Reply::text(QStringLiteral("OK"), probeDelay);
    ++prompts;
    lastPrompt = prompt;
    return reply ? reply(prompt) : Reply::failing(UrlError::unknown);
}

QCoro::Task<HttpResponse> SimulatedModel::data(HttpRequest request) {
    const Reply given = replyTo(request);
    Delay delay{*this, std::min(given.delay, request.timeout)};
    co_await delay;
    if (cancelled_) throw UrlError(UrlError::cancelled, QStringLiteral("cancelled"));
    if (given.delay > request.timeout) throw UrlError(UrlError::timedOut, QStringLiteral("timed out"));
    if (given.failure) throw UrlError(*given.failure, QStringLiteral("the connection failed"));
    HttpResponse response;
    response.status = given.status;
    response.body = given.body;
    co_return response;
}

void SimulatedModel::resumeLater(double seconds, std::coroutine_handle<> request) {
    const quint64 id = ++lastId_;
    waiting_.emplace(id, request);
    // The bytes arrive whatever the program does; it sees them on its next free turn.
    loop_.inWorld(seconds, [this, id] { loop_.post([this, id] { resume(id); }); });
}

void SimulatedModel::resume(quint64 id) {
    const auto found = waiting_.find(id);
    if (found == waiting_.end()) return;
    const auto request = found->second;
    waiting_.erase(found);
    request.resume();
}

void SimulatedModel::cancelAll() {
    cancelled_ = true;
    while (!waiting_.empty())
        resume(waiting_.begin()->first);
}

}  // namespace veltrin
