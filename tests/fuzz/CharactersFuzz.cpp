#include "Foundation/Characters.h"
#include "Foundation/Text.h"
#include "fuzz/FuzzInput.h"

#include <algorithm>

using namespace veltrin;

namespace {

/// Qt tells the characters of these scripts by their neighbours, and then sees other boundaries all over the
/// text, so that a part of it need not have as many characters as it had within the whole.
bool hasScriptWithRulesOfItsOwn(const QString& text) {
    return std::ranges::any_of(text, [](QChar c) {
        const char16_t unit = c.unicode();
        return (unit >= 0x0590 && unit <= 0x1DFF) || (unit >= 0xA000 && unit <= 0xABFF) ||
               (unit >= 0xFB1D && unit <= 0xFDFF) || (unit >= 0xD804 && unit <= 0xD807);
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto wanted = input.ConsumeIntegralInRange<qsizetype>(-2, 64);
    const QString text = fuzz::text(input, 4096);
    const qsizetype count = Characters::count(text);
    const qsizetype expected = std::clamp<qsizetype>(wanted, 0, count);

    const QString prefix = Characters::prefix(text, wanted);
    const QString suffix = Characters::suffix(text, wanted);
    fuzz::check(text.startsWith(prefix), "a prefix stands at the start");
    fuzz::check(hasScriptWithRulesOfItsOwn(text) || Characters::count(prefix) == expected,
                "a prefix has its characters");
    fuzz::check(text.endsWith(suffix), "a suffix stands at the end");
    fuzz::check(Characters::prefix(text, count - expected) + Characters::suffix(text, expected) == text,
                "prefix and suffix make up the text");
    fuzz::check(Characters::containing(text, text.size()).isEmpty(), "no character past the end");
    if (!text.isEmpty()) {
        const qsizetype unit = std::abs(wanted) % text.size();
        fuzz::check(text.contains(Characters::containing(text, unit)), "a character is part of its text");
    }
    const QString preview = Text::preview(text, 20);
    fuzz::check(!preview.contains(u'\n') && !preview.contains(u'\t'), "a preview is one line");
    return 0;
}
