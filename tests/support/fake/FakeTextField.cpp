#include "support/fake/FakeTextField.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace veltrin {
namespace {

constexpr double characterWidth = 8;
constexpr double lineHeight = 18;
constexpr std::size_t historyLimit = 200;

qint64 boundaryFrom(const QString& text, qint64 offset, int direction) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(offset);
    const qint64 found = direction < 0 ? finder.toPreviousBoundary() : finder.toNextBoundary();
    if (found >= 0) return found;
    return direction < 0 ? 0 : text.size();
}

}  // namespace

void FakeTextField::remember() {
    history_.push_back({value, selection});
    if (history_.size() > historyLimit) history_.erase(history_.begin());
}

bool FakeTextField::insert(const QString& text) {
    if (!editable) return false;
    remember();
    value.replace(selection.location, selection.length, text);
    selection = {selection.location + text.size(), 0};
    return true;
}

bool FakeTextField::deleteBackward() {
    if (!editable) return false;
    if (selection.length == 0) {
        if (selection.location == 0) return false;
        const qint64 start = boundaryFrom(value, selection.location, -1);
        remember();
        value.remove(start, selection.location - start);
        selection = {start, 0};
        return true;
    }
    return insert({});
}

void FakeTextField::moveCaret(int direction) {
    if (selection.length > 0) {
        placeCaret(direction < 0 ? selection.location : selection.location + selection.length);
    } else {
        placeCaret(boundaryFrom(value, selection.location, direction));
    }
}

bool FakeTextField::undo() {
    if (!editable || history_.empty()) return false;
    value = history_.back().value;
    selection = history_.back().selection;
    history_.pop_back();
    return true;
}

void FakeTextField::replaceByAccessibility(QString text, TextRange newSelection) {
    if (accessibilityWritesKeepUndo)
        remember();
    else
        history_.clear();
    value = std::move(text);
    selection = newSelection;
}

QRectF FakeTextField::boundsOf(TextRange range) const {
    const qint64 start = std::clamp<qint64>(range.location, 0, value.size());
    const qint64 end = std::clamp<qint64>(range.location + range.length, start, value.size());
    const QStringView before = QStringView(value).left(start);
    const qint64 lineStart = before.lastIndexOf(u'\n') + 1;
    return {frame.x() + static_cast<double>(start - lineStart) * characterWidth,
            frame.y() + static_cast<double>(before.count(u'\n')) * lineHeight,
            static_cast<double>(end - start) * characterWidth, lineHeight};
}

}  // namespace veltrin
