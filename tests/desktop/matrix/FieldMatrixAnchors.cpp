#include "desktop/matrix/FieldMatrix.h"
#include "desktop/matrix/MatrixSample.h"
#include "support/Slowdown.h"
#include "support/desktop/DesktopTest.h"
#include "support/desktop/Waiting.h"
#include "support/fields/PassageOnScreen.h"

#include <algorithm>
#include <cmath>

namespace veltrin {

using namespace Qt::StringLiterals;

QRectF FieldMatrix::selectionOnScreen(qsizetype start, qsizetype end) {
    // Only around the field: tool bars and status lines change, too.
    QRect area = world().x().geometry(application().window());
    const QRectF element = elementOnScreen();
    if (element.isValid()) area &= element.toAlignedRect().adjusted(-30, -30, 30, 30);
    return passageOnScreen(world().x(), area, field(), start, end);
}

QRectF FieldMatrix::elementOnScreen() {
    const auto element = focusedElement(text().accessibility, application().process());
    if (!element) return {};
    const auto position = readAttribute<QPointF>(text().accessibility, element, AXAttribute::position);
    const auto size = readAttribute<QSizeF>(text().accessibility, element, AXAttribute::size);
    return position.value && size.value ? QRectF(*position.value, *size.value) : QRectF();
}

/// Which way the anchor was found for `state`; `measured` is the passage that it should stand beside.
QString FieldMatrix::anchor(const FieldState& state, const FieldState& measured, Beside beside) {
    set(measured);
    QRectF onScreen = isTerminal() ? QRectF() : selectionOnScreen(measured.start, measured.end);
    if (!onScreen.isEmpty() && beside == Beside::end) onScreen.setLeft(onScreen.right() - 2);
    if (!onScreen.isEmpty() && beside == Beside::nextLine) {
        onScreen.translate(0, onScreen.height());
        onScreen.setWidth(2);
    }
    set(state);
    const TextRange range{state.start, state.end - state.start};
    waitUntil(readingPatience(), [&] { return text().reader.readFocusedText().selectedRange == range; });
    const auto anchorRect = text().locator.bestAnchorRect();
    if (!anchorRect) return u"none"_s;
    // The anchor's origin is at the bottom left.
    QRectF found = *anchorRect;
    found.moveTop(world().x().screen().height_in_pixels - anchorRect->y() - anchorRect->height());

    const QRectF element = elementOnScreen();
    const QRectF window(world().x().geometry(application().window()));
    const auto print = [](const QRectF& r) {
        return u"(%1 %2 %3×%4)"_s.arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height()).toStdString();
    };
    SCOPED_TRACE("anchor " + print(found) + " passage " + print(onScreen) + " element " + print(element) +
                 " window " + print(window));
    const auto contains = [](const QRectF& outer, const QRectF& inner, double slack) {
        return outer.adjusted(-slack, -slack, slack, slack).contains(inner);
    };
    const bool isElement = element.isValid() && contains(element, found, 1) && contains(found, element, 1);
    if (isElement) {
        EXPECT_TRUE(contains(window, found, 2));
        EXPECT_TRUE(onScreen.isEmpty() || contains(found, onScreen, 4));
        return u"element"_s;
    }
    if (!onScreen.isEmpty() && std::abs(found.left() - onScreen.left()) <= 6 &&
        std::abs(found.right() - onScreen.right()) <= 8 && found.top() <= onScreen.center().y() &&
        found.bottom() >= onScreen.center().y() && found.height() < 60) {
        return u"text"_s;
    }
    // The window's estimate stands along its lower edge.
    if (!element.isValid() && contains(window, found, 8) && found.bottom() > window.bottom() - 40)
        return u"window"_s;
    if (isTerminal() && contains(window, found, 2) && found.height() < 60) return u"text"_s;
    ADD_FAILURE() << "the anchor stands nowhere";
    return u"wrong"_s;
}

QString FieldMatrix::anchorSelection() {
    if (isTerminal()) return u"–"_s;
    const FieldState passage = passageOf(u"mid"_s);
    return anchor(passage, passage, Beside::itself);
}

QString FieldMatrix::anchorCaret() {
    const FieldState passage = passageOf(u"mid"_s);
    const FieldState caret{sample, passage.start, passage.start};
    return anchor(isTerminal() ? FieldState{sample, sample.size(), sample.size()} : caret,
                  {sample, passage.start, passage.start + 1}, Beside::itself);
}

QString FieldMatrix::anchorEnd() {
    const qsizetype end = sample.size();
    return anchor({sample, end, end}, passageOf(u"tail"_s), Beside::end);
}

/// The caret on a line that is still empty.
QString FieldMatrix::anchorLine() {
    // A page's editor has no empty last line that the test could set.
    if (isTerminal() || isOneLine() || row_.field == u"editable") return u"–"_s;
    const FieldState passage = passageOf(u"ab"_s);
    const QString lines = sample + u'\n';
    return anchor({lines, lines.size(), lines.size()}, {lines, passage.start, passage.end}, Beside::nextLine);
}

}  // namespace veltrin
