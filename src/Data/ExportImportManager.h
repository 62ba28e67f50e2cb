#pragma once

#include "Foundation/Json.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace veltrin {

class AgentTeamManager;
class RunLoop;
struct DataStore;

/// What the page of the user's data shows and does: counts, a small summary file, and emptying. The summary
/// holds counts and not the records; a full export and an import do not exist. Main thread.
class ExportImportManager {
public:
    ExportImportManager(const RunLoop& runLoop, DataStore& data, const AgentTeamManager& agents);

    struct Row {
        QString label;
        qsizetype count = 0;
        friend bool operator==(const Row&, const Row&) = default;
    };
    /// How much there is of everything, in the order of the page.
    std::vector<Row> overview() const;

    /// Asks the user for a file, by a title and a proposed name; none when the user cancels.
    using SavePanel =
        std::function<std::optional<QString>(const QString& title, const QString& proposedName)>;
    /// Writes the summary where the user says. Says nothing, neither on success nor on failure.
    void exportAllData(const SavePanel& savePanel) const;

    // Each answers the words of the toast that follows.
    /// In memory only: see HistoryStore::clearEntries.
    QString clearHistory();
    QString clearClipboard();
    /// Touches no data. Meant so: the row is a confirmation without an operation.
    QString clearCaches() const;

private:
    struct Section;
    static const std::vector<Section>& sections();

    Json summary(const QString& moment) const;

    const RunLoop& runLoop_;
    DataStore& data_;
    const AgentTeamManager& agents_;
};

}  // namespace veltrin
