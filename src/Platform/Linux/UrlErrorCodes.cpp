#include "Platform/Linux/UrlErrorCodes.h"

#include <QLocale>

#include <algorithm>
#include <array>

namespace veltrin::UrlErrorCodes {
namespace {

struct NetworkRow {
    QNetworkReply::NetworkError error;
    int code;
};

constexpr auto networkRows = std::to_array<NetworkRow>({
    {QNetworkReply::ConnectionRefusedError, UrlError::cannotConnectToHost},
    {QNetworkReply::RemoteHostClosedError, UrlError::networkConnectionLost},
    {QNetworkReply::HostNotFoundError, UrlError::cannotFindHost},
    {QNetworkReply::TimeoutError, UrlError::timedOut},
    {QNetworkReply::OperationCanceledError, UrlError::cancelled},
    {QNetworkReply::SslHandshakeFailedError, UrlError::secureConnectionFailed},
    {QNetworkReply::TemporaryNetworkFailureError, UrlError::notConnectedToInternet},
    {QNetworkReply::NetworkSessionFailedError, UrlError::notConnectedToInternet},
    {QNetworkReply::TooManyRedirectsError, UrlError::httpTooManyRedirects},
    {QNetworkReply::InsecureRedirectError, UrlError::secureConnectionFailed},
    // What Qt says of an unreachable network or host.
    {QNetworkReply::UnknownNetworkError, UrlError::cannotConnectToHost},
    {QNetworkReply::ProxyConnectionRefusedError, UrlError::cannotConnectToHost},
    {QNetworkReply::ProxyConnectionClosedError, UrlError::networkConnectionLost},
    {QNetworkReply::ProxyNotFoundError, UrlError::cannotFindHost},
    {QNetworkReply::ProxyTimeoutError, UrlError::timedOut},
    {QNetworkReply::ProxyAuthenticationRequiredError, UrlError::cannotConnectToHost},
    {QNetworkReply::UnknownProxyError, UrlError::cannotConnectToHost},
    {QNetworkReply::UnknownContentError, UrlError::badServerResponse},
    {QNetworkReply::ContentReSendError, UrlError::networkConnectionLost},
    {QNetworkReply::ProtocolUnknownError, UrlError::unsupportedURL},
    {QNetworkReply::ProtocolInvalidOperationError, UrlError::badServerResponse},
    {QNetworkReply::ProtocolFailure, UrlError::badServerResponse},
});

struct CertificateRow {
    QSslError::SslError error;
    int code;
};

/// The first row that any of the errors has wins: a wrong date is the likeliest cause of the others. An
/// unknown root is told as untrusted, because a proxy's own root is what the user then has to look at.
constexpr auto certificateRows = std::to_array<CertificateRow>({
    {QSslError::CertificateExpired, UrlError::serverCertificateHasBadDate},
    {QSslError::InvalidNotAfterField, UrlError::serverCertificateHasBadDate},
    {QSslError::InvalidNotBeforeField, UrlError::serverCertificateHasBadDate},
    {QSslError::CertificateNotYetValid, UrlError::serverCertificateNotYetValid},
    {QSslError::SelfSignedCertificate, UrlError::serverCertificateUntrusted},
    {QSslError::SelfSignedCertificateInChain, UrlError::serverCertificateUntrusted},
    {QSslError::UnableToGetIssuerCertificate, UrlError::serverCertificateUntrusted},
    {QSslError::UnableToGetLocalIssuerCertificate, UrlError::serverCertificateUntrusted},
    {QSslError::UnableToVerifyFirstCertificate, UrlError::serverCertificateUntrusted},
    {QSslError::CertificateUntrusted, UrlError::serverCertificateUntrusted},
    {QSslError::CertificateRejected, UrlError::serverCertificateUntrusted},
    {QSslError::CertificateRevoked, UrlError::serverCertificateUntrusted},
    {QSslError::CertificateBlacklisted, UrlError::serverCertificateUntrusted},
    {QSslError::InvalidCaCertificate, UrlError::serverCertificateUntrusted},
    {QSslError::HostNameMismatch, UrlError::serverCertificateUntrusted},
});

struct Words {
    int code;
    const char16_t* english;
    const char16_t* chinese;
};

constexpr auto words = std::to_array<Words>({
    {UrlError::cancelled, u"The request was cancelled.", u"请求已取消。"},
    {UrlError::badURL, u"The service address is not valid.", u"服务地址无效。"},
    {UrlError::timedOut, u"The request timed out.", u"请求超时。"},
    {UrlError::unsupportedURL, u"The service address is not an HTTP address.", u"服务地址不是 HTTP 地址。"},
    {UrlError::cannotFindHost, u"The server could not be found.", u"找不到服务器。"},
    {UrlError::cannotConnectToHost, u"Could not connect to the server.", u"无法连接到服务器。"},
    {UrlError::networkConnectionLost, u"The network connection was lost.", u"网络连接已中断。"},
    {UrlError::dnsLookupFailed, u"The server's name could not be looked up.", u"无法解析服务器名称。"},
    {UrlError::httpTooManyRedirects, u"The server redirected too many times.", u"服务器重定向次数过多。"},
    {UrlError::resourceUnavailable, u"The resource is not available.", u"资源不可用。"},
    {UrlError::notConnectedToInternet, u"There is no connection to the network.", u"没有网络连接。"},
    {UrlError::badServerResponse, u"The server's answer was not valid.", u"服务器的响应无效。"},
    {UrlError::secureConnectionFailed, u"A secure connection could not be made.", u"无法建立安全连接。"},
    {UrlError::serverCertificateHasBadDate, u"The server's certificate has expired.", u"服务器证书已过期。"},
    {UrlError::serverCertificateUntrusted, u"The server's certificate is not trusted.",
     u"服务器证书不受信任。"},
    {UrlError::serverCertificateHasUnknownRoot, u"The server's certificate has an unknown issuer.",
     u"服务器证书的颁发者未知。"},
    {UrlError::serverCertificateNotYetValid, u"The server's certificate is not yet valid.",
     u"服务器证书尚未生效。"},
});

}  // namespace

int codeOf(QNetworkReply::NetworkError error, const QList<QSslError>& sslErrors) {
    if (error == QNetworkReply::SslHandshakeFailedError) {
        for (const CertificateRow& row : certificateRows) {
            const auto isRow = [&row](const QSslError& found) { return found.error() == row.error; };
            if (std::any_of(sslErrors.begin(), sslErrors.end(), isRow)) return row.code;
        }
    }
    for (const NetworkRow& row : networkRows) {
        if (row.error == error) return row.code;
    }
    return UrlError::unknown;
}

QString description(int code) {
    const bool chinese = QLocale::system().language() == QLocale::Chinese;
    for (const Words& row : words) {
        if (row.code == code) return QString::fromUtf16(chinese ? row.chinese : row.english);
    }
    return chinese ? QStringLiteral("网络请求失败。") : QStringLiteral("The network request failed.");
}

UrlError errorOf(int code) {
    return UrlError(code, description(code));
}

}  // namespace veltrin::UrlErrorCodes
