#pragma once

#include "Platform/HttpClient.h"

#include <memory>

class QNetworkAccessManager;

namespace veltrin {

/// HTTP/1.1 over Qt Network, connections kept open between requests. An HTTP error status is an answer. No
/// cookies, no cache; the desktop's proxy, but none for the own machine. A redirection is followed on the
/// same host only, and never from TLS to plain, so that no key reaches a host the user did not name; any
/// other is answered as it is. A body above 64 MB is `badServerResponse`, an answer that is not HTTP a lost
/// connection. A POST is sent once, whatever becomes of it. A request may outlive this object: it goes on to
/// its end by itself. When the application quits, requests under way end as `cancelled`.
class QtHttpClient final : public HttpClient {
public:
    QtHttpClient();
    ~QtHttpClient() override;

    QCoro::Task<HttpResponse> data(HttpRequest request) override;

private:
    std::shared_ptr<QNetworkAccessManager> manager_;
    double sleptBefore_ = 0;  ///< seconds the machine had been suspended when `manager_` was made
};

}  // namespace veltrin
