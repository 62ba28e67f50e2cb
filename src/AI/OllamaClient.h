#pragma once

#include "AI/Wires/ModelWire.h"
#include "Data/AppSettings.h"

#include <QStringList>

namespace veltrin {

/// The one door through which every prompt reaches a model, local or in the cloud; the name is historical. It
/// has no state: each call reads the settings when it begins (a retry reads them again). Copies are free, and
/// an instance may go while its call is under way; the network and the settings must outlive the call. Main
/// thread.
///
/// Limits are in tokens, time-outs in seconds. Tasks throw OllamaError, UrlError and Json::ParseError.
class OllamaClient {
public:
    OllamaClient(HttpClient& http, AppSettings& settings) : http_(&http), settings_(&settings) {}

    /// The cleaned text of the model, which may be empty.
    QCoro::Task<QString> generate(QString prompt, double temperature, std::optional<int> numPredict,
                                  double timeout) const;
    /// The same with one further attempt, at `retryLimit`, when the first text is empty or looks cut off.
    QCoro::Task<QString> generateNonEmpty(QString prompt, double temperature, int primaryLimit,
                                          int retryLimit) const;
    /// `output` when it is a result. When it repeats instructions, one more attempt is made; throws
    /// `metaInstructionLeak` when that repeats them too.
    QCoro::Task<QString> repairMetaInstructionLeakIfNeeded(QString output, QString sourceText,
                                                           QString originalPrompt, double temperature,
                                                           int retryLimit) const;

    /// Whether the local service answers, whichever provider is active. Never throws.
    QCoro::Task<bool> isAvailable() const;
    /// The models of the local service; empty when it does not answer. Never throws.
    QCoro::Task<QStringList> listModels() const;
    /// Loads the model ahead of the first use, when the local service is up. Goes to the active provider.
    /// Never throws.
    QCoro::Task<void> warmup() const;

    /// The local service's address.
    QUrl endpoint() const;
    /// The active provider's model.
    QString model() const;

private:
    // Coroutines that hold a copy of the client, so that they never outlive it.
    static QCoro::Task<QString> generateCloud(OllamaClient client, GenerationRequest request);
    static QCoro::Task<QString> generateOpenAICompatible(OllamaClient client, GenerationRequest request);
    static QCoro::Task<QString> generateAnthropic(OllamaClient client, GenerationRequest request);
    static QCoro::Task<QString> generateGoogle(OllamaClient client, GenerationRequest request);
    static QCoro::Task<QString> send(OllamaClient client, const ModelWire* wire, GenerationRequest request);
    static QCoro::Task<QString> retryingOnce(OllamaClient client, QString prompt, double temperature,
                                             int primaryLimit, int retryLimit);
    static QCoro::Task<QString> repairing(OllamaClient client, QString output, QString sourceText,
                                          QString originalPrompt, double temperature, int retryLimit);
    static QCoro::Task<std::optional<HttpResponse>> tags(OllamaClient client);
    static QCoro::Task<bool> availability(OllamaClient client);
    static QCoro::Task<QStringList> modelList(OllamaClient client);
    static QCoro::Task<void> warmingUp(OllamaClient client);

    ModelTarget target() const;

    HttpClient* http_;
    AppSettings* settings_;
};

}  // namespace veltrin
