#pragma once

#include "Foundation/MVPLog.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

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

private:
    QString path() const { return folder_.filePath(QStringLiteral("captured.log")); }

    QTemporaryDir folder_;
    QString former_;
};

}  // namespace veltrin
