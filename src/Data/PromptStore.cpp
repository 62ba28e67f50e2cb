#include "Data/PromptStore.h"

#include "Foundation/Resource.h"
#include "Platform/RunLoop.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {

bool hasId(const StoredPrompt& prompt, const QUuid& id) {
    return prompt.id == id;
}

/// The seed as it stands in the resource: the fields that say what it is.
StoredPrompt seed(const Json& json, Date now) {
    Json record = json;
    record.set(QStringLiteral("id"), uuidText(QUuid::createUuid()));
    return readRecord<StoredPrompt>(record, {DateStrategy::iso8601, now}).value();
}

}  // namespace

PromptStore::PromptStore(const QString& folder, RunLoop& runLoop)
    : runLoop_(runLoop),
      imagesDir_(folder + QStringLiteral("/images")),
      file_(folder, QStringLiteral("prompts.json")),
      prompts_(file_.load(Date{runLoop.wallNow()})) {
    if (prompts_.empty()) seedDefaults();
}

void PromptStore::seedDefaults() {
    const Date now{runLoop_.wallNow()};
    const Json seeds = Resource::json(QStringLiteral("seeds/prompts.json"));
    for (const Json& each : *seeds.array())
        prompts_.push_back(seed(each, now));
    persist();
}

void PromptStore::persist() {
    file_.persist(prompts_);
}

void PromptStore::insert(StoredPrompt prompt) {
    prompts_.insert(prompts_.begin(), std::move(prompt));
    index_.inserted(prompts_.front());
    persist();
    changed.notify();
}

void PromptStore::update(StoredPrompt prompt) {
    const auto found = std::find_if(prompts_.begin(), prompts_.end(),
                                    [&](const StoredPrompt& each) { return hasId(each, prompt.id); });
    if (found == prompts_.end()) return;
    prompt.updatedAt = Date{runLoop_.wallNow()};
    *found = std::move(prompt);
    index_.replaced(static_cast<std::size_t>(found - prompts_.begin()), *found);
    persist();
    changed.notify();
}

void PromptStore::deletePrompt(const QUuid& id) {
    for (std::size_t i = prompts_.size(); i-- > 0;) {
        if (!hasId(prompts_[i], id)) continue;
        prompts_.erase(prompts_.begin() + static_cast<std::ptrdiff_t>(i));
        index_.removed(i);
    }
    persist();
    changed.notify();
}

const StoredPrompt* PromptStore::find(const QUuid& id) const {
    const auto found = std::find_if(prompts_.begin(), prompts_.end(),
                                    [&](const StoredPrompt& each) { return hasId(each, id); });
    return found == prompts_.end() ? nullptr : &*found;
}

std::vector<std::size_t> PromptStore::matches(const QString& query) const {
    prepareSearch();
    return index_.matches(query);
}

std::vector<StoredPrompt> PromptStore::search(const QString& query) const {
    const std::vector<std::size_t> positions = matches(query);
    std::vector<StoredPrompt> found;
    found.reserve(positions.size());
    for (const std::size_t position : positions)
        found.push_back(prompts_[position]);
    return found;
}

std::optional<QUrl> PromptStore::imageURL(const QString& filename) const {
    // A name out of a file that was tampered with must not lead out of the folder.
    if (filename.isEmpty() || filename.contains(u'/')) return std::nullopt;
    const QString path = imagesDir_ + u'/' + filename;
    if (!QFileInfo(path).isFile()) return std::nullopt;
    return QUrl::fromLocalFile(path);
}

}  // namespace veltrin
