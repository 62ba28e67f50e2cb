#pragma once

#include "Data/StoredRecords.h"

#include <QString>

#include <vector>

namespace veltrin {

/// One thing that happened.
struct HistoryEntry {
    QUuid id;
    QString type;     ///< the kind of action: "translate", "optimize", "memoryAction:" and a title …
    QString snippet;  ///< at most 80 characters
    QString appName;  ///< where it happened
    Date createdAt;
    friend bool operator==(const HistoryEntry&, const HistoryEntry&) = default;

    /// The word that a history row shows for the type.
    QString typeWord() const;
};
template <>
inline constexpr auto recordFields<HistoryEntry> =
    std::tuple{required(u"id", &HistoryEntry::id), required(u"type", &HistoryEntry::type),
               required(u"snippet", &HistoryEntry::snippet), required(u"appName", &HistoryEntry::appName),
               required(u"createdAt", &HistoryEntry::createdAt)};

/// The last 500 things that happened, newest first, in "history.json".
class HistoryStore {
public:
    static constexpr std::size_t cap = 500;
    static constexpr int snippetCharacters = 80;

    /// `folder` is the data directory.
    HistoryStore(const QString& folder, const RunLoop& runLoop);

    const std::vector<HistoryEntry>& entries() const { return records_.all(); }
    Observers<>& changed() { return records_.changed; }

    void record(const QString& type, const QString& snippet, const QString& appName);
    /// Empties the list in memory only: the file keeps its entries until the next `record`, and a restart
    /// before that brings them back. Meant so.
    void clearEntries();

    /// The entries that the history view shows for a search text.
    std::vector<HistoryEntry> search(const QString& text) const;

private:
    const RunLoop& runLoop_;
    StoredRecords<HistoryEntry> records_;
};

}  // namespace veltrin
