#include "AI/OllamaError.h"
#include "AI/Wires/ModelWire.h"
#include "AI/Wires/OllamaService.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

namespace veltrin {
namespace {

HttpRequest makeRequest(const ModelTarget& target, const GenerationRequest& request) {
    const auto plan = ModelThinking::requestPlan(target.thinkingMode, target.provider, target.model,
                                                 request.prompt, request.numPredict);
    Json options;
    options.set(QStringLiteral("temperature"), Wire::number(request.temperature));
    if (request.numPredict) options.set(QStringLiteral("num_predict"), *request.numPredict);
    Json body;
    body.set(QStringLiteral("model"), target.model);
    body.set(QStringLiteral("prompt"), request.prompt);
    body.set(QStringLiteral("stream"), false);
    body.set(QStringLiteral("keep_alive"), QStringLiteral("10m"));
    body.set(QStringLiteral("options"), std::move(options));
    if (plan.requestKind == ModelThinkingRequestKind::ollamaThinkParameter && plan.thinkValue)
        body.set(QStringLiteral("think"), *plan.thinkValue);
    return Wire::post(OllamaService::url(target.endpoint, QStringLiteral("api/generate")), body,
                      request.timeout);
}

QString parseAnswer(const ModelTarget&, const GenerationRequest&, const HttpResponse& response) {
    // Exactly 200, unlike the cloud wires.
    if (response.status != 200) throw OllamaError::badStatus();
    const Json answer = Json::parse(response.body);
    const auto raw = Wire::string(answer.find(u"response"));
    if (!raw) throw OllamaError::invalidResponse();
    QString cleaned = Wire::cleaned(*raw);
    if (cleaned.isEmpty()) {
        const QString thinking = Wire::string(answer.find(u"thinking")).value_or(QString());
        MVPLog::write("Ollama returned empty after cleanup:", "rawLength:", Characters::count(*raw),
                      "thinkingLength:", Characters::count(thinking),
                      "rawPreview:", Wire::bodyPreview(raw->toUtf8()));
    }
    return cleaned;
}

}  // namespace

const ModelWire ollamaWire{makeRequest, parseAnswer};

namespace OllamaService {

QUrl endpoint(const QString& setting) {
    const QString text = Text::trimmed(setting);
    if (QUrl url(text, QUrl::StrictMode); url.isValid()) return url;
    return QUrl(ModelProviders::defaultEndpoint(ModelProvider::ollama));
}

QUrl url(const QString& setting, const QString& pathComponent) {
    QUrl url = endpoint(setting);
    QString path = url.path(QUrl::FullyEncoded);
    if (!path.endsWith(u'/')) path += u'/';
    url.setPath(path + pathComponent, QUrl::TolerantMode);
    return url;
}

QStringList modelNames(const HttpResponse& response) {
    QStringList names;
    const auto answer = isSuccess(response) ? Json::tryParse(response.body) : std::nullopt;
    const Json::Array* models = answer ? Wire::objects(answer->find(u"models")) : nullptr;
    if (models == nullptr) return names;
    for (const Json& model : *models) {
        if (const auto name = Wire::string(model.find(u"name"))) names << *name;
    }
    return names;
}

}  // namespace OllamaService

}  // namespace veltrin
