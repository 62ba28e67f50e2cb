#include "desktop/road/RoadTest.h"

#include <QFile>

#include <csignal>

namespace veltrin {
namespace {

/// The whole program with an editor that gives accessibility nothing.
class UnreadableEditor : public RoadTest {
protected:
    Program startEditor() {
        const QString file = desktop().file(QStringLiteral("unreadable.txt"));
        QFile(file).open(QIODevice::WriteOnly | QIODevice::Truncate);
        Program editor(desktop(), {QStringLiteral("mousepad"), QStringLiteral("--disable-server"), file},
                       {{QStringLiteral("NO_AT_BRIDGE"), QStringLiteral("1")}});
        editor.waitForWindow();
        return editor;
    }
    /// The text as its user would get at it.
    std::optional<QString> copyAll() {
        clipboard().disown();
        typist().chord(QStringLiteral("Ctrl+a"));
        typist().chord(QStringLiteral("Ctrl+c"));
        std::optional<QString> found;
        waitUntil(5, [&] { return (found = clipboard().text()).has_value(); });
        return found;
    }
};

TEST_F(UnreadableEditor, threeTapsTranslateItByTheClipboardAndGiveTheUsersBack) {
    startProgram();
    clipboard().ownText(QStringLiteral("the user's own clipboard"));
    Program editor = startEditor();
    typeSentence(QStringLiteral("good morning world"));
    tapTranslate();
    ASSERT_TRUE(waitForLog(QStringLiteral("Clipboard fallback write clipboard restored"), 15))
        << qPrintable(log());
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's own clipboard"));
    EXPECT_EQ(x().keysDown(), 0);
    ASSERT_EQ(generations().size(), 1U);
    EXPECT_TRUE(generations().front().prompt().contains(u"\"\"\"\ngood morning world   \n\"\"\""));
    EXPECT_EQ(copyAll(), answer);
}

TEST_F(UnreadableEditor, aCopyTheUserHasJustMadeIsLeftAlone) {
    startProgram();
    Program editor = startEditor();
    typeSentence(QStringLiteral("copied"));
    typist().chord(QStringLiteral("Ctrl+a"));
    typist().chord(QStringLiteral("Ctrl+c"));
    ASSERT_TRUE(waitUntil(5, [&] { return clipboard().text() == QStringLiteral("copied"); }));
    const int changes = clipboard().ownerChanges();
    typist().chord(QStringLiteral("End"));
    typist().pause(0.2);
    tapTranslate();
    ASSERT_TRUE(waitForLog(QStringLiteral("Clipboard fallback read begin"), 5)) << qPrintable(log());
    typist().pause(0.5);
    EXPECT_EQ(clipboard().ownerChanges(), changes);
    EXPECT_EQ(clipboard().text(), QStringLiteral("copied"));
    EXPECT_FALSE(log().contains(u"Clipboard fallback copy attempt"));
    EXPECT_TRUE(generations().empty());
}

class UnreadableEditorAndSignal : public UnreadableEditor, public testing::WithParamInterface<int> {};

TEST_P(UnreadableEditorAndSignal, theClipboardComesBackBeforeTheProgramEnds) {
    startProgram();
    clipboard().ownText(QStringLiteral("the user's"));
    Program editor = startEditor();
    typeSentence(QStringLiteral("hello"));
    tapTranslate();
    ASSERT_TRUE(waitForLog(QStringLiteral("Clipboard fallback write posted Cmd+A/V"), 15))
        << qPrintable(log());
    ASSERT_EQ(kill(program().pid(), GetParam()), 0);
    ASSERT_TRUE(program().waitForExit(10));
    EXPECT_EQ(program().exitStatus(), 0);
    EXPECT_TRUE(log().contains(u"Clipboard fallback write clipboard restored")) << qPrintable(log());
    EXPECT_EQ(x().keysDown(), 0);
    EXPECT_EQ(copyAll(), answer);
}

INSTANTIATE_TEST_SUITE_P(Signals, UnreadableEditorAndSignal, testing::Values(SIGTERM, SIGINT));

}  // namespace
}  // namespace veltrin
