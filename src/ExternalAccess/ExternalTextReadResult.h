#pragma once

#include "ExternalAccess/ExternalTextContext.h"
#include "Foundation/RawValues.h"
#include "Platform/Accessibility.h"

#include <QRectF>
#include <QString>

#include <optional>

namespace veltrin {

/// What was read of a foreign application and how to write back to it. Made once, travels through the whole
/// action and never changes.
struct ExternalTextReadResult {
    enum class Source { selectedText, value, none };

    Source source = Source::none;
    QString text;  ///< the text to act on
    QString frontmostAppName = QStringLiteral("unknown");
    QString bundleIdentifier = QStringLiteral("unknown");  ///< the word "nil" when the application has none
    std::optional<qint32> processIdentifier;
    QString role = QStringLiteral("unknown");
    bool isSelf = false;                     ///< the application is this program
    AXElementRef element;                    ///< the focused element, or null
    std::optional<TextRange> selectedRange;  ///< as read; a caret has length 0
    bool requiresClipboardWriteback = false;
    std::optional<QString> selectedText;
    QString fullText;  ///< the field's whole value where it could be read, else `text`
    ExternalTextContext textContext;
    quint64 targetWindow = 0;  ///< RunningApplication::window at the read; 0 when none was known

    /// True when `text` is more than white space.
    bool hasText() const;
    /// One line: where the text came from and how long it is.
    QString actionSourceLine() const;
};

template <>
inline constexpr auto rawValuesOf<ExternalTextReadResult::Source> =
    std::to_array<const char*>({"selectedText", "value", "none"});

/// One read on its way from the gesture to the pipeline.
struct ExternalTextSession {
    ExternalTextReadResult readResult;
    std::optional<QRectF> anchor;  ///< the panel's anchor, in the windowing layer's coordinates
};

}  // namespace veltrin
