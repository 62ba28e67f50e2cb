#pragma once

#include "AI/ModelTasks.h"
#include "AI/PromptIntelligenceModels.h"

namespace veltrin {

/// Checks a prompt the way a doctor checks a patient. Like the client it has no state: copies are free, and
/// an instance may go while its task is under way. Main thread.
class PromptDiagnosis {
public:
    PromptDiagnosis(const OllamaClient& client, RunLoop& runLoop, ModelTaskMaterial material);

    /// Asks the model for a report and leaves an entry in the history once it has answered. Throws what
    /// OllamaClient throws; an answer that cannot be read is a result that says so.
    QCoro::Task<DiagnosisResult> diagnose(QString prompt) const;

private:
    static QCoro::Task<DiagnosisResult> diagnosing(PromptDiagnosis self, QString prompt);

    OllamaClient client_;
    RunLoop* runLoop_;
    ModelTaskMaterial material_;
};

}  // namespace veltrin
