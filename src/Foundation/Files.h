#pragma once

#include <QByteArray>
#include <QString>

/// The user's private files: read whole, replaced whole. Links are followed, as users of shared dotfiles
/// expect; the folders are the user's own, so nobody else can have put one there. Nothing here throws or
/// logs.
namespace veltrin::Files {

/// The file that a chain of links ends at, which need not exist; `path` itself when it is no link.
QString followed(const QString& path);

struct Contents {
    enum class State {
        absent,
        read,
        unreadable,  ///< no file, larger than asked for, or refused by the system
    };
    State state = State::absent;
    QByteArray bytes;
};

/// The bytes of a regular file of at most `maximumSize` bytes. Never waits for a pipe or a device.
Contents read(const QString& path, qint64 maximumSize);

/// Makes the folder, and those above it, readable for nobody else; one that exists is left as it is.
bool makePrivateFolder(const QString& path);

/// Whether `path` is a folder that belongs to the user this process runs for.
bool isOwnFolder(const QString& path);

/// Replaces the file with one of mode 0600 that holds `bytes`. When this returns, the new file has reached
/// the disk; a reader, a crash or a full disk never leaves half of it, only the old or the new one. Returns
/// the reason why that failed, empty when it did not.
QString replace(const QString& path, const QByteArray& bytes);

/// Keeps what stands at `path` as `path`.unreadable (or .unreadable.2 up to .9, so that an earlier copy,
/// which may be the one that matters, stays). The file itself remains in its place until it is replaced,
/// where the file system allows that. Returns the copy's path; empty when that failed.
QString setAside(const QString& path);

}  // namespace veltrin::Files
