#include "Platform/Linux/AtSpi/TextAccess.h"

#include "Foundation/Characters.h"
#include "Platform/Linux/AtSpi/PlacedRectangle.h"

#include <algorithm>

namespace veltrin::AtSpi {
namespace {

constexpr qint64 mostTerminalCharacters = 2000;
constexpr qint64 mostTerminalOffsets = 8000;  // enough for that many characters of several code points each

// A write shows at once in most toolkits; a browser's page takes up to 50 ms.
constexpr Milliseconds firstPause{2};
constexpr Milliseconds longestPause{16};
constexpr Milliseconds longestAwait{150};
constexpr Milliseconds layoutPause{10};

/// The length argument of InsertText: units for Qt, bytes for everybody else.
int insertionLength(const QString& text, Toolkit toolkit) {
    return static_cast<int>(toolkit == Toolkit::qt ? text.size() : text.toUtf8().size());
}

QVariantList offsetArguments(const OffsetRange& range) {
    return {static_cast<int>(range.start), static_cast<int>(range.end)};
}

/// Why the text of an object with these facts must not be touched.
AXError obstacle(const ElementFacts& facts) {
    if (facts.isPassword()) return AXError::noValue;
    return facts.hasText ? AXError::success : AXError::attributeUnsupported;
}

/// Chromium gives a caret's place for texts whose characters it has not laid out yet.
bool isThin(const QRectF& rectangle, const QString& text, const TextRange& range) {
    const bool isCharacter = range.location < text.size() && text[range.location] != u'\n';
    return isCharacter && rectangle.width() <= 1;
}

}  // namespace

TextAccess::TextAccess(ObjectAddress object, ApplicationDirectory& directory, Conversation& conversation,
                       double pixelsPerPoint)
    : object_(std::move(object)),
      directory_(directory),
      conversation_(conversation),
      pixelsPerPoint_(pixelsPerPoint) {
}

AXResult<ElementFacts> TextAccess::readableFacts() {
    auto facts = factsOf(object_, directory_, conversation_);
    if (!facts.ok()) return facts;
    const AXError error = obstacle(facts.value);
    return error == AXError::success ? facts : AXResult<ElementFacts>(error);
}

AXResult<TextState> TextAccess::state(const ElementFacts& facts) {
    const AXError error = obstacle(facts);
    return error == AXError::success ? read(facts) : AXResult<TextState>(error);
}

AXResult<TextState> TextAccess::read(const ElementFacts& facts) {
    auto state = facts.isTerminal() ? terminalState() : readTextState(object_, facts.toolkit, conversation_);
    // With a selection that can't be told, the whole text would be taken for the input; a copy gets the right
    // one.
    if (state.ok() && !state.value.isSelectionKnown) return AXError::cannotComplete;
    return state;
}

/// A terminal's text is what stands on its visible rows up to the caret; the scroll-back is nobody's text
/// field.
AXResult<TextState> TextAccess::terminalState() {
    Pending caret = conversation_.property(object_, Name::text, "CaretOffset");
    Pending extents = conversation_.call(object_, Name::component, "GetExtents", {screenCoordinates});
    Pending selections = conversation_.call(object_, Name::text, "GetNSelections");
    const Reply caretReply = conversation_.reply(std::move(caret));
    const Reply extentsReply = conversation_.reply(std::move(extents));
    const Reply selectionsReply = conversation_.reply(std::move(selections));
    if (!caretReply.ok()) return caretReply.error;
    const qint64 end = std::max<qint64>(caretReply.number(), 0);
    qint64 start = std::max<qint64>(end - mostTerminalOffsets, 0);
    if (const auto area = extentsReply.rectangle(); area && !area->isEmpty()) {
        const QVariantList corner{static_cast<int>(area->x()) + 1, static_cast<int>(area->y()) + 1,
                                  screenCoordinates};
        const Reply first = conversation_.ask(object_, Name::text, "GetOffsetAtPoint", corner);
        if (first.ok() && first.number() <= end) start = std::max(start, first.number());
    }
    const Reply text = conversation_.ask(object_, Name::text, "GetText", offsetArguments({start, end}));
    if (!text.ok()) return text.error;

    const TextOffsets rows(text.text(), end - start, Toolkit::other);
    const QString kept = Characters::suffix(rows.text(), mostTerminalCharacters);
    TextState state;
    state.offsets = TextOffsets(kept, kept.size(), Toolkit::other);
    state.caret = kept.size();
    state.origin = end - state.offsets.length();
    // VTE miscounts what the mouse has selected: mostly it says the end of its text, and sometimes a piece of
    // it.
    state.isSelectionKnown = selectionsReply.number() <= 0;
    return state;
}

AXResult<QRectF> TextAccess::bounds(const TextRange& range) {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    const Toolkit toolkit = facts.value.toolkit;
    // GTK 4 knows no rectangles of ranges, and says so with one that is wrong.
    if (toolkit == Toolkit::gtk4) return AXError::failure;
    const auto state =
        facts.value.isTerminal() ? terminalState() : readTextState(object_, toolkit, conversation_);
    if (!state.ok()) return state.error;
    const QString& words = state.value.text();
    const qint64 at = std::clamp<qint64>(range.location, 0, words.size());
    const bool isBehindCharacters = at == words.size() || (words[at] == u'\n' && range.length <= 1);
    return isBehindCharacters && !words.isEmpty() ? caretAt(state.value, toolkit, at)
                                                  : rectangle(state.value, toolkit, range);
}

/// A caret at the end of a line, where most toolkits have no place, and where people write.
AXResult<QRectF> TextAccess::caretAt(const TextState& state, Toolkit toolkit, qint64 at) {
    constexpr double caretWidth = 2;  // what is thinner counts as no place
    const QString& text = state.text();
    if (at > 0 && text[at - 1] != u'\n') {
        const auto before = rectangle(state, toolkit, {at - 1, 1});
        if (!before.ok()) return before;
        const QRectF& character = before.value;
        return QRectF(character.right(), character.y(), caretWidth, character.height());
    }
    if (at < text.size()) {
        const auto own = rectangle(state, toolkit, {at, 1});
        if (own.ok() && own.value.height() > 0)
            return QRectF(own.value.topLeft(), QSizeF(caretWidth, own.value.height()));
        if (at == 0) return own;
    }
    // An empty line begins below the last character of the one before, and as far left.
    const qint64 last = at - 1;
    const qint64 lineStart = last == 0 ? 0 : text.lastIndexOf(u'\n', last - 1) + 1;
    const auto first = rectangle(state, toolkit, {lineStart, 1});
    if (!first.ok()) return first;
    const auto end = rectangle(state, toolkit, {std::max(lineStart, last - 1), 1});
    if (!end.ok()) return end;
    return QRectF(first.value.left(), end.value.bottom(), caretWidth, end.value.height());
}

/// Qt's plain texts tell of every paragraph as if it were the first and take the scrolled lines for pixels.
/// Others are left as they are. `area` is the field's.
AXResult<QRectF> TextAccess::onItsLine(const QRectF& rectangle, const QRectF& area, const TextState& state,
                                       qint64 at) {
    constexpr std::size_t mostQuestions = 100;
    constexpr double margin = 4;  // around the document, told of across alone
    constexpr double widestFrame = 8;
    const QString& text = state.text();
    const qint64 start = at == 0 ? 0 : text.lastIndexOf(u'\n', at - 1) + 1;
    if (start == 0) return rectangle;
    const auto ask = [&](qint64 position) {
        QVariantList arguments = offsetArguments(state.offsets.toToolkit(TextRange{position, 1}));
        arguments << screenCoordinates;
        return conversation_.call(object_, Name::text, "GetRangeExtents", arguments);
    };
    Pending first = ask(0);
    Pending own = ask(start);
    const auto top = conversation_.reply(std::move(first)).rectangle();
    const auto ownTop = conversation_.reply(std::move(own)).rectangle();
    if (!top || !ownTop) return AXError::failure;
    if (top->y() != ownTop->y()) return rectangle;

    // How many lines a paragraph above is broken into, its last character tells. A short one is not broken:
    // no character is much wider than high.
    std::vector<Pending> ends;
    double above = 0;
    for (qint64 from = 0; from < start;) {
        const qint64 end = text.indexOf(u'\n', from);
        if (static_cast<double>(end - from) * rectangle.height() < area.width()) {
            above += rectangle.height();
        } else if (ends.size() == mostQuestions) {
            return AXError::failure;
        } else {
            ends.push_back(ask(end - 1));
        }
        from = end + 1;
    }
    for (Pending& end : ends) {
        const auto last = conversation_.reply(std::move(end)).rectangle();
        if (!last || last->height() <= 0) return AXError::failure;
        above += last->y() - top->y() + last->height();
    }
    const double frame = std::clamp(top->x() - margin - area.x(), 0.0, widestFrame);
    const double scrolledLines = std::max(0.0, area.y() + frame - top->y());
    const double height = rectangle.height();
    const double shift = scrolledLines + margin + above - scrolledLines * height;
    const QRectF result = rectangle.translated(0, shift);
    return area.contains(result.center()) ? AXResult<QRectF>(result) : AXResult<QRectF>(AXError::failure);
}

AXResult<QRectF> TextAccess::rectangle(const TextState& state, Toolkit toolkit, const TextRange& range) {
    ObjectAddress holder = object_;
    OffsetRange asked = state.offsets.toToolkit(range);
    asked.start += state.origin;
    asked.end += state.origin;
    if (!state.pieces.empty()) {
        const qint64 location = std::clamp<qint64>(range.location, 0, state.text().size());
        const TextPiece* piece = state.pieceOf({location, 0});
        if (!piece) return AXError::failure;
        holder = piece->object;
        const qint64 length = std::clamp<qint64>(range.length, 0, piece->at + piece->length - location);
        asked = piece->offsets.toToolkit(TextRange{piece->from + location - piece->at, length});
    }
    QVariantList arguments = offsetArguments(asked);
    arguments << screenCoordinates;
    // Browsers lay out a page's text when they are first asked about it. Until then Chromium is empty-handed,
    // and Gecko gives a place outside the field.
    const bool isBrowser = toolkit == Toolkit::chromium || toolkit == Toolkit::gecko;
    const int attempts = isBrowser ? 4 : 1;
    for (int i = 0; i < attempts; ++i) {
        Pending extents = conversation_.call(holder, Name::text, "GetRangeExtents", arguments);
        Pending field = conversation_.call(object_, Name::component, "GetExtents", {screenCoordinates});
        const Reply reply = conversation_.reply(std::move(extents));
        const auto area = conversation_.reply(std::move(field)).rectangle();
        if (!reply.ok()) return reply.error;
        auto rectangle = reply.rectangle();
        // Gecko counts its texts in pixels and all else in points.
        if (rectangle && toolkit == Toolkit::gecko) {
            *rectangle = QRectF(rectangle->topLeft() / pixelsPerPoint_, rectangle->size() / pixelsPerPoint_);
        }
        const bool isThere = rectangle && (rectangle->width() > 0 || rectangle->height() > 0) &&
                             !(toolkit == Toolkit::chromium && isThin(*rectangle, state.text(), range));
        const bool isInField =
            isThere && (!area || (!isNotLaidOut(*area, toolkit) && area->contains(rectangle->center())));
        if (rectangle && (isBrowser ? isInField : isThere)) {
            const bool isQt = toolkit == Toolkit::qt && area && state.pieces.empty();
            return isQt ? onItsLine(*rectangle, *area, state, range.location) : *rectangle;
        }
        if (i + 1 < attempts && !conversation_.pause(layoutPause)) break;
    }
    return AXError::failure;
}

bool TextAccess::replace(const OffsetRange& range, const QString& text, Toolkit toolkit) {
    if (range.end > range.start) {
        const Reply deleted =
            conversation_.ask(object_, Name::editableText, "DeleteText", offsetArguments(range));
        if (deleted.ok() ? !deleted.flag() : deleted.error != AXError::cannotComplete) return false;
    }
    if (!text.isEmpty()) {
        conversation_.tell(object_, Name::editableText, "InsertText",
                           {static_cast<int>(range.start), text, insertionLength(text, toolkit)});
    }
    return true;
}

/// Reads an object's text until `condition` holds. An application handles calls in their order, so the first
/// reading already comes after the write; only pages of browsers change later.
template <typename Condition>
AXError TextAccess::await(const ObjectAddress& object, Toolkit toolkit, Condition condition) {
    const QDeadlineTimer limit(longestAwait);
    Milliseconds pause = firstPause;
    while (true) {
        const auto state = readOwnTextState(object, toolkit, conversation_);
        if (state.error == AXError::invalidUIElement) return state.error;
        if (state.ok() && condition(state.value)) return AXError::success;
        if (limit.hasExpired() || !conversation_.pause(pause)) return AXError::cannotComplete;
        pause = std::min(pause * 2, longestPause);
    }
}

AXError TextAccess::setValue(const QString& text) {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    const Toolkit toolkit = facts.value.toolkit;
    if (!facts.value.canWriteText()) return AXError::attributeUnsupported;
    const auto before = read(facts.value);
    if (!before.ok()) return before.error;
    if (before.value.text() == text) return AXError::success;
    const auto isWritten = [&text](const TextState& state) { return state.text() == text; };

    // GTK 4 can undo a deletion and an insertion, but not the call that sets everything.
    if (toolkit != Toolkit::gtk4) {
        conversation_.tell(object_, Name::editableText, "SetTextContents", {text});
        const AXError error = await(object_, toolkit, isWritten);
        if (error == AXError::success || conversation_.hasGivenUp()) return error;
        const auto after = read(facts.value);
        if (!after.ok() || after.value.text() != before.value.text()) return AXError::cannotComplete;
    }
    if (!replace({0, before.value.offsets.length()}, text, toolkit)) return AXError::cannotComplete;
    return await(object_, toolkit, isWritten);
}

AXError TextAccess::setSelectedText(const QString& text) {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    if (!facts.value.canWriteText()) return AXError::attributeUnsupported;
    const auto before = read(facts.value);
    if (!before.ok()) return before.error;
    const TextRange range = before.value.selectedRange();
    QString expected = before.value.text();
    expected.replace(range.location, range.length, text);
    const OffsetRange replaced = before.value.offsets.toToolkit(range);
    if (!replace(replaced, text, facts.value.toolkit)) return AXError::cannotComplete;
    return await(object_, facts.value.toolkit,
                 [&expected](const TextState& state) { return state.text() == expected; });
}

AXError TextAccess::setSelectedRange(const TextRange& range) {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    const Toolkit toolkit = facts.value.toolkit;
    if (!facts.value.canSetSelection()) return AXError::attributeUnsupported;
    const auto before = readTextState(object_, toolkit, conversation_);
    if (!before.ok()) return before.error;
    const TextOffsets& offsets = before.value.offsets;
    ObjectAddress holder = object_;
    OffsetRange target = offsets.toToolkit(range);
    if (const auto& pieces = before.value.pieces; !pieces.empty()) {
        const TextRange wanted = offsets.toUtf16(target);
        if (before.value.isSelectionKnown && before.value.selectedRange() == wanted) return AXError::success;
        // A block can select in itself, and the field as a whole; what spans some blocks only, nobody can.
        if (const TextPiece* piece = before.value.pieceOf(wanted)) {
            holder = piece->object;
            const qint64 location = piece->from + wanted.location - piece->at;
            target = piece->offsets.toToolkit(TextRange{location, wanted.length});
        } else if (wanted == TextRange{0, offsets.text().size()}) {
            target = {0, before.value.ownLength};
        } else {
            return AXError::cannotComplete;
        }
    } else if (before.value.shows(target)) {
        return AXError::success;
    }
    const auto isSet = [&target](const TextState& state) { return state.shows(target); };
    if (target.start == target.end) {
        // LibreOffice goes on selecting from where it was told to select last, until it is told of an empty
        // selection.
        if (toolkit == Toolkit::office) {
            QVariantList nothing{0};
            nothing << offsetArguments(target);
            conversation_.tell(holder, Name::text, "SetSelection", nothing);
        } else {
            conversation_.tell(holder, Name::text, "SetCaretOffset", {static_cast<int>(target.start)});
        }
        return await(holder, toolkit, isSet);
    }

    QVariantList replaceFirst{0};
    replaceFirst << offsetArguments(target);
    const auto setFirst = [&] { conversation_.tell(holder, Name::text, "SetSelection", replaceFirst); };
    const auto add = [&] { conversation_.tell(holder, Name::text, "AddSelection", offsetArguments(target)); };
    // GTK 4 says yes to SetSelection and drops the selection; AddSelection works there, though it never
    // replies, and only when nothing is selected. Setting the caret drops a selection. Gecko wants the caret
    // moved first, too.
    const bool startsWithCaret = toolkit == Toolkit::gecko || toolkit == Toolkit::gtk4;
    const bool startsWithAdd = startsWithCaret || !before.value.selection;
    if (startsWithCaret) {
        // Awaited: GTK 4 now and then loses the selection when both calls arrive at once.
        conversation_.ask(holder, Name::text, "SetCaretOffset", {static_cast<int>(target.start)});
    }
    startsWithAdd ? add() : setFirst();
    const AXError error = await(holder, toolkit, isSet);
    if (error == AXError::success || conversation_.hasGivenUp()) return error;
    startsWithAdd ? setFirst() : add();
    return await(holder, toolkit, isSet);
}

}  // namespace veltrin::AtSpi
