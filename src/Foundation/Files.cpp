#include "Foundation/Files.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace veltrin::Files {
namespace {

constexpr int maximumLinks = 40;
constexpr int maximumKeptAside = 9;

bool isAbsent(const QString& path) {
    struct stat info {};
    return lstat(QFile::encodeName(path).constData(), &info) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

/// Whether both are names of one file.
bool areSame(const QString& first, const QString& second) {
    struct stat a {
    }, b{};
    return lstat(QFile::encodeName(first).constData(), &a) == 0 &&
           lstat(QFile::encodeName(second).constData(), &b) == 0 && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}

bool isRegularFile(int descriptor) {
    struct stat info {};
    return fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
}

/// A renamed file is only then sure to be found after a power cut when its folder has reached the disk too.
/// Some file systems cannot do that; the file is in its place all the same.
void syncFolder(const QString& path) {
    const int descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

}  // namespace

QString followed(const QString& path) {
    QString at = path;
    for (int links = 0; links < maximumLinks; ++links) {
        struct stat info {};
        if (lstat(QFile::encodeName(at).constData(), &info) != 0 || !S_ISLNK(info.st_mode)) return at;
        at = QFileInfo(at).symLinkTarget();
    }
    return path;
}

Contents read(const QString& path, qint64 maximumSize) {
    const QString target = followed(path);
    if (isAbsent(target)) return {};
    Contents unreadable{Contents::State::unreadable, {}};
    const int descriptor =
        open(QFile::encodeName(target).constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return unreadable;
    QFile file;
    if (!isRegularFile(descriptor) ||
        !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(descriptor);
        return unreadable;
    }
    if (file.size() > maximumSize) return unreadable;
    Contents contents{Contents::State::read, file.read(maximumSize)};
    return file.error() == QFileDevice::NoError ? contents : unreadable;
}

bool makePrivateFolder(const QString& path) {
    if (QFileInfo(path).isDir()) return true;
    const QString above = QFileInfo(path).path();
    if (above != path && !makePrivateFolder(above)) return false;
    return mkdir(QFile::encodeName(path).constData(), 0700) == 0 || errno == EEXIST;
}

bool isOwnFolder(const QString& path) {
    struct stat info {};
    return stat(QFile::encodeName(path).constData(), &info) == 0 && S_ISDIR(info.st_mode) &&
           info.st_uid == geteuid();
}

QString replace(const QString& path, const QByteArray& bytes) {
    const QString target = followed(path);
    QSaveFile file(target);
    if (!file.open(QIODevice::WriteOnly)) return file.errorString();
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    // The commit brings the bytes to the disk before it renames. It does not see that the last of them, still
    // in the buffer, found the disk full: that takes the flush.
    if (file.write(bytes) != bytes.size() || !file.flush() || !file.commit()) return file.errorString();
    syncFolder(QFileInfo(target).path());
    return {};
}

QString setAside(const QString& path) {
    const QString target = followed(path);
    QString aside = target + QStringLiteral(".unreadable");
    for (int copy = 2; copy <= maximumKeptAside && !isAbsent(aside); ++copy) {
        if (areSame(target, aside)) return aside;  // kept before a write that then failed
        aside = target + QStringLiteral(".unreadable.%1").arg(copy);
    }
    const QByteArray from = QFile::encodeName(target);
    const QByteArray to = QFile::encodeName(aside);
    // A second name costs no copying, and the first one stays until the new file takes it.
    const bool kept =
        link(from.constData(), to.constData()) == 0 || std::rename(from.constData(), to.constData()) == 0;
    return kept ? aside : QString();
}

}  // namespace veltrin::Files
