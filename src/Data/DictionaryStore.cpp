#include "Data/DictionaryStore.h"

#include "Data/RecordSearch.h"
#include "Data/SeedRecords.h"
#include "Foundation/Text.h"

#include <algorithm>

namespace veltrin {
namespace {

QString promptLine(const DictionaryTerm& term) {
    QString line = QStringLiteral("- ") + term.term + QStringLiteral("：") + term.meaning;
    if (!term.aliases.isEmpty()) line += QStringLiteral("；别名：") + term.aliases.join(QStringLiteral("、"));
    if (!term.context.isEmpty()) line += QStringLiteral("；语境：") + term.context;
    return line;
}

}  // namespace

DictionaryStore::DictionaryStore(const QString& folder, const RunLoop& runLoop)
    : runLoop_(runLoop), records_(folder, QStringLiteral("dictionary_terms.json"), runLoop) {
    if (!terms().empty()) return;
    records_.change([&](std::vector<DictionaryTerm>& terms) {
        terms = seedRecords<DictionaryTerm>(QStringLiteral("seeds/dictionary_terms.json"),
                                            {{QStringLiteral("source"), Json("default")}}, now());
    });
}

void DictionaryStore::add(DictionaryTerm term) {
    term.updatedAt = now();
    records_.change([&](std::vector<DictionaryTerm>& terms) {
        const auto alike = std::find_if(terms.begin(), terms.end(), [&](const DictionaryTerm& each) {
            return each.term.compare(term.term, Qt::CaseInsensitive) == 0;
        });
        if (alike == terms.end()) {
            terms.insert(terms.begin(), std::move(term));
        } else {
            *alike = std::move(term);
        }
    });
}

bool DictionaryStore::addManual(const QString& term, const QString& meaning) {
    DictionaryTerm added;
    added.id = QUuid::createUuid();
    added.term = Text::trimmed(term);
    added.meaning = Text::trimmed(meaning);
    added.source = QStringLiteral("manual");
    added.createdAt = now();
    if (added.term.isEmpty() || added.meaning.isEmpty()) return false;
    add(std::move(added));
    return true;
}

void DictionaryStore::update(const DictionaryTerm& term) {
    records_.update(term.id, [&](DictionaryTerm& each) {
        each = term;
        each.updatedAt = now();
    });
}

std::vector<DictionaryTerm> DictionaryStore::search(const QString& query) const {
    return RecordSearch::matching(terms(), query, [](const DictionaryTerm& term, const auto& contains) {
        return contains(term.term) || contains(term.meaning) || contains(term.context) ||
               std::any_of(term.aliases.begin(), term.aliases.end(), contains);
    });
}

QString DictionaryStore::contextPrompt(int limit) const {
    QStringList lines;
    for (const DictionaryTerm& term : terms()) {
        if (lines.size() >= limit) break;
        lines << promptLine(term);
    }
    return lines.join(u'\n');
}

}  // namespace veltrin
