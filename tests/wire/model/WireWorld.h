#pragma once

#include "AI/OllamaClient.h"
#include "Platform/Linux/QtHttpClient.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/FakeSystemEnvironment.h"
#include "support/fake/LogCapture.h"
#include "support/service/EventLoopRunner.h"
#include "support/service/ModelService.h"
#include "support/service/ServiceBehaviours.h"

#include <gtest/gtest.h>

namespace veltrin {

/// The model client on the real network, with a service to talk to.
class WireWorld : public testing::Test {
protected:
    /// The path that a provider's own service has in front of what the client appends.
    static QString basePath(ModelProvider provider) {
        return QUrl(ModelProviders::defaultEndpoint(provider)).path();
    }
    /// Makes a provider the active one, served by `service` below its usual path.
    void use(ModelProvider provider, const QString& model = {}) {
        const QString key = provider == ModelProvider::ollama ? QString() : apiKey;
        settings.saveActiveModelConfiguration(provider, model, service.url(basePath(provider)), key);
    }
    OllamaClient client() { return OllamaClient(http, settings); }

    std::shared_ptr<Outcome<QString>> generate(const QString& prompt = QStringLiteral("x"),
                                               std::optional<int> limit = 100, double timeout = 5,
                                               double temperature = 0.2) {
        return finish(client().generate(prompt, temperature, limit, timeout));
    }
    std::shared_ptr<Outcome<QString>> generate(ServiceBehaviour answer) {
        service.enqueue(std::move(answer));
        return generate();
    }
    ServiceRequest lastRequest() const {
        const auto requests = service.requests();
        return requests.empty() ? ServiceRequest() : requests.back();
    }
    /// The code of the UrlError; 0 when it ended otherwise.
    static int urlCode(const Outcome<QString>& outcome) {
        try {
            if (outcome.failure) std::rethrow_exception(outcome.failure);
        } catch (const UrlError& error) {
            return error.code();
        } catch (const std::exception&) {
            return 0;
        }
        return 0;
    }

    const QString apiKey = QStringLiteral("sk-test+/=0123456789abcdef");
    LogCapture log;
    ModelService service;
    FakePreferences preferences;
    NotificationCenter notifications;
    FakeSystemEnvironment environment;
    AppSettings settings{preferences, notifications, environment};
    QtHttpClient http;
};

/// One provider of each wire.
inline const ModelProvider oneOfEachWire[] = {ModelProvider::ollama, ModelProvider::deepseek,
                                              ModelProvider::anthropic, ModelProvider::google};

}  // namespace veltrin
