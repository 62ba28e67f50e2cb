#include "Platform/Linux/FilePreferences.h"

#include "Foundation/MVPLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace veltrin {
namespace {

constexpr qint64 maximumSize = 16 * 1024 * 1024;
constexpr int maximumLinks = 40;
constexpr int maximumKeptAside = 9;

QString systemReason() {
    return qt_error_string(errno);
}

/// The file that a chain of links ends at, which need not exist. Links are followed as users of shared
/// dotfiles expect; the folder is the user's own, so nobody else can have put one there.
QString followed(const QString& path) {
    QString at = path;
    for (int links = 0; links < maximumLinks; ++links) {
        struct stat info {};
        if (lstat(QFile::encodeName(at).constData(), &info) != 0 || !S_ISLNK(info.st_mode)) return at;
        at = QFileInfo(at).symLinkTarget();
    }
    return path;
}

enum class Kind { absent, file, other };

Kind kindOf(const QString& path) {
    struct stat info {};
    if (lstat(QFile::encodeName(path).constData(), &info) != 0)
        return errno == ENOENT ? Kind::absent : Kind::other;
    return S_ISREG(info.st_mode) ? Kind::file : Kind::other;
}

/// The bytes of a regular file of at most `maximumSize`; nothing when they could not be had.
std::optional<QByteArray> contents(const QString& path) {
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return std::nullopt;
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(descriptor);
        return std::nullopt;
    }
    if (file.size() > maximumSize) return std::nullopt;
    QByteArray bytes = file.read(maximumSize);
    if (file.error() != QFileDevice::NoError) return std::nullopt;
    return bytes;
}

/// Makes the folder, and those above it, readable for nobody else; one that exists is left as it is.
bool makePrivateFolder(const QString& path) {
    if (QFileInfo(path).isDir()) return true;
    const QString above = QFileInfo(path).path();
    if (above != path && !makePrivateFolder(above)) return false;
    return mkdir(QFile::encodeName(path).constData(), 0700) == 0 || errno == EEXIST;
}

}  // namespace

FilePreferences::FilePreferences(QString path) : path_(std::move(path)) {
    load();
}

void FilePreferences::load() {
    const QString file = followed(path_);
    switch (kindOf(file)) {
        case Kind::absent:
            return;
        case Kind::other:
            MVPLog::write("Preferences unreadable; not a file:", path_);
            return;
        case Kind::file:
            break;
    }
    if (const auto bytes = contents(file)) {
        if (auto document = PreferencesDocument::decode(*bytes)) {
            document_ = std::move(*document);
            return;
        }
    }
    mustKeepAside_ = true;
    if (!keepAside()) MVPLog::write("Preferences unreadable; could not be kept aside:", path_);
}

bool FilePreferences::keepAside() {
    const QString file = followed(path_);
    QString aside = file + QStringLiteral(".unreadable");
    // An earlier copy may be the one that holds the user's settings, so it is not replaced by a later one.
    for (int copy = 2; copy <= maximumKeptAside && kindOf(aside) != Kind::absent; ++copy)
        aside = file + QStringLiteral(".unreadable.%1").arg(copy);
    if (kindOf(file) == Kind::file &&
        std::rename(QFile::encodeName(file).constData(), QFile::encodeName(aside).constData()) != 0) {
        return false;
    }
    mustKeepAside_ = false;
    MVPLog::write("Preferences unreadable; kept aside as:", aside);
    return true;
}

void FilePreferences::set(const QString& key, PreferenceValue value) {
    unwritten_ |= document_.set(key, value);
    write();
    changed.notify(key);
}

void FilePreferences::remove(const QString& key) {
    if (!document_.remove(key)) return;
    unwritten_ = true;
    write();
    changed.notify(key);
}

void FilePreferences::write() {
    if (!unwritten_) return;
    const QString reason = writeFile();
    unwritten_ = !reason.isEmpty();
    if (unwritten_ && !failing_) MVPLog::write("Preferences could not be written:", path_, reason);
    failing_ = unwritten_;
}

QString FilePreferences::writeFile() {
    const QString path = followed(path_);
    if (!makePrivateFolder(QFileInfo(path).path())) return systemReason();
    if (kindOf(path) == Kind::other) return QStringLiteral("not a file");
    if (mustKeepAside_ && !keepAside()) return systemReason();
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return file.errorString();
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    const QByteArray bytes = document_.encode();
    if (file.write(bytes) != bytes.size() || !file.commit()) return file.errorString();
    return {};
}

}  // namespace veltrin
