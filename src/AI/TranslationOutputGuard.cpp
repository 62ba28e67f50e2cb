#include "AI/TranslationOutputGuard.h"

#include "Foundation/Text.h"

#include <QSet>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <initializer_list>

namespace veltrin::TranslationOutputGuard {
namespace {

constexpr double sameTextSimilarity = 0.92;

/// Closed ranges of code points. All lie below U+10000, so a UTF-16 unit is as good as a scalar.
struct Range {
    char16_t first;
    char16_t last;
};

bool containsAnyOf(QStringView text, std::initializer_list<Range> ranges) {
    return std::any_of(text.begin(), text.end(), [&](QChar c) {
        return std::any_of(ranges.begin(), ranges.end(),
                           [&](Range range) { return c >= range.first && c <= range.last; });
    });
}

bool containsHan(QStringView text) {
    return containsAnyOf(text, {{u'\u4E00', u'\u9FFF'}});
}

bool containsLatinLetter(QStringView text) {
    return containsAnyOf(text, {{u'A', u'Z'}, {u'a', u'z'}});
}

bool matchesTargetLanguage(QStringView output, TranslationLanguage target) {
    switch (target) {
        case TranslationLanguage::automatic:
            return true;
        case TranslationLanguage::chinese:
            return containsHan(output);
        case TranslationLanguage::english:
        case TranslationLanguage::french:
        case TranslationLanguage::german:
        case TranslationLanguage::spanish:
        case TranslationLanguage::portuguese:
        case TranslationLanguage::italian:
        case TranslationLanguage::vietnamese:
            return containsLatinLetter(output);
        case TranslationLanguage::japanese:
            return containsAnyOf(output, {{u'\u4E00', u'\u9FFF'}, {u'\u3040', u'\u30FF'}});
        case TranslationLanguage::korean:
            return containsAnyOf(output, {{u'\uAC00', u'\uD7AF'}, {u'\u1100', u'\u11FF'}});
        case TranslationLanguage::russian:
            return containsAnyOf(output, {{u'\u0400', u'\u04FF'}});
        case TranslationLanguage::arabic:
            return containsAnyOf(output, {{u'\u0600', u'\u06FF'}});
        case TranslationLanguage::thai:
            return containsAnyOf(output, {{u'\u0E00', u'\u0E7F'}});
    }
    return true;
}

constexpr QStringView quotes = u"\"'\u201C\u201D\u2018\u2019`";

/// The text without what a model may change in passing: quotes around it, case, the width of white space.
QString normalized(const QString& text) {
    const QString core = Text::trimmed(Text::trimmed(text), quotes);
    QString result;
    result.reserve(core.size());
    bool inSpace = false;
    for (const QChar c : core) {
        const bool space = c.isSpace();
        if (!space) {
            result += c;
        } else if (!inSpace) {
            result += u' ';
        }
        inSpace = space;
    }
    return result.toLower();
}

QSet<QStringView> distinctCharacters(const QString& text) {
    QSet<QStringView> characters;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end > 0; end = finder.toNextBoundary()) {
        characters.insert(QStringView(text).mid(start, end - start));
        start = end;
    }
    return characters;
}

/// Shared distinct characters over the larger set of them; 0 when either text has none.
double similarity(const QString& a, const QString& b) {
    const QSet<QStringView> ofA = distinctCharacters(a);
    const QSet<QStringView> ofB = distinctCharacters(b);
    if (ofA.isEmpty() || ofB.isEmpty()) return 0;
    const auto shared = std::count_if(ofA.begin(), ofA.end(), [&](QStringView c) { return ofB.contains(c); });
    return static_cast<double>(shared) / static_cast<double>(std::max(ofA.size(), ofB.size()));
}

}  // namespace

bool needsRetry(const QString& source, const QString& output,
                std::optional<TranslationLanguage> targetLanguage) {
    const QString normalSource = normalized(source);
    const QString normalOutput = normalized(output);
    if (normalSource.isEmpty() || normalOutput.isEmpty() || normalSource == normalOutput) return true;
    if (targetLanguage) return !matchesTargetLanguage(output, *targetLanguage);
    if (containsHan(source)) {
        if (containsLatinLetter(output)) return false;
    } else {
        if (!containsLatinLetter(source)) return false;
        if (containsHan(output)) return false;
    }
    return similarity(normalSource, normalOutput) > sameTextSimilarity;
}

}  // namespace veltrin::TranslationOutputGuard
