#include "Platform/Linux/FilePreferences.h"

#include "Foundation/Files.h"
#include "Foundation/MVPLog.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

namespace veltrin {
namespace {

constexpr qint64 maximumSize = qint64{16} * 1024 * 1024;
constexpr int maximumKeptAside = 9;

QString systemReason() {
    return qt_error_string(errno);
}

enum class Kind { absent, file, other };

Kind kindOf(const QString& path) {
    struct stat info {};
    if (lstat(QFile::encodeName(path).constData(), &info) != 0)
        return errno == ENOENT ? Kind::absent : Kind::other;
    return S_ISREG(info.st_mode) ? Kind::file : Kind::other;
}

}  // namespace

FilePreferences::FilePreferences(QString path) : path_(std::move(path)) {
    load();
}

void FilePreferences::load() {
    const QString file = Files::followed(path_);
    switch (kindOf(file)) {
        case Kind::absent:
            return;
        case Kind::other:
            MVPLog::write("Preferences unreadable; not a file:", path_);
            return;
        case Kind::file:
            break;
    }
    const Files::Contents contents = Files::read(file, maximumSize);
    if (contents.state == Files::Contents::State::read) {
        if (auto document = PreferencesDocument::decode(contents.bytes)) {
            document_ = std::move(*document);
            return;
        }
    }
    mustKeepAside_ = true;
    if (!keepAside()) MVPLog::write("Preferences unreadable; could not be kept aside:", path_);
}

bool FilePreferences::keepAside() {
    const QString file = Files::followed(path_);
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
    const QString path = Files::followed(path_);
    if (!Files::makePrivateFolder(QFileInfo(path).path())) return systemReason();
    if (kindOf(path) == Kind::other) return QStringLiteral("not a file");
    if (mustKeepAside_ && !keepAside()) return systemReason();
    return Files::replace(path, document_.encode());
}

}  // namespace veltrin
