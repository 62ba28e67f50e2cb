#include "support/fake/FakeDesktop.h"
#include "support/fake/FakeKeyCodes.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class FakeDesktopTest : public testing::Test {
protected:
    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
    FakeTextField& field = editor.addField(QStringLiteral("hello"));

    void SetUp() override { desktop.focus(field); }

    KeyPost chord(qint64 keyCode) const {
        KeyPost post;
        post.keyCode = keyCode;
        post.flags = KeyFlags::command;
        post.target.processIdentifier = editor.pid;
        return post;
    }
    AXElementRef element() const { return desktop.accessibility.elementOf(field); }
};

TEST_F(FakeDesktopTest, typedTextGoesInAtTheCaretOfTheFocusedField) {
    field.placeCaret(0);
    desktop.keyboard.type(QStringLiteral("Oh, 你好 👨‍👩‍👧‍👦!"));
    EXPECT_EQ(field.value, QStringLiteral("Oh, 你好 👨‍👩‍👧‍👦!hello"));
    EXPECT_EQ(field.selection, (TextRange{field.value.size() - 5, 0}));
}

TEST_F(FakeDesktopTest, backspaceTakesAWholeCharacterAndUndoGivesItBack) {
    desktop.keyboard.type(QStringLiteral("👨‍👩‍👧‍👦"));
    desktop.keyboard.chord(KeyCode::backspace);
    EXPECT_EQ(field.value, QStringLiteral("hello"));
    desktop.keyboard.chord(FakeKeyCode::z, KeyFlags::command);
    EXPECT_EQ(field.value, QStringLiteral("hello👨‍👩‍👧‍👦"));
    desktop.keyboard.chord(FakeKeyCode::z, KeyFlags::command);
    EXPECT_EQ(field.value, QStringLiteral("hello"));
}

TEST_F(FakeDesktopTest, copyAndPasteByHandWorkAndCopyingNothingChangesNothing) {
    field.select(0, 4);
    desktop.keyboard.copy();
    EXPECT_EQ(desktop.pasteboard.peek(), QStringLiteral("hell"));
    const auto count = desktop.pasteboard.changeCount();
    field.placeCaret(5);
    desktop.keyboard.copy();
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
    desktop.keyboard.paste();
    EXPECT_EQ(field.value, QStringLiteral("hellohell"));
}

TEST_F(FakeDesktopTest, aPostedPasteTakesEffectOnlyWhenTimePasses) {
    desktop.pasteboard.setString(QStringLiteral(" you"), PasteboardContent::temporary);
    ASSERT_TRUE(desktop.keyPoster.post(chord(KeyCode::v)));
    EXPECT_EQ(field.value, QStringLiteral("hello"));
    desktop.advance(0.003);
    EXPECT_EQ(field.value, QStringLiteral("hello"));
    desktop.advance(0.002);
    EXPECT_EQ(field.value, QStringLiteral("hello you"));
}

TEST_F(FakeDesktopTest, aPostedPasteTakesEffectWhileTheProgramIsBlocked) {
    desktop.pasteboard.setString(QStringLiteral("!"), PasteboardContent::temporary);
    ASSERT_TRUE(desktop.keyPoster.post(chord(KeyCode::v)));
    desktop.runLoop.sleepFor(0.1);
    EXPECT_EQ(field.value, QStringLiteral("hello!"));
}

TEST_F(FakeDesktopTest, noKeyOvertakesAnEarlierOne) {
    desktop.pasteboard.setString(QStringLiteral("1"), PasteboardContent::temporary);
    ASSERT_TRUE(desktop.keyPoster.post(chord(KeyCode::v)));
    desktop.keyboard.press(FakeKeyCode::k);
    desktop.advance(0.1);
    EXPECT_EQ(field.value, QStringLiteral("hello1k"));
}

TEST_F(FakeDesktopTest, aLatePasteStillGetsWhatWasOnOfferAtItsKey) {
    desktop.pasteboard.put(QStringLiteral("user's"));
    desktop.pasteboard.setString(QStringLiteral("ours"), PasteboardContent::temporary);
    editor.postedKeyLatency = 2;
    ASSERT_TRUE(desktop.keyPoster.post(chord(KeyCode::v)));
    desktop.advance(0.6);
    desktop.pasteboard.clearContents();
    desktop.pasteboard.setString(QStringLiteral("user's"), PasteboardContent::lasting);
    desktop.advance(2);
    EXPECT_EQ(field.value, QStringLiteral("helloours"));
    desktop.keyboard.paste();
    EXPECT_EQ(field.value, QStringLiteral("helloours") + QStringLiteral("user's"));
}

TEST_F(FakeDesktopTest, aLatePasteGetsANewerCopyOfSomebodyElse) {
    desktop.pasteboard.setString(QStringLiteral("ours"), PasteboardContent::temporary);
    editor.postedKeyLatency = 1;
    ASSERT_TRUE(desktop.keyPoster.post(chord(KeyCode::v)));
    desktop.advance(0.5);
    desktop.pasteboard.put(QStringLiteral("newer"));
    desktop.advance(1);
    EXPECT_EQ(field.value, QStringLiteral("hellonewer"));
}

TEST_F(FakeDesktopTest, aHungApplicationWorksItsKeysOffInOrderWhenItComesBack) {
    editor.hang();
    desktop.keyboard.type(QStringLiteral("abc"));
    EXPECT_EQ(field.value, QStringLiteral("hello"));
    EXPECT_EQ(editor.waitingKeys(), 3u);
    editor.resume();
    EXPECT_EQ(field.value, QStringLiteral("helloabc"));
}

TEST_F(FakeDesktopTest, aDeadApplicationIsGoneFromEveryList) {
    const AXElementRef gone = element();
    field.select(0, 5);
    desktop.keyboard.copy();
    editor.quit();
    EXPECT_FALSE(desktop.workspace.frontmostApplication());
    EXPECT_FALSE(desktop.workspace.runningApplication(editor.pid));
    EXPECT_FALSE(desktop.workspace.activate(editor.pid, ActivateOptions::none));
    EXPECT_EQ(desktop.accessibility.copyAttributeValue(gone, AXAttribute::value).error,
              AXError::invalidUIElement);
    EXPECT_EQ(desktop.pasteboard.string().status, PasteboardString::Status::none);
}

TEST_F(FakeDesktopTest, postsAreRefusedWithoutTheRightTarget) {
    FakeApplication& other = desktop.launch(QStringLiteral("Other"), std::nullopt);
    KeyPost wrongProcess = chord(KeyCode::v);
    wrongProcess.target.processIdentifier = other.pid;
    EXPECT_FALSE(desktop.keyPoster.post(wrongProcess));
    KeyPost wrongWindow = chord(KeyCode::v);
    wrongWindow.target.window = 7;
    EXPECT_FALSE(desktop.keyPoster.post(wrongWindow));
    field.editable = false;
    EXPECT_FALSE(desktop.keyPoster.post(chord(KeyCode::v)));
    EXPECT_TRUE(desktop.keyPoster.post(chord(KeyCode::c)));
    field.password = true;
    EXPECT_FALSE(desktop.keyPoster.post(chord(KeyCode::c)));
    field.password = false;
    editor.hang();
    const double before = desktop.now();
    EXPECT_FALSE(desktop.keyPoster.post(chord(KeyCode::c)));
    EXPECT_NEAR(desktop.now() - before, 0.25, 1e-9);
    EXPECT_EQ(desktop.keyPoster.refusedCount, 5);
    EXPECT_EQ(desktop.keyPoster.postedCount, 1);
    EXPECT_EQ(desktop.keyPoster.records.size(), 6u);
}

TEST_F(FakeDesktopTest, aTerminalIsNeverToldToSelectAllNorGivenALineBreak) {
    editor.terminal = true;
    EXPECT_FALSE(desktop.keyPoster.post(chord(KeyCode::a)));
    KeyPost lines = chord(KeyCode::v);
    lines.textHasLineBreak = true;
    EXPECT_FALSE(desktop.keyPoster.post(lines));
    EXPECT_TRUE(desktop.keyPoster.post(chord(KeyCode::v)));
}

TEST_F(FakeDesktopTest, aPostWaitsForHeldModifiersAtMostTheirTime) {
    desktop.keyboard.heldModifiers = KeyFlags::option;
    desktop.later(0.1, [&] { desktop.keyboard.heldModifiers = 0; });
    const double before = desktop.now();
    EXPECT_TRUE(desktop.keyPoster.post(chord(KeyCode::v)));
    EXPECT_NEAR(desktop.now() - before, 0.1, 0.011);
    desktop.keyboard.heldModifiers = KeyFlags::option;
    const double again = desktop.now();
    EXPECT_TRUE(desktop.keyPoster.post(chord(KeyCode::v)));
    EXPECT_NEAR(desktop.now() - again, 0.3, 0.011);
}

TEST_F(FakeDesktopTest, accessibilityReadsAndWritesAFieldInUtf16Units) {
    field.value = QStringLiteral("a😀b");
    auto& ax = desktop.accessibility;
    const auto focused =
        ax.copyAttributeValue(ax.applicationElement(editor.pid), AXAttribute::focusedUIElement);
    ASSERT_TRUE(focused.ok());
    ASSERT_TRUE(std::get<AXElementRef>(focused.value)->isEqual(*element()));
    EXPECT_EQ(ax.setAttributeValue(element(), AXAttribute::selectedTextRange, TextRange{1, 2}),
              AXError::success);
    EXPECT_EQ(std::get<QString>(ax.copyAttributeValue(element(), AXAttribute::selectedText).value),
              QStringLiteral("😀"));
    EXPECT_EQ(ax.setAttributeValue(element(), AXAttribute::selectedText, QStringLiteral("x")),
              AXError::success);
    EXPECT_EQ(field.value, QStringLiteral("axb"));
    EXPECT_EQ(ax.setAttributeValue(element(), AXAttribute::selectedTextRange, TextRange{2, 5}),
              AXError::illegalArgument);
    EXPECT_TRUE(field.undo());
    EXPECT_EQ(field.value, QStringLiteral("a😀b"));
}

TEST_F(FakeDesktopTest, accessibilityMeetsItsFaults) {
    auto& ax = desktop.accessibility;
    field.readFaults[AXAttribute::value] = FakeAXFault::refused(AXError::noValue);
    EXPECT_EQ(ax.copyAttributeValue(element(), AXAttribute::value).error, AXError::noValue);
    field.readFaults[AXAttribute::value] = FakeAXFault::slow(0.2);
    const double before = desktop.now();
    EXPECT_TRUE(ax.copyAttributeValue(element(), AXAttribute::value).ok());
    EXPECT_NEAR(desktop.now() - before, 0.2, 1e-9);

    const AXValue text = QStringLiteral("new");
    field.writeFaults[AXAttribute::value] = FakeAXFault::lie();
    EXPECT_EQ(ax.setAttributeValue(element(), AXAttribute::value, text), AXError::success);
    EXPECT_EQ(field.value, QStringLiteral("hello"));
    field.writeFaults[AXAttribute::value] = FakeAXFault::doneLater(0.5);
    EXPECT_EQ(ax.setAttributeValue(element(), AXAttribute::value, text), AXError::cannotComplete);
    EXPECT_EQ(field.value, QStringLiteral("hello"));
    desktop.advance(0.5);
    EXPECT_EQ(field.value, QStringLiteral("new"));
    field.settableFaults[AXAttribute::value] = FakeAXFault::refused(AXError::failure);
    EXPECT_FALSE(ax.isAttributeSettable(element(), AXAttribute::value).ok());

    desktop.accessibility.trusted = false;
    EXPECT_EQ(ax.copyAttributeValue(element(), AXAttribute::role).error, AXError::apiDisabled);
}

TEST_F(FakeDesktopTest, aHungApplicationCostsOneBoundedWait) {
    auto& ax = desktop.accessibility;
    editor.hang();
    const double before = desktop.now();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(ax.copyAttributeValue(element(), AXAttribute::value).error, AXError::cannotComplete);
    EXPECT_NEAR(desktop.now() - before, 0.25, 1e-9);
    editor.resume();
    EXPECT_TRUE(ax.copyAttributeValue(element(), AXAttribute::value).ok());
}

TEST_F(FakeDesktopTest, aPasswordFieldShowsNothing) {
    field.password = true;
    auto& ax = desktop.accessibility;
    for (const AXAttribute attribute :
         {AXAttribute::value, AXAttribute::selectedText, AXAttribute::selectedTextRange}) {
        EXPECT_FALSE(ax.copyAttributeValue(element(), attribute).ok());
        EXPECT_FALSE(ax.isAttributeSettable(element(), attribute).value);
    }
    field.selectAll();
    const auto count = desktop.pasteboard.changeCount();
    desktop.keyboard.copy();
    EXPECT_EQ(desktop.pasteboard.changeCount(), count);
}

TEST_F(FakeDesktopTest, anElementOutlivesItsField) {
    const AXElementRef gone = element();
    editor.closeWindow(*editor.activeWindow);
    EXPECT_EQ(desktop.accessibility.copyAttributeValue(gone, AXAttribute::value).error,
              AXError::invalidUIElement);
    EXPECT_EQ(desktop.workspace.frontmostApplication().value_or(RunningApplication()).window, 0u);
}

TEST_F(FakeDesktopTest, thePasteboardTellsWhatIsMarkedSecret) {
    desktop.pasteboard.put(QStringLiteral("word"));
    EXPECT_FALSE(desktop.pasteboard.string().isSecret);
    desktop.pasteboard.copySecretFrom(0, QStringLiteral("pass"));
    EXPECT_EQ(desktop.pasteboard.string().value(), QStringLiteral("pass"));
    EXPECT_TRUE(desktop.pasteboard.string().isSecret);
    desktop.pasteboard.setString(QStringLiteral("pass"), PasteboardContent::secret);
    EXPECT_TRUE(desktop.pasteboard.string().isSecret);
    desktop.pasteboard.setString(QStringLiteral("ours"), PasteboardContent::temporary);
    EXPECT_TRUE(desktop.pasteboard.string().isSecret);
    desktop.pasteboard.setString(QStringLiteral("word"), PasteboardContent::lasting);
    EXPECT_FALSE(desktop.pasteboard.string().isSecret);
}

TEST_F(FakeDesktopTest, aPasteboardOwnerThatDoesNotAnswerIsNotAnEmptyPasteboard) {
    desktop.pasteboard.putOther({QStringLiteral("image/png")});
    EXPECT_EQ(desktop.pasteboard.string().status, PasteboardString::Status::none);
    desktop.pasteboard.put(QStringLiteral("text"));
    desktop.pasteboard.stopAnswering();
    const double before = desktop.now();
    EXPECT_EQ(desktop.pasteboard.string().status, PasteboardString::Status::unanswered);
    EXPECT_NEAR(desktop.now() - before, 0.5, 1e-9);
    desktop.pasteboard.clearContents();
    EXPECT_EQ(desktop.pasteboard.string().status, PasteboardString::Status::none);
    EXPECT_EQ(desktop.pasteboard.current().owner, FakePasteboard::Owner::program);
}

TEST_F(FakeDesktopTest, thePortsTogetherAreThisDesktop) {
    const Desktop ports = desktop.desktop();
    EXPECT_EQ(&ports.runLoop, &desktop.runLoop);
    EXPECT_EQ(&ports.pasteboard, &desktop.pasteboard);
    EXPECT_EQ(&ports.environment, &desktop.environment);
}

}  // namespace
}  // namespace veltrin
