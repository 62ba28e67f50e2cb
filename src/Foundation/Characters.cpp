#include "Foundation/Characters.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <iterator>

namespace veltrin::Characters {
namespace {

/// Below this code point nothing combines but CR LF, so units are characters.
constexpr char16_t firstCombining = 0x0300;

bool isSimple(QStringView text) {
    return std::all_of(text.begin(), text.end(), [](QChar c) {
        return c.unicode() < firstCombining && c != u'\r' && c.unicode() != 0xAD;
    });
}

struct Units {
    char16_t first;
    char16_t last;
};

/// Letters, ideographs and punctuation that never belong to the same character as another of these. What may
/// be joined to them from behind, marks for one, is not among them.
constexpr Units solidUnits[] = {
    {0x4E00, 0x9FFF}, {0x3001, 0x3029}, {0xFF01, 0xFF60}, {0x3041, 0x3096},
    {0x30A1, 0x30FA}, {0xAC00, 0xD7A3}, {0x0370, 0x0482}, {0x048A, 0x0556},
    {0x1E00, 0x1FFF}, {0x2010, 0x2027}, {0x2030, 0x205E}, {0x3400, 0x4DBF},
};

/// Scripts whose characters are told from each other by what stands around them; the last of them are the
/// first halves of U+11000 to U+11FFF, where some of these scripts keep their old signs.
constexpr Units contextualUnits[] = {
    {0x0590, 0x10FF}, {0x1200, 0x1DFF}, {0xA000, 0xABFF}, {0xFB1D, 0xFDFF}, {0xD804, 0xD807},
};

template <std::size_t N>
bool isIn(const Units (&ranges)[N], QChar c) {
    return std::any_of(std::begin(ranges), std::end(ranges), [unit = c.unicode()](const Units& range) {
        return unit >= range.first && unit <= range.last;
    });
}

bool isContextual(QChar c) {
    return c.unicode() >= firstCombining && isIn(contextualUnits, c);
}

bool isSolid(QChar c) {
    const char16_t unit = c.unicode();
    return unit < firstCombining ? unit != u'\r' && unit != 0xAD : isIn(solidUnits, c);
}

qsizetype countByBoundaries(QStringView text) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype characters = 0;
    while (finder.toNextBoundary() > 0)
        ++characters;
    return characters;
}

/// UTF-16 position after `characters` characters, or the text's end.
qsizetype positionAfter(QStringView text, qsizetype characters) {
    if (characters <= 0) return 0;
    if (isSimple(text)) return std::min(characters, text.size());
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype position = 0;
    for (qsizetype i = 0; i < characters; ++i) {
        const qsizetype next = finder.toNextBoundary();
        if (next < 0) return text.size();
        position = next;
    }
    return position;
}

}  // namespace

qsizetype count(QStringView text) {
    if (isSimple(text)) return text.size();
    if (std::any_of(text.begin(), text.end(), isContextual)) return countByBoundaries(text);
    // Between two solid units there is always a boundary; only what lies between such places is looked at
    // closely, since that takes some fifty times as long.
    qsizetype characters = 0;
    qsizetype from = 0;
    bool isHere = isSolid(text.front());
    for (qsizetype next = 1; next <= text.size(); ++next) {
        const bool isNext = next == text.size() || isSolid(text[next]);
        if (isNext && (isHere || next == text.size())) {
            const bool isOne = isHere && next - from == 1;
            characters += isOne ? 1 : countByBoundaries(text.sliced(from, next - from));
            from = next;
        }
        isHere = isNext;
    }
    return characters;
}

QString prefix(const QString& text, qsizetype characters) {
    return text.left(positionAfter(text, characters));
}

QString suffix(const QString& text, qsizetype characters) {
    if (characters <= 0) return {};
    if (isSimple(text)) return text.right(characters);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.toEnd();
    qsizetype position = text.size();
    for (qsizetype i = 0; i < characters; ++i) {
        const qsizetype previous = finder.toPreviousBoundary();
        if (previous < 0) return text;
        position = previous;
    }
    return text.mid(position);
}

QString containing(const QString& text, qsizetype unit) {
    if (unit < 0 || unit >= text.size()) return {};
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(unit);
    qsizetype start = unit;
    if (!finder.isAtBoundary()) start = std::max<qsizetype>(finder.toPreviousBoundary(), 0);
    finder.setPosition(start);
    const qsizetype end = finder.toNextBoundary();
    return text.mid(start, (end < 0 ? text.size() : end) - start);
}

}  // namespace veltrin::Characters
