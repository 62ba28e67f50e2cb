#include "AI/TaskAnswers.h"
#include "Foundation/Text.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto count = input.ConsumeIntegralInRange<std::size_t>(0, 5000);
    const QString answer = fuzz::text(input, 8192);
    for (const std::size_t index : TaskAnswers::indices(answer, count))
        fuzz::check(index < count, "an index stands in the list");
    for (const QString& tag : TaskAnswers::tags(answer)) {
        fuzz::check(!tag.isEmpty() && tag == Text::trimmed(tag), "a tag is a trimmed text");
        fuzz::check(!tag.contains(u',') && !tag.contains(QStringLiteral("```")), "a tag is plain");
    }
    const Date now{1795255200};
    if (const auto prompt = TaskAnswers::prompt(answer, now)) {
        fuzz::check(!prompt->id.isNull() && prompt->source == u"ai", "a prompt is new and the model's");
        const auto written = writeRecord(*prompt);
        fuzz::check(written && readRecord<StoredPrompt>(*written) == *prompt, "a prompt survives its file");
    }
    const auto action = TaskAnswers::memoryAction(answer, QStringLiteral("描述"), now);
    fuzz::check(readRecord<MemoryActionPreset>(writeRecord(action).value()) == action,
                "a drafted action survives its file");
    const auto term = TaskAnswers::dictionaryTerm(answer, QStringLiteral("描述"), now);
    fuzz::check(readRecord<DictionaryTerm>(writeRecord(term).value()) == term,
                "a drafted term survives its file");
    return 0;
}
