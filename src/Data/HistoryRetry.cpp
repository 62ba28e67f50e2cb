#include "Data/HistoryRetry.h"

#include "Foundation/Error.h"

namespace veltrin {

void HistoryRetry::retry(const HistoryEntry& entry) {
    if (std::exchange(runs_[entry.id].isRunning, true)) return;
    changed.notify();
    run(this, lifetime_.token(), tasks_, entry);
}

QCoro::Task<void> HistoryRetry::run(HistoryRetry* self, Lifetime::Token alive, ModelTasks tasks,
                                    HistoryEntry entry) {
    QString result;
    try {
        if (entry.type == QStringLiteral("translate")) {
            auto task = tasks.translate(entry.snippet);
            result = co_await task;
        } else {
            auto task = tasks.optimize(entry.snippet, OptimizeOption::refine);
            result = co_await task;
        }
    } catch (const std::exception& error) {
        result = QStringLiteral("重试失败：") + describe(error);
    }
    if (alive.alive()) self->finish(entry.id, result);
}

void HistoryRetry::finish(const QUuid& id, const QString& result) {
    runs_[id] = {false, result};
    changed.notify();
}

bool HistoryRetry::isRunning(const QUuid& id) const {
    const auto found = runs_.find(id);
    return found != runs_.end() && found->second.isRunning;
}

QString HistoryRetry::buttonTitle(const QUuid& id) const {
    return isRunning(id) ? QStringLiteral("重试中") : QStringLiteral("重试");
}

QString HistoryRetry::result(const QUuid& id) const {
    const auto found = runs_.find(id);
    return found == runs_.end() ? QString() : found->second.result;
}

}  // namespace veltrin
