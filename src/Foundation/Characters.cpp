#include "Foundation/Characters.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace veltrin::Characters {
namespace {

/// Below this code point nothing combines but CR LF, so units are characters.
constexpr char16_t firstCombining = 0x0300;

bool isSimple(QStringView text) {
    return std::all_of(text.begin(), text.end(), [](QChar c) {
        return c.unicode() < firstCombining && c != u'\r' && c.unicode() != 0xAD;
    });
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
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype characters = 0;
    while (finder.toNextBoundary() > 0)
        ++characters;
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
