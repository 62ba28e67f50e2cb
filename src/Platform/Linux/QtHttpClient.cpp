#include "Platform/Linux/QtHttpClient.h"

#include "Platform/Linux/UrlErrorCodes.h"

#include <QCoreApplication>
#include <QCoro/QCoroNetworkReply>
#include <QDeadlineTimer>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QTimer>

#include <algorithm>
#include <ctime>
#include <limits>

namespace veltrin {
namespace {

constexpr qint64 maximumBody = qint64{64} * 1024 * 1024;
constexpr int maximumRedirections = 20;

/// The desktop's proxy, except for the own machine, where a proxy would only be in the way.
class ProxyRule final : public QNetworkProxyFactory {
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
        const QString host = query.peerHostName();
        if (host == QLatin1String("localhost") || host.endsWith(QLatin1String(".localhost")) ||
            QHostAddress(host).isLoopback()) {
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        }
        return systemProxyForQuery(query);
    }
};

/// A manager that waits with its end while a reply of it is still about to be deleted: a reply must not
/// outlive it, and the last request may end inside a signal of its own reply.
std::shared_ptr<QNetworkAccessManager> makeManager() {
    const auto end = [](QNetworkAccessManager* manager) {
        if (manager->findChild<QNetworkReply*>(QString(), Qt::FindDirectChildrenOnly) != nullptr) {
            manager->deleteLater();
        } else {
            delete manager;
        }
    };
    std::shared_ptr<QNetworkAccessManager> manager(new QNetworkAccessManager, end);
    manager->setProxyFactory(new ProxyRule);
    manager->setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    return manager;
}

/// Seconds the machine has been suspended since it was started.
double sleptSeconds() {
    timespec withSleep{};
    timespec awake{};
    clock_gettime(CLOCK_BOOTTIME, &withSleep);
    clock_gettime(CLOCK_MONOTONIC, &awake);
    return static_cast<double>(withSleep.tv_sec - awake.tv_sec) +
           static_cast<double>(withSleep.tv_nsec - awake.tv_nsec) * 1e-9;
}

struct DeleteLater {
    void operator()(QNetworkReply* reply) const { reply->deleteLater(); }
};
using Reply = std::unique_ptr<QNetworkReply, DeleteLater>;

/// What happened to a reply beside what Qt says of it. Shared with the reply's slots, which may run once more
/// between the end of the coroutine and that of the reply.
struct Watch {
    int stoppedBy = 0;  ///< the code of our own reason to abort
    QList<QSslError> sslErrors;
    bool sentTwice = false;  ///< Qt began to send the request again
};

/// A request's body that can be read once only. Qt sends a request again, up to twice, when the connection
/// ends before the answer; with a body that it cannot read again it gives up instead. A prompt must not be
/// paid for three times.
class Body final : public QIODevice {
public:
    Body(QByteArray bytes, std::shared_ptr<Watch> watch)
        : bytes_(std::move(bytes)), watch_(std::move(watch)) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }
    bool reset() override {
        watch_->sentTwice = true;
        return true;  // a refusal would also hide where a redirection leads to
    }
    qint64 bytesAvailable() const override { return bytes_.size() - read_; }

protected:
    qint64 readData(char* data, qint64 maximum) override {
        if (watch_->sentTwice) return -1;
        const qint64 count = std::min<qint64>(maximum, bytes_.size() - read_);
        std::copy_n(bytes_.constData() + read_, count, data);
        read_ += count;
        return count == 0 && maximum > 0 ? -1 : count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    const QByteArray bytes_;
    qint64 read_ = 0;
    const std::shared_ptr<Watch> watch_;
};

Reply send(QNetworkAccessManager& manager, const HttpRequest& request, const std::shared_ptr<Watch>& watch) {
    QNetworkRequest wire(request.url);
    wire.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    wire.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    wire.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    wire.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    wire.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Veltrin/" VELTRIN_VERSION));
    for (const auto& [name, value] : request.headers)
        wire.setRawHeader(name, value);
    if (request.method == "GET") return Reply(manager.get(wire));
    if (request.body.isEmpty()) return Reply(manager.sendCustomRequest(wire, request.method, request.body));
    wire.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
    wire.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    auto body = std::make_unique<Body>(request.body, watch);
    Reply reply(manager.sendCustomRequest(wire, request.method, body.get()));
    body.release()->setParent(reply.get());
    return reply;
}

void observe(QNetworkReply* reply, const std::shared_ptr<Watch>& watch, const QDeadlineTimer& deadline) {
    const auto stop = [reply, watch](int code) {
        if (reply->isFinished()) return;
        watch->stoppedBy = code;
        reply->abort();
    };
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply, stop] {
        if (reply->bytesAvailable() > maximumBody) stop(UrlError::badServerResponse);
    });
    QObject::connect(reply, &QNetworkReply::sslErrors, reply,
                     [watch](const QList<QSslError>& errors) { watch->sslErrors = errors; });
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, reply, [stop] { stop(UrlError::cancelled); });
    const auto left = std::clamp<qint64>(deadline.remainingTime(), 0, std::numeric_limits<int>::max());
    QTimer::singleShot(static_cast<int>(left), Qt::PreciseTimer, reply, [stop] { stop(UrlError::timedOut); });
}

int effectivePort(const QUrl& url) {
    return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
}

/// The request that a redirection asks for; nothing when the reply is none that is followed.
std::optional<HttpRequest> redirected(const QNetworkReply& reply, const HttpRequest& request) {
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QUrl target = reply.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (reply.error() != QNetworkReply::NoError || target.isEmpty()) return std::nullopt;
    HttpRequest next = request;
    next.url = request.url.resolved(target);
    const bool sameOrigin =
        next.url.scheme() == request.url.scheme() && effectivePort(next.url) == effectivePort(request.url);
    const bool toTls =
        request.url.scheme() == QLatin1String("http") && next.url.scheme() == QLatin1String("https");
    if (next.url.host() != request.url.host() || !(sameOrigin || toTls)) return std::nullopt;
    if (status == 303 || ((status == 301 || status == 302) && request.method == "POST")) {
        next.method = "GET";
        next.body.clear();
        std::erase_if(next.headers, [](const auto& header) {
            return header.first.compare("Content-Type", Qt::CaseInsensitive) == 0;
        });
    }
    return next;
}

/// True when fewer bytes came than were told. Qt says so of most such answers, but not of one whose
/// connection ends together with its last bytes.
bool isCutShort(const QNetworkReply& reply, qsizetype received) {
    const bool isTold = reply.hasRawHeader("Content-Length") && !reply.hasRawHeader("Content-Encoding") &&
                        !reply.hasRawHeader("Transfer-Encoding");
    return isTold && received < reply.rawHeader("Content-Length").trimmed().toLongLong();
}

/// The answer that a finished reply holds. Throws UrlError.
HttpResponse answer(QNetworkReply& reply, const Watch& watch) {
    if (watch.stoppedBy != 0) throw UrlErrorCodes::errorOf(watch.stoppedBy);
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const auto error = reply.error();
    // Qt reports an HTTP error status as an error too; those of the transport have the low numbers.
    const bool ofTransport =
        error < QNetworkReply::ProxyConnectionRefusedError || error == QNetworkReply::ProtocolFailure;
    if (error == QNetworkReply::UnknownNetworkError && watch.sentTwice)
        throw UrlErrorCodes::errorOf(UrlError::networkConnectionLost);
    if (error != QNetworkReply::NoError && (ofTransport || status.toInt() < 400))
        throw UrlErrorCodes::errorOf(UrlErrorCodes::codeOf(error, watch.sslErrors));
    HttpResponse response;
    if (status.isValid()) response.status = status.toInt();
    response.body = reply.readAll();
    if (isCutShort(reply, response.body.size()))
        throw UrlErrorCodes::errorOf(UrlError::networkConnectionLost);
    return response;
}

/// A free function, so that nothing of the client is touched after the first wait. The frame keeps the
/// manager alive.
QCoro::Task<HttpResponse> roundTrip(std::shared_ptr<QNetworkAccessManager> manager, HttpRequest request) {
    const auto milliseconds = static_cast<qint64>(std::clamp(request.timeout, 0.0, 1e6) * 1e3);
    const QDeadlineTimer deadline(milliseconds, Qt::PreciseTimer);
    for (int hop = 0; hop <= maximumRedirections; ++hop) {
        const auto watch = std::make_shared<Watch>();
        const Reply reply = send(*manager, request, watch);
        QNetworkReply* waited = reply.get();
        observe(waited, watch, deadline);
        co_await waited;
        auto next = redirected(*waited, request);
        if (!next) co_return answer(*waited, *watch);
        request = std::move(*next);
    }
    throw UrlErrorCodes::errorOf(UrlError::httpTooManyRedirects);
}

}  // namespace

QtHttpClient::QtHttpClient() : manager_(makeManager()), sleptBefore_(sleptSeconds()) {
}
QtHttpClient::~QtHttpClient() = default;

QCoro::Task<HttpResponse> QtHttpClient::data(HttpRequest request) {
    const QString scheme = request.url.scheme();
    if (!request.url.isValid() || request.url.isRelative()) throw UrlErrorCodes::errorOf(UrlError::badURL);
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        throw UrlErrorCodes::errorOf(UrlError::unsupportedURL);
    if (request.url.host().isEmpty()) throw UrlErrorCodes::errorOf(UrlError::badURL);
    // A connection from before the machine slept is dead, and would be waited for until the deadline.
    if (const double slept = sleptSeconds(); slept - sleptBefore_ > 1) {
        manager_ = makeManager();
        sleptBefore_ = slept;
    }
    auto trip = roundTrip(manager_, std::move(request));
    auto response = co_await trip;
    co_return response;
}

}  // namespace veltrin
