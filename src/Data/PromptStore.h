#pragma once

#include "Data/PromptSearchIndex.h"
#include "Data/StoredRecords.h"

#include <QUrl>

namespace veltrin {

/// The prompt library: every prompt worth keeping ends here, newest first, in "prompts.json". Fails silently,
/// as JSONStore does. Main thread.
class PromptStore {
public:
    /// Loads the file in `folder`, which need not exist; an empty library gets its seeds at once.
    PromptStore(const QString& folder, const RunLoop& runLoop);

    const std::vector<StoredPrompt>& prompts() const { return records_.all(); }
    Observers<>& changed() { return records_.changed; }

    /// Puts a new prompt in front.
    void insert(StoredPrompt prompt);
    /// Replaces the prompt with the same id and dates the change now; an unknown id does nothing.
    void update(StoredPrompt prompt);
    /// Removes every prompt with that id.
    void deletePrompt(const QUuid& id);
    /// The prompt with that id; null when there is none. Valid until the next change.
    const StoredPrompt* find(const QUuid& id) const { return records_.find(id); }

    /// The prompts whose title, content or one of the tags contains `query`, in any case; all for an empty
    /// one. Takes well below a millisecond for 5,000 prompts once the index is there.
    std::vector<StoredPrompt> search(const QString& query) const;
    /// The same as ascending positions in `prompts`.
    std::vector<std::size_t> matches(const QString& query) const;
    /// Makes the index of the search ahead of the first one, as when a search box opens.
    void prepareSearch() const { index_.prepare(prompts()); }

    /// The folder of the prompts' pictures. Need not exist.
    QString imagesDir() const { return imagesDir_; }
    /// Where a picture stands; none when there is no such file in the folder.
    std::optional<QUrl> imageURL(const QString& filename) const;

private:
    void seedDefaults();

    const RunLoop& runLoop_;
    QString imagesDir_;
    StoredRecords<StoredPrompt> records_;
    mutable PromptSearchIndex index_;
};

}  // namespace veltrin
