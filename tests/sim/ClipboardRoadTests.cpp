#include "RoadFixture.h"

namespace veltrin {
namespace {

/// An application gives accessibility nothing, so that its field goes over the clipboard both ways.
class ClipboardRoadTest : public RoadTest {
protected:
    void SetUp() override {
        editor.accessible = false;
        launch();
        modelAnswers("Good day.");
        desktop.advance(5);
    }
    int posted() const { return desktop.keyPoster.postedCount; }
};

TEST_F(ClipboardRoadTest, aFreshCopyOfTheUsersStopsTheReadAndStays) {
    desktop.advance(2.1);
    desktop.keyboard.tapSpaces(2);
    field.select(0, 5);
    desktop.keyboard.copy();
    ASSERT_EQ(copied(), QStringLiteral("Guten"));
    desktop.advance(0.5);
    desktop.keyboard.tapSpaces(3);
    desktop.advance(0.1);
    EXPECT_TRUE(message());
    finish();
    EXPECT_EQ(posted(), 0);
    EXPECT_EQ(copied(), QStringLiteral("Guten"));
    EXPECT_EQ(veltrin.model.prompts, 0);
    veltrin.tapTranslate();  // later on it is read as ever
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Good day."));
    EXPECT_EQ(copied(), QStringLiteral("Guten"));
}

TEST_F(ClipboardRoadTest, theFieldIsAsWritableAsEverWithTheUsersUndo) {
    veltrin.tapTranslate();
    finish();
    ASSERT_EQ(field.value, QStringLiteral("Good day."));
    desktop.keyboard.chord(FakeKeyCode::z, KeyFlags::command);
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));
}

TEST_F(ClipboardRoadTest, theEndOfTheProgramGivesTheClipboardBackAtOnce) {
    veltrin.tapTranslate();
    for (int i = 0; i < 100 && copied() != QStringLiteral("Good day."); ++i)
        desktop.advance(0.05);
    ASSERT_EQ(copied(), QStringLiteral("Good day."));
    veltrin.quit();
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::lasting);
    veltrin.destroy();
    desktop.advance(1);  // for what was left of a sound
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(desktop.runLoop.pendingTimers(), 0u);
}

TEST_F(ClipboardRoadTest, aProgramThatIsDestroyedGivesTheClipboardBackToo) {
    veltrin.tapTranslate();
    for (int i = 0; i < 100 && copied() != QStringLiteral("Good day."); ++i)
        desktop.advance(0.05);
    veltrin.destroy();
    EXPECT_EQ(copied(), QStringLiteral("mine"));
}

TEST_F(ClipboardRoadTest, aSecretIsMarkedAgain) {
    desktop.pasteboard.copySecretFrom(browser.pid, QStringLiteral("pass"));
    veltrin.tapTranslate();
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Good day."));
    EXPECT_EQ(copied(), QStringLiteral("pass"));
    EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::secret);
}

TEST_F(ClipboardRoadTest, whatLiesOnTheClipboardForAMomentIsMarked) {
    desktop.pasteboard.put(QStringLiteral("mine"));
    veltrin.tapTranslate();
    finish();
    for (const auto& offer : desktop.pasteboard.history()) {
        if (offer.owner != FakePasteboard::Owner::program || offer.text != QStringLiteral("Good day."))
            continue;
        EXPECT_EQ(offer.content, PasteboardContent::temporary);
    }
}

TEST_F(ClipboardRoadTest, anOwnerThatNeverAnswersKeepsItsContentAndTheUserIsTold) {
    desktop.pasteboard.stopAnswering();
    veltrin.tapTranslate();
    desktop.advance(0.1);
    EXPECT_TRUE(message());
    finish();
    EXPECT_EQ(posted(), 0);
    EXPECT_EQ(desktop.pasteboard.current().owner, FakePasteboard::Owner::application);
    EXPECT_EQ(copied(), QStringLiteral("mine"));
}

TEST_F(ClipboardRoadTest, aTerminalGetsNoKeysAndTheUserIsTold) {
    editor.terminal = true;
    const auto before = editor.received.size();
    veltrin.tapTranslate();
    desktop.advance(0.1);
    EXPECT_TRUE(message());
    finish();
    for (std::size_t i = before; i < editor.received.size(); ++i)
        EXPECT_FALSE(editor.received[i].posted);
    EXPECT_EQ(copied(), QStringLiteral("mine"));
}

TEST_F(ClipboardRoadTest, aFieldWithNothingToCopyCostsItsWaitsAndTellsTheUser) {
    desktop.focus(address);
    browser.accessible = false;
    address.password = true;  // copies nothing
    const double blocked = desktop.runLoop.blockedSeconds();
    veltrin.tapTranslate();
    desktop.advance(0.1);
    EXPECT_TRUE(message());
    EXPECT_LT(desktop.runLoop.blockedSeconds() - blocked, 4);
    finish();
    EXPECT_EQ(address.value, QStringLiteral("example.org   "));
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(veltrin.delegate().engine().eventTapSuspendCount(), 0);
}

TEST_F(ClipboardRoadTest, theUserInAnotherWindowGetsTheResultAsACopy) {
    modelAnswers("Good day.", 3);
    veltrin.tapTranslate();
    desktop.focus(address);
    finish();
    EXPECT_EQ(address.value, QStringLiteral("example.org"));
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag   "));
    EXPECT_EQ(copied(), QStringLiteral("Good day."));
}

}  // namespace
}  // namespace veltrin
