#include "Foundation/Identifiers.h"

namespace veltrin {
namespace {

bool isHexadecimal(QChar c) {
    const char16_t unit = c.unicode();
    return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f') || (unit >= u'A' && unit <= u'F');
}

}  // namespace

// QUuid reads braces, missing hyphens and trailing text too, which a file of ours never holds.
std::optional<QUuid> uuidFrom(QStringView text) {
    constexpr qsizetype length = 36;
    if (text.size() != length) return std::nullopt;
    for (qsizetype i = 0; i < length; ++i) {
        const bool hyphen = i == 8 || i == 13 || i == 18 || i == 23;
        if (hyphen ? text[i] != u'-' : !isHexadecimal(text[i])) return std::nullopt;
    }
    return QUuid::fromString(text);
}

}  // namespace veltrin
