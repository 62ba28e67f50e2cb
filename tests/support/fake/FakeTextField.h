#pragma once

#include "Platform/Accessibility.h"

#include <QRectF>
#include <QString>

#include <map>
#include <optional>
#include <vector>

namespace veltrin {

/// What a question about an attribute meets in place of the plain answer.
struct FakeAXFault {
    enum class Effect {
        performed,  ///< a write is done at once
        nothing,    ///< a write is not done
        late,       ///< a write is done after `lateness` seconds
    };

    AXError error = AXError::success;  ///< what is answered; for a write whatever its effect
    double cost = 0;                   ///< seconds for which the caller is blocked
    Effect effect = Effect::nothing;
    double lateness = 0;
    int times = -1;  ///< how many questions meet it; negative for all

    static FakeAXFault refused(AXError error) { return {error, 0, Effect::nothing, 0, -1}; }
    static FakeAXFault slow(double seconds) { return {AXError::success, seconds, Effect::performed, 0, -1}; }
    /// Says success and does nothing.
    static FakeAXFault lie() { return {AXError::success, 0, Effect::nothing, 0, -1}; }
    /// Says that it could not be completed, and is done all the same.
    static FakeAXFault doneAllTheSame() { return {AXError::cannotComplete, 0, Effect::performed, 0, -1}; }
    /// Says that it could not be completed, and is done after a while.
    static FakeAXFault doneLater(double seconds) {
        return {AXError::cannotComplete, 0, Effect::late, seconds, -1};
    }
};
using FakeAXFaults = std::map<AXAttribute, FakeAXFault>;

/// A text field of a simulated application: its text, its selection in UTF-16 units, its undo history, and
/// how it behaves under accessibility. Offsets never stand inside a surrogate pair when they were set by
/// keys; accessibility may set any offset within the text, as toolkits let it.
class FakeTextField {
public:
    FakeTextField(quint64 fieldId, QString text)
        : id(fieldId), value(std::move(text)), selection{value.size(), 0} {}

    const quint64 id;
    QString value;
    TextRange selection;

    QString role = QStringLiteral("AXTextArea");
    QString subrole;
    QString title;
    QString description;
    QRectF frame{100, 100, 600, 300};  ///< origin at the top left of the desktop
    bool editable = true;
    bool password = false;
    bool multiline = true;
    bool exists = true;  ///< false once the application has taken it away

    bool valueSettable = true;
    bool selectedTextSettable = true;
    bool selectedTextRangeSettable = true;
    bool accessibilityWritesKeepUndo = true;
    FakeAXFaults readFaults;
    FakeAXFaults writeFaults;
    FakeAXFaults settableFaults;

    QString selectedText() const { return value.mid(selection.location, selection.length); }
    void select(qint64 location, qint64 length) { selection = {location, length}; }
    void selectAll() { selection = {0, value.size()}; }
    void placeCaret(qint64 location) { selection = {location, 0}; }

    /// Replaces the selection, as typing and pasting do; one step of undo. False in a field that is not
    /// editable.
    bool insert(const QString& text);
    bool deleteBackward();
    /// Moves the caret by one character; a selection collapses to its end on that side.
    void moveCaret(int direction);
    bool undo();
    std::size_t undoSteps() const { return history_.size(); }

    /// A write by accessibility.
    void replaceByAccessibility(QString text, TextRange newSelection);
    /// The rectangle of a range, with characters of 8 by 18 on lines that never wrap; 0 wide past the text's
    /// end.
    QRectF boundsOf(TextRange range) const;

private:
    struct Step {
        QString value;
        TextRange selection;
    };
    void remember();

    std::vector<Step> history_;
};

}  // namespace veltrin
