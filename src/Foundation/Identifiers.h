#pragma once

#include <QString>
#include <QUuid>

#include <optional>

namespace veltrin {

/// The text form of an identifier in files and preferences: 36 characters, upper case, no braces.
inline QString uuidText(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

/// Reads the form that `uuidText` writes, in either case; none for any other text.
std::optional<QUuid> uuidFrom(QStringView text);

}  // namespace veltrin
