#pragma once

#include "ExternalAccess/ExternalTextReadResult.h"

#include <QString>

#include <optional>

namespace veltrin {

/// The target of a write as it was when the action began. Holds no long user text. Never changes.
struct WritebackTargetSnapshot {
    std::optional<qint32> processIdentifier;
    QString bundleIdentifier;
    QString role;
    ExternalTextReadResult::Source source = ExternalTextReadResult::Source::none;
    bool requiresClipboardWriteback = false;
    AXElementRef element;
    std::optional<QString> focusedWindowTitle;
    QString textSignature;

    /// `focusedWindowTitle` is that of this moment, see `currentFocusedWindowTitle`.
    WritebackTargetSnapshot(const ExternalTextReadResult& read, std::optional<QString> focusedWindowTitle);

    QString debugDescription() const;

    /// Count, first and last 24 characters of the text on one line: short, and the same for a text that was
    /// wrapped differently.
    static QString signature(const QString& text);
    /// None when it cannot be read or is empty.
    static std::optional<QString> currentFocusedWindowTitle(Accessibility& accessibility,
                                                            std::optional<qint32> processIdentifier);
};

}  // namespace veltrin
