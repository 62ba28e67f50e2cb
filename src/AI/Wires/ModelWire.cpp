#include "AI/Wires/ModelWire.h"

#include "AI/OllamaError.h"
#include "Foundation/Text.h"

#include <QStringDecoder>

#include <algorithm>
#include <cmath>

namespace veltrin::Wire {
namespace {

constexpr QStringView thinkOpen = u"<think>";
constexpr QStringView thinkClose = u"</think>";
constexpr qsizetype previewCharacters = 120;
/// Shorter texts are no real keys, and blotting them out would spoil a message that happens to hold them.
constexpr qsizetype shortestSecret = 16;

}  // namespace

QString cleaned(const QString& text) {
    // One pass, since an answer may be long and hold many blocks. An opening is seen where its last unit is
    // copied: so also one that the removal of a block has just joined.
    QString finished;
    finished.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        finished += text[i];
        if (text[i] != u'>' || !finished.endsWith(thinkOpen)) continue;
        const qsizetype close = text.indexOf(thinkClose, i + 1);
        if (close < 0) {
            finished += QStringView(text).mid(i + 1);
            break;
        }
        finished.chop(thinkOpen.size());
        i = close + thinkClose.size() - 1;
    }
    return Text::trimmed(finished);
}

QString bodyPreview(const QByteArray& body, const QString& secret) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(body);
    if (decoder.hasError()) return {};
    if (secret.size() >= shortestSecret) text.replace(secret, QStringLiteral("***"));
    return Text::preview(text, previewCharacters);
}

Json number(double value) {
    constexpr double exact = 1e15;
    if (std::abs(value) < exact && std::trunc(value) == value) return static_cast<std::int64_t>(value);
    return value;
}

HttpRequest post(const QUrl& url, const Json& body, double timeout) {
    HttpRequest request;
    request.url = url;
    request.method = "POST";
    request.headers.emplace_back("Content-Type", "application/json");
    request.body = body.serialized();
    request.timeout = timeout;
    return request;
}

void addAuthorization(HttpRequest& request, const ModelTarget& target) {
    const QByteArray key = target.apiKey.toUtf8();
    switch (target.authField) {
        case ModelAuthField::authorizationBearer:
            request.headers.emplace_back("Authorization", "Bearer " + key);
            break;
        case ModelAuthField::xAPIKey:
        case ModelAuthField::anthropicAuthToken:  // sent the same way: meant so
            request.headers.emplace_back("x-api-key", key);
            break;
        case ModelAuthField::queryKey:
            break;
        case ModelAuthField::customHeader:
            request.headers.emplace_back("Authorization", key);
            break;
    }
}

void requireKey(const ModelTarget& target) {
    if (target.apiKey.isEmpty())
        throw OllamaError::missingAPIKey(ModelProviders::displayName(target.provider));
}

void requireSuccess(const ModelTarget& target, const HttpResponse& response) {
    if (response.status < 200 || response.status > 299)
        throw OllamaError::badStatusCode(response.status, bodyPreview(response.body, target.apiKey));
}

Json userMessages(const QString& prompt) {
    Json message;
    message.set(QStringLiteral("role"), QStringLiteral("user"));
    message.set(QStringLiteral("content"), prompt);
    Json messages;
    messages.append(std::move(message));
    return messages;
}

const Json::Array* objects(const Json* value) {
    const Json::Array* array = value == nullptr ? nullptr : value->array();
    if (array == nullptr) return nullptr;
    const bool all =
        std::all_of(array->begin(), array->end(), [](const Json& element) { return element.isObject(); });
    return all ? array : nullptr;
}

std::optional<QString> string(const Json* value) {
    return value == nullptr ? std::nullopt : value->toString();
}

QString firstText(const Json* blocks) {
    if (const Json::Array* array = objects(blocks)) {
        for (const Json& block : *array) {
            if (auto text = string(block.find(u"text"))) return *std::move(text);
        }
    }
    throw OllamaError::invalidResponse();
}

}  // namespace veltrin::Wire
