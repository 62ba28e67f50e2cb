#include "desktop/selection/SelectionTest.h"

#include <QFile>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

// Selected words are compared with what the application itself says is selected, by code that shares nothing
// with the adapters.
const QString text = u"alpha bravo charlie delta\nsecond line of it\n"_s;
constexpr qint64 bravo = 6;
constexpr qint64 charlie = 12;

struct Place {
    const char* application;
    const char* field;
    const char* bundle;
};
void PrintTo(const Place& place, std::ostream* out) {
    *out << place.application;
}

class SelectionInApplication : public SelectionTest, public testing::WithParamInterface<Place> {
protected:
    void SetUp() override {
        SelectionTest::SetUp();
        startApplication(QString::fromUtf8(GetParam().application));
        field().set({text, 0, 0});
        waitUntil(10, [this] { return field().state().text.startsWith(u"alpha"); });
    }
    FieldDriver& field() { return application_->field(QString::fromUtf8(GetParam().field)); }
    QString selected() {
        const FieldState state = field().state();
        return state.text.mid(state.start, state.end - state.start);
    }
    QRect wordAt(qint64 location, qint64 length) { return placeOf(location, length); }
};

TEST_P(SelectionInApplication, whateverTheMouseSelectsIsShownAndNothingElse) {
    const QRect word = wordAt(bravo, 5);
    const QRect other = wordAt(charlie, 7);

    dragAcross(word);
    QString shown = shownText();
    EXPECT_TRUE(shown.contains(u"rav")) << qPrintable(shown);
    EXPECT_EQ(shown, selected());
    EXPECT_EQ(loggedStarting(u"SmartSelect trigger: reason: drag clickState: 1"_s), 1);
    ASSERT_FALSE(surface().shown.empty());

    // A plain click closes the icon on the press and gives no other.
    click(other.center());
    EXPECT_FALSE(surface().icon);
    forget();
    EXPECT_TRUE(surface().shown.empty());
    EXPECT_EQ(loggedStarting(u"SmartSelect trigger:"_s), 1);

    click(word.center(), 2);
    shown = shownText();
    EXPECT_EQ(shown.trimmed(), u"bravo");
    EXPECT_EQ(shown, selected());
    EXPECT_GE(loggedStarting(u"SmartSelect trigger: reason: multiClick clickState: 2"_s), 1);
    forget();

    // Elsewhere, so that it is no fourth click.
    click(other.center(), 3);
    ASSERT_TRUE(eventually(20, [this] {
        return loggedStarting(u"SmartSelect trigger: reason: multiClick clickState: 3"_s) >= 1;
    }));
    shown = shownText();
    EXPECT_TRUE(shown.contains(u"charlie"));
    EXPECT_EQ(shown, selected());
    forget();

    // A drag that comes back to its start is looked at, and has selected nothing.
    click({word.center().x(), word.center().y() + 60});
    const int nothings = loggedStarting(u"SmartSelect no selected text:"_s);
    drag({other.center(), other.center() + QPoint(60, 0), other.center()});
    EXPECT_TRUE(eventually(
        20, [&] { return loggedStarting(u"SmartSelect no selected text:"_s) > nothings || surface().icon; }));
    // LibreOffice has selected the one or two characters between the press and the first step.
    EXPECT_EQ(surface().shown.empty() ? QString() : surface().shown.back().text, selected());
    EXPECT_LE(selected().size(), 2);
    EXPECT_EQ(field().state().text.left(25), text.left(25)) << "the text is the user's";
}

INSTANTIATE_TEST_SUITE_P(Applications, SelectionInApplication,
                         testing::Values(Place{"mousepad", "text", "org.xfce.mousepad"},
                                         Place{"gedit", "text", "org.gnome.gedit"},
                                         Place{"qt-widgets", "text", "veltrin_test_editor"},
                                         Place{"chromium", "textarea", "chromium"},
                                         Place{"firefox", "textarea", "firefox-esr"},
                                         Place{"libreoffice-writer", "text", "libreoffice-writer"}),
                         [](const auto& place) {
                             QString name = QString::fromUtf8(place.param.application);
                             return name.remove(u'-').toStdString();
                         });

class SelectionInMousepad : public SelectionTest {
protected:
    void SetUp() override {
        SelectionTest::SetUp();
        startApplication(u"mousepad"_s).field(u"text"_s).set({text, 0, 0});
        word = placeOf(bravo, 5);
    }
    QRect word;
};

TEST_F(SelectionInMousepad, theSameSelectionWithinAMomentIsNoNewOne) {
    click(word.center(), 2);
    ASSERT_EQ(shownText(), u"bravo");
    surface().dismissIcon();
    surface().shown.clear();
    const double before = monotonicSeconds();
    trigger().handleShortcut();
    EXPECT_TRUE(eventually(5, [this] {
        return loggedStarting(u"SmartSelect duplicate ignored:"_s) == 1 || !surface().shown.empty();
    }));
    // Only a machine that was too slow for the moment may show it.
    const bool isInTime = monotonicSeconds() - before < 0.5;
    EXPECT_TRUE(surface().shown.empty() || !isInTime);
    forget();
    trigger().handleShortcut();
    EXPECT_EQ(shownText(), u"bravo");
    EXPECT_EQ(copyKeysPosted(), 0);
}

TEST_F(SelectionInMousepad, aBlacklistedApplicationIsLeftAlone) {
    world_->settings.smartSelectBlacklistedBundleIDsText.set(
        world_->text.workspace.frontmostApplication()->bundleIdentifier.value_or(QString()));
    click(word.center(), 2);
    EXPECT_TRUE(
        eventually(5, [this] { return logged(u"SmartSelect ignored: frontmost app blacklisted"_s) == 1; }));
    runEventLoopFor(0.5);
    EXPECT_EQ(loggedStarting(u"SmartSelect read begin:"_s), 0);
    EXPECT_TRUE(surface().shown.empty());
}

TEST_F(SelectionInMousepad, draggingASelectedTextIsNoSelection) {
    click(word.center(), 2);
    ASSERT_EQ(shownText(), u"bravo");
    forget();
    const int reads = loggedStarting(u"SmartSelect read begin:"_s);
    // Out of the window, where nobody takes it.
    const QRect window = x().geometry(application_->window());
    drag({word.center(), word.center() + QPoint(40, 40), {window.right() + 60, window.bottom() + 60}});
    EXPECT_TRUE(
        eventually(10, [this] { return logged(u"SmartSelect ignored: drag pasteboard changed"_s) == 1; }));
    runEventLoopFor(0.7);
    EXPECT_EQ(loggedStarting(u"SmartSelect read begin:"_s), reads);
    EXPECT_TRUE(surface().shown.empty());
}

TEST_F(SelectionInMousepad, aStoppedApplicationCostsABoundedWait) {
    click(word.center(), 2);
    ASSERT_EQ(shownText(), u"bravo");
    forget();
    application_->program().stop();
    const double begin = monotonicSeconds();
    trigger().handleShortcut();
    EXPECT_TRUE(waitForNothing(1));
    const double taken = monotonicSeconds() - begin;
    application_->program().resume();
    std::printf("a look at a stopped application: %.0f ms after its delay\n", (taken - 0.25) * 1000);
    EXPECT_LT(taken, 5) << "bounded, however slow the machine";
    forget();
    trigger().handleShortcut();
    EXPECT_EQ(shownText(), u"bravo") << "and it is read again when it answers";
}

TEST_F(SelectionInMousepad, anApplicationThatExitsMeanwhileGivesNothing) {
    click(word.center(), 2);
    application_->program().kill();
    EXPECT_TRUE(eventually(10, [this] {
        return loggedStarting(u"SmartSelect no selected text:"_s) == 1 || !surface().shown.empty();
    }));
}

TEST_F(SelectionInMousepad, anotherSelectionRightAfterAFloodIsShown) {
    for (int i = 0; i < 30; ++i)
        click(word.center() + QPoint(i % 2 * 90, 0), 2);
    surface().dismissIcon();
    forget();
    click(word.center(), 2);
    EXPECT_EQ(shownText(), u"bravo");
}

TEST_F(SelectionTest, aSelectionOf50MegabytesIsShownWholeOrNotAtAll) {
    const QString line = QString(79, u'x') + u'\n';
    const QString file = desktop().file(u"large.txt"_s);
    QFile large(file);
    ASSERT_TRUE(large.open(QIODevice::WriteOnly));
    for (int i = 0; i < 50 * 1024 * 1024 / 80; ++i)
        large.write(line.toLatin1());
    large.close();
    Program editor(desktop(), {u"mousepad"_s, u"--disable-server"_s, file});
    editor.waitForWindow(60);
    typist().chord(u"Ctrl+A"_s);
    runEventLoopFor(1);
    const double begin = monotonicSeconds();
    trigger().handleShortcut();
    ASSERT_TRUE(eventually(60, [this] {
        return !surface().shown.empty() || loggedStarting(u"SmartSelect no selected text:"_s) > 0;
    }));
    std::printf("50 MB selected: %zu shown after %.1f s\n", surface().shown.size(),
                monotonicSeconds() - begin);
    const bool isWhole = surface().shown.empty() || surface().shown.back().text.size() == large.size();
    EXPECT_TRUE(isWhole);
}

TEST_F(SelectionTest, xtermTellsNothingAndIsNeverSentACopyKey) {
    FieldApplication& terminal = startApplication(u"xterm"_s);
    terminal.field(u"text"_s).set({u"alpha bravo charlie"_s, 0, 0});
    const QRect window = x().geometry(terminal.window());
    const QPoint first = window.topLeft() + QPoint(12, 10);
    drag({first, first + QPoint(90, 0)});
    EXPECT_TRUE(waitForNothing(1));
    click(first, 2);
    EXPECT_TRUE(waitForNothing(2));
    EXPECT_EQ(loggedStarting(u"SmartSelect clipboard fallback blocked: focused element unavailable"_s), 2);
    EXPECT_EQ(copyKeysPosted(), 0);
    EXPECT_EQ(terminal.field(u"text"_s).state().text, u"alpha bravo charlie") << "no key came in";
    EXPECT_TRUE(surface().shown.empty());
    EXPECT_EQ(clipboard().ownerChanges(), 1) << "the clipboard was not even borrowed";
}

TEST_F(SelectionTest, aTerminalWithACopyKeyIsAskedByThatKeyAndNeverInterrupted) {
    FieldApplication& terminal = startApplication(u"lxterminal"_s);
    terminal.field(u"text"_s).set({u"alpha bravo charlie"_s, 0, 0});
    AXElementRef element;
    waitUntil(20, [&] {
        element = focusedElement(world_->text.accessibility, terminal.process());
        return element != nullptr;
    });
    ASSERT_TRUE(element);
    const auto place = world_->text.accessibility.copyAttributeValue(element, AXAttribute::position);
    const QPoint first = std::get<QPointF>(place.value).toPoint() + QPoint(14, 8);
    click(first, 2);
    EXPECT_EQ(shownText(), u"alpha");
    EXPECT_EQ(copyKeysPosted(), 1);
    EXPECT_EQ(surface().shown.back().point, QPointF(first.x(), x().screen().height_in_pixels - first.y()))
        << "beside the mouse";
    EXPECT_EQ(terminal.field(u"text"_s).state().text, u"alpha bravo charlie") << "no byte came in";
}

TEST_F(SelectionTest, aTerminalIsNeverTakenAtItsWordAboutASelection) {
    FieldApplication& terminal = startApplication(u"lxterminal"_s);
    // Of these lines VTE tells a piece, where it mostly says that nothing is selected.
    terminal.field(u"text"_s).set({u"first мир \"so\" ab 中文\nмир \"so\" a&b"_s, 0, 0});
    ClipboardProbe primary(desktop(), "PRIMARY");
    const QPoint first = x().geometry(terminal.window()).topLeft() + QPoint(16, 44);
    drag({first + QPoint(40, 0), first + QPoint(70, 20)});
    const QString shown = shownText();
    EXPECT_TRUE(shown.contains(u'\n')) << qPrintable(shown);
    EXPECT_EQ(shown, primary.text().value_or(u"nothing"_s));
    EXPECT_EQ(copyKeysPosted(), 1);
}

TEST_F(SelectionTest, aPasswordOfAPageIsNeitherShownNorCopied) {
    FieldApplication& browser = startApplication(u"chromium"_s);
    auto& area = dynamic_cast<PageField&>(browser.field(u"textarea"_s));
    auto& password = dynamic_cast<PageField&>(browser.field(u"password"_s));
    area.set({u"alpha"_s, 0, 0});
    const QPoint first = placeOf(0, 5).center();
    password.set({u"secret"_s, 0, 0});
    click(first + QPoint(0, password.box().center().y() - area.box().top() - 14), 2);
    EXPECT_TRUE(waitForNothing(1));
    EXPECT_EQ(password.selected(), u"secret") << "it was the password that was clicked";
    EXPECT_TRUE(surface().shown.empty());
    EXPECT_EQ(copyKeysPosted(), 0);
    EXPECT_EQ(clipboard().ownerChanges(), 1);
}

TEST_F(SelectionTest, aPasswordIsNeitherReadNorCopied) {
    Program editor =
        Program::qtEditor(desktop(), {u"--password"_s, u"secret"_s, u"--focus"_s, u"password"_s});
    const ProbedField field = atspi().waitForField(editor, u"Password"_s);
    click(atspi().extents(field).center(), 2);
    EXPECT_TRUE(waitForNothing(1));
    EXPECT_EQ(copyKeysPosted(), 0);
    EXPECT_TRUE(surface().shown.empty());
    EXPECT_EQ(clipboard().ownerChanges(), 1);
}

TEST_F(SelectionTest, aClipboardWhoseOwnerNeverAnswersStaysWhereItIs) {
    keepsClipboard_ = false;
    FieldApplication& editor = startApplication(u"mousepad"_s);
    editor.field(u"text"_s).set({text, 0, 0});
    const QRect word = placeOf(bravo, 5);
    click(word.center() + QPoint(0, 80));
    clipboard().ownSilently();
    drag({word.center(), word.center() + QPoint(60, 0), word.center()});
    EXPECT_TRUE(waitForNothing(1));
    EXPECT_EQ(logged(u"SmartSelect clipboard fallback refused: pasteboard owner does not answer"_s), 1);
    EXPECT_EQ(copyKeysPosted(), 0);
    EXPECT_TRUE(clipboard().isOwner());
}

TEST_F(SelectionTest, everythingOnTheClipboardComesBackByteForByte) {
    keepsClipboard_ = false;
    FieldApplication& editor = startApplication(u"mousepad"_s);
    editor.field(u"text"_s).set({text, 0, 0});
    const QRect word = placeOf(bravo, 5);
    click(word.center() + QPoint(0, 80));
    ClipboardSnapshot rich = ClipboardSnapshot::ofText(usersClipboard);
    rich.contents.insert(u"text/html"_s, "<b>the user's</b>");
    rich.contents.insert(u"image/png"_s, QByteArray(1'500'000, '\x89'));
    rich.contents.insert(u"application/x-own"_s, QByteArray("\0\1\2", 3));
    clipboard().own(rich);
    // Nothing is selected at the end: the copy key goes out, and nothing is copied.
    drag({word.center(), word.center() + QPoint(60, 0), word.center()});
    EXPECT_TRUE(waitForNothing(1));
    EXPECT_EQ(copyKeysPosted(), 1);
    const ClipboardSnapshot after = clipboard().snapshot();
    for (auto type = rich.contents.begin(); type != rich.contents.end(); ++type)
        EXPECT_EQ(after.contents.value(type.key()), type.value()) << qPrintable(type.key());
}

/// A page of five thousand paragraphs, in Chromium.
class SelectionInLongPage : public SelectionTest {
protected:
    void SetUp() override {
        SelectionTest::SetUp();
        QFile page(desktop().file(u"long.html"_s));
        ASSERT_TRUE(page.open(QIODevice::WriteOnly));
        page.write(
            "<!DOCTYPE html><meta charset=utf-8><title>Long</title>"
            "<style>body{margin:20px;font:20px sans-serif}p{margin:4px}</style>");
        for (int i = 0; i < 5000; ++i)
            page.write("<p>Paragraph " + QByteArray::number(i) + " has some words in it.</p>");
        page.close();
        program.emplace(desktop(), chromiumCommand(desktop(), u"file://"_s + page.fileName()));
        program->waitForWindow(60, u"chromium"_s);
        process = x().processOf(program->window());
    }
    std::optional<Program> program;
    qint32 process = 0;
};

TEST_F(SelectionInLongPage, itsSelectionIsReadAndItsSearchIsBounded) {
    const QRect window = x().geometry(program->window());
    const QPoint second = window.topLeft() + QPoint(60, 70);
    // The page comes up in its own time.
    bool isShown = false;
    for (int attempt = 0; attempt < 20 && !isShown; ++attempt) {
        click(second, 2);
        isShown = !shownText(3).isEmpty();
    }
    ASSERT_TRUE(isShown);
    EXPECT_EQ(surface().shown.back().text.trimmed(), u"Paragraph");
    std::printf("read as %s with %d copies\n",
                qPrintable(log_->lines().filter(u"SmartSelect show:"_s).join(u'\n')), copyKeysPosted());

    const AXElementRef focused = focusedElement(world_->text.accessibility, process);
    ASSERT_TRUE(focused);
    for (int i = 0; i < 5; ++i) {
        const double begin = monotonicSeconds();
        const AXTree tree = world_->text.accessibility.copyTree(focused, {6, 120, 2000});
        std::printf("%d elements below the focus in %.1f ms\n", sizeOf(tree),
                    (monotonicSeconds() - begin) * 1000);
        EXPECT_LE(std::ssize(tree.children), 120);
    }
}

}  // namespace
}  // namespace veltrin
