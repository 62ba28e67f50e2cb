#pragma once

#include "Platform/Linux/AtSpi/ElementFacts.h"

namespace veltrin::AtSpi {

/// A stretch of a field's text that one object holds.
struct TextPiece {
    ObjectAddress object;
    TextOffsets offsets;  ///< of that object's whole text
    qint64 from = 0;      ///< UTF-16, in the object's text
    qint64 at = 0;        ///< UTF-16, in the field's text
    qint64 length = 0;
};

/// An object of Chromium's with more children than this is not asked about a selection.
inline constexpr qint64 mostChildrenAsked = 500;

/// The text of a field with its selection.
struct TextState {
    TextOffsets offsets;
    qint64 caret = 0;                     ///< UTF-16
    std::optional<TextRange> selection;   ///< UTF-16; empty when nothing is selected
    bool isSelectionKnown = true;         ///< false: there is one, but the toolkit can't say which
    std::optional<OffsetRange> reported;  ///< the selection as the toolkit gave it
    /// Only of a field made of blocks, as the editors in web pages are: where its text stands. The offsets
    /// are UTF-16 then, and of no use towards the field's own object.
    std::vector<TextPiece> pieces;
    qint64 ownLength = 0;  ///< of the field's own object, in its toolkit's offsets; set with `pieces`
    qint64 origin = 0;     ///< where the text begins in its object's, in the toolkit's offsets

    const QString& text() const { return offsets.text(); }
    /// The selection, or the caret with length 0.
    TextRange selectedRange() const { return selection.value_or(TextRange{caret, 0}); }
    QString selectedText() const { return text().mid(selectedRange().location, selectedRange().length); }
    /// Whether this is selected, or for an empty range, the caret stands there. In the toolkit's offsets.
    bool shows(const OffsetRange& range) const;
    /// The piece that the whole range lies in; null when there is none.
    const TextPiece* pieceOf(const TextRange& range) const;
};

/// Reads the text of a field, in one round trip unless it is made of blocks. Blocks are put on lines of their
/// own; `cannotComplete` when they are too many or do not fit together.
AXResult<TextState> readTextState(const ObjectAddress& object, Toolkit toolkit, Conversation& conversation);
/// Reads the text of the object alone; what is embedded in it stays a character.
AXResult<TextState> readOwnTextState(const ObjectAddress& object, Toolkit toolkit,
                                     Conversation& conversation);

}  // namespace veltrin::AtSpi
