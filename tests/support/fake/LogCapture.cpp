#include "support/fake/LogCapture.h"

#include "Foundation/MVPLog.h"

#include <QFile>

#include <algorithm>

namespace veltrin {

LogCapture::LogCapture() : former_(MVPLog::logURL()) {
    MVPLog::setLogURL(path());
}

LogCapture::~LogCapture() {
    MVPLog::setLogURL(former_);
}

QStringList LogCapture::lines() const {
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly)) return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    for (QString& line : lines)
        line = line.mid(line.indexOf(QStringLiteral("] ")) + 2);
    return lines;
}

bool LogCapture::has(const QString& line) const {
    return lines().contains(line);
}

bool LogCapture::hasStartingWith(const QString& start) const {
    const QStringList all = lines();
    return std::ranges::any_of(all, [&](const QString& line) { return line.startsWith(start); });
}

QString LogCapture::path() const {
    return folder_.filePath(QStringLiteral("captured.log"));
}

}  // namespace veltrin
