#pragma once

#include "Data/JSONStore.h"
#include "Data/PromptSearchIndex.h"
#include "Foundation/Observers.h"

#include <QUrl>

namespace veltrin {

class RunLoop;

/// The prompt library: every prompt worth keeping ends here, newest first, in "prompts.json". Fails silently,
/// as JSONStore does. Main thread.
class PromptStore {
public:
    /// Loads the file in `folder`, which need not exist; an empty library gets its seeds at once.
    PromptStore(const QString& folder, RunLoop& runLoop);
    PromptStore(const PromptStore&) = delete;
    PromptStore& operator=(const PromptStore&) = delete;

    const std::vector<StoredPrompt>& prompts() const { return prompts_; }
    /// After every change of `prompts`.
    Observers<> changed;

    /// Puts a new prompt in front.
    void insert(StoredPrompt prompt);
    /// Replaces the prompt with the same id and dates the change now; an unknown id does nothing.
    void update(StoredPrompt prompt);
    /// Removes every prompt with that id.
    void deletePrompt(const QUuid& id);
    /// The prompt with that id; null when there is none. Valid until the next change.
    const StoredPrompt* find(const QUuid& id) const;

    /// The prompts whose title, content or one of the tags contains `query`, in any case; all for an empty
    /// one. Takes well below a millisecond for 5,000 prompts once the index is there.
    std::vector<StoredPrompt> search(const QString& query) const;
    /// The same as ascending positions in `prompts`.
    std::vector<std::size_t> matches(const QString& query) const;
    /// Makes the index of the search ahead of the first one, as when a search box opens.
    void prepareSearch() const { index_.prepare(prompts_); }

    /// The folder of the prompts' pictures. Need not exist.
    QString imagesDir() const { return imagesDir_; }
    /// Where a picture stands; none when there is no such file in the folder.
    std::optional<QUrl> imageURL(const QString& filename) const;

private:
    void seedDefaults();
    void persist();

    RunLoop& runLoop_;
    QString imagesDir_;
    JSONStore<StoredPrompt> file_;
    std::vector<StoredPrompt> prompts_;
    mutable PromptSearchIndex index_;
};

}  // namespace veltrin
