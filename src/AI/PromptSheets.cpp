#include "AI/PromptSheets.h"

#include "Data/PromptStore.h"
#include "Foundation/Error.h"
#include "Foundation/Text.h"

#include <utility>

namespace veltrin {

bool AISheet::begin() {
    if (isRunning_) return false;
    isRunning_ = true;
    errorMsg_.clear();
    changed.notify();
    return true;
}

void AISheet::end(const QString& errorMsg) {
    isRunning_ = false;
    errorMsg_ = errorMsg;
    changed.notify();
}

QCoro::Task<void> AIGenerateSheet::run(QString description) {
    if (Text::isBlank(description) || !begin()) co_return;
    const auto token = lifetime_.token();
    QString errorMsg;
    try {
        auto task = tasks_.generatePrompt(std::move(description));
        auto prompt = co_await task;
        if (token.alive()) result_ = std::move(prompt);
    } catch (const std::exception& error) {
        errorMsg = describe(error);
    }
    if (token.alive()) end(errorMsg);
}

void AIGenerateSheet::onSave() {
    auto prompt = std::exchange(result_, std::nullopt);
    if (prompt) prompts_.insert(*std::move(prompt));
}

QCoro::Task<void> AIOptimizeSheet::run(QString instructions) {
    if (!begin()) co_return;
    const auto token = lifetime_.token();
    QString errorMsg;
    try {
        auto task = tasks_.improvePrompt(prompt_, std::move(instructions));
        auto prompt = co_await task;
        if (token.alive()) result_ = std::move(prompt);
    } catch (const std::exception& error) {
        errorMsg = describe(error);
    }
    if (token.alive()) end(errorMsg);
}

void AIOptimizeSheet::onSave() {
    // The prompt may have been edited or deleted since the sheet opened.
    if (!result_) return;
    const StoredPrompt* current = prompts_.find(result_->id);
    if (current == nullptr) return;
    StoredPrompt prompt = *current;
    prompt.content = result_->content;
    prompts_.update(std::move(prompt));
}

QCoro::Task<void> AITagSheet::run() {
    if (!begin()) co_return;
    const auto token = lifetime_.token();
    QString errorMsg;
    results_.clear();
    const std::vector<StoredPrompt> selection = selection_;
    try {
        for (const StoredPrompt& prompt : selection) {
            auto task = tasks_.suggestTags(prompt);
            const QStringList tags = co_await task;
            if (!token.alive()) co_return;
            if (tags.isEmpty()) continue;  // an answer without tags takes none away
            results_.push_back(prompt);
            results_.back().tags = tags;
            changed.notify();
            if (!token.alive()) co_return;
        }
    } catch (const std::exception& error) {
        errorMsg = describe(error);
    }
    if (token.alive()) end(errorMsg);
}

void AITagSheet::onSave() {
    for (const StoredPrompt& result : results_) {
        const StoredPrompt* current = prompts_.find(result.id);
        if (current == nullptr) continue;
        StoredPrompt prompt = *current;
        prompt.tags = result.tags;
        prompts_.update(std::move(prompt));
    }
}

}  // namespace veltrin
