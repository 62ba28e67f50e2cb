#pragma once

#include <QString>

#include <initializer_list>
#include <span>

/// Small text rules that several rooms share.
namespace veltrin::Text {

/// `text` without white space and new lines at both ends.
QString trimmed(QStringView text);

/// True when nothing is left after `trimmed`.
bool isBlank(QStringView text);

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

}  // namespace veltrin::Text
