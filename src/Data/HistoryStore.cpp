#include "Data/HistoryStore.h"

#include "Data/RecordSearch.h"
#include "Foundation/Characters.h"

namespace veltrin {
namespace {

struct TypeWord {
    const char16_t* type;
    const char16_t* word;
};
constexpr TypeWord typeWords[] = {{u"translate", u"翻译"}, {u"optimize", u"优化"}, {u"diagnose", u"诊断"},
                                  {u"reverse", u"反推"},   {u"voice", u"语音"},    {u"send", u"发送"}};

}  // namespace

QString HistoryEntry::typeWord() const {
    for (const TypeWord& each : typeWords) {
        if (type == QStringView(each.type)) return QString::fromUtf16(each.word);
    }
    const QString memoryAction = QStringLiteral("memoryAction:");
    if (type.startsWith(memoryAction)) return type.mid(memoryAction.size());
    return QStringLiteral("对话");
}

HistoryStore::HistoryStore(const QString& folder, const RunLoop& runLoop)
    : runLoop_(runLoop), records_(folder, QStringLiteral("history.json"), runLoop) {
}

void HistoryStore::record(const QString& type, const QString& snippet, const QString& appName) {
    records_.insertFirst({QUuid::createUuid(), type, Characters::prefix(snippet, snippetCharacters), appName,
                          Date{runLoop_.wallNow()}},
                         cap);
}

void HistoryStore::clearEntries() {
    records_.changeInMemory([](std::vector<HistoryEntry>& entries) { entries.clear(); });
}

std::vector<HistoryEntry> HistoryStore::search(const QString& text) const {
    return RecordSearch::matching(entries(), text, [](const HistoryEntry& entry, const auto& contains) {
        return contains(entry.snippet) || contains(entry.type) || contains(entry.appName);
    });
}

}  // namespace veltrin
