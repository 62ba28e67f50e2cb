#pragma once

#include "AI/ModelConfiguration.h"
#include "Foundation/Json.h"
#include "Platform/HttpClient.h"

#include <optional>

namespace veltrin {

/// Where a request goes and how: the settings as they stood when the call began.
struct ModelTarget {
    ModelProvider provider = ModelProvider::ollama;
    ModelThinkingMode thinkingMode = ModelThinkingMode::smart;
    QString model;
    QString endpoint;  ///< as it is stored
    QString apiKey;    ///< trimmed
    ModelAuthField authField = ModelAuthField::authorizationBearer;
};

struct GenerationRequest {
    QString prompt;
    double temperature = 0;
    std::optional<int> numPredict;  ///< the answer's limit in tokens
    double timeout = 60;            ///< seconds
};

/// One wire format. Both functions are pure but for a log line and throw OllamaError; `parseAnswer` throws
/// Json::ParseError for a body that is no JSON.
struct ModelWire {
    HttpRequest (*makeRequest)(const ModelTarget& target, const GenerationRequest& request);
    /// The cleaned text, which may be empty.
    QString (*parseAnswer)(const ModelTarget& target, const GenerationRequest& request,
                           const HttpResponse& response);
};

extern const ModelWire ollamaWire;
extern const ModelWire openAICompatibleWire;
extern const ModelWire anthropicWire;
extern const ModelWire googleWire;

/// What the wires share.
namespace Wire {

/// The model's text without its closed `<think>` blocks, trimmed. An unclosed one stays: meant so, since
/// everything behind it would be lost.
QString cleaned(const QString& text);

/// At most 120 characters on one line, for logs and errors; empty for a body that is no UTF-8. `secret`, when
/// it is long enough to be a real key, is blotted out first: some services echo it.
QString bodyPreview(const QByteArray& body, const QString& secret = {});

/// A number as it was given: 0 stands as 0, not as 0.0.
Json number(double value);

/// A POST of a JSON body, with its content type.
HttpRequest post(const QUrl& url, const Json& body, double timeout);

/// Adds the header that carries the key; none for `queryKey`.
void addAuthorization(HttpRequest& request, const ModelTarget& target);

/// Throws `missingAPIKey` when there is no key.
void requireKey(const ModelTarget& target);
/// Throws `badStatusCode` unless the status is from 200 to 299.
void requireSuccess(const ModelTarget& target, const HttpResponse& response);

/// The one user message that holds the prompt, as an array.
Json userMessages(const QString& prompt);

/// The value as an array of objects; null for anything else, also when one element is no object.
const Json::Array* objects(const Json* value);

/// The value when it is a string.
std::optional<QString> string(const Json* value);

/// The first `text` of a string kind among the blocks. Throws `invalidResponse` when there is none.
QString firstText(const Json* blocks);

}  // namespace Wire

}  // namespace veltrin
