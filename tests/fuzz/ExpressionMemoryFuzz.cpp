#include "Expression/ExpressionMemoryStore.h"
#include "Foundation/MVPLog.h"
#include "fuzz/FuzzInput.h"
#include "support/fake/FakePreferences.h"

using namespace veltrin;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    MVPLog::setPrinting(false);
    MVPLog::setLogURL(QStringLiteral("/dev/null"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FakePreferences preferences;
    preferences.values[ExpressionMemoryStore::key] = fuzz::bytes(data, size);
    ExpressionMemoryStore store(preferences);
    const auto before = store.load();

    ExpressionMemoryEvent event;
    event.trigger = QStringLiteral("doubleSpace");
    event.inputKind = QStringLiteral("text");
    event.domain = QStringLiteral("general");
    event.sourcePreview = QStringLiteral("你好");
    event.createdAt = 1735689600;
    store.record(event);
    const auto after = store.load();
    fuzz::check(!after.empty() && after.front() == event, "the newest event stands first");
    fuzz::check(after.size() <= static_cast<std::size_t>(ExpressionMemoryStore::limit),
                "the memory is bounded");
    fuzz::check(after.size() > std::min<std::size_t>(before.size(), ExpressionMemoryStore::limit - 1),
                "recording forgets nothing that fits");
    return 0;
}
