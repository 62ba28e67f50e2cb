#pragma once

#include "AI/OllamaClient.h"
#include "support/fake/FakeHttpClient.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/FakeSystemEnvironment.h"

#include <QByteArray>

namespace veltrin {

/// A model client with everything it stands on. Fill `preferences.values` first: the settings load on first
/// use.
struct ModelWorld {
    FakePreferences preferences;
    NotificationCenter notifications;
    FakeSystemEnvironment environment;
    FakeHttpClient http;

    AppSettings& settings() {
        if (!settings_) settings_.emplace(preferences, notifications, environment);
        return *settings_;
    }
    OllamaClient client() { return OllamaClient(http, settings()); }

    /// Makes a provider the active one, with a key.
    void use(ModelProvider provider, const QString& model = {},
             const QString& apiKey = QStringLiteral("sk-0123456789abcdef")) {
        settings().saveActiveModelConfiguration(provider, model, {}, apiKey);
    }
    /// Queues the local service's answer.
    void answerLocally(const QString& text) {
        Json body;
        body.set(QStringLiteral("response"), text);
        http.answer(200, body.serialized());
    }
    /// The last request's body as text.
    QByteArray lastBody() const { return http.requests.empty() ? QByteArray() : http.requests.back().body; }
    /// The prompt of a request to the local service.
    QString localPrompt(std::size_t request) const {
        const Json body = Json::parse(http.requests.at(request).body);
        const Json* prompt = body.find(u"prompt");
        return prompt == nullptr ? QString() : prompt->toString().value_or(QString());
    }

private:
    std::optional<AppSettings> settings_;
};

/// The value of a header, or a null array.
inline QByteArray header(const HttpRequest& request, const QByteArray& name) {
    for (const auto& [key, value] : request.headers) {
        if (key == name) return value;
    }
    return {};
}

}  // namespace veltrin
