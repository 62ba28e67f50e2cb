#include "ExternalAccess/ExternalTextInputReader.h"
#include "ExternalAccess/WritebackTargetValidator.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using Action = ExternalGestureAIAction;

class ValidatorTest : public testing::Test {
protected:
    ValidatorTest() { desktop.focus(field); }
    ExternalTextReadResult read() {
        return ExternalTextInputReader(desktop.accessibility, desktop.workspace, desktop.preferences)
            .readFocusedText();
    }
    ExternalTextReadResult readSelecting(qint64 location, qint64 length) {
        field.select(location, length);
        return read();
    }
    WritebackTargetSnapshot snapshot(const ExternalTextReadResult& of) {
        return {of, WritebackTargetSnapshot::currentFocusedWindowTitle(desktop.accessibility,
                                                                       of.processIdentifier)};
    }
    WritebackTargetSnapshot snapshot() { return snapshot(read()); }
    bool mustCopy(const WritebackTargetSnapshot& target) {
        return validator.shouldCopyResultInsteadOfWriteback(target);
    }

    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.editor"));
    FakeTextField& field = editor.addWindow(QStringLiteral("a")).addField(QStringLiteral("some text here"));
    NotificationCenter notifications;
    AppSettings settings{desktop.preferences, notifications, desktop.environment};
    WritebackTargetValidator validator{desktop.accessibility, desktop.workspace, settings};
};

TEST_F(ValidatorTest, anUnchangedTargetIsTrusted) {
    LogCapture log;
    EXPECT_FALSE(mustCopy(snapshot()));
    EXPECT_FALSE(mustCopy(snapshot(readSelecting(0, 4))));
    EXPECT_FALSE(log.hasStartingWith(QStringLiteral("Writeback target")));
}

TEST_F(ValidatorTest, withoutAProcessThereIsNoTarget) {
    LogCapture log;
    EXPECT_TRUE(mustCopy(WritebackTargetSnapshot(ExternalTextReadResult(), std::nullopt)));
    EXPECT_EQ(log.lines(), QStringList(QStringLiteral("Writeback target changed: no original process id")));
}

TEST_F(ValidatorTest, anotherApplicationInFrontMeansCopy) {
    const auto target = snapshot();
    {
        desktop.workspace.bringToFront(nullptr);
        LogCapture log;
        EXPECT_TRUE(mustCopy(target));
        EXPECT_EQ(log.lines(), QStringList(QStringLiteral("Writeback target changed: no frontmost app")));
    }
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), std::nullopt);
    desktop.focus(other.addField());
    LogCapture log;
    EXPECT_TRUE(mustCopy(target));
    EXPECT_EQ(log.lines(),
              QStringList(QStringLiteral("Writeback target changed: frontmost app mismatch originalPid: %1 "
                                         "currentPid: %2 currentBundle: unknown")
                              .arg(editor.pid)
                              .arg(other.pid)));
}

TEST_F(ValidatorTest, anotherWindowTitleMeansCopyWhateverElseHolds) {
    const auto target = snapshot();
    editor.activeWindow->title = QStringLiteral("b");
    LogCapture log;
    EXPECT_TRUE(mustCopy(target));
    EXPECT_EQ(
        log.lines(),
        (QStringList{
            QStringLiteral("Writeback target changed: focused window title mismatch original: a current: b"),
            QStringLiteral("Writeback target trust downgraded to copy: ") + target.debugDescription()}));
}

TEST_F(ValidatorTest, aTitleThatCannotBeReadIsForgiven) {
    const auto target = snapshot();
    editor.readFaults[AXAttribute::focusedWindow] = FakeAXFault::refused(AXError::cannotComplete);
    EXPECT_FALSE(mustCopy(target));
    editor.readFaults.clear();
    editor.activeWindow->title.clear();
    EXPECT_FALSE(mustCopy(target));
    // Nor does it matter where none was known at the start.
    const auto untitled = snapshot();
    EXPECT_FALSE(untitled.focusedWindowTitle);
    editor.activeWindow->title = QStringLiteral("b");
    EXPECT_FALSE(mustCopy(untitled));
}

TEST_F(ValidatorTest, theTitleOfTheMomentNeedsTheRightAndAProcess) {
    const auto title = [&](std::optional<qint32> pid) {
        return WritebackTargetSnapshot::currentFocusedWindowTitle(desktop.accessibility, pid);
    };
    EXPECT_EQ(title(editor.pid), QStringLiteral("a"));
    EXPECT_FALSE(title(std::nullopt));
    EXPECT_FALSE(title(1));
    desktop.accessibility.trusted = false;
    EXPECT_FALSE(title(editor.pid));
}

TEST_F(ValidatorTest, anElementOutOfFocusKeepsItsTrustWhileItCanBeWritten) {
    const auto target = snapshot();
    editor.activeWindow->focusedField = nullptr;
    LogCapture log;
    EXPECT_FALSE(mustCopy(target));
    EXPECT_EQ(
        log.lines(),
        QStringList(QStringLiteral("Writeback target focus changed but original element is still checked: "
                                   "writable: true ") +
                    target.debugDescription()));
}

TEST_F(ValidatorTest, anElementOutOfFocusThatCannotBeWrittenMeansCopy) {
    const auto target = snapshot();
    editor.activeWindow->focusedField = nullptr;
    field.editable = false;
    LogCapture log;
    EXPECT_TRUE(mustCopy(target));
    EXPECT_TRUE(log.lines().first().contains(QStringLiteral("writable: false")));
    EXPECT_EQ(log.lines().last(),
              QStringLiteral("Writeback target trust downgraded to copy: ") + target.debugDescription());
}

TEST_F(ValidatorTest, anElementInFocusNeedsNotBeWritable) {
    const auto target = snapshot();
    field.editable = false;
    EXPECT_FALSE(mustCopy(target));
}

TEST_F(ValidatorTest, aLostSelectionMeansCopy) {
    const auto target = snapshot(readSelecting(0, 4));
    field.placeCaret(2);
    LogCapture log;
    EXPECT_TRUE(mustCopy(target));
    EXPECT_TRUE(log.has(QStringLiteral(
        "Writeback target changed: selected text signature mismatch original: 4:some:some current: 0::")));
    field.select(5, 4);
    EXPECT_TRUE(mustCopy(target));
    field.select(0, 4);
    EXPECT_FALSE(mustCopy(target));
}

TEST_F(ValidatorTest, aSelectionThatCannotBeReadMeansCopy) {
    const auto target = snapshot(readSelecting(0, 4));
    field.readFaults[AXAttribute::selectedText] = FakeAXFault::refused(AXError::cannotComplete);
    LogCapture log;
    EXPECT_TRUE(mustCopy(target));
    EXPECT_TRUE(log.has(QStringLiteral("Writeback validation selected text unavailable: -25204")));
}

// A known limit of the signature.
TEST_F(ValidatorTest, aChangeInTheMiddleOfALongSelectionGoesUnseen) {
    field.value = QString(24, u'a') + QStringLiteral("X") + QString(24, u'b');
    const auto target = snapshot(readSelecting(0, 49));
    field.value[24] = u'Y';
    EXPECT_FALSE(mustCopy(target));
}

// Accepted: a field that was read whole is overwritten, whatever was typed meanwhile.
TEST_F(ValidatorTest, aFieldReadWholeMayHaveChanged) {
    field.placeCaret(4);
    const auto target = snapshot();
    EXPECT_EQ(target.source, ExternalTextReadResult::Source::value);
    field.value = QStringLiteral("something else");
    EXPECT_FALSE(mustCopy(target));
}

TEST_F(ValidatorTest, aReadByTheClipboardHoldsWithItsProcessAndWindow) {
    for (const auto source :
         {ExternalTextReadResult::Source::value, ExternalTextReadResult::Source::selectedText}) {
        ExternalTextReadResult of = read();
        of.element = nullptr;
        of.source = source;
        EXPECT_TRUE(mustCopy(snapshot(of)));  // nothing could take the text
        of.requiresClipboardWriteback = true;
        const auto target = snapshot(of);
        EXPECT_FALSE(mustCopy(target));
        editor.activeWindow->title = QStringLiteral("b");
        EXPECT_TRUE(mustCopy(target));
        editor.activeWindow->title = QStringLiteral("a");
    }
}

TEST_F(ValidatorTest, focusIsTakenForGrantedWithoutTheRightToAsk) {
    const auto element = read().element;
    EXPECT_TRUE(validator.isOriginalTextElementStillFocused(element, editor.pid));
    editor.readFaults[AXAttribute::focusedUIElement] = FakeAXFault::refused(AXError::cannotComplete);
    EXPECT_FALSE(validator.isOriginalTextElementStillFocused(element, editor.pid));
    desktop.accessibility.trusted = false;
    EXPECT_TRUE(validator.isOriginalTextElementStillFocused(element, editor.pid));
}

TEST_F(ValidatorTest, writableMeansASettableSelectionOrValue) {
    const auto element = read().element;
    EXPECT_TRUE(validator.isTextElementWritable(element));
    field.selectedTextSettable = false;
    EXPECT_TRUE(validator.isTextElementWritable(element));
    field.valueSettable = false;
    EXPECT_FALSE(validator.isTextElementWritable(element));
    field.selectedTextSettable = true;
    EXPECT_TRUE(validator.isTextElementWritable(element));
    field.settableFaults[AXAttribute::selectedText] = FakeAXFault::refused(AXError::failure);
    EXPECT_FALSE(validator.isTextElementWritable(element));  // a question that fails is a no
    EXPECT_FALSE(validator.isTextElementWritable(nullptr));
}

// How much is replaced

TEST_F(ValidatorTest, theReplaceModeOfTheActionDecides) {
    const auto target = readSelecting(0, 4);
    settings.translationReplaceMode.set(TextReplaceMode::replaceAll);
    settings.optimizeReplaceMode.set(TextReplaceMode::current);
    EXPECT_TRUE(validator.shouldForceReplaceAll(Action::translate(), target));
    EXPECT_FALSE(validator.shouldForceReplaceAll(Action::optimize(ExternalOptimizeMode::refine), target));
    EXPECT_FALSE(validator.shouldForceReplaceAll(Action::memoryAction({}, 0), target));
    EXPECT_FALSE(validator.shouldForceReplaceAll(Action::commandRecommend(), target));
    settings.translationReplaceMode.set(TextReplaceMode::current);
    settings.optimizeReplaceMode.set(TextReplaceMode::replaceAll);
    EXPECT_FALSE(validator.shouldForceReplaceAll(Action::translate(), target));
    EXPECT_TRUE(validator.shouldForceReplaceAll(Action::commandRecommend(), target));
    settings.translationReplaceMode.set(TextReplaceMode::smart);
    EXPECT_TRUE(validator.shouldForceReplaceAll(Action::translate(), target));  // plain text around it
    EXPECT_FALSE(validator.shouldForceReplaceAll(Action::translate(), readSelecting(0, 0)));
}

TEST_F(ValidatorTest, moreThanThreeQuartersOfTheFieldStandForAllOfIt) {
    field.value = QStringLiteral("请") + QString(99, u'x');
    EXPECT_TRUE(validator.smartShouldReplaceAll(readSelecting(24, 76)));
    EXPECT_FALSE(validator.smartShouldReplaceAll(readSelecting(25, 75)));  // the word decides
    field.value = QString(100, u'x');
    EXPECT_TRUE(validator.smartShouldReplaceAll(readSelecting(25, 75)));
}

TEST_F(ValidatorTest, aSelectionInsideAnInstructionIsReplacedAlone) {
    field.value = QStringLiteral("请把下面这句翻译一下：hello");
    const auto target = readSelecting(11, 5);
    EXPECT_EQ(target.text, QStringLiteral("hello"));
    EXPECT_FALSE(validator.smartShouldReplaceAll(target));
}

TEST_F(ValidatorTest, everyInstructionWordCountsOnEitherSideAndInAnyCase) {
    const char16_t* words[] = {u"帮我", u"请",     u"翻译",      u"优化",     u"改写",    u"润色",
                               u"修改", u"把",     u"将",        u"用",       u"以",      u"按照",
                               u"根据", u"PLEASE", u"Translate", u"oPtimize", u"rewrite", u"REFINE"};
    for (const char16_t* word : words) {
        const QString instruction = QString::fromUtf16(word);
        field.value = instruction + QStringLiteral(" abc");
        EXPECT_FALSE(validator.smartShouldReplaceAll(readSelecting(instruction.size() + 1, 2)))
            << qPrintable(instruction);
        field.value = QStringLiteral("abc ") + instruction;
        EXPECT_FALSE(validator.smartShouldReplaceAll(readSelecting(0, 2))) << qPrintable(instruction);
    }
    field.value = QStringLiteral("hello world, a letter");
    EXPECT_TRUE(validator.smartShouldReplaceAll(readSelecting(6, 5)));
    // A word inside the selection is no instruction about it.
    field.value = QStringLiteral("a 请 b c d e");
    EXPECT_TRUE(validator.smartShouldReplaceAll(readSelecting(2, 1)));
}

TEST_F(ValidatorTest, smartNeedsASelectionInAFieldItCanRead) {
    EXPECT_FALSE(validator.smartShouldReplaceAll(readSelecting(3, 0)));
    auto target = readSelecting(0, 4);
    target.selectedRange.reset();
    EXPECT_FALSE(validator.smartShouldReplaceAll(target));
    target = readSelecting(0, 4);
    target.element = nullptr;
    EXPECT_FALSE(validator.smartShouldReplaceAll(target));
    target = readSelecting(0, 4);
    field.readFaults[AXAttribute::value] = FakeAXFault::refused(AXError::failure);
    EXPECT_FALSE(validator.smartShouldReplaceAll(target));
    field.readFaults.clear();
    field.value.clear();
    EXPECT_FALSE(validator.smartShouldReplaceAll(target));
}

TEST_F(ValidatorTest, smartTakesAnyRangeWithoutHarm) {
    auto target = readSelecting(0, 4);
    target.selectedRange = TextRange{12, 4};  // past the field's end
    EXPECT_TRUE(validator.smartShouldReplaceAll(target));
    target.selectedRange = TextRange{-2, 3};
    EXPECT_TRUE(validator.smartShouldReplaceAll(target));
    field.value = QStringLiteral("请 some text");
    target.selectedRange = TextRange{-2, 3};
    EXPECT_TRUE(validator.smartShouldReplaceAll(target));
}

}  // namespace
}  // namespace veltrin
