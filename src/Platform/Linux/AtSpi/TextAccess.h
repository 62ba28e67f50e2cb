#pragma once

#include "Platform/Linux/AtSpi/ElementFacts.h"

namespace veltrin::AtSpi {

/// The text of an element with its selection, read in one round trip.
struct TextState {
    TextOffsets offsets;
    qint64 caret = 0;                    ///< UTF-16
    std::optional<TextRange> selection;  ///< UTF-16; empty when nothing is selected
    bool isSelectionKnown = true;        ///< false: there is one, but the toolkit can't say which

    const QString& text() const { return offsets.text(); }
    /// The selection, or the caret with length 0.
    TextRange selectedRange() const { return selection.value_or(TextRange{caret, 0}); }
    QString selectedText() const { return text().mid(selectedRange().location, selectedRange().length); }
};

/// Reading and writing the text of one element. The element's facts are taken afresh for each, so that a
/// field that has become a password field or read-only meanwhile is treated as one. Worker thread only.
class TextAccess {
public:
    TextAccess(ObjectAddress object, ApplicationDirectory& directory, Conversation& conversation);

    AXResult<QString> value();
    AXResult<QString> selectedText();
    AXResult<TextRange> selectedRange();
    AXResult<QRectF> bounds(const TextRange& range);

    /// Each writes and reads back; `cannotComplete` when what was written does not stand there.
    AXError setValue(const QString& text);
    /// Replaces the selection, or inserts at the caret.
    AXError setSelectedText(const QString& text);
    AXError setSelectedRange(const TextRange& range);

private:
    /// The facts, or why the text must not be touched.
    AXResult<ElementFacts> readableFacts();
    AXResult<TextState> read(Toolkit toolkit);
    AXResult<QString> terminalText();

    /// Deletes, then inserts. A deletion that was not answered in time may still happen, so the insertion is
    /// sent all the same; only after one that was refused it is not, and the result is false.
    bool replace(const OffsetRange& range, const QString& text, Toolkit toolkit);
    template <typename Condition>
    AXError await(Toolkit toolkit, Condition condition);

    ObjectAddress object_;
    ApplicationDirectory& directory_;
    Conversation& conversation_;
};

}  // namespace veltrin::AtSpi
