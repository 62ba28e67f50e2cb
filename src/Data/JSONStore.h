#pragma once

#include "Foundation/Files.h"
#include "Foundation/Records.h"

#include <QString>

#include <optional>
#include <vector>

namespace veltrin {

/// One file of a store: the bytes, and what becomes of a file that could not be understood.
class StoreFile {
public:
    /// Larger files count as unreadable. Far above what the stores write at their caps.
    static constexpr qint64 maximumSize = 256LL * 1024 * 1024;

    /// `folder` need not exist.
    StoreFile(const QString& folder, const QString& name);

    const QString& path() const { return path_; }
    /// None when the file is absent or unreadable.
    std::optional<QByteArray> read();
    /// Says that what was read could not be understood: the next `write` keeps it as NAME.unreadable first.
    void keepAside() { mustKeepAside_ = true; }
    /// Replaces the file whole; see Files::replace. Makes the folder when it is missing. Writes nothing, and
    /// returns false, into a folder that belongs to somebody else.
    bool write(const QByteArray& bytes);

private:
    QString folder_;
    QString path_;
    bool mustKeepAside_ = false;
};

struct JSONStoreOptions {
    DateStrategy written = DateStrategy::iso8601;
    DateStrategy read = DateStrategy::iso8601;
    /// False for a file that is known not to be understood at every start; it is then overwritten as it is.
    bool keepsUnreadable = true;
};

/// A JSON file that holds one array of records, pretty printed, mode 0600 in a folder of mode 0700. Fails
/// silently: what cannot be read is empty, what cannot be written is dropped. A file that does not decode is
/// overwritten by the next write, and kept aside once as NAME.unreadable before. Main thread; the calls
/// block until the disk has answered.
template <Record R>
class JSONStore {
public:
    JSONStore(const QString& folder, const QString& name, JSONStoreOptions options = {})
        : file_(folder, name), options_(options) {}

    QString fileURL() const { return file_.path(); }

    /// The records of the file; `now` stands in for absent dates.
    std::vector<R> load(Date now = {}) {
        const auto bytes = file_.read();
        if (!bytes) return {};
        auto records = readRecords<R>(*bytes, {options_.read, now});
        if (records) return std::move(*records);
        if (options_.keepsUnreadable) file_.keepAside();
        return {};
    }

    /// Writes all records; when this returns true they have reached the disk. Callers other than tests drop
    /// the answer.
    bool persist(const std::vector<R>& records) {
        const auto bytes = writeRecords(records, options_.written);
        return bytes && file_.write(*bytes);
    }

private:
    StoreFile file_;
    JSONStoreOptions options_;
};

}  // namespace veltrin
