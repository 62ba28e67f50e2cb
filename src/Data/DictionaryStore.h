#pragma once

#include "Data/StoredRecords.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace veltrin {

/// A word of the user's own, and how it is to be read.
struct DictionaryTerm {
    QUuid id;
    QString term;
    QString meaning;
    QString context;      ///< where it applies; may be empty
    QStringList aliases;  ///< other spellings
    QString source;       ///< "default" for the seed, "manual" for what the user adds
    Date createdAt;
    Date updatedAt;
    friend bool operator==(const DictionaryTerm&, const DictionaryTerm&) = default;
};
template <>
inline constexpr auto recordFields<DictionaryTerm> =
    std::tuple{required(u"id", &DictionaryTerm::id),
               required(u"term", &DictionaryTerm::term),
               required(u"meaning", &DictionaryTerm::meaning),
               required(u"context", &DictionaryTerm::context),
               required(u"aliases", &DictionaryTerm::aliases),
               required(u"source", &DictionaryTerm::source),
               required(u"createdAt", &DictionaryTerm::createdAt),
               required(u"updatedAt", &DictionaryTerm::updatedAt)};

/// The user's private dictionary, newest first, in "dictionary_terms.json". An empty one starts with the term
/// "ESC", also after the user has deleted every term and started anew.
class DictionaryStore {
public:
    /// `folder` is the data directory.
    DictionaryStore(const QString& folder, const RunLoop& runLoop);

    const std::vector<DictionaryTerm>& terms() const { return records_.all(); }
    Observers<>& changed() { return records_.changed; }

    /// Puts a term first, or in the place of the first one that is spelled alike whatever the case; the
    /// former identifier then goes with the former term.
    void add(DictionaryTerm term);
    /// The add row of the dictionary view: both texts are trimmed; false, and nothing added, when one is
    /// empty.
    bool addManual(const QString& term, const QString& meaning);
    /// Replaces the term of that identifier; an unknown one does nothing.
    void update(const DictionaryTerm& term);
    void deleteTerm(const QUuid& id) { records_.removeAll(id); }

    /// The terms that contain `query` in word, meaning, context or an alias, whatever the case.
    std::vector<DictionaryTerm> search(const QString& query) const;
    /// The first `limit` terms as lines of a prompt; empty when there are none. First by position, not by
    /// relevance.
    QString contextPrompt(int limit) const;

private:
    Date now() const { return {runLoop_.wallNow()}; }

    const RunLoop& runLoop_;
    StoredRecords<DictionaryTerm> records_;
};

}  // namespace veltrin
