#include "ExternalAccess/ExternalTextContext.h"
#include "Foundation/Characters.h"
#include "Foundation/Text.h"
#include "fuzz/FuzzInput.h"

#include <algorithm>

using namespace veltrin;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto budget = input.ConsumeIntegralInRange<qsizetype>(-10, 2000);
    std::optional<QString> selected;
    if (input.ConsumeBool()) selected = fuzz::text(input, 512);
    std::optional<TextRange> range;
    if (input.ConsumeBool()) {
        range.emplace();
        range->location = input.ConsumeIntegral<int>();
        range->length = input.ConsumeIntegral<int>();
    }
    const QString full = fuzz::text(input, 4096);

    const auto context = ExternalTextContext::build(full, selected, range, budget);
    fuzz::check(context.fullTextLength == Characters::count(full), "the length is that of the full text");
    const bool whole = !selected || Text::isBlank(*selected);
    fuzz::check(context.focusText == (whole ? full : *selected),
                "the passage is the selection, else everything");
    const qsizetype side = std::max<qsizetype>(std::max<qsizetype>(budget, 0) / 2, 60) + 3;
    fuzz::check(
        Characters::count(context.contextBefore) <= side && Characters::count(context.contextAfter) <= side,
        "the surroundings keep to the budget");
    fuzz::check(context == ExternalTextContext::build(full, selected, range, budget), "the same twice");
    context.promptBlock();
    return 0;
}
