#include "Foundation/Text.h"

#include "Foundation/Characters.h"

#include <algorithm>

namespace veltrin::Text {

QString trimmed(QStringView text) {
    return text.trimmed().toString();
}

bool isBlank(QStringView text) {
    return text.trimmed().isEmpty();
}

QString singleLine(const QString& text) {
    QString line = text;
    line.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    for (QChar& c : line) {
        if (c == u'\n' || c == u'\r' || c == u'\t' || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            c = u' ';
    }
    return line.trimmed();
}

QString preview(const QString& text, qsizetype characters) {
    return elided(singleLine(text), characters);
}

QString elided(const QString& text, qsizetype characters) {
    const QString cut = Characters::prefix(text, characters);
    return cut.size() == text.size() ? text : cut + QStringLiteral("...");
}

bool containsAny(const QString& text, std::span<const char16_t* const> words,
                 Qt::CaseSensitivity sensitivity) {
    return std::any_of(words.begin(), words.end(),
                       [&](const char16_t* word) { return text.contains(QStringView(word), sensitivity); });
}

}  // namespace veltrin::Text
