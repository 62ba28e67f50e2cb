#include "AI/OllamaError.h"
#include "AI/Wires/ModelWire.h"

namespace veltrin {
namespace {

/// This style wants a limit; a task without one gets this.
constexpr int defaultLimit = 512;

HttpRequest makeRequest(const ModelTarget& target, const GenerationRequest& request) {
    Wire::requireKey(target);
    Json body;
    body.set(QStringLiteral("model"), target.model);
    body.set(QStringLiteral("max_tokens"), request.numPredict.value_or(defaultLimit));
    body.set(QStringLiteral("temperature"), Wire::number(request.temperature));
    body.set(QStringLiteral("messages"), Wire::userMessages(request.prompt));
    // The stored endpoint is the whole URL here, nothing is appended.
    QUrl url(target.endpoint, QUrl::StrictMode);
    if (!url.isValid()) url = QUrl(ModelProviders::defaultEndpoint(target.provider));
    HttpRequest http = Wire::post(url, body, request.timeout);
    Wire::addAuthorization(http, target);
    http.headers.emplace_back("anthropic-version", "2023-06-01");
    return http;
}

QString parseAnswer(const ModelTarget& target, const GenerationRequest&, const HttpResponse& response) {
    Wire::requireSuccess(target, response);
    const Json answer = Json::parse(response.body);
    return Wire::cleaned(Wire::firstText(answer.find(u"content")));
}

}  // namespace

const ModelWire anthropicWire{makeRequest, parseAnswer};

}  // namespace veltrin
