#include "RoadFixture.h"

#include <functional>

namespace veltrin {
namespace {

/// Something happens to the target while the model thinks.
class TargetChangeTest : public RoadTest {
protected:
    void SetUp() override { launch(); }
    void translateWhile(const std::function<void()>& change) {
        modelAnswers("Good day.", 1);
        veltrin.tapTranslate();
        before_ = field.value;
        desktop.advance(0.5);
        change();
        desktop.advance(0.6);
        panel_ = message();
        finish();
    }
    void expectOnlyCopied() {
        EXPECT_EQ(field.value, before_);
        EXPECT_EQ(address.value, QStringLiteral("example.org"));
        EXPECT_EQ(copied(), QStringLiteral("Good day."));
        EXPECT_EQ(desktop.pasteboard.current().content, PasteboardContent::lasting);
        EXPECT_EQ(panel_, QStringLiteral("已复制\n翻译后的内容：Good day."));
        EXPECT_EQ(remembered(), false);
        EXPECT_EQ(desktop.keyPoster.postedCount, 0);
    }

    QString before_;
    std::optional<QString> panel_;
};

TEST_F(TargetChangeTest, anotherApplicationInFront) {
    translateWhile([&] { desktop.focus(address); });
    expectOnlyCopied();
}

TEST_F(TargetChangeTest, nothingInFront) {
    translateWhile([&] { desktop.workspace.bringToFront(nullptr); });
    expectOnlyCopied();
}

TEST_F(TargetChangeTest, theApplicationIsGone) {
    translateWhile([&] { editor.quit(); });
    expectOnlyCopied();
}

TEST_F(TargetChangeTest, anotherWindowOfTheApplication) {
    translateWhile([&] {
        FakeWindow& other = editor.addWindow(QStringLiteral("Other"));
        desktop.focus(other.addField(QStringLiteral("letter")));
    });
    expectOnlyCopied();
    EXPECT_EQ(editor.focusedField()->value, QStringLiteral("letter"));
}

TEST_F(TargetChangeTest, theWindowHasAnotherTitle) {
    translateWhile([&] { editor.activeWindow->title = QStringLiteral("Saved"); });
    expectOnlyCopied();
}

TEST_F(TargetChangeTest, theFieldIsGone) {
    translateWhile([&] {
        field.exists = false;
        editor.activeWindow->focusedField = nullptr;
    });
    expectOnlyCopied();
}

TEST_F(TargetChangeTest, theApplicationHangs) {
    const double blocked = desktop.runLoop.blockedSeconds();
    translateWhile([&] { editor.hang(); });
    expectOnlyCopied();
    EXPECT_LT(desktop.runLoop.blockedSeconds() - blocked, 1.5);
    editor.resume();
    desktop.advance(1);
    EXPECT_EQ(field.value, before_);  // nothing comes late
}

TEST_F(TargetChangeTest, aWindowOfTheSameTitleTakesNoKeysMeantForTheOther) {
    FakeTextField* other = nullptr;
    translateWhile([&] {
        FakeWindow& twin = editor.addWindow(editor.activeWindow->title);
        other = &twin.addField(QStringLiteral("letter"));
        desktop.focus(*other);
    });
    // The original field stays writable, so it is written by accessibility; the twin never is.
    EXPECT_EQ(field.value, QStringLiteral("Good day."));
    EXPECT_EQ(other->value, QStringLiteral("letter"));
    EXPECT_EQ(copied(), QStringLiteral("mine"));
    EXPECT_EQ(desktop.keyPoster.postedCount, 0);
}

TEST_F(TargetChangeTest, anotherFieldOfTheSameWindowIsLeftAloneAndTheOriginalIsWritten) {
    FakeTextField& other = editor.addField(QStringLiteral("subject"));
    translateWhile([&] { desktop.focus(other); });
    EXPECT_EQ(field.value, QStringLiteral("Good day."));
    EXPECT_EQ(other.value, QStringLiteral("subject"));
    EXPECT_EQ(copied(), QStringLiteral("mine"));
}

TEST_F(TargetChangeTest, aFieldWhoseFocusCannotBeHadIsNotPastedIntoThroughAnother) {
    FakeTextField& other = editor.addField(QStringLiteral("subject"));
    translateWhile([&] {
        desktop.focus(other);
        desktop.accessibility.trusted = false;
    });
    EXPECT_EQ(other.value, QStringLiteral("subject"));
    EXPECT_EQ(field.value, before_);
    EXPECT_EQ(copied(), QStringLiteral("Good day."));
    EXPECT_EQ(desktop.keyPoster.postedCount, 0);
}

class SelectionChangeTest : public RoadTest {
protected:
    void SetUp() override {
        replaceOnlyTheCurrentPlace();
        launch();
        field.select(6, 3);
        modelAnswers("day.", 1);
        veltrin.pressTranslateShortcut();
    }
};

TEST_F(SelectionChangeTest, aMovedCaretMeansCopied) {
    field.placeCaret(0);
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag"));
    EXPECT_EQ(copied(), QStringLiteral("day."));
}

TEST_F(SelectionChangeTest, anotherSelectionMeansCopied) {
    field.select(0, 5);
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Guten Tag"));
    EXPECT_EQ(copied(), QStringLiteral("day."));
}

TEST_F(SelectionChangeTest, typingOverTheSelectionMeansCopied) {
    veltrin.type(QStringLiteral("x"));
    finish();
    EXPECT_EQ(field.value, QStringLiteral("Guten x"));
    EXPECT_EQ(copied(), QStringLiteral("day."));
}

}  // namespace
}  // namespace veltrin
