#include "AI/AIJSONExtractor.h"

#include "Foundation/Text.h"

namespace veltrin::AIJSONExtractor {

std::optional<Json> object(const QString& text) {
    QString plain = text;
    plain.replace(QStringLiteral("```json"), QString());
    plain.replace(QStringLiteral("```"), QString());
    const qsizetype first = plain.indexOf(u'{');
    const qsizetype last = plain.lastIndexOf(u'}');
    if (first < 0 || last < first) return std::nullopt;
    auto value = Json::tryParse(plain.mid(first, last - first + 1).toUtf8());
    if (!value || !value->isObject()) return std::nullopt;
    return value;
}

}  // namespace veltrin::AIJSONExtractor
