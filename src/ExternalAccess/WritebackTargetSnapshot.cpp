#include "ExternalAccess/WritebackTargetSnapshot.h"

#include "ExternalAccess/ExternalAppContext.h"
#include "Foundation/Characters.h"
#include "Foundation/Text.h"

#include <utility>

namespace veltrin {

WritebackTargetSnapshot::WritebackTargetSnapshot(const ExternalTextReadResult& read,
                                                 std::optional<QString> windowTitle)
    : processIdentifier(read.processIdentifier),
      bundleIdentifier(read.bundleIdentifier),
      role(read.role),
      source(read.source),
      requiresClipboardWriteback(read.requiresClipboardWriteback),
      element(read.element),
      focusedWindowTitle(std::move(windowTitle)),
      textSignature(signature(read.text)) {
}

QString WritebackTargetSnapshot::debugDescription() const {
    const QString nil = QStringLiteral("nil");
    return QStringLiteral("pid:") + (processIdentifier ? QString::number(*processIdentifier) : nil) +
           QStringLiteral(" bundle:") + bundleIdentifier + QStringLiteral(" role:") + role +
           QStringLiteral(" source:") + rawValue(source) + QStringLiteral(" clipboard:") +
           (requiresClipboardWriteback ? QStringLiteral("true") : QStringLiteral("false")) +
           QStringLiteral(" element:") + (element ? QStringLiteral("ax") : nil) + QStringLiteral(" window:") +
           focusedWindowTitle.value_or(nil) + QStringLiteral(" signature:") + textSignature;
}

QString WritebackTargetSnapshot::signature(const QString& text) {
    // Two texts of one length that differ only beyond their ends have one signature: known and accepted.
    constexpr qsizetype ends = 24;
    const QString line = Text::singleLine(text);
    return QString::number(Characters::count(line)) + u':' + Characters::prefix(line, ends) + u':' +
           Characters::suffix(line, ends);
}

std::optional<QString> WritebackTargetSnapshot::currentFocusedWindowTitle(
    Accessibility& accessibility, std::optional<qint32> processIdentifier) {
    if (!processIdentifier || !accessibility.isProcessTrusted()) return std::nullopt;
    QString title = ExternalAppContext::focusedWindowTitle(accessibility, *processIdentifier);
    if (title.isEmpty()) return std::nullopt;
    return title;
}

}  // namespace veltrin
