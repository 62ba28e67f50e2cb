#pragma once

#include "support/fields/FieldDriver.h"

#include <QString>

namespace veltrin {

inline const QString family = QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467");

/// What stands in the fields: ideographs, emoji of several code points and combining marks around what is
/// used.
inline const QString sample =
    QStringLiteral("ab 中文 ") + family + QStringLiteral(" mid e\u0301 \U0001F600 tail");

/// The sample with one of its passages selected.
inline FieldState passageOf(const QString& passage) {
    const auto start = sample.indexOf(passage);
    return {sample, start, start + passage.size()};
}

}  // namespace veltrin
