#pragma once

#include "Foundation/MVPLog.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

namespace veltrin::test {

/// Collects the log lines that are written while it lives.
class LogCapture {
public:
    LogCapture() : former_(MVPLog::logURL()) { MVPLog::setLogURL(folder_.filePath(QStringLiteral("log"))); }
    ~LogCapture() { MVPLog::setLogURL(former_); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines so far, without their dates.
    QStringList lines() const {
        QFile file(MVPLog::logURL());
        if (!file.open(QIODevice::ReadOnly)) return {};
        QStringList found;
        const QStringList all = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
        for (const QString& line : all)
            found << line.mid(line.indexOf(u"] ") + 2);
        return found;
    }
    bool has(const QString& line) const { return lines().contains(line); }
    bool hasStartingWith(const QString& start) const {
        for (const QString& line : lines()) {
            if (line.startsWith(start)) return true;
        }
        return false;
    }

private:
    QTemporaryDir folder_;
    QString former_;
};

/// For the message of a failed expectation.
inline std::string shown(const QString& text) {
    return text.toStdString();
}

}  // namespace veltrin::test
