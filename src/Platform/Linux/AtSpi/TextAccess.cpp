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

}  // namespace

TextAccess::TextAccess(ObjectAddress object, ApplicationDirectory& directory, Conversation& conversation)
    : object_(std::move(object)), directory_(directory), conversation_(conversation) {
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
    // VTE puts what the mouse has selected anywhere: mostly at the end of its text, or at a few characters
    // that have nothing to do with it when a row before them was longer than its characters are.
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
    const qint64 length = state.value.text().size();
    return length > 0 && range.location >= length ? caretAtEnd(state.value, toolkit)
                                                  : rectangle(state.value, toolkit, range);
}

/// Most toolkits have no place for what is behind the last character, and that is where people write.
AXResult<QRectF> TextAccess::caretAtEnd(const TextState& state, Toolkit toolkit) {
    constexpr double caretWidth = 2;  // what is thinner counts as no place
    const QString& text = state.text();
    const qint64 last = text.size() - 1;
    if (text[last] != u'\n') {
        const auto before = rectangle(state, toolkit, {last, 1});
        if (!before.ok()) return before;
        const QRectF& character = before.value;
        return QRectF(character.right(), character.y(), caretWidth, character.height());
    }
    // A new line begins below the last character of the one before, and as far left. A break itself has a
    // place in few toolkits.
    const qint64 lineStart = last == 0 ? 0 : text.lastIndexOf(u'\n', last - 1) + 1;
    const auto first = rectangle(state, toolkit, {lineStart, 1});
    if (!first.ok()) return first;
    const auto end = rectangle(state, toolkit, {std::max(lineStart, last - 1), 1});
    if (!end.ok()) return end;
    return QRectF(first.value.left(), end.value.bottom(), caretWidth, end.value.height());
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
        const auto rectangle = reply.rectangle();
        const bool isThere = rectangle && (rectangle->width() > 0 || rectangle->height() > 0);
        const bool isInField =
            isThere && (!area || (!isNotLaidOut(*area, toolkit) && area->contains(rectangle->center())));
        if (rectangle && (isBrowser ? isInField : isThere)) return *rectangle;
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
