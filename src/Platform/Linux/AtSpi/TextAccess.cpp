#include "Platform/Linux/AtSpi/TextAccess.h"

#include "Foundation/Characters.h"

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

}  // namespace

TextAccess::TextAccess(ObjectAddress object, ApplicationDirectory& directory, Conversation& conversation)
    : object_(std::move(object)), directory_(directory), conversation_(conversation) {
}

AXResult<ElementFacts> TextAccess::readableFacts() {
    auto facts = factsOf(object_, directory_, conversation_);
    if (!facts.ok()) return facts;
    if (facts.value.isPassword()) return AXError::noValue;
    if (!facts.value.hasText) return AXError::attributeUnsupported;
    return facts;
}

AXResult<TextState> TextAccess::read(Toolkit toolkit) {
    Pending text = conversation_.call(object_, Name::text, "GetText", {0, -1});
    Pending count = conversation_.property(object_, Name::text, "CharacterCount");
    Pending caret = conversation_.property(object_, Name::text, "CaretOffset");
    Pending selections = conversation_.call(object_, Name::text, "GetNSelections");
    Pending selection = conversation_.call(object_, Name::text, "GetSelection", {0});

    const Reply textReply = conversation_.reply(std::move(text));
    if (!textReply.ok()) return textReply.error;
    const Reply countReply = conversation_.reply(std::move(count));
    const Reply caretReply = conversation_.reply(std::move(caret));
    const Reply selectionsReply = conversation_.reply(std::move(selections));
    const Reply selectionReply = conversation_.reply(std::move(selection));
    if (conversation_.hasGivenUp()) return AXError::cannotComplete;

    TextState state;
    state.offsets = TextOffsets(textReply.text(), countReply.ok() ? countReply.number() : -1, toolkit);
    state.caret = state.offsets.toUtf16(caretReply.number());
    if (selectionsReply.number() > 0 && selectionReply.ok()) {
        const OffsetRange reported{selectionReply.number(0), selectionReply.number(1)};
        state.isSelectionKnown = state.offsets.isSelectionKnown(reported, caretReply.number());
        const TextRange range = state.offsets.toUtf16(state.offsets.selection(reported));
        if (range.length > 0) state.selection = range;
    }
    return state;
}

AXResult<QString> TextAccess::value() {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    if (facts.value.isTerminal()) return terminalText();
    const auto state = read(facts.value.toolkit);
    if (!state.ok()) return state.error;
    // With a selection that can't be told, the whole text would be taken for the input; a copy gets the right
    // one.
    if (!state.value.isSelectionKnown) return AXError::cannotComplete;
    return state.value.text();
}

/// What stands on the visible rows up to the caret. The scroll-back is nobody's text field.
AXResult<QString> TextAccess::terminalText() {
    Pending caret = conversation_.property(object_, Name::text, "CaretOffset");
    Pending extents = conversation_.call(object_, Name::component, "GetExtents", {screenCoordinates});
    const Reply caretReply = conversation_.reply(std::move(caret));
    const Reply extentsReply = conversation_.reply(std::move(extents));
    if (!caretReply.ok()) return caretReply.error;
    const qint64 end = std::max<qint64>(caretReply.number(), 0);
    qint64 start = std::max<qint64>(end - mostTerminalOffsets, 0);
    if (const auto area = extentsReply.rectangle(); area && !area->isEmpty()) {
        const QVariantList topLeft{static_cast<int>(area->x()) + 1, static_cast<int>(area->y()) + 1,
                                   screenCoordinates};
        const Reply first = conversation_.ask(object_, Name::text, "GetOffsetAtPoint", topLeft);
        if (first.ok() && first.number() <= end) start = std::max(start, first.number());
    }
    const Reply text = conversation_.ask(object_, Name::text, "GetText", offsetArguments({start, end}));
    if (!text.ok()) return text.error;
    return Characters::suffix(text.text(), mostTerminalCharacters);
}

AXResult<QString> TextAccess::selectedText() {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    const auto state = read(facts.value.toolkit);
    if (!state.ok()) return state.error;
    if (!state.value.isSelectionKnown) return AXError::cannotComplete;
    return state.value.selection ? state.value.selectedText() : QString(QLatin1String(""));
}

AXResult<TextRange> TextAccess::selectedRange() {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    const auto state = read(facts.value.toolkit);
    if (!state.ok()) return state.error;
    if (!state.value.isSelectionKnown) return AXError::cannotComplete;
    return state.value.selectedRange();
}

AXResult<QRectF> TextAccess::bounds(const TextRange& range) {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    // GTK 4 knows no rectangles of ranges, and says so with one that is wrong.
    if (facts.value.toolkit == Toolkit::gtk4) return AXError::failure;
    Pending text = conversation_.call(object_, Name::text, "GetText", {0, -1});
    Pending count = conversation_.property(object_, Name::text, "CharacterCount");
    const Reply textReply = conversation_.reply(std::move(text));
    const Reply countReply = conversation_.reply(std::move(count));
    if (!textReply.ok()) return textReply.error;
    const TextOffsets offsets(textReply.text(), countReply.ok() ? countReply.number() : -1,
                              facts.value.toolkit);
    QVariantList arguments = offsetArguments(offsets.toToolkit(range));
    arguments << screenCoordinates;
    // Chromium lays out a page's text for accessibility when it is first asked, and is empty-handed that
    // once.
    const int attempts = facts.value.toolkit == Toolkit::chromium ? 3 : 1;
    for (int i = 0; i < attempts; ++i) {
        const Reply reply = conversation_.ask(object_, Name::text, "GetRangeExtents", arguments);
        if (!reply.ok()) return reply.error;
        const auto rectangle = reply.rectangle();
        if (rectangle && (rectangle->width() > 0 || rectangle->height() > 0)) return *rectangle;
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

/// Reads until `condition` holds. An application handles calls in their order, so the first reading already
/// comes after the write; only pages of browsers change later.
template <typename Condition>
AXError TextAccess::await(Toolkit toolkit, Condition condition) {
    const QDeadlineTimer limit(longestAwait);
    Milliseconds pause = firstPause;
    while (true) {
        const auto state = read(toolkit);
        if (!state.ok())
            return state.error == AXError::invalidUIElement ? state.error : AXError::cannotComplete;
        if (condition(state.value)) return AXError::success;
        if (limit.hasExpired() || !conversation_.pause(pause)) return AXError::cannotComplete;
        pause = std::min(pause * 2, longestPause);
    }
}

AXError TextAccess::setValue(const QString& text) {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    const Toolkit toolkit = facts.value.toolkit;
    if (!facts.value.canWriteText()) return AXError::attributeUnsupported;
    const auto before = read(toolkit);
    if (!before.ok()) return before.error;
    if (before.value.text() == text) return AXError::success;
    const auto isWritten = [&text](const TextState& state) { return state.text() == text; };

    // GTK 4 can undo a deletion and an insertion, but not the call that sets everything.
    if (toolkit != Toolkit::gtk4) {
        conversation_.tell(object_, Name::editableText, "SetTextContents", {text});
        const AXError error = await(toolkit, isWritten);
        if (error == AXError::success || conversation_.hasGivenUp()) return error;
        const auto after = read(toolkit);
        if (!after.ok() || after.value.text() != before.value.text()) return AXError::cannotComplete;
    }
    if (!replace({0, before.value.offsets.length()}, text, toolkit)) return AXError::cannotComplete;
    return await(toolkit, isWritten);
}

AXError TextAccess::setSelectedText(const QString& text) {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    if (!facts.value.canWriteText()) return AXError::attributeUnsupported;
    const auto before = read(facts.value.toolkit);
    if (!before.ok()) return before.error;
    if (!before.value.isSelectionKnown) return AXError::cannotComplete;
    const TextRange range = before.value.selectedRange();
    QString expected = before.value.text();
    expected.replace(range.location, range.length, text);
    const OffsetRange replaced = before.value.offsets.toToolkit(range);
    if (!replace(replaced, text, facts.value.toolkit)) return AXError::cannotComplete;
    return await(facts.value.toolkit,
                 [&expected](const TextState& state) { return state.text() == expected; });
}

AXError TextAccess::setSelectedRange(const TextRange& range) {
    const auto facts = readableFacts();
    if (!facts.ok()) return facts.error;
    const Toolkit toolkit = facts.value.toolkit;
    if (!facts.value.canSetSelection()) return AXError::attributeUnsupported;
    const auto before = read(toolkit);
    if (!before.ok()) return before.error;
    const TextOffsets& offsets = before.value.offsets;
    const OffsetRange target = offsets.toToolkit(range);
    const TextRange wanted = offsets.toUtf16(target);
    const auto isSet = [&wanted](const TextState& state) {
        return state.isSelectionKnown && state.selectedRange() == wanted;
    };
    if (isSet(before.value)) return AXError::success;
    if (wanted.length == 0) {
        conversation_.tell(object_, Name::text, "SetCaretOffset", {static_cast<int>(target.start)});
        return await(toolkit, isSet);
    }

    QVariantList replaceFirst{0};
    replaceFirst << offsetArguments(target);
    const auto setFirst = [&] { conversation_.tell(object_, Name::text, "SetSelection", replaceFirst); };
    const auto add = [&] {
        conversation_.tell(object_, Name::text, "AddSelection", offsetArguments(target));
    };
    // GTK 4 says yes to SetSelection and drops the selection; AddSelection works there, though it never
    // replies, and only when nothing is selected. Setting the caret drops a selection. Gecko wants the caret
    // moved first, too.
    const bool startsWithCaret = toolkit == Toolkit::gecko || toolkit == Toolkit::gtk4;
    const bool startsWithAdd = startsWithCaret || !before.value.selection;
    if (startsWithCaret) {
        // Awaited: GTK 4 now and then loses the selection when both calls arrive at once.
        conversation_.ask(object_, Name::text, "SetCaretOffset", {static_cast<int>(target.start)});
    }
    startsWithAdd ? add() : setFirst();
    const AXError error = await(toolkit, isSet);
    if (error == AXError::success || conversation_.hasGivenUp()) return error;
    startsWithAdd ? setFirst() : add();
    return await(toolkit, isSet);
}

}  // namespace veltrin::AtSpi
