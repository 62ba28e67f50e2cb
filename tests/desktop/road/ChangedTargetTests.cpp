#include "desktop/road/RoadTest.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace ServiceBehaviours;

/// The target changes while the model works: foreign text stays as it is, and the result is on the clipboard.
class ChangedTarget : public RoadTest {
protected:
    void SetUp() override {
        RoadTest::SetUp();
        serve(slow(1.5, success(answer)));
    }
    void expectCopied() {
        EXPECT_TRUE(waitForLog(QStringLiteral("UI copied result panel shown:"), 15)) << qPrintable(log());
        EXPECT_EQ(clipboard().text(), answer);
        EXPECT_FALSE(log().contains(u"posted Cmd+V"));
    }
};

TEST_F(ChangedTarget, anotherApplicationIsInFront) {
    startProgram();
    Program other = Program::qtEditor(desktop(), {QStringLiteral("--text"), QStringLiteral("other")});
    const ProbedField foreign = atspi().waitForField(other, QStringLiteral("Text"));
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("first"));
    tapTranslate();
    ASSERT_TRUE(waitForGeneration());
    ASSERT_TRUE(x().activate(other.window()));
    expectCopied();
    EXPECT_EQ(atspi().text(field), QStringLiteral("first   "));
    EXPECT_EQ(atspi().text(foreign), QStringLiteral("other"));
}

TEST_F(ChangedTarget, anotherWindowOfTheSameApplicationIsInFront) {
    startProgram();
    Program editor = Program::qtEditor(desktop(), {QStringLiteral("--windows"), QStringLiteral("2"),
                                                   QStringLiteral("--focus"), QStringLiteral("text")});
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("one"));
    tapTranslate();
    ASSERT_TRUE(waitForGeneration());
    const xcb_window_t active = x().activeWindow();
    for (const xcb_window_t window : editor.windows()) {
        if (window == active) continue;
        ASSERT_TRUE(x().activate(window));
    }
    expectCopied();
    EXPECT_EQ(atspi().text(field), QStringLiteral("one   "));
}

TEST_F(ChangedTarget, anotherSelectionStandsInTheField) {
    const QString text = QStringLiteral("alpha beta gamma");
    // The field has the focus before the program comes; and a tap would replace the selection, so a shortcut
    // asks.
    Program editor = Program::mousepad(desktop(), text);
    const ProbedField field = atspi().waitForField(editor);
    atspi().select(field, 0, 5);
    startProgram({{QStringLiteral("shortcut_translation"), QStringLiteral("⌥⇧|T")}});
    typist().chord(QStringLiteral("Alt+Shift+t"));
    ASSERT_TRUE(waitForGeneration());
    atspi().select(field, 6, 10);
    expectCopied();
    EXPECT_TRUE(log().contains(u"Writeback target changed: selected text signature mismatch"));
    EXPECT_EQ(atspi().text(field), text);
}

TEST_F(ChangedTarget, theApplicationIsGone) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    atspi().waitForField(editor);
    typeSentence(QStringLiteral("gone"));
    tapTranslate();
    ASSERT_TRUE(waitForGeneration());
    editor.kill();
    expectCopied();
}

TEST_F(ChangedTarget, theApplicationStandsStill) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("still"));
    tapTranslate();
    ASSERT_TRUE(waitForGeneration());
    editor.stop();
    expectCopied();
    editor.resume();
    typist().pause(0.5);
    EXPECT_EQ(atspi().text(field), QStringLiteral("still   "));
}

}  // namespace
}  // namespace veltrin
