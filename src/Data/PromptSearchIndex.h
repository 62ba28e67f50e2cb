#pragma once

#include "Data/StoredPrompt.h"

#include <cstddef>
#include <vector>

namespace veltrin {

/// The lower-cased text of a list of prompts, kept beside it so that a search costs no conversion. Filled on
/// the first search, which for 5,000 prompts takes some milliseconds, or ahead of it by `prepare`; from then
/// on each change of the list is told.
class PromptSearchIndex {
public:
    void prepare(const std::vector<StoredPrompt>& prompts);
    bool isPrepared() const { return prepared_; }

    void inserted(const StoredPrompt& prompt);  ///< at the front
    void replaced(std::size_t position, const StoredPrompt& prompt);
    void removed(std::size_t position);

    /// The positions, ascending, of the prompts whose lower-cased title, content or one of the tags contains
    /// the lower-cased `query`; all of them for an empty one. Only after `prepare`.
    std::vector<std::size_t> matches(const QString& query) const;

private:
    std::vector<QString> texts_;  ///< the fields of a prompt, one after the other
    bool prepared_ = false;
};

}  // namespace veltrin
