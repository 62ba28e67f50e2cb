#pragma once

#include "Foundation/MVPLog.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>

namespace veltrin {

/// Sends the log into a file of its own while it lives.
class LogCapture {
public:
    LogCapture() : former_(MVPLog::logURL()) { MVPLog::setLogURL(path()); }
    ~LogCapture() { MVPLog::setLogURL(former_); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines so far, without their dates.
    QStringList lines() const {
        QFile file(path());
        if (!file.open(QIODevice::ReadOnly)) return {};
        QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
        for (QString& line : lines)
            line = line.mid(line.indexOf(QStringLiteral("] ")) + 2);
        return lines;
    }
    bool has(const QString& line) const { return lines().contains(line); }
    bool hasStartingWith(const QString& start) const {
        const QStringList all = lines();
        return std::ranges::any_of(all, [&](const QString& line) { return line.startsWith(start); });
    }

private:
    QString path() const { return folder_.filePath(QStringLiteral("captured.log")); }

    QTemporaryDir folder_;
    QString former_;
};

}  // namespace veltrin
