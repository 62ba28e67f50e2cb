#pragma once

#include "Foundation/Json.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace veltrin {

/// The request formats that model services speak, told apart by the path.
enum class ServiceWire { localGenerate, localTags, openAI, anthropic, google, unknown };

using HeaderList = std::vector<std::pair<QByteArray, QByteArray>>;

/// One request as it came over the connection.
struct ServiceRequest {
    QByteArray method;
    QByteArray target;  ///< path and query, as sent
    QByteArray path;    ///< as sent, without the query
    QByteArray query;   ///< as sent, without the question mark
    HeaderList headers;
    QByteArray body;
    std::optional<Json> json;  ///< the body, when it is JSON
    double arrival = 0;        ///< seconds on CLOCK_MONOTONIC, when the last byte was there
    int connection = 0;        ///< counts from 1 in the order of the connections
    ServiceWire wire = ServiceWire::unknown;

    /// The first header of that name, in any case; empty when there is none.
    QByteArray header(const QByteArray& name) const;
    /// The number of headers of that name.
    int headerCount(const QByteArray& name) const;
    /// The text that the request asks to be continued, wherever its wire keeps it; empty when it has none.
    QString prompt() const;
};

/// How a connection goes on when an answer is out.
enum class ServiceEnding {
    keepAlive,
    close,   ///< orderly
    reset,   ///< with a reset
    silent,  ///< open, but never another byte
};

/// One answer: an HTTP message, or in its place `raw` bytes.
struct ServiceAnswer {
    int status = 200;
    QByteArray contentType = "application/json";
    HeaderList headers;
    QByteArray body;
    std::optional<QByteArray> raw;
    std::optional<qint64> claimedLength;  ///< the Content-Length to tell when it is not to be the true one
    double delay = 0;                     ///< seconds before the first byte
    double pause = 0;                     ///< seconds between pieces, when positive
    qsizetype piece = 1;                  ///< bytes of a piece
    qsizetype cutAfter = std::numeric_limits<qsizetype>::max();  ///< bytes sent before the ending
    ServiceEnding ending = ServiceEnding::keepAlive;

    /// Everything that would be sent, uncut.
    QByteArray bytes() const;
};

/// Makes the answer to a request. Called on the service's thread.
using ServiceBehaviour = std::function<ServiceAnswer(const ServiceRequest&)>;

}  // namespace veltrin
