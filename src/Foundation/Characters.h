#pragma once

#include <QString>

/// User-perceived characters (extended grapheme clusters). Every length shown to the user, every budget and
/// every cut goes through here; QString::size() counts UTF-16 units and is for offsets only.
namespace veltrin::Characters {

/// Number of characters.
qsizetype count(QStringView text);

/// The first `characters` characters; the whole text when it has no more. Negative counts as 0.
QString prefix(const QString& text, qsizetype characters);

/// The last `characters` characters; the whole text when it has no more. Negative counts as 0.
QString suffix(const QString& text, qsizetype characters);

/// The character that covers the UTF-16 unit at `unit`; empty when `unit` is out of range.
QString containing(const QString& text, qsizetype unit);

}  // namespace veltrin::Characters
