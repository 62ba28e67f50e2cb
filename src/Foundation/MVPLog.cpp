#include "Foundation/MVPLog.h"

#include <QDateTime>
#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <mutex>

namespace veltrin {
namespace {

struct State {
    std::mutex mutex;
    QString url = QStringLiteral("/tmp/veltrin-main-mvp.log");
    bool printing = true;
    int descriptor = -1;
    bool refused = false;  ///< the path is not ours to write; said once on standard error
};

State& state() {
    static State state;
    return state;
}

bool isStillOurFile(const State& log) {
    struct stat open {};
    struct stat named {};
    return fstat(log.descriptor, &open) == 0 && lstat(QFile::encodeName(log.url).constData(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

/// Opens the file when it is not open, or was moved away since. A link, a folder, a pipe or somebody else's
/// file is left alone: a world-writable folder must not lead us to write where another user points.
void ensureOpen(State& log) {
    if (log.descriptor >= 0 && isStillOurFile(log)) return;
    if (log.descriptor >= 0) {
        close(log.descriptor);
        log.descriptor = -1;
    }
    if (log.refused) return;
    const int file = open(QFile::encodeName(log.url).constData(),
                          O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
    struct stat info {};
    if (file < 0 || fstat(file, &info) != 0 || !S_ISREG(info.st_mode) || info.st_uid != geteuid()) {
        log.refused = true;
        std::fprintf(stderr, "Veltrin: the log file %s cannot be written; lines go to standard output only\n",
                     qPrintable(log.url));
        if (file >= 0) close(file);
        return;
    }
    fchmod(file, 0600);
    log.descriptor = file;
}

}  // namespace

QString MVPLog::logURL() {
    std::lock_guard lock(state().mutex);
    return state().url;
}

void MVPLog::setLogURL(const QString& path) {
    std::lock_guard lock(state().mutex);
    if (state().descriptor >= 0) close(state().descriptor);
    state().descriptor = -1;
    state().refused = false;
    state().url = path;
}

void MVPLog::setPrinting(bool printing) {
    std::lock_guard lock(state().mutex);
    state().printing = printing;
}

QString MVPLog::text(const QRectF& item) {
    return QStringLiteral("(%1, %2, %3, %4)")
        .arg(item.x())
        .arg(item.y())
        .arg(item.width())
        .arg(item.height());
}

void MVPLog::writeLine(const QString& line) {
    State& log = state();
    std::lock_guard lock(log.mutex);
    const QByteArray utf8 = line.toUtf8();
    if (log.printing) {
        std::fwrite(utf8.constData(), 1, static_cast<std::size_t>(utf8.size()), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }
    ensureOpen(log);
    if (log.descriptor < 0) return;
    const QString date =
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss +0000"));
    const QByteArray entry = "[" + date.toUtf8() + "] " + utf8 + "\n";
    // One write a line, so that lines of two processes never mix. A full disk loses the line, nothing else.
    [[maybe_unused]] const auto written =
        ::write(log.descriptor, entry.constData(), static_cast<std::size_t>(entry.size()));
}

}  // namespace veltrin
