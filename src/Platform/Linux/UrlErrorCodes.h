#pragma once

#include "Platform/HttpClient.h"

#include <QNetworkReply>
#include <QSslError>

/// The one place where a failure of Qt's network turns into a named code of the URL error domain.
namespace veltrin::UrlErrorCodes {

/// The code of a failed transport; `sslErrors` refine a failed handshake. `unknown` for what has no name.
int codeOf(QNetworkReply::NetworkError error, const QList<QSslError>& sslErrors);

/// A sentence for the user, in the desktop's language where that is Chinese, else in English. It names no
/// URL, host or key.
QString description(int code);

/// The error of that code with its description.
UrlError errorOf(int code);

}  // namespace veltrin::UrlErrorCodes
