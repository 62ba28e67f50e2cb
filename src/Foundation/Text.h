#pragma once

#include <QString>

#include <initializer_list>
#include <span>
#include <utility>

/// Small text rules that several rooms share.
namespace veltrin::Text {

/// `text` without white space and new lines at both ends.
QString trimmed(QStringView text);

/// `text` without any of `characters` at both ends.
QString trimmed(QStringView text, QStringView characters);

/// True when nothing is left after `trimmed`.
bool isBlank(QStringView text);

/// True for the units that end a line: LF, VT, FF, CR, NEL and the Unicode line and paragraph separators.
constexpr bool isLineBreak(QChar c) {
    return (c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == u'\u2028' || c == u'\u2029';
}

/// True when `text` has more than one line, or a line break at its end.
bool hasLineBreak(QStringView text);

/// `text` with one blank for each line break; CR LF is one.
QString lineBreaksAsBlanks(QString text);

/// `text` on one line: every line break and tab becomes a blank, then the ends are trimmed.
QString singleLine(const QString& text);

/// `singleLine(text)`, and when that has more than `characters` characters, its first `characters` followed
/// by
/// "...".
QString preview(const QString& text, qsizetype characters);

/// `text` cut to its first `characters` characters plus "..." when it has more.
QString elided(const QString& text, qsizetype characters);

/// True when `text` contains any of `words`, compared as they stand.
bool containsAny(const QString& text, std::span<const char16_t* const> words,
                 Qt::CaseSensitivity sensitivity = Qt::CaseSensitive);

/// `form` with every "{{name}}" replaced by the value of that name. Values are put in as they are: what looks
/// like a place in a value stays as it stands, and so does a place without a value.
QString filled(const QString& form, std::initializer_list<std::pair<QString, QString>> values);

}  // namespace veltrin::Text
