#include "desktop/app/ChoiceTest.h"

#include <QFile>

namespace veltrin {
namespace {

using namespace ServiceBehaviours;

TEST_F(Choice, everyKeyOfItChoosesItsActionAndNeverReachesTheEditor) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    FocusWatch focus(desktop(), editor.window());
    const std::vector<std::pair<const char*, const char*>> keys{
        {"1", "slot: 1 title: 提示词优化"},     {"Return", "slot: 1 title: 提示词优化"},
        {"space", "slot: 1 title: 提示词优化"}, {"2", "slot: 2 title: 添加表情"},
        {"3", "slot: 3 title: 更专业"},         {"4", "slot: 4 title: 更简洁"}};
    std::size_t runs = 0;
    for (const auto& [key, chosen] : keys) {
        SCOPED_TRACE(key);
        atspi().setText(field, QString());
        const QString typed = QStringLiteral("words %1").arg(++runs);
        typeSentence(typed);
        tapOptimize();
        EXPECT_EQ(atspi().text(field), typed + QStringLiteral("  "));
        const int before = logCount(QString::fromUtf8(chosen));
        press(QString::fromUtf8(key));
        EXPECT_TRUE(waitForNoChoice());
        EXPECT_TRUE(waitUntil(2, [&] { return logCount(QString::fromUtf8(chosen)) == before + 1; }));
        expectWritten(field, better);
        ASSERT_EQ(generations().size(), runs);
        EXPECT_TRUE(generations().back().prompt().contains(typed + QStringLiteral("  \n")));
    }
    EXPECT_EQ(focus.losses(), QStringList());
    EXPECT_EQ(x().keysDown(), 0);
    EXPECT_TRUE(waitUntil(5, [&] { return panels().isEmpty(); }));
}

TEST_F(Choice, itStandsBelowTheCaretAndFollowsTheTypingAndTheWindow) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    x().moveResize(editor.window(), QRect(300, 60, 640, 300));
    const ProbedField field = atspi().waitForField(editor);
    FocusWatch focus(desktop(), editor.window());
    typeSentence(QStringLiteral("a sentence that brings the caret away from the left"));
    tapOptimize();

    const QRectF anchor = loggedAnchor();
    const double height = x().screen().height_in_pixels;
    const QRectF onScreen(anchor.x(), height - anchor.bottom(), anchor.width(), anchor.height());
    EXPECT_EQ(choice().topLeft(), placeBelow(onScreen)) << qPrintable(log());
    const QRect caret = caretOf(field);
    EXPECT_TRUE(isNear(choice().topLeft(), placeBelow(QRectF(caret)), 12))
        << choice().x() << "," << choice().y() << " for the caret at " << caret.x() << "," << caret.y();

    const QPoint before = choice().topLeft();
    typist().type(QStringLiteral("words"));
    EXPECT_TRUE(atspi().waitForTextContaining(field, QStringLiteral("  words")).contains(u"  words"));
    EXPECT_TRUE(waitUntil(2, [&] { return choice().x() > before.x() + 15; }));
    EXPECT_EQ(choice().y(), before.y());

    const QPoint beside = choice().topLeft();
    x().moveResize(editor.window(), QRect(340, 120, 640, 300));
    EXPECT_TRUE(waitUntil(2, [&] { return isNear(choice().topLeft(), beside + QPoint(40, 60)); }))
        << choice().x() << "," << choice().y();
    EXPECT_EQ(focus.losses(), QStringList());
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
}

TEST_F(Choice, escapeClosesItAndLettersAndChordsPass) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    FocusWatch focus(desktop(), editor.window());
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    typist().type(QStringLiteral("a5"));
    EXPECT_EQ(atspi().waitForText(field, QStringLiteral("words  a5")), QStringLiteral("words  a5"));
    EXPECT_FALSE(choice().isNull());
    typist().chord(QStringLiteral("Ctrl+z"));
    EXPECT_TRUE(waitUntil(3, [&] { return atspi().text(field).size() < 9; }));
    EXPECT_FALSE(choice().isNull());
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
    EXPECT_TRUE(log().contains(u"Optimize panel dismissed by Escape"));
    EXPECT_TRUE(generations().empty());
    // Its keys are the editor's again.
    const QString left = atspi().text(field);
    typist().type(QStringLiteral("1/ 2\n3"));
    EXPECT_EQ(atspi().waitForText(field, left + QStringLiteral("1/ 2\n3")), left + QStringLiteral("1/ 2\n3"));
    EXPECT_EQ(focus.losses(), QStringList());
}

TEST_F(Choice, theSlashKeyAsksForCommands) {
    startProgram();
    serve(success(QStringLiteral(
        R"([{"command":"/review","category":"slash-command","explanation":"ready","confidence":"high"}])")));
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("git push"));
    tapOptimize();
    press(QStringLiteral("slash"));
    expectWritten(field, QStringLiteral("★ /review — ready"));
}

TEST_F(Choice, aRowIsChosenByTheMouseAndTheEditorKeepsTheFocus) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    FocusWatch focus(desktop(), editor.window());
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    typist().pause(0.3);
    const QRect panel = choice();
    for (int y = panel.top() + 40; y < panel.bottom() - 10 && !choice().isNull(); y += 10) {
        typist().click(QPoint(panel.center().x(), y));
        typist().pause(0.05);
        if (log().contains(u"Memory action selected:")) break;
    }
    EXPECT_TRUE(waitForNoChoice());
    expectWritten(field, better);
    EXPECT_EQ(focus.losses(), QStringList());
}

TEST_F(Choice, theApplicationClosedUnderItLeavesItToEscape) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    atspi().waitForField(editor);
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    editor.kill();
    typist().pause(0.5);
    EXPECT_FALSE(choice().isNull());
    press(QStringLiteral("1"));
    EXPECT_TRUE(waitForNoChoice());
    EXPECT_TRUE(waitForLog(QStringLiteral("UI showFailureCard requested: 没有读到可处理的文本"), 10))
        << qPrintable(log());
    EXPECT_TRUE(generations().empty());
    EXPECT_TRUE(waitUntil(5, [&] { return panels().isEmpty(); }));
}

TEST_F(Choice, anApplicationThatHangsUnderItCostsNoKey) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    editor.stop();
    typist().pause(1);
    EXPECT_FALSE(choice().isNull());
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
    editor.resume();
    EXPECT_EQ(atspi().waitForText(field, QStringLiteral("words  ")), QStringLiteral("words  "));
}

TEST_F(Choice, chromiumGetsItsWordsAndKeepsTheFocus) {
    startProgram();
    Program browser(desktop(),
                    {QStringLiteral("chromium"), QStringLiteral("--no-sandbox"),
                     QStringLiteral("--user-data-dir=") + desktop().file(QStringLiteral("chromium")),
                     QStringLiteral("--no-first-run"), QStringLiteral("--no-default-browser-check"),
                     QStringLiteral("--disable-gpu"), QStringLiteral("--disable-background-networking"),
                     QStringLiteral("--disable-component-update"), QStringLiteral("--disable-sync"),
                     QStringLiteral("--disable-dev-shm-usage"), QStringLiteral("--password-store=basic"),
                     QStringLiteral("--window-size=700,500"), QStringLiteral("--window-position=40,40"),
                     QStringLiteral("--force-renderer-accessibility"),
                     QStringLiteral("--app=data:text/html,<textarea autofocus rows=8 cols=60></textarea>")});
    browser.waitForWindow(30, QStringLiteral("chromium"));
    typist().pause(1);
    // The field answers once the browser has built its tree.
    const QString words = QStringLiteral("good morning");
    typeSentence(words);
    FocusWatch focus(desktop(), browser.window());
    tapOptimize();
    press(QStringLiteral("1"));
    ASSERT_TRUE(waitForGeneration(1, 15)) << qPrintable(log());
    EXPECT_TRUE(generations().front().prompt().contains(words + QStringLiteral("  \n")))
        << qPrintable(generations().front().prompt());
    EXPECT_TRUE(waitForLog(QStringLiteral("ActionPipeline writeback:"), 15)) << qPrintable(log());
    EXPECT_TRUE(log().contains(u"success: true")) << qPrintable(log());
    EXPECT_EQ(focus.losses(), QStringList());
    clipboard().disown();
    typist().pause(1);
    typist().chord(QStringLiteral("Ctrl+a"));
    typist().chord(QStringLiteral("Ctrl+c"));
    EXPECT_TRUE(waitUntil(5, [&] { return clipboard().text() == better; }))
        << qPrintable(clipboard().text().value_or(QString()));
}

TEST_F(Choice, aTerminalIsReadAndItsKeysAreKeptFromItsProgram) {
    startProgram();
    const QString received = desktop().file(QStringLiteral("received"));
    Program terminal(desktop(),
                     {QStringLiteral("lxterminal"), QStringLiteral("--no-remote"), QStringLiteral("-e"),
                      QStringLiteral("sh -c 'stty -icanon; cat -u > ") + received + QStringLiteral("'")});
    terminal.waitForWindow(20, QStringLiteral("lxterminal"));
    typist().pause(0.5);
    typeSentence(QStringLiteral("fix the build"));
    FocusWatch focus(desktop(), terminal.window());
    tapOptimize();
    press(QStringLiteral("2"));
    ASSERT_TRUE(waitForGeneration(1, 15)) << qPrintable(log());
    EXPECT_TRUE(generations().front().prompt().contains(u"fix the build"));
    EXPECT_TRUE(waitForNoChoice());
    EXPECT_EQ(focus.losses(), QStringList());
    QFile file(received);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_TRUE(bytes.startsWith("fix the build  ")) << bytes.constData();
    EXPECT_FALSE(bytes.contains('2')) << bytes.constData();
}

TEST_F(Choice, withoutAWindowManagerItOpensAndChoosesToo) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("words"));
    desktop().stopWindowManager();
    ASSERT_TRUE(x().activate(editor.window()));
    tapOptimize();
    press(QStringLiteral("1"));
    expectWritten(field, better);
    desktop().startWindowManager();
}

}  // namespace
}  // namespace veltrin
