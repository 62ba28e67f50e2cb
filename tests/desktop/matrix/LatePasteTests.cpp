// An application that gets to a paste only after the clipboard is the user's again.
#include "desktop/matrix/FieldMatrix.h"
#include "support/Slowdown.h"
#include "support/desktop/Waiting.h"

#include <csignal>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

struct PastedField {
    const char* application;
    const char* field;
};

class LatePaste : public testing::TestWithParam<PastedField> {
protected:
    MatrixWorld& world() { return MatrixWorld::shared(); }
    ExternalTextDesktop& desktop() { return world().text; }
    FieldApplication& application() {
        return world().application(QString::fromLatin1(GetParam().application));
    }
};

// Chromium is not among them: it gives a paste up when the clipboard changes while it is at it.
INSTANTIATE_TEST_SUITE_P(Fields, LatePaste,
                         testing::Values(PastedField{"mousepad", "text"},
                                         PastedField{"gnome-text-editor", "text"},
                                         PastedField{"qt-widgets", "text"}, PastedField{"qt-widgets", "line"},
                                         PastedField{"qt-quick", "text"}, PastedField{"qt-quick", "line"},
                                         PastedField{"firefox", "textarea"}));

TEST_P(LatePaste, getsOurTextOnceAndTheUsersAfterwards) {
    const QString usersClipboard = u"the user's own"_s;
    FieldDriver& field = application().field(QString::fromLatin1(GetParam().field));
    ASSERT_TRUE(world().x().activate(application().window(), 5 * patience));
    world().clipboard.ownText(usersClipboard);
    const QString text = u"one two"_s;
    field.set({text, 4, 7});
    ExternalTextReadResult read;
    ASSERT_TRUE(waitUntil(5 * patience, [&] {
        read = desktop().reader.readFocusedText();
        return read.fullText == text && read.selectedText == u"two";
    }));
    const qint32 process = application().process();
    desktop().atPaste = [process] { kill(process, SIGSTOP); };
    const bool isPosted = desktop().writeback.apply(u"ours"_s, read, false).success;
    desktop().atPaste = {};
    desktop().loan.giveBackPending();
    EXPECT_EQ(world().clipboard.text(), usersClipboard);
    kill(process, SIGCONT);
    ASSERT_TRUE(isPosted);
    QString now;
    waitUntil(10 * patience, [&] {
        now = field.state().text;
        return now == u"one ours";
    });
    EXPECT_EQ(now, u"one ours"_s);
    // The user's own paste, a moment later.
    EXPECT_TRUE(waitUntil(5 * patience, [&] {
        field.set({u"x"_s, 0, 1});
        world().typist.chord(u"Ctrl+v"_s);
        waitUntil(1 * patience, [&] { return field.state().text != u"x"; });
        return field.state().text == usersClipboard;
    })) << qPrintable(field.state().text);
}

}  // namespace
}  // namespace veltrin
