#pragma once

#include "Data/JSONStore.h"
#include "Foundation/Observers.h"
#include "Platform/RunLoop.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace veltrin {

/// The records of one store: loaded whole when made, held in memory, and written whole after each change,
/// before the change returns. Nothing is deferred or gathered up. Main thread.
template <Record R>
class StoredRecords {
public:
    StoredRecords(const QString& folder, const QString& name, const RunLoop& runLoop)
        : file_(folder, name), records_(file_.load(Date{runLoop.wallNow()})) {}
    StoredRecords(const StoredRecords&) = delete;
    StoredRecords& operator=(const StoredRecords&) = delete;

    const std::vector<R>& all() const { return records_; }

    /// Lets `edit` change the records, writes them, then tells the observers.
    template <typename Edit>
    void change(const Edit& edit) {
        edit(records_);
        file_.persist(records_);
        changed.notify();
    }
    /// The same without the writing: the file keeps what it holds until the next `change`.
    template <typename Edit>
    void changeInMemory(const Edit& edit) {
        edit(records_);
        changed.notify();
    }

    void insertFirst(R record, std::size_t cap) {
        change([&](std::vector<R>& records) {
            records.insert(records.begin(), std::move(record));
            if (records.size() > cap) records.resize(cap);
        });
    }
    /// The identifier is a copy: it may be that of one of the records, which move while others go.
    void removeAll(QUuid id) {
        change([&](std::vector<R>& records) {
            std::erase_if(records, [&](const R& record) { return record.id == id; });
        });
    }
    /// None when there is no record of that identifier.
    const R* find(const QUuid& id) const {
        const auto found =
            std::find_if(records_.begin(), records_.end(), [&](const R& record) { return record.id == id; });
        return found == records_.end() ? nullptr : &*found;
    }
    /// Replaces the record of that identifier by what `edit` makes of it; does nothing when there is none.
    template <typename Edit>
    void update(const QUuid& id, const Edit& edit) {
        if (find(id) == nullptr) return;
        change([&](std::vector<R>& records) {
            edit(*std::find_if(records.begin(), records.end(),
                               [&](const R& record) { return record.id == id; }));
        });
    }

    Observers<> changed;

private:
    JSONStore<R> file_;
    std::vector<R> records_;
};

}  // namespace veltrin
