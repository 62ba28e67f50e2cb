#include "support/service/ServiceMessages.h"

#include <algorithm>

namespace veltrin {
namespace {

auto named(const QByteArray& name) {
    return [&name](const auto& header) { return header.first.compare(name, Qt::CaseInsensitive) == 0; };
}

/// The value at a path of member names and, for arrays, the first element; null when any step is missing.
const Json* at(const Json* value, std::initializer_list<const char16_t*> steps) {
    for (const char16_t* step : steps) {
        if (value == nullptr) return nullptr;
        if (const Json::Array* array = value->array()) value = array->empty() ? nullptr : &array->front();
        if (value != nullptr) value = value->find(step);
    }
    return value;
}

QByteArray reason(int status) {
    switch (status) {
        case 200:
            return "OK";
        case 204:
            return "No Content";
        case 302:
            return "Found";
        case 307:
            return "Temporary Redirect";
        case 400:
            return "Bad Request";
        case 401:
            return "Unauthorized";
        case 403:
            return "Forbidden";
        case 404:
            return "Not Found";
        case 429:
            return "Too Many Requests";
        case 500:
            return "Internal Server Error";
        default:
            return "Status";
    }
}

}  // namespace

QByteArray ServiceRequest::header(const QByteArray& name) const {
    const auto found = std::find_if(headers.begin(), headers.end(), named(name));
    return found == headers.end() ? QByteArray() : found->second;
}

int ServiceRequest::headerCount(const QByteArray& name) const {
    return static_cast<int>(std::count_if(headers.begin(), headers.end(), named(name)));
}

QString ServiceRequest::prompt() const {
    if (!json) return {};
    const Json* text = nullptr;
    switch (wire) {
        case ServiceWire::localGenerate:
            text = at(&*json, {u"prompt"});
            break;
        case ServiceWire::openAI:
        case ServiceWire::anthropic:
            text = at(&*json, {u"messages", u"content"});
            break;
        case ServiceWire::google:
            text = at(&*json, {u"contents", u"parts", u"text"});
            break;
        default:
            break;
    }
    return text == nullptr ? QString() : text->toString().value_or(QString());
}

QByteArray ServiceAnswer::bytes() const {
    if (raw) return *raw;
    QByteArray message = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason(status) + "\r\n";
    if (!contentType.isEmpty()) message += "Content-Type: " + contentType + "\r\n";
    for (const auto& [name, value] : headers)
        message += name + ": " + value + "\r\n";
    if (status != 204)
        message += "Content-Length: " + QByteArray::number(claimedLength.value_or(body.size())) + "\r\n";
    if (ending == ServiceEnding::close) message += "Connection: close\r\n";
    return message + "\r\n" + body;
}

}  // namespace veltrin
