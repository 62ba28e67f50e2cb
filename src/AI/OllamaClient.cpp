#include "AI/OllamaClient.h"

#include "AI/AgentOutputGuard.h"
#include "AI/GenerationTokenBudget.h"
#include "AI/OllamaError.h"
#include "AI/Wires/OllamaService.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

#include <utility>

namespace veltrin {
namespace {

constexpr double firstTimeout = 30;
constexpr double retryTimeout = 45;
constexpr double probeTimeout = 3;
constexpr double warmupTimeout = 20;
constexpr int warmupLimit = 8;
constexpr qsizetype warmupErrorCharacters = 80;

QString retryPrompt(const QString& prompt) {
    return prompt + QStringLiteral(
                        "\n\n上一次输出为空或疑似被截断。请不要解释，不要加引号，必须完整输出最终文本，直到句"
                        "子自然结束。");
}

QString leakRepairPrompt(const QString& originalPrompt, const QString& sourceText, const QString& output) {
    return originalPrompt +
           QStringLiteral(
               "\n\n上一次输出错误地复述了任务说明或 Agent 规则，而不是最终正文。"
               "\n\n原始待处理文本：\n\"\"\"\n") +
           sourceText + QStringLiteral("\n\"\"\"\n\n错误输出：\n\"\"\"\n") + output +
           QStringLiteral(
               "\n\"\"\"\n\n现在重新执行：只输出最终处理后的正文。不要解释，不要输出“请你”“为以下文本”"
               "“为以下提示词”“下面这段”“提示词”等元指令。");
}

QString preview(const QString& text) {
    return Wire::bodyPreview(text.toUtf8());
}

}  // namespace

QUrl OllamaClient::endpoint() const {
    return OllamaService::endpoint(settings_->ollamaEndpoint());
}

QString OllamaClient::model() const {
    const ModelProvider provider = settings_->selectedModelProvider();
    if (provider != ModelProvider::ollama)
        return ModelProviderConfiguration(settings_->preferences(), provider).storedModel();
    const QString model = Text::trimmed(settings_->selectedModel());
    return model.isEmpty() ? ModelProviders::defaultModel(ModelProvider::ollama) : model;
}

ModelTarget OllamaClient::target() const {
    ModelTarget target;
    target.provider = settings_->selectedModelProvider();
    target.thinkingMode = settings_->modelThinkingMode();
    target.model = model();
    if (target.provider == ModelProvider::ollama) {
        target.endpoint = settings_->ollamaEndpoint();
        return target;
    }
    const ModelProviderConfiguration stored(settings_->preferences(), target.provider);
    target.endpoint = stored.storedEndpoint();
    target.apiKey = Text::trimmed(stored.storedAPIKey());
    target.authField = stored.storedAuthField();
    return target;
}

QCoro::Task<QString> OllamaClient::generate(QString prompt, double temperature, std::optional<int> numPredict,
                                            double timeout) const {
    GenerationRequest request;
    request.prompt = std::move(prompt);
    request.temperature = temperature;
    request.numPredict = numPredict;
    request.timeout = timeout;
    if (settings_->selectedModelProvider() == ModelProvider::ollama) return send(*this, &ollamaWire, request);
    return generateCloud(*this, request);
}

QCoro::Task<QString> OllamaClient::generateCloud(OllamaClient client, GenerationRequest request) {
    AppSettings& settings = *client.settings_;
    const ModelProviderConfiguration stored(settings.preferences(), settings.selectedModelProvider());
    switch (stored.storedAPIStyle()) {
        case ModelAPIStyle::openAICompatible:
            return generateOpenAICompatible(client, std::move(request));
        case ModelAPIStyle::anthropicMessages:
            return generateAnthropic(client, std::move(request));
        case ModelAPIStyle::googleGenerateContent:
            return generateGoogle(client, std::move(request));
        case ModelAPIStyle::ollama:
            break;
    }
    return send(client, nullptr, std::move(request));
}

QCoro::Task<QString> OllamaClient::generateOpenAICompatible(OllamaClient client, GenerationRequest request) {
    return send(client, &openAICompatibleWire, std::move(request));
}

QCoro::Task<QString> OllamaClient::generateAnthropic(OllamaClient client, GenerationRequest request) {
    return send(client, &anthropicWire, std::move(request));
}

QCoro::Task<QString> OllamaClient::generateGoogle(OllamaClient client, GenerationRequest request) {
    return send(client, &googleWire, std::move(request));
}

/// One round trip. Without a wire the style cannot be spoken to the provider.
QCoro::Task<QString> OllamaClient::send(OllamaClient client, const ModelWire* wire,
                                        GenerationRequest request) {
    if (wire == nullptr) throw OllamaError::invalidResponse();
    const ModelTarget target = client.target();
    HttpRequest http = wire->makeRequest(target, request);
    auto task = client.http_->data(std::move(http));
    const HttpResponse response = co_await task;
    co_return wire->parseAnswer(target, request, response);
}

QCoro::Task<QString> OllamaClient::generateNonEmpty(QString prompt, double temperature, int primaryLimit,
                                                    int retryLimit) const {
    return retryingOnce(*this, std::move(prompt), temperature, primaryLimit, retryLimit);
}

QCoro::Task<QString> OllamaClient::retryingOnce(OllamaClient client, QString prompt, double temperature,
                                                int primaryLimit, int retryLimit) {
    auto first = client.generate(prompt, temperature, primaryLimit, firstTimeout);
    QString text = co_await first;
    const bool cut = GenerationTokenBudget::shouldRetryLikelyTruncatedOutput(text, primaryLimit);
    if (!text.isEmpty() && !cut) co_return text;
    MVPLog::write("Ollama output retrying:", "empty:", text.isEmpty(), "likelyTruncated:", cut,
                  "primaryLimit:", primaryLimit, "retryLimit:", retryLimit,
                  "firstLength:", Characters::count(text));
    auto second = client.generate(retryPrompt(prompt), temperature, retryLimit, retryTimeout);
    text = co_await second;
    co_return text;
}

QCoro::Task<QString> OllamaClient::repairMetaInstructionLeakIfNeeded(QString output, QString sourceText,
                                                                     QString originalPrompt,
                                                                     double temperature,
                                                                     int retryLimit) const {
    return repairing(*this, std::move(output), std::move(sourceText), std::move(originalPrompt), temperature,
                     retryLimit);
}

QCoro::Task<QString> OllamaClient::repairing(OllamaClient client, QString output, QString sourceText,
                                             QString originalPrompt, double temperature, int retryLimit) {
    if (!AgentOutputGuard::detectMetaInstructionLeak(output, sourceText)) co_return output;
    MVPLog::write("Agent output guard repairing meta-instruction leak:", "sourceLength:",
                  Characters::count(sourceText), "outputPreview:", preview(output));
    auto task = client.generate(leakRepairPrompt(originalPrompt, sourceText, output), temperature, retryLimit,
                                retryTimeout);
    const QString answer = co_await task;
    const QString repaired = Text::trimmed(answer);
    const bool usable =
        !repaired.isEmpty() && !AgentOutputGuard::detectMetaInstructionLeak(repaired, sourceText);
    MVPLog::write(
        usable ? "Agent output guard repaired output:" : "Agent output guard rejected repaired output:",
        "repairedLength:", Characters::count(repaired), "repairedPreview:", preview(repaired));
    if (!usable) throw OllamaError::metaInstructionLeak();
    co_return repaired;
}

/// The local service's answer to "api/tags"; none when the transport failed.
QCoro::Task<std::optional<HttpResponse>> OllamaClient::tags(OllamaClient client) {
    HttpRequest request;
    request.url = OllamaService::url(client.settings_->ollamaEndpoint(), QStringLiteral("api/tags"));
    request.method = "GET";
    request.timeout = probeTimeout;
    std::optional<HttpResponse> answer;
    try {
        auto task = client.http_->data(std::move(request));
        answer = co_await task;
    } catch (const std::exception&) {
        answer.reset();  // a probe has no errors, only a service that is not there
    }
    co_return answer;
}

QCoro::Task<bool> OllamaClient::isAvailable() const {
    return availability(*this);
}

QCoro::Task<bool> OllamaClient::availability(OllamaClient client) {
    auto task = tags(client);
    const std::optional<HttpResponse> response = co_await task;
    co_return response.has_value() && OllamaService::isSuccess(*response);
}

QCoro::Task<QStringList> OllamaClient::listModels() const {
    return modelList(*this);
}

QCoro::Task<QStringList> OllamaClient::modelList(OllamaClient client) {
    auto task = tags(client);
    const std::optional<HttpResponse> response = co_await task;
    QStringList names;
    if (response) names = OllamaService::modelNames(*response);
    co_return names;
}

QCoro::Task<void> OllamaClient::warmup() const {
    return warmingUp(*this);
}

QCoro::Task<void> OllamaClient::warmingUp(OllamaClient client) {
    auto probe = client.isAvailable();
    const bool available = co_await probe;
    if (!available) {
        MVPLog::write("Ollama warmup skipped: service unavailable");
        co_return;
    }
    try {
        auto task = client.generate(QStringLiteral("Reply OK."), 0, warmupLimit, warmupTimeout);
        co_await task;
        MVPLog::write("Ollama warmup completed");
    } catch (const std::exception& error) {
        MVPLog::write("Ollama warmup failed:", Text::elided(describe(error), warmupErrorCharacters));
    }
}

}  // namespace veltrin
