#include "Data/PromptSearchIndex.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <string_view>

namespace veltrin {
namespace {

/// Stands between the fields, so that no match reaches over two of them: a code point that is no character.
constexpr QChar fieldEnd{u'\uFFFF'};

QString searchText(const StoredPrompt& prompt) {
    QString text = prompt.title + fieldEnd + prompt.content;
    for (const QString& tag : prompt.tags)
        text += fieldEnd + tag;
    return text.toLower();
}

std::u16string_view units(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

/// Whether `needle`, which is not empty, stands in `text`. Looks at its first and last unit in whole blocks
/// without a branch, which the compiler turns into vector instructions: QString::contains takes up to fifty
/// times as long, too long for every key stroke.
bool contains(std::u16string_view text, std::u16string_view needle) {
    constexpr std::size_t block = 64;
    if (text.size() < needle.size()) return false;
    const std::size_t last = needle.size() - 1;
    const std::size_t starts = text.size() - last;
    std::size_t start = 0;
    for (; start + block <= starts; start += block) {
        const char16_t* first = text.data() + start;
        std::uint16_t candidates = 0;
        for (std::size_t i = 0; i < block; ++i)
            candidates = static_cast<std::uint16_t>(
                candidates |
                static_cast<std::uint16_t>(static_cast<std::uint16_t>(first[i] == needle[0]) &
                                           static_cast<std::uint16_t>(first[i + last] == needle[last])));
        if (candidates == 0) continue;
        for (std::size_t i = 0; i < block; ++i) {
            if (text.substr(start + i, needle.size()) == needle) return true;
        }
    }
    for (; start < starts; ++start) {
        if (text.substr(start, needle.size()) == needle) return true;
    }
    return false;
}

std::ptrdiff_t offset(std::size_t position) {
    return static_cast<std::ptrdiff_t>(position);
}

}  // namespace

void PromptSearchIndex::prepare(const std::vector<StoredPrompt>& prompts) {
    if (prepared_) return;
    prepared_ = true;
    texts_.clear();
    texts_.reserve(prompts.size());
    for (const StoredPrompt& prompt : prompts)
        texts_.push_back(searchText(prompt));
}

void PromptSearchIndex::inserted(const StoredPrompt& prompt) {
    if (prepared_) texts_.insert(texts_.begin(), searchText(prompt));
}

void PromptSearchIndex::replaced(std::size_t position, const StoredPrompt& prompt) {
    if (prepared_) texts_[position] = searchText(prompt);
}

void PromptSearchIndex::removed(std::size_t position) {
    if (prepared_) texts_.erase(texts_.begin() + offset(position));
}

std::vector<std::size_t> PromptSearchIndex::matches(const QString& query) const {
    std::vector<std::size_t> found;
    const QString lowered = query.toLower();
    if (lowered.isEmpty()) {
        found.resize(texts_.size());
        std::iota(found.begin(), found.end(), std::size_t{0});
        return found;
    }
    if (lowered.contains(fieldEnd)) return found;
    const std::u16string_view needle = units(lowered);
    for (std::size_t i = 0; i < texts_.size(); ++i) {
        if (contains(units(texts_[i]), needle)) found.push_back(i);
    }
    return found;
}

}  // namespace veltrin
