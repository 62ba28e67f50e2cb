#pragma once

#include "AI/ModelTasks.h"
#include "AI/WorkbenchProject.h"

namespace veltrin {

/// Turns material into what can be used again: prompts, quick actions, terms. Like the client it has no
/// state: copies are free, and an instance may go while its task is under way. Main thread.
class ReverseWorkbench {
public:
    ReverseWorkbench(const OllamaClient& client, RunLoop& runLoop, ModelTaskMaterial material);

    /// Asks the model for a project and leaves an entry in the history once it has answered. The contract is
    /// that of `shortcut`, of "optimize" without one. Throws what OllamaClient throws; an answer that cannot
    /// be read becomes the project's one artifact.
    QCoro::Task<WorkbenchProject> reverseEngineerProject(QString material, const QStringList& intents,
                                                         const std::optional<QString>& shortcut) const;
    /// `original` changed as the user's `direction` says: the model's answer as it came, which may be empty.
    /// Throws what OllamaClient throws.
    QCoro::Task<QString> iteratePrompt(const QString& original, const QString& direction) const;

private:
    static QCoro::Task<WorkbenchProject> reversing(ReverseWorkbench self, QString material, QString request);

    OllamaClient client_;
    RunLoop* runLoop_;
    ModelTaskMaterial material_;
};

}  // namespace veltrin
