#include "ExternalAccess/ExternalTextInputLocator.h"
#include "ScriptedAccessibility.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

#include <limits>

namespace veltrin {
namespace {

using test::ScriptedElement;

class LocatorTest : public testing::Test {
protected:
    LocatorTest() {
        ax.application->answer(AXAttribute::focusedUIElement, AXElementRef(field));
        ax.application->answer(AXAttribute::focusedWindow, AXElementRef(window));
        frame(*window, {100, 200, 800, 600});
    }
    static void frame(const ScriptedElement& element, const QRectF& rect) {
        element.answer(AXAttribute::position, rect.topLeft());
        element.answer(AXAttribute::size, rect.size());
    }
    void select(TextRange range, const QRectF& bounds) {
        field->answer(AXAttribute::selectedTextRange, range);
        field->answer(AXAttribute::boundsForRange, bounds);
    }
    void noFocus() { ax.application->fail(AXAttribute::focusedUIElement, AXError::noValue); }
    std::optional<QRectF> anchor() {
        return ExternalTextInputLocator(ax, workspace, screens).bestAnchorRect();
    }

    test::ScriptedAccessibility ax;
    test::ScriptedWorkspace workspace;
    test::ScriptedScreens screens;
    std::shared_ptr<ScriptedElement> field = std::make_shared<ScriptedElement>(42);
    std::shared_ptr<ScriptedElement> window = std::make_shared<ScriptedElement>(42);
};

TEST_F(LocatorTest, theSelectionItselfIsTheBestAnchorAndStandsUpsideDown) {
    field->answer(AXAttribute::role, QStringLiteral("AXTextArea"));
    field->answer(AXAttribute::title, QStringLiteral("Body"));
    select({3, 4}, {10, 100, 32, 18});
    LogCapture log;
    EXPECT_EQ(anchor(), QRectF(10, 1080 - 100 - 18, 32, 18));
    ASSERT_EQ(ax.parameters.size(), 1U);
    EXPECT_EQ(std::get<TextRange>(ax.parameters[0]), (TextRange{3, 4}));
    EXPECT_EQ(
        log.lines(),
        (QStringList{
            QStringLiteral("AX locator begin"),
            QStringLiteral("AX frontmost app: Editor pid: 42 bundle: org.editor isSelf: false"),
            QStringLiteral("AX focused element: role: AXTextArea subrole: nil title: Body description: nil"),
            QStringLiteral("AX selected range: location: 3 length: 4"),
            QStringLiteral("AX bounds for range raw: (10, 100, 32, 18) converted: (10, 962, 32, 18) "
                           "usable: true"),
            QStringLiteral("AX anchor selected: source=selectedTextRange rect: (10, 962, 32, 18)"),
        }));
}

TEST_F(LocatorTest, aCaretAsksForTheCharacterAfterIt) {
    select({3, 0}, {10, 100, 8, 18});
    LogCapture log;
    EXPECT_TRUE(anchor());
    EXPECT_EQ(std::get<TextRange>(ax.parameters.at(0)), (TextRange{3, 1}));
    EXPECT_TRUE(log.has(QStringLiteral("AX selected range adjusted for caret: location: 3 length: 1")));
}

TEST_F(LocatorTest, aCaretAtTheEndFallsBackToItsField) {
    select({9, 0}, {10, 100, 0, 18});
    frame(*field, {50, 60, 400, 200});
    LogCapture log;
    EXPECT_EQ(anchor(), QRectF(50, 1080 - 60 - 200, 400, 200));
    EXPECT_TRUE(
        log.has(QStringLiteral("AX anchor candidate rejected: selectedTextRange unavailable or unusable")));
    EXPECT_TRUE(
        log.has(QStringLiteral("AX focused element bounds raw: (50, 60, 400, 200) converted: "
                               "(50, 820, 400, 200) usable: true")));
    EXPECT_TRUE(
        log.has(QStringLiteral("AX anchor selected: source=focusedElementBounds rect: (50, 820, 400, 200)")));
}

TEST_F(LocatorTest, aRectangleThatCannotBeUsedIsRejected) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    frame(*field, {50, 60, 400, 200});
    for (const QRectF& bad : {QRectF(0, 0, 1, 18), QRectF(0, 0, 18, 1), QRectF(inf, 0, 9, 9),
                              QRectF(0, nan, 9, 9), QRectF(0, 0, inf, 9), QRectF(0, 0, 9, -9)}) {
        select({0, 1}, bad);
        EXPECT_EQ(anchor(), QRectF(50, 820, 400, 200));
    }
    select({0, 1}, {5, 5, 1.1, 1.1});
    ASSERT_TRUE(anchor());
    EXPECT_DOUBLE_EQ(anchor()->width(), 1.1);
}

TEST_F(LocatorTest, withoutAnyBoundsTheBottomOfTheWindowIsTheEstimate) {
    LogCapture log;
    // The window stands from y 280 to 880 in the layer's coordinates.
    EXPECT_EQ(anchor(), QRectF(100 + 32, 280 + 18, 736, 60));
    EXPECT_TRUE(log.has(
        QStringLiteral("AX anchor candidate rejected: focusedElementBounds unavailable or unusable")));
    EXPECT_TRUE(log.has(QStringLiteral("AX locator fallback: no usable bounds")));
    EXPECT_TRUE(log.has(
        QStringLiteral("AX anchor selected: source=frontmostWindowInputEstimate rect: (132, 298, 736, 60)")));
}

TEST_F(LocatorTest, theEstimateKeepsWithinItsLimits) {
    noFocus();
    frame(*window, {0, 0, 100, 100});
    EXPECT_EQ(anchor(), QRectF(20, 980 + 18, 120, 44));  // wider than the window
    frame(*window, {0, 0, 3000, 1000});
    EXPECT_EQ(anchor(), QRectF(56, 80 + 18, 3000 - 112, 74));
}

TEST_F(LocatorTest, aScreenAboveTheMainOneCarriesTheFlip) {
    screens.all.push_back({QRectF(0, 1080, 1280, 1024), QRectF()});
    select({0, 1}, {10, 1124, 8, 18});
    EXPECT_EQ(anchor(), QRectF(10, 2104 - 1124 - 18, 8, 18));
}

TEST_F(LocatorTest, withoutAFocusedElementTheWindowIsEstimated) {
    noFocus();
    LogCapture log;
    EXPECT_EQ(anchor(), QRectF(132, 298, 736, 60));
    EXPECT_TRUE(log.has(QStringLiteral("AX locator fallback: focused element error -25212")));
}

TEST_F(LocatorTest, weChatWithoutAFocusedElementIsNeverEstimated) {
    workspace.frontmost =
        RunningApplication{42, QStringLiteral("WeChat"), QStringLiteral("com.tencent.xinWeChat"), 0};
    {
        noFocus();
        LogCapture log;
        EXPECT_FALSE(anchor());
        EXPECT_EQ(log.lines().last(),
                  QStringLiteral("AX locator fallback: WeChat has no reliable caret; use mouse anchor"));
    }
    ax.application->answer(AXAttribute::focusedUIElement, AXElementRef(field));
    frame(*field, {50, 60, 400, 200});
    EXPECT_EQ(anchor(), QRectF(50, 820, 400, 200));
}

TEST_F(LocatorTest, theFirstWindowStandsInForTheFocusedOne) {
    noFocus();
    const auto other = std::make_shared<ScriptedElement>(42);
    frame(*other, {0, 0, 800, 600});
    ax.application->answer(AXAttribute::windows, std::vector<AXElementRef>{other, window});
    ax.application->fail(AXAttribute::focusedWindow, AXError::noValue);
    {
        LogCapture log;
        EXPECT_EQ(anchor(), QRectF(32, 480 + 18, 736, 60));
        EXPECT_TRUE(log.has(QStringLiteral("AX focused window unavailable: error -25212")));
    }
    // A focused window without a usable frame is passed over too.
    ax.application->answer(AXAttribute::focusedWindow, AXElementRef(window));
    frame(*window, {0, 0, 1, 1});
    EXPECT_EQ(anchor(), QRectF(32, 480 + 18, 736, 60));
}

TEST_F(LocatorTest, withoutAWindowThereIsNoAnchor) {
    noFocus();
    ax.application->fail(AXAttribute::focusedWindow, AXError::noValue);
    ax.application->fail(AXAttribute::windows, AXError::failure);
    LogCapture log;
    EXPECT_FALSE(anchor());
    EXPECT_TRUE(log.has(QStringLiteral("AX windows unavailable: error -25200")));
    EXPECT_EQ(log.lines().last(), QStringLiteral("AX locator fallback: no focused window bounds"));
    ax.application->answer(AXAttribute::windows, std::vector<AXElementRef>{});
    EXPECT_FALSE(anchor());
}

TEST_F(LocatorTest, needsTheRightToReadAndAnApplication) {
    {
        ax.trusted = false;
        LogCapture log;
        EXPECT_FALSE(anchor());
        EXPECT_EQ(log.lines().last(), QStringLiteral("AX locator fallback: AXIsProcessTrusted false"));
        ax.trusted = true;
    }
    workspace.frontmost.reset();
    LogCapture log;
    EXPECT_FALSE(anchor());
    EXPECT_EQ(log.lines().last(), QStringLiteral("AX locator fallback: no frontmost app"));
}

TEST_F(LocatorTest, ourOwnWindowIsLocatedAndNoted) {
    workspace.frontmost = RunningApplication{42, std::nullopt, QStringLiteral("com.veltrin.app"), 0};
    LogCapture log;
    EXPECT_TRUE(anchor());
    EXPECT_TRUE(log.has(
        QStringLiteral("AX locator note: frontmost app is Veltrin; this is not an external text target")));
    EXPECT_TRUE(
        log.has(QStringLiteral("AX frontmost app: unknown pid: 42 bundle: com.veltrin.app isSelf: true")));
    workspace.frontmost = RunningApplication{42, std::nullopt, std::nullopt, 0};
    anchor();
    EXPECT_TRUE(log.has(QStringLiteral("AX frontmost app: unknown pid: 42 bundle: nil isSelf: false")));
}

TEST_F(LocatorTest, everyRefusalHasItsLine) {
    const auto expectLine = [&](const char* line) {
        LogCapture log;
        EXPECT_TRUE(anchor());  // the window's estimate
        EXPECT_TRUE(log.has(QString::fromUtf8(line))) << line;
    };
    field->fail(AXAttribute::selectedTextRange, AXError::failure);
    expectLine("AX selected range unavailable: error -25200");
    field->answer(AXAttribute::selectedTextRange, true);
    expectLine("AX selected range unavailable: could not decode CFRange");
    field->answer(AXAttribute::selectedTextRange, TextRange{-1, 0});
    expectLine("AX bounds for range unavailable: could not create range parameter");
    field->answer(AXAttribute::selectedTextRange, TextRange{0, 1});
    field->fail(AXAttribute::boundsForRange, AXError::parameterizedAttributeUnsupported);
    expectLine("AX bounds for range unavailable: error -25213");
    field->answer(AXAttribute::boundsForRange, QPointF(1, 1));
    expectLine("AX bounds for range unavailable: could not decode CGRect");
    expectLine("AX focused element position unavailable: error -25205");
    field->answer(AXAttribute::position, QPointF(1, 1));
    expectLine("AX focused element size unavailable: error -25205");
    field->answer(AXAttribute::size, QSizeF(9, 9));
    field->answer(AXAttribute::position, true);
    expectLine("AX focused element position unavailable: could not decode CGPoint");
    field->answer(AXAttribute::position, QPointF(1, 1));
    field->answer(AXAttribute::size, true);
    expectLine("AX focused element size unavailable: could not decode CGSize");
}

}  // namespace
}  // namespace veltrin
