#pragma once

#include "AI/ModelTasks.h"
#include "Data/HistoryStore.h"
#include "Foundation/Lifetime.h"
#include "Foundation/Observers.h"

#include <map>

namespace veltrin {

/// Runs a model again on what a history entry keeps, that is on its first 80 characters. The results live
/// here only; the entries do not change. One a view. Main thread.
class HistoryRetry {
public:
    explicit HistoryRetry(ModelTasks tasks) : tasks_(std::move(tasks)) {}

    /// A translation is translated again, everything else optimised. Does nothing while that entry runs.
    void retry(const HistoryEntry& entry);

    bool isRunning(const QUuid& id) const;
    /// The word on the entry's button.
    QString buttonTitle(const QUuid& id) const;
    /// The model's text, or why there is none; empty before the first retry ends.
    QString result(const QUuid& id) const;

    Observers<> changed;

private:
    struct Run {
        bool isRunning = false;
        QString result;
    };
    static QCoro::Task<void> run(HistoryRetry* self, Lifetime::Token alive, ModelTasks tasks,
                                 HistoryEntry entry);
    void finish(const QUuid& id, const QString& result);

    ModelTasks tasks_;
    std::map<QUuid, Run> runs_;
    Lifetime lifetime_;
};

}  // namespace veltrin
