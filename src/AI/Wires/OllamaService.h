#pragma once

#include "Platform/HttpClient.h"

#include <QStringList>
#include <QUrl>

namespace veltrin {

/// The local model service beside its generating: where it stands and which models it has.
namespace OllamaService {

/// The service's address for the stored setting; the loopback default when that is empty or no URL.
QUrl endpoint(const QString& setting);
/// The address with a path such as "api/tags" appended.
QUrl url(const QString& setting, const QString& pathComponent);

inline bool isSuccess(const HttpResponse& response) {
    return response.status >= 200 && response.status <= 299;
}
/// The names of an answer to "api/tags", in its order; empty for any other answer.
QStringList modelNames(const HttpResponse& response);

}  // namespace OllamaService

}  // namespace veltrin
