#include "Data/ClipboardStore.h"
#include "Data/DictionaryStore.h"
#include "Data/HistoryStore.h"
#include "Data/MemoryActionPreset.h"
#include "Data/StoredPrompt.h"
#include "Data/VoiceRecordStore.h"
#include "Session/UserProfile.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

namespace {

/// What a store reads it can write, and then reads the same.
template <Record R>
void survive(const QByteArray& file) {
    const auto records = readRecords<R>(file);
    if (!records) return;
    const auto written = writeRecords(*records);
    fuzz::check(written.has_value(), "what was read can be written");
    fuzz::check(readRecords<R>(*written) == records, "what was written reads as the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray file = fuzz::bytes(data, size);
    survive<HistoryEntry>(file);
    survive<DictionaryTerm>(file);
    survive<ClipboardEntry>(file);
    survive<MemoryActionPreset>(file);
    survive<VoiceRecord>(file);
    survive<StoredPrompt>(file);
    survive<TrackedBehavior>(file);
    survive<UserProfile>(file);
    return 0;
}
