#pragma once

#include "Foundation/Error.h"

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QUrl>

#include <utility>
#include <vector>

namespace veltrin {

struct HttpRequest {
    QUrl url;
    QByteArray method;
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;
    double timeout = 60;  ///< seconds for the whole round trip
};

struct HttpResponse {
    int status = -1;  ///< -1 when the answer was no HTTP answer
    QByteArray body;
};

/// A failure of the transport, by its code in the URL error domain.
class UrlError : public Error {
public:
    enum Code {
        unknown = -1,
        cancelled = -999,
        badURL = -1000,
        timedOut = -1001,
        unsupportedURL = -1002,
        cannotFindHost = -1003,
        cannotConnectToHost = -1004,
        networkConnectionLost = -1005,
        dnsLookupFailed = -1006,
        httpTooManyRedirects = -1007,
        resourceUnavailable = -1008,
        notConnectedToInternet = -1009,
        badServerResponse = -1011,
        secureConnectionFailed = -1200,
        serverCertificateHasBadDate = -1201,
        serverCertificateUntrusted = -1202,
        serverCertificateHasUnknownRoot = -1203,
        serverCertificateNotYetValid = -1204,
    };

    UrlError(int code, QString description) : code_(code), description_(std::move(description)) {}
    int code() const { return code_; }
    /// Never holds a URL's query, since a key may stand there.
    QString errorDescription() const override { return description_; }

private:
    int code_;
    QString description_;
};

/// One HTTP round trip. Main thread; the task gives the thread back while it waits. Throws UrlError.
class HttpClient {
public:
    virtual ~HttpClient() = default;
    virtual QCoro::Task<HttpResponse> data(HttpRequest request) = 0;
};

}  // namespace veltrin
