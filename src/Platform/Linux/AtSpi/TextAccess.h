#pragma once

#include "Platform/Linux/AtSpi/TextState.h"

namespace veltrin::AtSpi {

/// Reading and writing the text of one element. Writing takes the element's facts afresh each time, so that a
/// field that has become a password field or read-only meanwhile is treated as one. Worker thread only.
class TextAccess {
public:
    /// `pixelsPerPoint` is the application's; only places depend on it.
    TextAccess(ObjectAddress object, ApplicationDirectory& directory, Conversation& conversation,
               double pixelsPerPoint = 1);

    /// The text with its selection, of an object with these facts; `noValue` of a password field.
    AXResult<TextState> state(const ElementFacts& facts);
    /// The rectangle of a range on the screen, in the application's points; behind the end of the text, where
    /// no character is, that of a caret there.
    AXResult<QRectF> bounds(const TextRange& range);

    /// Each writes and reads back; `cannotComplete` when what was written does not stand there.
    AXError setValue(const QString& text);
    /// Replaces the selection, or inserts at the caret.
    AXError setSelectedText(const QString& text);
    AXError setSelectedRange(const TextRange& range);

private:
    /// The facts, or why the text must not be touched.
    AXResult<ElementFacts> readableFacts();
    AXResult<TextState> read(const ElementFacts& facts);
    AXResult<TextState> terminalState();
    AXResult<QRectF> rectangle(const TextState& state, Toolkit toolkit, const TextRange& range);
    AXResult<QRectF> caretAt(const TextState& state, Toolkit toolkit, qint64 at);
    AXResult<QRectF> onItsLine(const QRectF& rectangle, const QRectF& area, const TextState& state,
                               qint64 at);

    /// Deletes, then inserts. A deletion that was not answered in time may still happen, so the insertion is
    /// sent all the same; only after one that was refused it is not, and the result is false.
    bool replace(const OffsetRange& range, const QString& text, Toolkit toolkit);
    template <typename Condition>
    AXError await(const ObjectAddress& object, Toolkit toolkit, Condition condition);

    ObjectAddress object_;
    ApplicationDirectory& directory_;
    Conversation& conversation_;
    double pixelsPerPoint_;
};

}  // namespace veltrin::AtSpi
