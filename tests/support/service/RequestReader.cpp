#include "support/service/RequestReader.h"

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {

constexpr qsizetype maximumHead = 64 * 1024;
constexpr qsizetype maximumBody = 64 * 1024 * 1024;

ServiceWire wireOf(const QByteArray& path) {
    if (path.endsWith("/api/generate")) return ServiceWire::localGenerate;
    if (path.endsWith("/api/tags")) return ServiceWire::localTags;
    if (path.endsWith("/chat/completions")) return ServiceWire::openAI;
    if (path.endsWith("/messages")) return ServiceWire::anthropic;
    if (path.endsWith(":generateContent")) return ServiceWire::google;
    return ServiceWire::unknown;
}

}  // namespace

void RequestReader::readHead() {
    const qsizetype end = buffer_.indexOf("\r\n\r\n");
    if (end < 0) {
        failed_ = buffer_.size() > maximumHead;
        return;
    }
    const QList<QByteArray> lines = buffer_.left(end).replace("\r\n", "\n").split('\n');
    buffer_ = buffer_.mid(end + 4);
    const QList<QByteArray> start = lines.front().split(' ');
    if (start.size() != 3 || !start[2].startsWith("HTTP/1.")) {
        failed_ = true;
        return;
    }
    ServiceRequest request;
    request.method = start[0];
    request.target = start[1];
    const qsizetype question = request.target.indexOf('?');
    request.path = request.target.left(question < 0 ? request.target.size() : question);
    if (question >= 0) request.query = request.target.mid(question + 1);
    request.wire = wireOf(request.path);
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines[i].indexOf(':');
        if (colon > 0) request.headers.emplace_back(lines[i].left(colon), lines[i].mid(colon + 1).trimmed());
    }
    bodyLength_ = std::max<qsizetype>(0, request.header("Content-Length").toLongLong());
    failed_ = bodyLength_ > maximumBody || !request.header("Transfer-Encoding").isEmpty();
    continueTold_ = request.header("Expect").isEmpty();
    pending_ = std::move(request);
}

std::optional<ServiceRequest> RequestReader::take() {
    if (!pending_ && !failed_) readHead();
    if (!pending_ || failed_ || buffer_.size() < bodyLength_) return std::nullopt;
    ServiceRequest request = std::move(*std::exchange(pending_, std::nullopt));
    request.body = buffer_.left(bodyLength_);
    buffer_ = buffer_.mid(bodyLength_);
    request.json = Json::tryParse(request.body);
    return request;
}

bool RequestReader::wantsContinue() {
    if (!pending_ && !failed_) readHead();
    return pending_ && !std::exchange(continueTold_, true);
}

}  // namespace veltrin
