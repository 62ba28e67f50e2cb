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

QString trimmed(QStringView text, QStringView characters) {
    while (!text.isEmpty() && characters.contains(text.front()))
        text = text.mid(1);
    while (!text.isEmpty() && characters.contains(text.back()))
        text.chop(1);
    return text.toString();
}

bool hasLineBreak(QStringView text) {
    return std::any_of(text.begin(), text.end(), isLineBreak);
}

QString lineBreaksAsBlanks(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    for (QChar& c : text) {
        if (isLineBreak(c)) c = u' ';
    }
    return text;
}

QString singleLine(const QString& text) {
    return lineBreaksAsBlanks(text).replace(u'\t', u' ').trimmed();
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

QString filled(const QString& form, std::initializer_list<std::pair<QString, QString>> values) {
    const QString open = QStringLiteral("{{");
    const QString close = QStringLiteral("}}");
    QString result;
    qsizetype at = 0;
    for (;;) {
        const qsizetype start = form.indexOf(open, at);
        const qsizetype end = start < 0 ? -1 : form.indexOf(close, start);
        if (end < 0) return result + form.mid(at);
        const QStringView name = QStringView(form).mid(start + 2, end - start - 2);
        const auto value = std::find_if(values.begin(), values.end(),
                                        [name](const auto& each) { return each.first == name; });
        result += QStringView(form).mid(at, start - at);
        if (value == values.end()) {
            result += open;
            at = start + 2;
        } else {
            result += value->second;
            at = end + 2;
        }
    }
}

}  // namespace veltrin::Text
