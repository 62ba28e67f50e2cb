#pragma once

#include "AI/ModelTasks.h"
#include "Data/PromptCategory.h"
#include "Data/PromptStore.h"
#include "Foundation/Lifetime.h"

namespace veltrin {

class Preferences;

/// What the page of the prompt library shows and does, without the page. Main thread.
class AssetsStudio {
public:
    AssetsStudio(PromptStore& prompts, Preferences& preferences, RunLoop& runLoop, const ModelTasks& tasks);
    AssetsStudio(const AssetsStudio&) = delete;
    AssetsStudio& operator=(const AssetsStudio&) = delete;

    /// Raw value of a PromptCategory, or the tag of a custom category.
    QString selectedCategory = rawValue(PromptCategory::all);
    QString searchText;

    /// The prompts of the selected category, newest first.
    std::vector<StoredPrompt> allFiltered() const;
    /// Those of them that `searchText` finds.
    std::vector<StoredPrompt> filteredPrompts() const;

    struct Draft {
        QString title;
        QString content;
        QString tagsText;  ///< tags, separated by commas
    };
    Draft draft;
    /// Keeps the draft as a new prompt in the selected category and empties it. False, and nothing done, when
    /// it has no title or no content.
    bool saveNewAsset();

    const std::vector<CustomCategory>& customCategories() const { return customCategories_; }
    /// False, and nothing done, for a blank name.
    bool addCustomCategory(const QString& name, const QString& accentHex);

    /// The mean of the ratings as "4.5", or "--" without any.
    QString avgRatingText() const;
    /// How many prompts are younger than a week.
    QString recentCountText() const;

    /// The prompts that a model finds for `query`, best first. Throws what the task throws.
    QCoro::Task<std::vector<StoredPrompt>> runAISearch(QString query) const;

    /// Words for a passing message.
    Observers<QString> toast;

private:
    bool isInCategory(const StoredPrompt& prompt, Date recentFrom) const;
    std::vector<StoredPrompt> inCategory(const std::vector<std::size_t>& positions) const;
    /// The moment seven calendar days ago, in the local time zone.
    Date recentFrom() const;

    PromptStore& prompts_;
    Preferences& preferences_;
    RunLoop& runLoop_;
    ModelTasks tasks_;
    std::vector<CustomCategory> customCategories_;
    Lifetime lifetime_;
};

}  // namespace veltrin
