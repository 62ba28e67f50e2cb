#include "ExpectedText.h"

#include "Foundation/Characters.h"

#include <algorithm>

namespace veltrin {
namespace {

/// Results that come into one field between two looks at it; more never happen.
constexpr std::size_t mostArrivals = 6;

void replace(ExpectedText::State& state, TextRange range, const QString& text) {
    state.text.replace(range.location, range.length, text);
    state.selection = {range.location + text.size(), 0};
}

bool isWithin(const TextRange& range, const QString& text) {
    return range.location >= 0 && range.location + range.length <= text.size();
}

/// All states that a result may lead to.
std::vector<ExpectedText::State> arrivals(const ExpectedText::State& state,
                                          const ExpectedText::Result& result) {
    std::vector<ExpectedText::State> found;
    if (result.mayReplaceAll) found.push_back({result.text, {result.text.size(), 0}});
    if (result.mayReplaceSelection) {
        found.push_back(state);
        replace(found.back(), state.selection, result.text);
    }
    for (const TextRange& range : result.readRanges) {
        if (result.mayReplaceReadRange && isWithin(range, state.text)) {
            found.push_back(state);
            replace(found.back(), range, result.text);
            // Written as a whole by accessibility; some fields then keep the caret at their end.
            ExpectedText::State atEnd = found.back();
            atEnd.selection = {atEnd.text.size(), 0};
            found.push_back(atEnd);
        }
        if (!result.mayReplaceSelection) continue;
        // Written by accessibility, the caret goes to where the field was read.
        ExpectedText::State elsewhere = state;
        replace(elsewhere, state.selection, result.text);
        elsewhere.selection = {range.location + result.text.size(), 0};
        if (isWithin(elsewhere.selection, elsewhere.text)) found.push_back(elsewhere);
    }
    return found;
}

}  // namespace

bool ExpectedText::State::isExplainedBy(const State& other) const {
    return text == other.text && (selection.length == 0 || selection == other.selection);
}

void ExpectedText::apply(State& state, const Edit& edit) const {
    TextRange& selection = state.selection;
    switch (edit.kind) {
        case Edit::Kind::insert:
            if (editable_) replace(state, selection, edit.text);
            return;
        case Edit::Kind::deleteBackward:
            if (!editable_) return;
            if (selection.length == 0 && selection.location > 0) {
                const qsizetype size = Characters::containing(state.text, selection.location - 1).size();
                selection = {selection.location - size, size};
            }
            replace(state, selection, {});
            return;
        case Edit::Kind::left:
            if (selection.length == 0 && selection.location > 0)
                selection.location -= Characters::containing(state.text, selection.location - 1).size();
            selection.length = 0;
            return;
        case Edit::Kind::right:
            if (selection.length == 0 && selection.location < state.text.size())
                selection.location += Characters::containing(state.text, selection.location).size();
            selection = {selection.location + selection.length, 0};
            return;
        case Edit::Kind::selectAll:
            selection = {0, state.text.size()};
            return;
        case Edit::Kind::select:
            if (isWithin(edit.range, state.text)) selection = edit.range;
            return;
    }
}

ExpectedText::State ExpectedText::withoutResults() const {
    State state = state_;
    for (const Edit& each : edits_)
        apply(state, each);
    return state;
}

bool ExpectedText::explain(const State& real, const std::vector<Result>& results, std::vector<int>& arrived) {
    // The plainest explanation first.
    std::vector<int> found;
    if (!real.isExplainedBy(withoutResults()) && !search(state_, 0, real, results, found)) return false;
    arrived.insert(arrived.end(), found.begin(), found.end());
    state_ = real;
    edits_.clear();
    return true;
}

bool ExpectedText::search(State state, std::size_t next, const State& real,
                          const std::vector<Result>& results, std::vector<int>& arrived) const {
    for (;;) {
        if (arrived.size() < mostArrivals) {
            for (const Result& result : results) {
                if (std::find(arrived.begin(), arrived.end(), result.run) != arrived.end()) continue;
                arrived.push_back(result.run);
                for (const State& after : arrivals(state, result)) {
                    if (search(after, next, real, results, arrived)) return true;
                }
                arrived.pop_back();
            }
        }
        if (next == edits_.size()) return real.isExplainedBy(state);
        apply(state, edits_[next++]);
    }
}

}  // namespace veltrin
