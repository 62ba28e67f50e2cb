#include "support/service/ServiceBehaviours.h"

#include <QList>

namespace veltrin::ServiceBehaviours {
namespace {

/// What a model gave, before it is put into a wire's shape.
struct Output {
    QString text;
    QString thought;
    bool cutOff = false;
    bool empty = false;
};

Json object(std::initializer_list<std::pair<const char16_t*, Json>> members) {
    Json result = Json::Object{};
    for (const auto& [key, value] : members)
        result.set(QString::fromUtf16(key), value);
    return result;
}

Json list(std::initializer_list<Json> elements) {
    return Json::Array(elements);
}

QString askedModel(const ServiceRequest& request) {
    const Json* model = request.json ? request.json->find(u"model") : nullptr;
    return model == nullptr ? QStringLiteral("gemini-1.5-flash") : model->toString().value_or(QString());
}

Json localBody(const ServiceRequest& request, const Output& output) {
    const char* reason = output.empty ? "load" : output.cutOff ? "length" : "stop";
    Json body = object({{u"model", askedModel(request)},
                        {u"created_at", "2025-06-01T08:00:00.123456789Z"},
                        {u"response", output.text},
                        {u"done", true},
                        {u"done_reason", reason},
                        {u"context", list({151644, 872, 198})},
                        {u"total_duration", 1234567890},
                        {u"load_duration", 123456789},
                        {u"prompt_eval_count", 26},
                        {u"prompt_eval_duration", 107345000},
                        {u"eval_count", 237},
                        {u"eval_duration", 432123456}});
    if (!output.thought.isEmpty()) body.set(QStringLiteral("thinking"), output.thought);
    return body;
}

Json openAIBody(const ServiceRequest& request, const Output& output) {
    Json message = object({{u"role", "assistant"}, {u"content", output.text}, {u"refusal", Json()}});
    if (!output.thought.isEmpty()) message.set(QStringLiteral("reasoning_content"), output.thought);
    const bool limited = output.cutOff || output.empty;  // the limit was spent on reasoning
    const Json choice = object({{u"index", 0},
                                {u"message", message},
                                {u"logprobs", Json()},
                                {u"finish_reason", limited ? "length" : "stop"}});
    const Json usage = object({{u"prompt_tokens", 19}, {u"completion_tokens", 10}, {u"total_tokens", 29}});
    return object({{u"id", "chatcmpl-B9MBs8CjcvOU2jLn4n570S5qMJKcT"},
                   {u"object", "chat.completion"},
                   {u"created", 1741569952},
                   {u"model", askedModel(request)},
                   {u"choices", list({choice})},
                   {u"usage", usage},
                   {u"system_fingerprint", "fp_44709d6fcb"}});
}

Json anthropicBody(const ServiceRequest& request, const Output& output) {
    Json::Array blocks;
    if (!output.thought.isEmpty()) {
        blocks.push_back(
            object({{u"type", "thinking"}, {u"thinking", output.thought}, {u"signature", "EuYBCkQYAiJA"}}));
        blocks.push_back(object({{u"type", "redacted_thinking"}, {u"data", "EroCCkYIARgCKkD"}}));
    }
    if (!output.empty) blocks.push_back(object({{u"type", "text"}, {u"text", output.text}}));
    const Json usage = object({{u"input_tokens", 12}, {u"output_tokens", 34}});
    return object({{u"id", "msg_01XFDUDYJgAACzvnptvVoYEL"},
                   {u"type", "message"},
                   {u"role", "assistant"},
                   {u"model", askedModel(request)},
                   {u"content", blocks},
                   {u"stop_reason", output.cutOff ? "max_tokens" : "end_turn"},
                   {u"stop_sequence", Json()},
                   {u"usage", usage}});
}

Json googleBody(const Output& output) {
    Json::Array parts;
    if (!output.thought.isEmpty()) parts.push_back(object({{u"text", output.thought}, {u"thought", true}}));
    parts.push_back(object({{u"text", output.text}}));
    const char* reason = output.empty ? "OTHER" : output.cutOff ? "MAX_TOKENS" : "STOP";
    Json candidate = object({{u"finishReason", reason}, {u"index", 0}});
    if (!output.empty)
        candidate.set(QStringLiteral("content"), object({{u"parts", parts}, {u"role", "model"}}));
    const Json usage =
        object({{u"promptTokenCount", 8}, {u"candidatesTokenCount", 12}, {u"totalTokenCount", 20}});
    return object(
        {{u"candidates", list({candidate})}, {u"usageMetadata", usage}, {u"modelVersion", "gemini"}});
}

ServiceAnswer json(int status, const Json& body) {
    ServiceAnswer answer;
    answer.status = status;
    answer.contentType = "application/json; charset=utf-8";
    answer.body = body.serialized();
    return answer;
}

ServiceAnswer shaped(const ServiceRequest& request, const Output& output) {
    switch (request.wire) {
        case ServiceWire::localGenerate:
            return json(200, localBody(request, output));
        case ServiceWire::openAI:
            return json(200, openAIBody(request, output));
        case ServiceWire::anthropic:
            return json(200, anthropicBody(request, output));
        case ServiceWire::google:
            return json(200, googleBody(output));
        case ServiceWire::localTags:
        case ServiceWire::unknown:
            break;
    }
    return json(404, object({{u"error", "not found"}}));
}

struct ErrorRow {
    int status;
    const char* openAIType;
    const char* anthropicType;
    const char* googleStatus;
    const char* message;
};

constexpr ErrorRow errorRows[] = {
    {400, "invalid_request_error", "invalid_request_error", "INVALID_ARGUMENT",
     "Unsupported parameter: 'max_tokens' is not supported with this model."},
    {401, "invalid_request_error", "authentication_error", "UNAUTHENTICATED", "Incorrect API key provided."},
    {403, "permission_error", "permission_error", "PERMISSION_DENIED", "The key may not use this model."},
    {404, "invalid_request_error", "not_found_error", "NOT_FOUND", "The model does not exist."},
    {429, "insufficient_quota", "rate_limit_error", "RESOURCE_EXHAUSTED", "You exceeded your current quota."},
    {500, "server_error", "api_error", "INTERNAL", "The server had an error."},
    {529, "server_error", "overloaded_error", "UNAVAILABLE", "Overloaded"},
};

const ErrorRow& errorRow(int status) {
    for (const ErrorRow& row : errorRows) {
        if (row.status == status) return row;
    }
    return errorRows[5];
}

Json errorBody(const ServiceRequest& request, int status, const QString& given) {
    const ErrorRow& row = errorRow(status);
    const QString message = given.isEmpty() ? QString::fromUtf8(row.message) : given;
    switch (request.wire) {
        case ServiceWire::openAI: {
            const Json error = object(
                {{u"message", message}, {u"type", row.openAIType}, {u"param", Json()}, {u"code", Json()}});
            return object({{u"error", error}});
        }
        case ServiceWire::anthropic: {
            const Json error = object({{u"type", row.anthropicType}, {u"message", message}});
            return object(
                {{u"type", "error"}, {u"error", error}, {u"request_id", "req_011CSHoEeqs5C35K2UUqR7Fy"}});
        }
        case ServiceWire::google: {
            // The service echoes what it was given, key included.
            const Json detail = object({{u"@type", "type.googleapis.com/google.rpc.DebugInfo"},
                                        {u"detail", QString::fromUtf8("target " + request.target)}});
            const Json error = object({{u"code", status},
                                       {u"message", message},
                                       {u"status", row.googleStatus},
                                       {u"details", list({detail})}});
            return object({{u"error", error}});
        }
        default:
            return object({{u"error", message}});
    }
}

template <typename Change>
ServiceBehaviour changed(ServiceBehaviour behaviour, Change change) {
    return [behaviour = std::move(behaviour), change](const ServiceRequest& request) {
        ServiceAnswer answer = behaviour(request);
        change(answer);
        return answer;
    };
}

ServiceBehaviour ofOutput(Output output) {
    return [output = std::move(output)](const ServiceRequest& request) { return shaped(request, output); };
}

/// Nothing but an ending.
ServiceBehaviour ending(ServiceEnding ending) {
    return [ending](const ServiceRequest&) {
        ServiceAnswer answer;
        answer.raw = QByteArray();
        answer.ending = ending;
        return answer;
    };
}

}  // namespace

ServiceBehaviour success(QString text) {
    Output output;
    output.text = std::move(text);
    return ofOutput(std::move(output));
}

ServiceBehaviour error(int status, QString message) {
    return [status, message = std::move(message)](const ServiceRequest& request) {
        return json(status, errorBody(request, status, message));
    };
}

ServiceBehaviour thinking(QString thought, QString text) {
    Output output;
    output.text = std::move(text);
    output.thought = std::move(thought);
    return ofOutput(std::move(output));
}

ServiceBehaviour empty() {
    Output output;
    output.empty = true;
    return ofOutput(std::move(output));
}

ServiceBehaviour cutOff(QString text) {
    Output output;
    output.text = std::move(text);
    output.cutOff = true;
    return ofOutput(std::move(output));
}

ServiceBehaviour leaking() {
    return success(QStringLiteral("请你为以下文本做专业翻译：只输出译文，不要解释，不要加引号。"));
}

ServiceBehaviour models(QList<QString> names) {
    return [names = std::move(names)](const ServiceRequest&) {
        Json::Array models;
        for (const QString& name : names) {
            const Json details = object({{u"format", "gguf"},
                                         {u"family", "qwen3"},
                                         {u"parameter_size", "8.2B"},
                                         {u"quantization_level", "Q4_K_M"}});
            models.push_back(object({{u"name", name},
                                     {u"model", name},
                                     {u"modified_at", "2025-06-01T08:00:00.123456789Z"},
                                     {u"size", std::int64_t{5225388164}},
                                     {u"digest", "500a1f067a9f782620b40bee6f7b0c89"},
                                     {u"details", details}}));
        }
        return json(200, object({{u"models", models}}));
    };
}

ServiceBehaviour plain(int status, QByteArray body, QByteArray contentType) {
    ServiceAnswer answer;
    answer.status = status;
    answer.body = std::move(body);
    answer.contentType = std::move(contentType);
    return [answer = std::move(answer)](const ServiceRequest&) { return answer; };
}

ServiceBehaviour redirect(int status, QByteArray location) {
    return changed(plain(status, "moved", "text/plain"),
                   [location = std::move(location)](ServiceAnswer& answer) {
                       answer.headers.emplace_back("Location", location);
                   });
}

ServiceBehaviour garbage() {
    QByteArray bytes;
    for (int i = 0; i < 4096; ++i)
        bytes += static_cast<char>((i * 197 + 128) % 256);
    return plain(200, bytes, "application/octet-stream");
}

ServiceBehaviour notHttp() {
    ServiceAnswer answer;
    answer.raw = "SSH-2.0-OpenSSH_9.2p1 Debian-2\r\n";
    answer.ending = ServiceEnding::close;
    return [answer](const ServiceRequest&) { return answer; };
}

ServiceBehaviour huge(qsizetype bytes) {
    return [bytes](const ServiceRequest&) {
        ServiceAnswer answer;
        answer.body = QByteArray(bytes, 'x');
        return answer;
    };
}

ServiceBehaviour reset() {
    return ending(ServiceEnding::reset);
}
ServiceBehaviour closed() {
    return ending(ServiceEnding::close);
}
ServiceBehaviour silent() {
    return ending(ServiceEnding::silent);
}

ServiceBehaviour slow(double seconds, ServiceBehaviour answer) {
    return changed(std::move(answer), [seconds](ServiceAnswer& made) { made.delay = seconds; });
}

ServiceBehaviour trickling(qsizetype piece, double pause, ServiceBehaviour answer) {
    return changed(std::move(answer), [piece, pause](ServiceAnswer& made) {
        made.piece = piece;
        made.pause = pause;
    });
}

ServiceBehaviour cutAfter(qsizetype bytes, ServiceEnding ending, ServiceBehaviour answer) {
    return changed(std::move(answer), [bytes, ending](ServiceAnswer& made) {
        made.cutAfter = bytes;
        made.ending = ending;
    });
}

ServiceBehaviour lengthOff(qint64 difference, ServiceBehaviour answer) {
    return changed(std::move(answer), [difference](ServiceAnswer& made) {
        made.claimedLength = made.body.size() + difference;
        made.ending = ServiceEnding::close;
    });
}

ServiceBehaviour dictionary(std::vector<std::pair<QString, QString>> pairs, QString otherwise) {
    return [pairs = std::move(pairs), otherwise = std::move(otherwise)](const ServiceRequest& request) {
        const QString prompt = request.prompt();
        Output output;
        output.text = otherwise;
        for (const auto& [from, to] : pairs) {
            if (!prompt.contains(from)) continue;
            output.text = to;
            break;
        }
        return shaped(request, output);
    };
}

}  // namespace veltrin::ServiceBehaviours
