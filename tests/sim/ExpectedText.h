#pragma once

#include "Platform/Accessibility.h"

#include <QString>

#include <vector>

namespace veltrin {

/// What a text field should hold, worked out from what the user did to it and nothing else. What the program
/// put in has to be explained: `explain` looks for a way to get from the expected text to the real one by the
/// user's own edits, in their order, and results of the program among them, each at most once and only in a
/// manner that its run allows.
class ExpectedText {
public:
    /// One thing the user did to the field.
    struct Edit {
        enum class Kind { insert, deleteBackward, left, right, selectAll, select };
        Kind kind = Kind::insert;
        QString text;     ///< of an insertion
        TextRange range;  ///< of a selection
    };

    /// One result of the program that may have come into the field.
    struct Result {
        int run = 0;
        QString text;
        /// Selection when the field was read; several when equal texts were read at different times.
        std::vector<TextRange> readRanges;
        bool mayReplaceAll = false;
        bool mayReplaceSelection = false;  ///< whatever is selected when it comes; at a caret it is inserted
        bool mayReplaceReadRange = false;
    };

    struct State {
        QString text;
        TextRange selection;
        /// Same text, and no selection that the other does not have. A caret may stand anywhere: the program
        /// places it after a write, and that costs nobody a character.
        bool isExplainedBy(const State& other) const;
    };

    ExpectedText(const QString& text, TextRange selection, bool isEditable)
        : state_{text, selection}, editable_(isEditable) {}

    void edit(Edit edit) { edits_.push_back(std::move(edit)); }
    bool hasOpenEdits() const { return !edits_.empty(); }
    /// The text as of the last explanation.
    const QString& text() const { return state_.text; }
    const TextRange& selection() const { return state_.selection; }

    /// Takes over the real state when it can be explained, and adds the runs whose results came in to
    /// `arrived`; else leaves everything and returns false.
    bool explain(const State& real, const std::vector<Result>& results, std::vector<int>& arrived);
    /// The state that the user's edits alone lead to.
    State withoutResults() const;

private:
    bool search(State state, std::size_t next, const State& real, const std::vector<Result>& results,
                std::vector<int>& arrived) const;
    void apply(State& state, const Edit& edit) const;

    State state_;
    bool editable_;
    std::vector<Edit> edits_;
};

}  // namespace veltrin
