#include "Data/PromptStore.h"

#include "Data/SeedRecords.h"

#include <QFileInfo>

#include <limits>
#include <utility>

namespace veltrin {
namespace {

constexpr std::size_t noCap = std::numeric_limits<std::size_t>::max();

}  // namespace

PromptStore::PromptStore(const QString& folder, const RunLoop& runLoop)
    : runLoop_(runLoop),
      imagesDir_(folder + QStringLiteral("/images")),
      records_(folder, QStringLiteral("prompts.json"), runLoop) {
    if (prompts().empty()) seedDefaults();
}

void PromptStore::seedDefaults() {
    records_.change([&](std::vector<StoredPrompt>& prompts) {
        prompts =
            seedRecords<StoredPrompt>(QStringLiteral("seeds/prompts.json"), {}, Date{runLoop_.wallNow()});
    });
}

void PromptStore::insert(StoredPrompt prompt) {
    index_.inserted(prompt);
    records_.insertFirst(std::move(prompt), noCap);
}

void PromptStore::update(StoredPrompt prompt) {
    prompt.updatedAt = Date{runLoop_.wallNow()};
    const StoredPrompt* former = find(prompt.id);
    if (former == nullptr) return;
    index_.replaced(static_cast<std::size_t>(former - prompts().data()), prompt);
    records_.update(prompt.id, [&](StoredPrompt& stored) { stored = prompt; });
}

void PromptStore::deletePrompt(const QUuid& id) {
    for (std::size_t i = prompts().size(); i-- > 0;) {
        if (prompts()[i].id == id) index_.removed(i);
    }
    records_.removeAll(id);
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
        found.push_back(prompts()[position]);
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
