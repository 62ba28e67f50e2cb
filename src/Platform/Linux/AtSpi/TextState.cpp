#include "Platform/Linux/AtSpi/TextState.h"

#include <algorithm>

namespace veltrin::AtSpi {
namespace {

constexpr QChar embeddedObject(0xFFFC);
constexpr std::size_t mostObjects = 500;
constexpr int deepest = 16;

// What stands inside a line; everything else that is embedded begins a line of its own.
constexpr Role inlineRoles[] = {Role::link,  Role::image, Role::icon,
                                Role::label, Role::text,  Role::pushButton};

struct PendingText {
    Pending text, count, caret, selections, selection;
};

/// Whether Chromium would stand still over a question about a selection in one of these: that takes it a
/// second for five thousand children, and its windows with it. The count comes at once.
bool haveTooManyChildren(const std::vector<ObjectAddress>& objects, Toolkit toolkit,
                         Conversation& conversation) {
    if (toolkit != Toolkit::chromium) return false;
    std::vector<Pending> counts;
    counts.reserve(objects.size());
    for (const ObjectAddress& object : objects)
        counts.push_back(conversation.property(object, Name::accessible, "ChildCount"));
    bool isAny = false;
    for (Pending& pending : counts) {
        const Reply count = conversation.reply(std::move(pending));
        isAny = isAny || (count.ok() && count.number() > mostChildrenAsked);
    }
    return isAny;
}

PendingText askText(const ObjectAddress& object, Conversation& conversation) {
    return {conversation.call(object, Name::text, "GetText", {0, -1}),
            conversation.property(object, Name::text, "CharacterCount"),
            conversation.property(object, Name::text, "CaretOffset"),
            conversation.call(object, Name::text, "GetNSelections"),
            conversation.call(object, Name::text, "GetSelection", {0})};
}

AXResult<TextState> takeText(PendingText pending, Toolkit toolkit, Conversation& conversation) {
    const Reply text = conversation.reply(std::move(pending.text));
    if (!text.ok()) return text.error;
    const Reply count = conversation.reply(std::move(pending.count));
    const Reply caret = conversation.reply(std::move(pending.caret));
    const Reply selections = conversation.reply(std::move(pending.selections));
    const Reply selection = conversation.reply(std::move(pending.selection));
    if (conversation.hasGivenUp()) return AXError::cannotComplete;

    TextState state;
    state.offsets = TextOffsets(text.text(), count.ok() ? count.number() : -1, toolkit);
    state.caret = state.offsets.toUtf16(caret.number());
    if (selections.number() > 0 && selection.ok()) {
        const OffsetRange reported{selection.number(0), selection.number(1)};
        state.reported = reported;
        state.isSelectionKnown = state.offsets.isSelectionKnown(reported);
        const TextRange range = state.offsets.toUtf16(state.offsets.selection(reported));
        if (range.length > 0) state.selection = range;
    }
    return state;
}

/// An object of a field made of blocks, with what is embedded in its text, in the text's order.
struct Block {
    ObjectAddress object;
    Role role = Role::invalid;
    TextState state;
    std::vector<Block> embedded;
};

/// Reads what is embedded in a block, level by level. False when it does not fit the block's text.
bool load(Block& block, int depth, std::size_t& budget, Toolkit toolkit, Conversation& conversation) {
    const auto places = static_cast<std::size_t>(block.state.text().count(embeddedObject));
    if (places == 0) return true;
    const auto children = conversation.ask(block.object, Name::accessible, "GetChildren").objects();
    if (depth >= deepest || children.size() > budget) return false;
    if (haveTooManyChildren(children, toolkit, conversation)) return false;
    budget -= children.size();
    std::vector<std::pair<Pending, PendingText>> questions;
    for (const ObjectAddress& child : children) {
        Pending role = conversation.call(child, Name::accessible, "GetRole");
        questions.emplace_back(std::move(role), askText(child, conversation));
    }
    for (std::size_t i = 0; i < children.size(); ++i) {
        const auto role = static_cast<Role>(conversation.reply(std::move(questions[i].first)).number());
        auto state = takeText(std::move(questions[i].second), toolkit, conversation);
        // Chromium lists the runs of a block's own text among its children; they are not embedded.
        if (role == Role::staticText) continue;
        // What has no text, a picture for one, takes its place with none.
        block.embedded.push_back({children[i], role, state.ok() ? std::move(state.value) : TextState{}, {}});
    }
    if (conversation.hasGivenUp() || block.embedded.size() != places) return false;
    return std::all_of(block.embedded.begin(), block.embedded.end(),
                       [&](Block& child) { return load(child, depth + 1, budget, toolkit, conversation); });
}

class Assembly {
public:
    TextState state;

    void add(const Block& block) {
        const QString& text = block.state.text();
        state.isSelectionKnown = state.isSelectionKnown && block.state.isSelectionKnown;
        std::size_t child = 0;
        qint64 from = 0;
        while (from <= text.size()) {
            qint64 end = text.indexOf(embeddedObject, from);
            if (end < 0) end = text.size();
            addPiece(block, from, end - from);
            if (end < text.size()) addSelectable(block, end, block.embedded[child++]);
            from = end + 1;
        }
    }

    /// Where a caret at the block's own position stands in the whole; the blocks must have been added.
    qint64 caretOf(const Block& block) const {
        const qint64 caret = block.state.caret;
        const QString& text = block.state.text();
        if (caret < text.size() && text[caret] == embeddedObject) {
            const auto child = static_cast<std::size_t>(text.left(caret).count(embeddedObject));
            return caretOf(block.embedded[child]);
        }
        for (const TextPiece& piece : state.pieces) {
            if (piece.object == block.object && caret >= piece.from && caret <= piece.from + piece.length) {
                return piece.at + caret - piece.from;
            }
        }
        return text_.size();
    }

    /// The caret is at one end of what is selected. Where a selection ends at the beginning of a block, or
    /// begins at the end of one, no block tells of the line break that belongs to it.
    void setCaret(qint64 caret) {
        state.caret = caret;
        if (!state.selection) return;
        const qint64 start = state.selection->location;
        const qint64 end = start + state.selection->length;
        if (caret == end + 1 && text_[end] == u'\n') select(caret, caret);
        if (caret == start - 1 && text_[caret] == u'\n') select(caret, caret);
    }

    TextState finished() {
        state.offsets = TextOffsets(text_, text_.size(), Toolkit::other);
        if (state.selection && state.selection->length == 0) state.selection.reset();
        return std::move(state);
    }

private:
    void breakLine() {
        if (!text_.isEmpty() && !text_.endsWith(u'\n')) text_ += u'\n';
    }

    void addEmbedded(const Block& block) {
        const bool isInline =
            std::find(std::begin(inlineRoles), std::end(inlineRoles), block.role) != std::end(inlineRoles);
        // An empty block is an empty line. One that ends with a line break has its own end with it already.
        if (!isInline && isBehindBlock_ && !endsWithBreak_) text_ += u'\n';
        if (!isInline && !isBehindBlock_) breakLine();
        isBehindBlock_ = false;
        const qsizetype before = text_.size();
        add(block);
        endsWithBreak_ = text_.size() > before && text_.endsWith(u'\n');
        isBehindBlock_ = !isInline;
    }

    void addPiece(const Block& block, qint64 from, qint64 length) {
        if (length == 0 && block.state.text().size() > 0) return;
        if (length > 0 && isBehindBlock_) breakLine();
        if (length > 0) isBehindBlock_ = false;
        const TextPiece piece{block.object, block.state.offsets, from, text_.size(), length};
        text_ += block.state.text().mid(from, length);
        state.pieces.push_back(piece);
        if (!block.state.selection) return;
        const qint64 start = std::max(block.state.selection->location, from);
        const qint64 end =
            std::min(block.state.selection->location + block.state.selection->length, from + length);
        if (start < end) select(piece.at + start - from, piece.at + end - from);
    }

    /// Adds what stands at `place` in its parent. A selection that begins at the very end of a block, or ends
    /// at the very beginning of one, shows in the parent only: the block says that nothing is selected in it.
    void addSelectable(const Block& parent, qint64 place, const Block& block) {
        const auto former = state.selection;
        addEmbedded(block);
        const auto& selection = parent.state.selection;
        if (!selection || selection->length < 2 || state.selection != former) return;
        const auto stands = [&block](const TextPiece& piece) { return piece.object == block.object; };
        const auto first = std::find_if(state.pieces.begin(), state.pieces.end(), stands);
        if (place == selection->location) select(text_.size(), text_.size());
        if (place == selection->location + selection->length - 1 && first != state.pieces.end())
            select(first->at, first->at);
    }

    void select(qint64 first, qint64 last) {
        const TextRange former = state.selection.value_or(TextRange{first, 0});
        const qint64 location = std::min(former.location, first);
        state.selection = TextRange{location, std::max(former.location + former.length, last) - location};
    }

    QString text_;
    bool isBehindBlock_ = false;
    bool endsWithBreak_ = false;  // the block that was last
};

}  // namespace

const TextPiece* TextState::pieceOf(const TextRange& range) const {
    const auto found = std::find_if(pieces.begin(), pieces.end(), [&range](const TextPiece& piece) {
        return range.location >= piece.at && range.location + range.length <= piece.at + piece.length;
    });
    return found == pieces.end() ? nullptr : &*found;
}

bool TextState::shows(const OffsetRange& range) const {
    const qint64 caretOffset = offsets.toToolkit(caret);
    if (range.start == range.end) return !selection && isSelectionKnown && caretOffset == range.start;
    if (!reported) return false;
    const OffsetRange ordered{std::min(reported->start, reported->end),
                              std::max(reported->start, reported->end)};
    // Where the toolkit can't tell the selection, the caret is at one of its ends at least.
    const bool isCaretAtEnd = caretOffset == range.start || caretOffset == range.end;
    return ordered == offsets.reportOf(range) && (isSelectionKnown || isCaretAtEnd);
}

AXResult<TextState> readOwnTextState(const ObjectAddress& object, Toolkit toolkit,
                                     Conversation& conversation) {
    if (haveTooManyChildren({object}, toolkit, conversation)) return AXError::cannotComplete;
    return takeText(askText(object, conversation), toolkit, conversation);
}

AXResult<TextState> readTextState(const ObjectAddress& object, Toolkit toolkit, Conversation& conversation) {
    auto own = readOwnTextState(object, toolkit, conversation);
    const bool isBrowser = toolkit == Toolkit::chromium || toolkit == Toolkit::gecko;
    if (!own.ok() || !isBrowser || !own.value.text().contains(embeddedObject)) return own;

    Block field{object, Role::invalid, std::move(own.value), {}};
    std::size_t budget = mostObjects;
    if (!load(field, 0, budget, toolkit, conversation)) return AXError::cannotComplete;
    Assembly assembly;
    assembly.add(field);
    assembly.setCaret(assembly.caretOf(field));
    assembly.state.ownLength = field.state.offsets.length();
    return assembly.finished();
}

}  // namespace veltrin::AtSpi
