// What is lost and meant to be, and what a terminal's text is, in real applications.
#include "desktop/matrix/FieldMatrix.h"
#include "support/Slowdown.h"
#include "support/desktop/Waiting.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString usersClipboard = u"the user's own"_s;

class AcceptedLoss : public testing::Test {
protected:
    MatrixWorld& world() { return MatrixWorld::shared(); }
    ExternalTextDesktop& desktop() { return world().text; }
    FieldDriver& field(const QString& application = u"qt-widgets"_s) {
        FieldApplication& used = world().application(application);
        EXPECT_TRUE(world().x().activate(used.window(), 5 * patience));
        return used.field(u"text"_s);
    }
    ExternalTextReadResult readOf(FieldDriver& field, const FieldState& state) {
        field.set(state);
        ExternalTextReadResult read;
        EXPECT_TRUE(waitUntil(5 * patience, [&] {
            read = desktop().reader.readFocusedText();
            return read.fullText == state.text &&
                   read.selectedRange == TextRange{state.start, state.end - state.start};
        }));
        return read;
    }
    bool shows(FieldDriver& field, const QString& text) {
        return waitUntil(5 * patience, [&] { return field.state().text == text; });
    }
};

TEST_F(AcceptedLoss, aFieldReadWholeThatHasChangedMeanwhileIsOverwritten) {
    FieldDriver& used = field();
    world().clipboard.ownText(usersClipboard);
    const auto read = readOf(used, {u"as it was read"_s, 3, 3});
    used.set({u"as the user has changed it since"_s, 5, 5});
    ASSERT_TRUE(desktop().writeback.apply(u"the result"_s, read, true).success);
    EXPECT_TRUE(shows(used, u"the result"_s));
    desktop().loan.giveBackPending();
    EXPECT_EQ(world().clipboard.text(), usersClipboard);
}

TEST_F(AcceptedLoss, twoWritesWithinTheDelayLeaveTheFirstOnesTextOnTheClipboard) {
    FieldDriver& used = field();
    world().clipboard.ownText(usersClipboard);
    const auto read = readOf(used, {u"one two"_s, 0, 3});
    ASSERT_TRUE(desktop().writeback.apply(u"first"_s, read, false).success);
    ASSERT_TRUE(shows(used, u"first two"_s));
    auto again = read;
    again.selectedRange = TextRange{6, 3};
    ASSERT_TRUE(desktop().writeback.apply(u"second"_s, again, false).success);
    ASSERT_TRUE(shows(used, u"first second"_s));
    // The second took the first's text for the user's.
    EXPECT_TRUE(eventually(5 * patience, [&] { return world().clipboard.text() == u"first"; }))
        << qPrintable(world().clipboard.text().value_or(u"nothing"_s));
}

TEST_F(AcceptedLoss, aPictureOnTheClipboardIsGoneAfterAPaste) {
    FieldDriver& used = field();
    ClipboardSnapshot picture;
    picture.contents[u"image/png"_s] = "\x89PNG";
    world().clipboard.own(picture);
    const auto read = readOf(used, {u"one two"_s, 0, 3});
    ASSERT_TRUE(desktop().writeback.apply(u"new"_s, read, false).success);
    ASSERT_TRUE(shows(used, u"new two"_s));
    EXPECT_TRUE(eventually(5 * patience, [&] { return !world().clipboard.text(); }));
    EXPECT_EQ(world().clipboard.snapshot(), ClipboardSnapshot());
}

TEST_F(AcceptedLoss, ofATerminalOnlyTheVisibleRowsAreReadAndLinesAreNotPasted) {
    FieldDriver& used = field(u"lxterminal"_s);
    world().clipboard.ownText(usersClipboard);
    QString lines;
    for (int i = 0; i < 300; ++i)
        lines += u"row %1 of the output, which is a rather long one\n"_s.arg(i);
    lines += u"the prompt"_s;
    used.set({lines, lines.size(), lines.size()});
    ExternalTextReadResult read;
    ASSERT_TRUE(waitUntil(5 * patience, [&] {
        read = desktop().reader.readFocusedText();
        return read.text.endsWith(u"the prompt");
    }));
    EXPECT_LE(read.text.size(), 2000);
    EXPECT_FALSE(read.text.contains(u"row 0 of"));
    EXPECT_FALSE(desktop().writeback.apply(u"rm one\nrm two\n"_s, read, false).success);
    EXPECT_EQ(used.state().text, lines);
    EXPECT_EQ(world().clipboard.text(), usersClipboard);
}

}  // namespace
}  // namespace veltrin
