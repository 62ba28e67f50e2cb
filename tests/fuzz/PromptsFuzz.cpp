#include "Data/PromptCategory.h"
#include "Data/PromptSearchIndex.h"
#include "fuzz/FuzzInput.h"

#include <algorithm>

using namespace veltrin;

namespace {

bool isFoundPlainly(const StoredPrompt& prompt, const QString& lowered) {
    return prompt.title.toLower().contains(lowered) || prompt.content.toLower().contains(lowered) ||
           std::any_of(prompt.tags.begin(), prompt.tags.end(),
                       [&](const QString& tag) { return tag.toLower().contains(lowered); });
}

void checkSearch(const std::vector<StoredPrompt>& prompts, const QString& query) {
    // Between the fields stands U+FFFF, which no user types.
    const QString lowered = query.toLower();
    if (lowered.isEmpty() || lowered.contains(QChar(u'\uFFFF'))) return;
    PromptSearchIndex index;
    index.prepare(prompts);
    const auto found = index.matches(query);
    for (std::size_t i = 0; i < prompts.size(); ++i) {
        const bool isFound = std::binary_search(found.begin(), found.end(), i);
        fuzz::check(isFound == isFoundPlainly(prompts[i], lowered), "a search finds what a plain one finds");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const QString query = fuzz::text(input, 16);
    const QByteArray file = fuzz::rest(input);
    const RecordReading reading{DateStrategy::iso8601, Date{1795255200}};
    if (const auto prompts = readRecords<StoredPrompt>(file, reading)) {
        const auto written = writeRecords(*prompts);
        fuzz::check(written && readRecords<StoredPrompt>(*written, reading) == *prompts,
                    "prompts that were read can be written and read again");
        for (const StoredPrompt& prompt : *prompts)
            fuzz::check(!prompt.sourceLabel().isEmpty(), "every prompt has an origin");
        checkSearch(*prompts, query);
    }
    if (const auto categories = readRecords<CustomCategory>(file)) {
        const auto written = writeRecords(*categories);
        fuzz::check(written && readRecords<CustomCategory>(*written) == *categories,
                    "categories that were read can be written and read again");
    }
    return 0;
}
