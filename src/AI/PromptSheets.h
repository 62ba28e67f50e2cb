#pragma once

#include "AI/ModelTasks.h"
#include "Data/StoredPrompt.h"
#include "Foundation/Lifetime.h"
#include "Foundation/Observers.h"

namespace veltrin {

class PromptStore;

/// What the library's sheets share, each of which asks a model once and shows what came for confirmation. A
/// failure leaves the library as it was. A sheet may go while its model is asked. Main thread.
class AISheet {
public:
    AISheet(const AISheet&) = delete;
    AISheet& operator=(const AISheet&) = delete;

    bool isRunning() const { return isRunning_; }
    /// The words of the last run's failure; empty when it went well.
    const QString& errorMsg() const { return errorMsg_; }
    /// After every change of what the sheet shows.
    Observers<> changed;

protected:
    AISheet(const ModelTasks& tasks, PromptStore& prompts) : tasks_(tasks), prompts_(prompts) {}
    ~AISheet() = default;

    /// False while a run is under way: it is not begun twice.
    bool begin();
    void end(const QString& errorMsg);

    ModelTasks tasks_;
    PromptStore& prompts_;
    Lifetime lifetime_;

private:
    bool isRunning_ = false;
    QString errorMsg_;
};

/// Makes a prompt after the user's description.
class AIGenerateSheet : public AISheet {
public:
    AIGenerateSheet(const ModelTasks& tasks, PromptStore& prompts) : AISheet(tasks, prompts) {}

    /// A blank description does nothing.
    QCoro::Task<void> run(QString description);
    const std::optional<StoredPrompt>& result() const { return result_; }
    /// Puts the result in front of the library, once.
    void onSave();

private:
    std::optional<StoredPrompt> result_;
};

/// Finds better words for one prompt.
class AIOptimizeSheet : public AISheet {
public:
    AIOptimizeSheet(const ModelTasks& tasks, PromptStore& prompts, StoredPrompt prompt)
        : AISheet(tasks, prompts), prompt_(std::move(prompt)) {}

    QCoro::Task<void> run(QString instructions);
    const std::optional<StoredPrompt>& result() const { return result_; }
    /// Gives the prompt of the library the result's content.
    void onSave();

private:
    StoredPrompt prompt_;
    std::optional<StoredPrompt> result_;
};

/// Finds tags for some prompts, one after the other.
class AITagSheet : public AISheet {
public:
    AITagSheet(const ModelTasks& tasks, PromptStore& prompts, std::vector<StoredPrompt> selection)
        : AISheet(tasks, prompts), selection_(std::move(selection)) {}

    /// Ends at the first failure; what was found until then stays.
    QCoro::Task<void> run();
    /// Copies of the prompts for which tags were found, with them in place of the old ones.
    const std::vector<StoredPrompt>& results() const { return results_; }
    /// Gives the prompts of the library their new tags.
    void onSave();

private:
    std::vector<StoredPrompt> selection_;
    std::vector<StoredPrompt> results_;
};

}  // namespace veltrin
