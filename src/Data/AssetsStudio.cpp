#include "Data/AssetsStudio.h"

#include "Foundation/Text.h"
#include "Platform/RunLoop.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {

constexpr int recentDays = 7;

QStringList tagsOf(const QString& text) {
    QStringList tags;
    for (const QString& piece : text.split(u',')) {
        const QString tag = Text::trimmed(piece);
        if (!tag.isEmpty()) tags << tag;
    }
    return tags;
}

/// A filter that is no category takes new prompts into "writing", so that what is saved under "favorites" is
/// not in the list just selected: meant so.
QString categoryOfNew(const QString& selected) {
    const auto filter = fromRawValue<PromptCategory>(selected);
    const bool isNoCategory = filter == PromptCategory::all || filter == PromptCategory::favorites ||
                              filter == PromptCategory::recent;
    return isNoCategory ? rawValue(PromptCategory::writing) : selected;
}

}  // namespace

AssetsStudio::AssetsStudio(PromptStore& prompts, Preferences& preferences, RunLoop& runLoop,
                           const ModelTasks& tasks)
    : prompts_(prompts),
      preferences_(preferences),
      runLoop_(runLoop),
      tasks_(tasks),
      customCategories_(CustomCategories::load(preferences)) {
}

Date AssetsStudio::recentFrom() const {
    const auto now = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(runLoop_.wallNow() * 1000));
    return Date{static_cast<double>(now.addDays(-recentDays).toMSecsSinceEpoch()) / 1000};
}

bool AssetsStudio::isInCategory(const StoredPrompt& prompt, Date recentFrom) const {
    const auto filter = fromRawValue<PromptCategory>(selectedCategory);
    if (filter == PromptCategory::all) return true;
    // Two seeds carry the filter's name as their category.
    if (filter == PromptCategory::favorites)
        return prompt.isFavorite || prompt.categoryTag == rawValue(PromptCategory::favorites);
    if (filter == PromptCategory::recent) return prompt.createdAt >= recentFrom;
    return prompt.categoryTag == selectedCategory;
}

std::vector<StoredPrompt> AssetsStudio::inCategory(const std::vector<std::size_t>& positions) const {
    const Date from = recentFrom();
    std::vector<StoredPrompt> found;
    for (const std::size_t position : positions) {
        const StoredPrompt& prompt = prompts_.prompts()[position];
        if (isInCategory(prompt, from)) found.push_back(prompt);
    }
    return found;
}

std::vector<StoredPrompt> AssetsStudio::allFiltered() const {
    const Date from = recentFrom();
    std::vector<StoredPrompt> found;
    std::copy_if(prompts_.prompts().begin(), prompts_.prompts().end(), std::back_inserter(found),
                 [&](const StoredPrompt& prompt) { return isInCategory(prompt, from); });
    return found;
}

std::vector<StoredPrompt> AssetsStudio::filteredPrompts() const {
    return inCategory(prompts_.matches(searchText));
}

bool AssetsStudio::saveNewAsset() {
    StoredPrompt prompt;
    prompt.title = Text::trimmed(draft.title);
    prompt.content = Text::trimmed(draft.content);
    if (prompt.title.isEmpty() || prompt.content.isEmpty()) return false;
    prompt.id = QUuid::createUuid();
    prompt.tags = tagsOf(draft.tagsText);
    prompt.categoryTag = categoryOfNew(selectedCategory);
    prompt.createdAt = Date{runLoop_.wallNow()};
    prompt.updatedAt = prompt.createdAt;
    prompts_.insert(std::move(prompt));
    draft = Draft();
    toast.notify(QStringLiteral("资产已入库"));
    return true;
}

bool AssetsStudio::addCustomCategory(const QString& name, const QString& accentHex) {
    const QString trimmed = Text::trimmed(name);
    if (trimmed.isEmpty()) return false;
    customCategories_.push_back(CustomCategory::made(trimmed, accentHex));
    CustomCategories::save(preferences_, customCategories_);
    toast.notify(QStringLiteral("分类「") + trimmed + QStringLiteral("」已添加"));
    return true;
}

QString AssetsStudio::avgRatingText() const {
    double sum = 0;
    int rated = 0;
    for (const StoredPrompt& prompt : prompts_.prompts()) {
        if (!prompt.userRating) continue;
        sum += *prompt.userRating;
        ++rated;
    }
    return rated == 0 ? QStringLiteral("--") : QString::number(sum / rated, 'f', 1);
}

QString AssetsStudio::recentCountText() const {
    const Date from = recentFrom();
    const auto& prompts = prompts_.prompts();
    return QString::number(std::count_if(prompts.begin(), prompts.end(), [&](const StoredPrompt& prompt) {
        return prompt.createdAt >= from;
    }));
}

QCoro::Task<std::vector<StoredPrompt>> AssetsStudio::runAISearch(QString query) const {
    const auto token = lifetime_.token();
    auto task = tasks_.semanticSearch(std::move(query), prompts_.prompts());
    const std::vector<QUuid> ids = co_await task;
    std::vector<StoredPrompt> found;
    if (!token.alive()) co_return found;
    for (const QUuid& id : ids) {
        if (const StoredPrompt* prompt = prompts_.find(id)) found.push_back(*prompt);
    }
    co_return found;
}

}  // namespace veltrin
