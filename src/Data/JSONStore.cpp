#include "Data/JSONStore.h"

#include <QFileInfo>

namespace veltrin {

StoreFile::StoreFile(const QString& folder, const QString& name)
    : folder_(folder), path_(folder + u'/' + name) {
}

std::optional<QByteArray> StoreFile::read() {
    Files::Contents contents = Files::read(path_, maximumSize);
    if (contents.state == Files::Contents::State::read) return std::move(contents.bytes);
    if (contents.state == Files::Contents::State::unreadable) mustKeepAside_ = true;
    return std::nullopt;
}

bool StoreFile::write(const QByteArray& bytes) {
    // What could not be read at the next start is not written; the old file then stays.
    if (bytes.size() > maximumSize) return false;
    if (!Files::makePrivateFolder(folder_) || !Files::isOwnFolder(folder_)) return false;
    if (mustKeepAside_ && QFileInfo::exists(path_) && Files::setAside(path_).isEmpty()) return false;
    mustKeepAside_ = false;
    return Files::replace(path_, bytes).isEmpty();
}

}  // namespace veltrin
