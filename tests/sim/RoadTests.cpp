#include "RoadFixture.h"

namespace veltrin {
namespace {

TEST_F(RoadTest, threeTapsReplaceTheFieldByItsTranslationAndTheClipboardComesBack) {
    launch();
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));  // the typed spaces stay until then
    EXPECT_EQ(pill(), QStringLiteral("正在翻译"));
    desktop.advance(0.3);
    EXPECT_EQ(field.value, QStringLiteral("Good day."));
    EXPECT_FALSE(pill());
    EXPECT_EQ(copied(), QStringLiteral("Good day."));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::temporary);
    finish();
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::lasting);
    EXPECT_EQ(remembered(), true);
    ASSERT_EQ(veltrin.behaviors().recentBehaviors().size(), 1U);
    EXPECT_EQ(veltrin.behaviors().recentBehaviors().front().detail, QStringLiteral("translate"));
    EXPECT_EQ(veltrin.behaviors().recentBehaviors().front().context, QStringLiteral("Editor"));
    EXPECT_TRUE(veltrin.model.lastPrompt.contains(QStringLiteral("Guten Tag")));

    desktop.keyboard.chord(FakeKeyCode::z, KeyFlags::command);
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));  // the field's own undo brings the text back
}

TEST_F(RoadTest, aSelectionIsReplacedAloneWhenTheUserWantsTheCurrentPlace) {
    replaceOnlyTheCurrentPlace();
    launch();
    field.select(6, 3);
    modelAnswers("day.");
    veltrin.pressTranslateShortcut();
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Guten day."));
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(editor.pressesOf(SimulatedVeltrin::translateKey), 0);  // claimed: the editor saw no half a key
    EXPECT_EQ(editor.releasesOf(SimulatedVeltrin::translateKey), 0);
}

TEST_F(RoadTest, aCaretGetsTheResultBesideTheTextWhenTheUserWantsTheCurrentPlace) {
    replaceOnlyTheCurrentPlace();
    launch();
    modelAnswers("Good day.");
    veltrin.pressTranslateShortcut();
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Guten TagGood day."));
}

TEST_F(RoadTest, inSmartModeTheWordsAroundASelectionDecide) {
    store("translation_replace_mode", QStringLiteral("smart"));
    field.value = QStringLiteral("请把下面这句翻译一下：hello");
    launch();
    field.select(11, 5);
    modelAnswers("你好。");
    veltrin.pressTranslateShortcut();
    finish();
    EXPECT_EQ(field.value, QStringLiteral("请把下面这句翻译一下：你好。"));

    field.value = QStringLiteral("one two");
    field.select(0, 3);
    modelAnswers("All.");
    veltrin.pressTranslateShortcut();
    finish();
    EXPECT_EQ(field.value, QStringLiteral("All."));
}

TEST_F(RoadTest, whatIsTypedIntoAFieldReadWholeIsOverwritten) {
    launch();
    modelAnswers("Good day.", 2);
    veltrin.tapTranslate();
    veltrin.type(QStringLiteral("more"));
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   more"));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Good day."));  // accepted: a field read whole may have changed
}

TEST_F(RoadTest, passwordFieldsAreNeverReadNorSentNorWritten) {
    field.password = true;
    launch();
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    EXPECT_EQ(message(), QStringLiteral("没有读到可处理的文本\n请先选中或点进文本框"));
    finish();
    EXPECT_EQ(veltrin.model.prompts, 0);
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));
    EXPECT_EQ(desktop.keyPoster.postedCount, 0);
    EXPECT_EQ(copied(), QStringLiteral("mine"));
}

TEST_F(RoadTest, theProgramsOwnFieldIsAFieldLikeAnyOther) {
    FakeTextField& own = desktop.workspace.program().addField(QStringLiteral("Hallo"));
    desktop.focus(own);
    launch();
    modelAnswers("Hello.");
    veltrin.tapTranslate();
    finish();
    EXPECT_EQ(own.value, QStringLiteral("Hello."));
    EXPECT_EQ(copied(), QStringLiteral("mine"));
}

TEST_F(RoadTest, theResultForAReadOnlyFieldIsCopied) {
    field.editable = false;
    launch();
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    desktop.advance(0.4);
    EXPECT_EQ(message(), QStringLiteral("已复制\n翻译后的内容：Good day."));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag"));
    EXPECT_EQ(copied(), QStringLiteral("Good day."));
    EXPECT_EQ(remembered(), false);
}

TEST_F(RoadTest, aFieldThatLetsNothingBeSetIsNotDoubled) {
    field.valueSettable = false;
    field.selectedTextSettable = false;
    field.selectedTextRangeSettable = false;
    launch();
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    finish();
    // All was to be replaced and could not be selected: a paste at the caret would leave both texts.
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));
    EXPECT_EQ(copied(), QStringLiteral("Good day."));
}

TEST_F(RoadTest, aWriteThatComesToNothingLeavesTheSelectionToTheUser) {
    field.valueSettable = false;
    field.selectedTextSettable = false;
    desktop.keyPoster.refusal = QStringLiteral("refused");
    launch();
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    finish();
    EXPECT_EQ(field.selection, (TextRange{12, 0}));
    veltrin.type(QStringLiteral("x"));
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   x"));
}

TEST_F(RoadTest, aCaretNeedsNoSettableAttributes) {
    replaceOnlyTheCurrentPlace();
    field.valueSettable = false;
    field.selectedTextSettable = false;
    field.selectedTextRangeSettable = false;
    launch();
    modelAnswers("Good day.");
    veltrin.pressTranslateShortcut();
    finish();
    // A field that nothing says is writable keeps its trust while it keeps the focus.
    EXPECT_EQ(field.value, QStringLiteral("Guten TagGood day."));
}

TEST_F(RoadTest, aProgramWithoutAccessibilityIsReadAndWrittenByTheClipboard) {
    editor.accessible = false;
    launch();
    modelAnswers("Good day.");
    veltrin.tapTranslate();
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Good day."));
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(remembered(), true);
}

TEST_F(RoadTest, typingIsNeverHeldUpWhileARunIsUnderWay) {
    launch();
    modelAnswers("Good day.", 60);
    veltrin.tapTranslate();
    desktop.focus(address);
    address.placeCaret(address.value.size());
    veltrin.type(QStringLiteral("/a b  c"));
    EXPECT_EQ(address.value, QStringLiteral("example.org/a b  c"));
    EXPECT_EQ(desktop.keyEventTaps.swallowed, 0);
    finish();
}

}  // namespace
}  // namespace veltrin
