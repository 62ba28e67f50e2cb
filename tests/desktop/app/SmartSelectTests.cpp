#include "desktop/road/RoadTest.h"

namespace veltrin {
namespace {

class SmartSelect : public RoadTest {
protected:
    /// The icon of a selection: small and nearly square, as no other panel is. Null when there is none.
    QRect icon() {
        for (const QRect& panel : panels()) {
            if (panel.width() < 90 && panel.height() < 90) return panel;
        }
        return {};
    }
};

TEST_F(SmartSelect, theProgramShowsItsIconBesideASelectionAndAClickElsewhereClosesIt) {
    startProgram();
    ASSERT_TRUE(waitForLog(QStringLiteral("SmartSelect mouse event tap created")));
    Program editor = Program::mousepad(desktop(), QStringLiteral("alpha bravo charlie"));
    const ProbedField field = fieldInFront(editor);
    clipboard().ownText(QStringLiteral("user's"));
    const QRect word = atspi().rangeExtents(field, 6, 11);

    typist().click(word.center(), 2);
    EXPECT_TRUE(waitUntil(10, [&] { return !icon().isNull(); })) << qPrintable(log());
    EXPECT_TRUE(
        waitForLog(QStringLiteral("SmartSelect show: reason: multiClick source: AXFocusedSelectedText "
                                  "app: Mousepad bundle: org.xfce.mousepad length: 5")))
        << qPrintable(log());
    typist().click(word.center() + QPoint(0, 100));
    EXPECT_TRUE(waitUntil(5, [&] { return icon().isNull(); }));

    typist().drag(word.center(), word.center() + QPoint(60, 0));
    EXPECT_TRUE(waitUntil(10, [&] { return !icon().isNull(); })) << qPrintable(log());
    EXPECT_EQ(x().activeWindow(), editor.window());
    EXPECT_EQ(atspi().text(field), QStringLiteral("alpha bravo charlie"));
    EXPECT_EQ(clipboard().text(), QStringLiteral("user's"));
}

}  // namespace
}  // namespace veltrin
