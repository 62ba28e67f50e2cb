#pragma once

#include "Data/DictionaryStore.h"
#include "Data/MemoryActionPreset.h"
#include "Data/StoredPrompt.h"

#include <cstddef>
#include <vector>

/// Reads the answers of the model's tasks, which are never what was asked for. Nothing here throws.
namespace veltrin::TaskAnswers {

/// The numbers below `count` in a list as "[0, 2]", in the answer's order. Read without JSON: fences are cut
/// out, and what is no decimal integer is passed over.
std::vector<std::size_t> indices(const QString& answer, std::size_t count);

/// The tags of a list as `["写作", "产品"]`. Read without JSON too, so that quotes of any kind do.
QStringList tags(const QString& answer);

/// The prompt in the object that begins at the answer's first brace, with a new id and dated `now`; none when
/// it has no title or no content.
std::optional<StoredPrompt> prompt(const QString& answer, Date now);

/// The action in an answer that is one JSON object and nothing else; a member that is missing or no string
/// has its default. Any other answer gives an action whose instruction is `description`. New, and dated
/// `now`.
MemoryActionPreset memoryAction(const QString& answer, const QString& description, Date now);

/// The same for a term, whose word is else the beginning of `description`.
DictionaryTerm dictionaryTerm(const QString& answer, const QString& description, Date now);

}  // namespace veltrin::TaskAnswers
