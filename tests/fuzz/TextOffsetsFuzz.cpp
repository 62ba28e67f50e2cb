#include "Platform/Linux/AtSpi/TextOffsets.h"
#include "fuzz/FuzzInput.h"

#include <algorithm>

using namespace veltrin;
using namespace veltrin::AtSpi;

namespace {

/// Half the numbers near the text, where the edges are, the others anywhere.
qint64 number(FuzzedDataProvider& input) {
    return input.ConsumeBool() ? input.ConsumeIntegralInRange<qint64>(-3, 600)
                               : input.ConsumeIntegral<qint64>();
}

bool cutsPair(const QString& text, qint64 at) {
    return at > 0 && at < text.size() && text[at].isLowSurrogate() && text[at - 1].isHighSurrogate();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const auto toolkit = static_cast<Toolkit>(input.ConsumeIntegralInRange(0, 5));
    const qint64 count = number(input);
    const OffsetRange reported{number(input), number(input)};
    const TextRange range{number(input), number(input)};
    const qint64 offset = number(input);
    const QString raw = fuzz::text(input, 2048);

    const TextOffsets offsets(raw, count, toolkit);
    const qint64 units = offsets.text().size();
    const qint64 utf16 = offsets.toUtf16(offset);
    fuzz::check(utf16 >= 0 && utf16 <= units, "an offset lies within the text");
    fuzz::check(!offsets.countsCodePoints() || !cutsPair(offsets.text(), utf16),
                "a code point's offset never cuts a pair");
    const qint64 back = offsets.toToolkit(utf16);
    fuzz::check(back >= 0 && back <= offsets.length(), "and so does the toolkit's");
    fuzz::check(offsets.toUtf16(back) == utf16 || cutsPair(offsets.text(), utf16), "there and back again");

    const TextRange converted = offsets.toUtf16(reported);
    fuzz::check(
        converted.location >= 0 && converted.length >= 0 && converted.location + converted.length <= units,
        "a range lies within the text");
    const OffsetRange out = offsets.toToolkit(range);
    fuzz::check(out.start >= 0 && out.start <= out.end && out.end <= offsets.length(),
                "a toolkit's range is ordered and lies within its text");
    const OffsetRange actual = offsets.selection(reported);
    fuzz::check(actual.start <= actual.end, "a selection is ordered");
    offsets.reportOf(actual);
    return 0;
}
