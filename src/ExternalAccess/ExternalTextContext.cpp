#include "ExternalAccess/ExternalTextContext.h"

#include "Foundation/Characters.h"
#include "Foundation/Text.h"

#include <QStringList>

#include <algorithm>

namespace veltrin {

namespace {

const QString ellipsis = QStringLiteral("...");

QString contextBefore(const QString& before, qsizetype side) {
    if (Characters::count(before) <= side) return before.trimmed();
    return ellipsis + Characters::suffix(before, side).trimmed();
}

QString contextAfter(const QString& after, qsizetype side) {
    if (Characters::count(after) <= side) return after.trimmed();
    return Characters::prefix(after, side).trimmed() + ellipsis;
}

}  // namespace

ExternalTextContext ExternalTextContext::build(const QString& fullText,
                                               const std::optional<QString>& selectedText,
                                               const std::optional<TextRange>& selectedRange,
                                               qsizetype budget) {
    ExternalTextContext context;
    context.fullTextLength = Characters::count(fullText);
    if (!selectedText || Text::isBlank(*selectedText)) {
        context.focusText = fullText;
        return context;
    }
    // Trimmed only to see whether it is empty: the passage keeps its edges.
    context.focusText = *selectedText;
    if (!selectedRange) return context;

    const qint64 length = fullText.size();
    const qint64 start = std::clamp<qint64>(selectedRange->location, 0, length);
    // Clamped before it is added, so that an absurd range cannot overflow.
    const qint64 end = std::min(start + std::clamp<qint64>(selectedRange->length, 0, length), length);
    const qint64 side = std::max<qint64>((budget - Characters::count(*selectedText)) / 2, 60);
    const qint64 from = std::max<qint64>(start - side, 0);
    // The cut is in UTF-16 units first, so no more than `side` characters are left and no ellipsis shows
    // today. The rule by characters stands all the same.
    context.contextBefore = veltrin::contextBefore(fullText.mid(from, std::min(start, side)), side);
    context.contextAfter = veltrin::contextAfter(fullText.mid(end, std::min(end + side, length) - end), side);
    return context;
}

QString ExternalTextContext::promptBlock() const {
    const QString fence = QStringLiteral("\"\"\"");
    QStringList lines{QStringLiteral("当前需要处理的文本："), fence, focusText, fence};
    if (!contextBefore.isEmpty() || !contextAfter.isEmpty()) {
        lines << QString()
              << QStringLiteral("文本框上下文（只用于理解语气、指代和前后关系，不要直接照抄）：");
        if (!contextBefore.isEmpty()) lines << QStringLiteral("前文：") + contextBefore;
        if (!contextAfter.isEmpty()) lines << QStringLiteral("后文：") + contextAfter;
    }
    lines << QString() << QStringLiteral("全文长度：%1 字").arg(fullTextLength);
    return lines.join(u'\n');
}

}  // namespace veltrin
