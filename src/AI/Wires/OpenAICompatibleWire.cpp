#include "AI/OllamaError.h"
#include "AI/Wires/ModelWire.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

#include <algorithm>

namespace veltrin {
namespace {

constexpr qsizetype longPromptCharacters = 2000;
constexpr double shortPromptTimeout = 45;
constexpr double longPromptTimeout = 75;

/// Cloud services of this style queue requests, so a task's short time-out is raised to this floor. Only
/// here.
double timeoutFloor(const QString& prompt) {
    return Characters::count(prompt) <= longPromptCharacters ? shortPromptTimeout : longPromptTimeout;
}

/// The two names of the limit exclude each other: each service refuses the one it does not know.
QString limitKey(ModelProvider provider) {
    return provider == ModelProvider::openAI || provider == ModelProvider::moonshot
               ? QStringLiteral("max_completion_tokens")
               : QStringLiteral("max_tokens");
}

ModelThinkingRequestPlan planOf(const ModelTarget& target, const GenerationRequest& request) {
    auto plan = ModelThinking::requestPlan(target.thinkingMode, target.provider, target.model, request.prompt,
                                           request.numPredict);
    if (plan.model.isEmpty()) plan.model = target.model;
    return plan;
}

HttpRequest makeRequest(const ModelTarget& target, const GenerationRequest& request) {
    Wire::requireKey(target);
    const auto plan = planOf(target, request);
    Json body;
    body.set(QStringLiteral("model"), plan.model);
    body.set(QStringLiteral("messages"), Wire::userMessages(request.prompt));
    body.set(QStringLiteral("temperature"), Wire::number(request.temperature));
    if (request.numPredict) body.set(limitKey(target.provider), *request.numPredict);
    if (plan.thinkValue && plan.requestKind == ModelThinkingRequestKind::qwenEnableThinking)
        body.set(QStringLiteral("enable_thinking"), *plan.thinkValue);
    if (plan.thinkValue && plan.requestKind == ModelThinkingRequestKind::genericThinkParameter)
        body.set(QStringLiteral("think"), *plan.thinkValue);
    HttpRequest http = Wire::post(ModelProviders::chatCompletionsURL(target.provider, target.endpoint), body,
                                  std::max(timeoutFloor(request.prompt), request.timeout));
    Wire::addAuthorization(http, target);
    return http;
}

QString parseAnswer(const ModelTarget& target, const GenerationRequest& request,
                    const HttpResponse& response) {
    Wire::requireSuccess(target, response);
    const Json answer = Json::parse(response.body);
    const Json::Array* choices = Wire::objects(answer.find(u"choices"));
    if (choices == nullptr || choices->empty()) throw OllamaError::invalidResponse();
    const Json* message = choices->front().find(u"message");
    if (message == nullptr || !message->isObject()) throw OllamaError::invalidResponse();
    const QString content = Wire::string(message->find(u"content")).value_or(QString());
    const QString reasoning = Wire::string(message->find(u"reasoning_content")).value_or(QString());
    // Reasoning without an answer is no answer: the limit ran out while the model was thinking.
    if (Text::isBlank(content) && !Text::isBlank(reasoning)) {
        MVPLog::write("Model returned reasoning_content without final content:", "provider:",
                      ModelProviders::displayName(target.provider), "model:", planOf(target, request).model);
    }
    return Wire::cleaned(content);
}

}  // namespace

const ModelWire openAICompatibleWire{makeRequest, parseAnswer};

}  // namespace veltrin
