#include "WritebackFixture.h"

#include <limits>

namespace veltrin {
namespace {

using namespace test;

TEST_F(WritebackTest, anEmptyReplacementTouchesNothing) {
    const auto target = readSelecting(0, 3);
    const qint64 count = desktop.pasteboard.changeCount();
    LogCapture log;
    const ExternalTextWritebackResult expected{false, WritebackStrategy::none,
                                               QStringLiteral("Empty replacement"),
                                               WritebackFailure::emptyReplacement};
    EXPECT_EQ(apply(QString(), target), expected);
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    EXPECT_EQ(field.value, QStringLiteral("0123456789abcde fin"));
    EXPECT_EQ(
        log.lines(),
        (QStringList{QStringLiteral("Writeback requested: replacementLength: 0 source: selectedText role: "
                                    "AXTextArea bundle: org.editor forceReplaceAll: false"),
                     QStringLiteral("Writeback skipped: empty replacement")}));
}

TEST_F(WritebackTest, textOfBlanksIsNotEmpty) {
    EXPECT_EQ(apply(QStringLiteral(" "), readSelecting(0, 3)), pasted);
    EXPECT_EQ(field.value, QStringLiteral(" 3456789abcde fin"));
}

TEST_F(WritebackTest, aSelectionIsRestoredAndReplacedExactly) {
    const auto target = readSelecting(10, 5);
    field.placeCaret(2);  // the user has clicked elsewhere in the meantime
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), pasted);
    EXPECT_EQ(field.value, QStringLiteral("0123456789NEW fin"));
    EXPECT_TRUE(log.has(QStringLiteral(
        "Writeback clipboard paste begin, selectedRange: loc:10 len:5 forceReplaceAll: false")));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback clipboard paste activated app: Editor pid: ") +
                        QString::number(editor.pid)));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback clipboard fallback posted Cmd+V")));
    EXPECT_EQ(log.lines().last(), QStringLiteral("Writeback success: strategy: clipboardPaste"));
}

TEST_F(WritebackTest, aPasteKeepsTheFieldsUndoHistory) {
    apply(QStringLiteral("NEW"), readSelecting(10, 5));
    EXPECT_TRUE(field.undo());
    EXPECT_EQ(field.value, QStringLiteral("0123456789abcde fin"));
}

TEST_F(WritebackTest, replaceAllSelectsTheWholeField) {
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(10, 5), true), pasted);
    EXPECT_EQ(field.value, QStringLiteral("NEW"));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback selectAll done, length: 19")));
}

TEST_F(WritebackTest, atACaretTheTextGoesInWhereTheCaretIsNow) {
    field.placeCaret(10);
    const auto target = read();
    field.placeCaret(3);
    EXPECT_EQ(apply(QStringLiteral("-"), target), pasted);
    EXPECT_EQ(field.value, QStringLiteral("012-3456789abcde fin"));
}

TEST_F(WritebackTest, withoutARangeTheCaretStaysWhereItIs) {
    auto target = readSelecting(3, 0);
    target.selectedRange.reset();
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("-"), target), pasted);
    EXPECT_EQ(field.value, QStringLiteral("012-3456789abcde fin"));
    EXPECT_TRUE(log.has(
        QStringLiteral("Writeback clipboard paste begin, selectedRange: nil forceReplaceAll: false")));
}

// Meant: nothing can be selected in a field that cannot be read.
TEST_F(WritebackTest, replaceAllInAnUnreadableFieldPastesAtTheCaretAndCountsAsDone) {
    const auto target = readSelecting(3, 0);
    field.readFaults[AXAttribute::value] = FakeAXFault::refused(AXError::failure);
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("-"), target, true), pasted);
    EXPECT_EQ(field.value, QStringLiteral("012-3456789abcde fin"));
    EXPECT_FALSE(log.hasStartingWith(QStringLiteral("Writeback selectAll done")));
}

TEST_F(WritebackTest, anEmptyFieldHasNothingToSelect) {
    const auto target = readSelecting(0, 3);
    field.value.clear();
    field.placeCaret(0);
    field.selectedTextRangeSettable = false;
    EXPECT_EQ(apply(QStringLiteral("new"), target, true), pasted);
    EXPECT_EQ(field.value, QStringLiteral("new"));
}

TEST_F(WritebackTest, thePostNamesItsTargetAndWhetherTheTextHasLineBreaks) {
    const auto target = readSelecting(0, 3);
    apply(QStringLiteral("one line"), target);
    apply(QStringLiteral("two\nlines"), target);
    apply(QStringLiteral("two\rlines"), target);
    apply(QStringLiteral("two\u2028lines"), target);
    const auto& records = desktop.keyPoster.records;
    ASSERT_EQ(records.size(), 4U);
    EXPECT_FALSE(records[0].chord.textHasLineBreak);
    for (std::size_t i = 1; i < 4; ++i)
        EXPECT_TRUE(records[i].chord.textHasLineBreak) << i;
    EXPECT_EQ(records[0].chord.keyCode, KeyCode::v);
    EXPECT_EQ(records[0].chord.flags, KeyFlags::command);
    EXPECT_EQ(records[0].chord.target.processIdentifier, editor.pid);
    EXPECT_EQ(records[0].chord.target.window, editor.activeWindow->id);
    EXPECT_EQ(records[0].chord.target.element, target.element);
}

TEST_F(WritebackTest, theTargetsApplicationIsBroughtToFrontAgain) {
    const auto target = readSelecting(0, 3);
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), std::nullopt);
    desktop.focus(other.addField(QStringLiteral("foreign")));
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), pasted);
    EXPECT_EQ(field.value, QStringLiteral("NEW3456789abcde fin"));
    EXPECT_EQ(other.focusedField()->value, QStringLiteral("foreign"));
    ASSERT_EQ(desktop.workspace.activations.size(), 1U);
    EXPECT_EQ(desktop.workspace.activations[0].pid, editor.pid);
    EXPECT_EQ(desktop.workspace.activations[0].options, ActivateOptions::ignoringOtherApps);
}

TEST_F(WritebackTest, anApplicationHasAMomentToComeToFront) {
    const auto target = readSelecting(0, 3);
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), std::nullopt);
    desktop.focus(other.addField(QStringLiteral("foreign")));
    desktop.workspace.activationLatency = 0.05;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), pasted);
    EXPECT_EQ(field.value, QStringLiteral("NEW3456789abcde fin"));
    EXPECT_LT(desktop.runLoop.blockedSeconds(), 0.1);
}

TEST_F(WritebackTest, anApplicationThatDoesNotComeToFrontIsNotWaitedForLong) {
    const auto target = readSelecting(0, 3);
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), std::nullopt);
    desktop.focus(other.addField(QStringLiteral("foreign")));
    desktop.workspace.refusesActivation = true;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), written);
    EXPECT_EQ(other.focusedField()->value, QStringLiteral("foreign"));
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_LT(desktop.runLoop.blockedSeconds(), 0.25);
}

TEST_F(WritebackTest, aProcessThatIsGoneGetsNothingAndTheClipboardComesBack) {
    const auto target = readSelecting(0, 3);
    editor.quit();
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), std::nullopt);
    desktop.focus(other.addField(QStringLiteral("foreign")));
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), failed);
    EXPECT_TRUE(desktop.workspace.activations.empty());
    EXPECT_EQ(other.focusedField()->value, QStringLiteral("foreign"));
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

// A selection that does not take hold

TEST_F(WritebackTest, aSelectionThatDoesNotTakeHoldIsNeverPastedBeside) {
    const auto target = readSelecting(10, 5);
    field.placeCaret(15);
    field.writeFaults[AXAttribute::selectedTextRange] = FakeAXFault::lie();
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), written);
    EXPECT_EQ(field.value, QStringLiteral("0123456789NEW fin"));  // by the value, and only once
    EXPECT_TRUE(desktop.keyPoster.records.empty());
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback clipboard paste refused: selection did not take hold")));
}

TEST_F(WritebackTest, aWholeFieldThatCannotBeSelectedIsReplacedByItsValue) {
    field.selectedTextRangeSettable = false;
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(3, 0), true), written);
    EXPECT_EQ(field.value, QStringLiteral("NEW"));
    EXPECT_TRUE(desktop.keyPoster.records.empty());
}

TEST_F(WritebackTest, aSelectionThatStandsNeedsNoSettableRange) {
    field.selectedTextRangeSettable = false;
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(10, 5)), pasted);
    EXPECT_EQ(field.value, QStringLiteral("0123456789NEW fin"));
}

// Direct writing

TEST_F(WritebackTest, theSelectionIsReplacedDirectlyWhenNoPasteCanBePosted) {
    refusePaste();
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("a👍"), readSelecting(10, 5)), written);
    EXPECT_EQ(field.value, QStringLiteral("0123456789a👍 fin"));
    EXPECT_EQ(field.selection, (TextRange{13, 0}));  // the emoji counts two units
    EXPECT_TRUE(log.has(QStringLiteral("Writeback cursor set: location: 13 error: 0")));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback AXSelectedText success, cursor: 13")));
    EXPECT_EQ(log.lines().last(), QStringLiteral("Writeback success: strategy: axValue"));
}

TEST_F(WritebackTest, atACaretTheTextIsInsertedDirectly) {
    refusePaste();
    EXPECT_EQ(apply(QStringLiteral("-"), readSelecting(3, 0)), written);
    EXPECT_EQ(field.value, QStringLiteral("012-3456789abcde fin"));
    EXPECT_EQ(field.selection, (TextRange{4, 0}));
}

TEST_F(WritebackTest, withoutARangeTheCursorIsTheTextsLength) {
    refusePaste();
    auto target = readSelecting(3, 0);
    target.selectedRange.reset();
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("12345"), target), written);
    EXPECT_TRUE(log.has(QStringLiteral("Writeback AXSelectedText success, cursor: 5")));
}

TEST_F(WritebackTest, aSelectionThatCannotBeReplacedIsReplacedInTheValue) {
    refusePaste();
    field.writeFaults[AXAttribute::selectedText] = FakeAXFault::refused(AXError::failure);
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("👍"), readSelecting(10, 5)), written);
    EXPECT_EQ(field.value, QStringLiteral("0123456789👍 fin"));
    EXPECT_EQ(field.selection, (TextRange{12, 0}));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback AXSelectedText failed: -25200 falling back to AXValue")));
}

TEST_F(WritebackTest, aWriteThatLandedAfterAllIsNotRepeated) {
    refusePaste();
    field.writeFaults[AXAttribute::selectedText] = FakeAXFault::doneAllTheSame();
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(10, 5)), failed);
    EXPECT_EQ(field.value, QStringLiteral("0123456789NEW fin"));
    field.value = QStringLiteral("one two");
    EXPECT_EQ(apply(QStringLiteral("-"), readSelecting(3, 0)), failed);
    EXPECT_EQ(field.value, QStringLiteral("one- two"));
}

TEST_F(WritebackTest, aRangeThatNoLongerFitsIsNotWritten) {
    const auto target = readSelecting(10, 5);
    refusePaste();
    field.selectedTextSettable = false;
    for (const int length : {12, 9}) {
        field.value = QString(length, u'x');
        field.placeCaret(0);
        LogCapture log;
        EXPECT_EQ(apply(QStringLiteral("NEW"), target), failed);
        EXPECT_EQ(field.value, QString(length, u'x'));
        EXPECT_TRUE(log.has(QStringLiteral("Writeback AXValue range out of bounds")));
    }
    auto negative = target;
    negative.selectedRange = TextRange{-1, 3};
    EXPECT_EQ(apply(QStringLiteral("NEW"), negative), failed);
    auto absurd = target;
    absurd.selectedRange = TextRange{1, std::numeric_limits<qint64>::max()};
    EXPECT_EQ(apply(QStringLiteral("NEW"), absurd), failed);
    EXPECT_EQ(field.value, QString(9, u'x'));
}

TEST_F(WritebackTest, aPassageInAFieldThatCannotBeReadIsNotWritten) {
    const auto target = readSelecting(10, 5);
    refusePaste();
    field.selectedTextSettable = false;
    field.readFaults[AXAttribute::value] = FakeAXFault::refused(AXError::cannotComplete);
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), failed);
    EXPECT_TRUE(log.has(QStringLiteral("Writeback AXValue read failed: -25204")));
    EXPECT_EQ(field.value, QStringLiteral("0123456789abcde fin"));
}

TEST_F(WritebackTest, refusedValuesAreLoggedWithTheirCodes) {
    refusePaste();
    field.selectedTextSettable = false;
    field.writeFaults[AXAttribute::value] = FakeAXFault::refused(AXError::cannotComplete);
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(10, 5)), failed);
    EXPECT_TRUE(log.has(QStringLiteral("Writeback AXValue set failed: -25204")));
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(10, 5), true), failed);
    EXPECT_TRUE(log.has(QStringLiteral("Writeback AXValue whole set failed: -25204")));
}

TEST_F(WritebackTest, aFieldWhoseValueMayNotBeSetFails) {
    refusePaste();
    field.selectedTextSettable = false;
    field.settableFaults[AXAttribute::value] = FakeAXFault::refused(AXError::failure);
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(10, 5)), failed);
    EXPECT_EQ(field.value, QStringLiteral("0123456789abcde fin"));
}

// Accepted: this is the last way for a caret, and it replaces the whole field although that was not asked
// for.
TEST_F(WritebackTest, aCaretInAFieldWithoutASettableSelectionEndsInReplacingTheField) {
    refusePaste();
    field.selectedTextSettable = false;
    EXPECT_EQ(apply(QStringLiteral("NEW👍"), readSelecting(3, 0)), written);
    EXPECT_EQ(field.value, QStringLiteral("NEW👍"));
    EXPECT_EQ(field.selection, (TextRange{5, 0}));
}

TEST_F(WritebackTest, replaceAllWritesTheWholeValue) {
    refusePaste();
    EXPECT_EQ(apply(QStringLiteral("NEW"), readSelecting(10, 5), true), written);
    EXPECT_EQ(field.value, QStringLiteral("NEW"));
}

// The clipboard road

TEST_F(WritebackTest, aReadByTheClipboardGoesBackByTheClipboard) {
    ExternalTextReadResult target;
    target.requiresClipboardWriteback = true;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), pasted);
    EXPECT_EQ(road.written, QStringList(QStringLiteral("NEW")));
    EXPECT_TRUE(desktop.keyPoster.records.empty());
}

TEST_F(WritebackTest, withoutAnElementThereIsNoOtherWay) {
    const ExternalTextWritebackResult noTarget{false, WritebackStrategy::none, QStringLiteral("No target"),
                                               WritebackFailure::noWritableTarget};
    ExternalTextReadResult target;
    LogCapture log;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), noTarget);
    EXPECT_TRUE(road.written.isEmpty());
    target.requiresClipboardWriteback = true;
    road.succeeds = false;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), noTarget);
    EXPECT_EQ(log.lines().filter(QStringLiteral("Writeback failed: no AX target element")).size(), 2);
    ExternalTextWriteback alone(desktop.accessibility, desktop.workspace, *loan, desktop.keyPoster,
                                desktop.runLoop);
    EXPECT_EQ(alone.apply(QStringLiteral("NEW"), target, false), noTarget);
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(WritebackTest, whenTheClipboardRoadFailsAnElementIsStillTried) {
    auto target = readSelecting(10, 5);
    target.requiresClipboardWriteback = true;
    road.succeeds = false;
    EXPECT_EQ(apply(QStringLiteral("NEW"), target), pasted);
    EXPECT_EQ(field.value, QStringLiteral("0123456789NEW fin"));
    refusePaste();
    EXPECT_EQ(apply(QStringLiteral("new"), readSelecting(10, 3)), written);
    EXPECT_EQ(field.value, QStringLiteral("0123456789new fin"));
    road.succeeds = true;
    EXPECT_EQ(apply(QStringLiteral("by road"), target), pasted);
    EXPECT_EQ(road.written.last(), QStringLiteral("by road"));
    EXPECT_EQ(field.value, QStringLiteral("0123456789new fin"));
}

// Dictation

ExternalTextWritebackResult voice(bool success, WritebackStrategy strategy, const char* message,
                                  std::optional<WritebackFailure> failure = std::nullopt) {
    return {success, strategy, QString::fromUtf8(message), failure};
}

TEST_F(WritebackTest, anEmptyTranscriptTouchesNothing) {
    LogCapture log;
    EXPECT_EQ(writer->applyVoiceTranscript(QString(), readSelecting(0, 0), false),
              voice(false, WritebackStrategy::none, "Empty transcript", WritebackFailure::emptyReplacement));
    EXPECT_TRUE(log.has(QStringLiteral(
        "Voice writeback requested: transcriptLength: 0 source: value forceReplaceAll: false")));
    EXPECT_EQ(pasteboard(), QStringLiteral("user's"));
}

TEST_F(WritebackTest, aTranscriptIsPastedThenWrittenThenFails) {
    EXPECT_EQ(writer->applyVoiceTranscript(QStringLiteral("hi"), readSelecting(0, 3), false),
              voice(true, WritebackStrategy::clipboardPaste, "Voice applied via paste"));
    desktop.advance(0.1);
    EXPECT_EQ(field.value, QStringLiteral("hi3456789abcde fin"));
    refusePaste();
    EXPECT_EQ(writer->applyVoiceTranscript(QStringLiteral("ho"), readSelecting(0, 2), false),
              voice(true, WritebackStrategy::axValue, "Voice applied"));
    EXPECT_EQ(field.value, QStringLiteral("ho3456789abcde fin"));
    field.editable = false;
    EXPECT_EQ(writer->applyVoiceTranscript(QStringLiteral("he"), readSelecting(0, 2), false),
              voice(false, WritebackStrategy::none, "Voice writeback failed", WritebackFailure::writeFailed));
}

// Meant: dictation goes straight to the paste.
TEST_F(WritebackTest, aTranscriptWithAnElementIgnoresTheClipboardRoad) {
    auto target = readSelecting(0, 3);
    target.requiresClipboardWriteback = true;
    EXPECT_TRUE(writer->applyVoiceTranscript(QStringLiteral("hi"), target, false).success);
    EXPECT_TRUE(road.written.isEmpty());
}

TEST_F(WritebackTest, aTranscriptWithoutAnElementNeedsTheClipboardRoad) {
    ExternalTextReadResult target;
    const auto noTarget = voice(false, WritebackStrategy::none, "No target for voice writeback",
                                WritebackFailure::noWritableTarget);
    EXPECT_EQ(writer->applyVoiceTranscript(QStringLiteral("hi"), target, false), noTarget);
    target.requiresClipboardWriteback = true;
    EXPECT_EQ(writer->applyVoiceTranscript(QStringLiteral("hi"), target, false),
              voice(true, WritebackStrategy::clipboardPaste, "Voice applied via paste"));
    road.succeeds = false;
    EXPECT_EQ(writer->applyVoiceTranscript(QStringLiteral("hi"), target, false), noTarget);
}

TEST_F(WritebackTest, aWriteThatComesToNothingPutsTheSelectionBack) {
    field.valueSettable = false;
    field.selectedTextSettable = false;
    refusePaste();
    const auto caret = readSelecting(3, 0);
    EXPECT_EQ(apply(QStringLiteral("new"), caret, true).failure, WritebackFailure::writeFailed);
    EXPECT_EQ(field.selection, (TextRange{3, 0}));
    // What is left selected would be gone with the user's next key.
    const auto passage = readSelecting(0, 2);
    field.select(1, 1);
    EXPECT_FALSE(writer->applyVoiceTranscript(QStringLiteral("new"), passage, false).success);
    EXPECT_EQ(field.selection, (TextRange{1, 1}));
}

}  // namespace
}  // namespace veltrin
