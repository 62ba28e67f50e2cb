#include "AI/OllamaError.h"
#include "AI/Wires/ModelWire.h"
#include "Foundation/Text.h"

namespace veltrin {
namespace {

/// The key always travels in the URL, whatever the auth setting says, so this URL must never be logged.
QUrl generateURL(const ModelTarget& target) {
    const QUrl url(Text::trimmed(target.endpoint, u"/") + QStringLiteral("/models/") + target.model +
                       QStringLiteral(":generateContent?key=") + target.apiKey,
                   QUrl::StrictMode);
    return url.isValid() ? url : QUrl(ModelProviders::defaultEndpoint(target.provider));
}

HttpRequest makeRequest(const ModelTarget& target, const GenerationRequest& request) {
    Wire::requireKey(target);
    Json part;
    part.set(QStringLiteral("text"), request.prompt);
    Json parts;
    parts.append(std::move(part));
    Json content;
    content.set(QStringLiteral("parts"), std::move(parts));
    Json contents;
    contents.append(std::move(content));
    Json configuration;
    configuration.set(QStringLiteral("temperature"), Wire::number(request.temperature));
    if (request.numPredict) configuration.set(QStringLiteral("maxOutputTokens"), *request.numPredict);
    Json body;
    body.set(QStringLiteral("contents"), std::move(contents));
    body.set(QStringLiteral("generationConfig"), std::move(configuration));
    return Wire::post(generateURL(target), body, request.timeout);
}

QString parseAnswer(const ModelTarget& target, const GenerationRequest&, const HttpResponse& response) {
    Wire::requireSuccess(target, response);
    const Json answer = Json::parse(response.body);
    const Json::Array* candidates = Wire::objects(answer.find(u"candidates"));
    if (candidates == nullptr || candidates->empty()) throw OllamaError::invalidResponse();
    const Json* content = candidates->front().find(u"content");
    return Wire::cleaned(Wire::firstText(content == nullptr ? nullptr : content->find(u"parts")));
}

}  // namespace

const ModelWire googleWire{makeRequest, parseAnswer};

}  // namespace veltrin
