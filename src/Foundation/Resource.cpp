#include "Foundation/Resource.h"

#include <QFile>

namespace veltrin::Resource {

namespace {

QByteArray bytes(const QString& path) {
    QFile file(QStringLiteral(":/veltrin/") + path);
    if (!file.open(QIODevice::ReadOnly)) qFatal("no resource %s", qUtf8Printable(path));
    return file.readAll();
}

}  // namespace

QString text(const QString& path) {
    QByteArray content = bytes(path);
    if (content.endsWith('\n')) content.chop(1);
    return QString::fromUtf8(content);
}

Json json(const QString& path) {
    auto value = Json::tryParse(bytes(path));
    if (!value) qFatal("resource %s is no JSON", qUtf8Printable(path));
    return *std::move(value);
}

}  // namespace veltrin::Resource
