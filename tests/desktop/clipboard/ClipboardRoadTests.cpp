#include "ExternalAccess/ExternalTextClipboardFallback.h"
#include "Platform/Linux/DesktopEntries.h"
#include "Platform/Linux/QtRunLoop.h"
#include "Platform/Linux/X11/X11KeyPoster.h"
#include "Platform/Linux/X11/X11Pasteboard.h"
#include "Platform/Linux/X11/X11Workspace.h"
#include "support/desktop/DesktopTest.h"

#include <QFile>

#include <exception>
#include <functional>
#include <string>
#include <thread>

namespace veltrin {
namespace {

using Source = ExternalTextReadResult::Source;

const QString secretHint = QStringLiteral("x-kde-passwordManagerHint");

QString textOf(qsizetype characters) {
    QString text;
    text.reserve(characters + 64);
    for (int line = 0; text.size() < characters; ++line)
        text += QStringLiteral("line %1 of the long text \u4F60\u597D \U0001F600\n").arg(line);
    return text;
}

/// Reading and writing foreign editors by their copy and paste keys, through the adapters of this desktop.
class ClipboardRoadOnX11 : public DesktopTest {
protected:
    ClipboardRoadOnX11()
        : connection(X11Connection::open(desktop().display().toLatin1())),
          windows(*connection),
          workspace(windows, desktopEntries),
          pasteboard(std::make_unique<X11Pasteboard>(desktop().display().toLatin1())),
          poster(windows, {{},
                           nullptr,
                           [this](quint64 window) {
                               pasteboard->pastePosted(window);
                               if (atPaste) atPaste();
                           }}),
          loan(std::make_unique<PasteboardLoan>(*pasteboard, runLoop)),
          fallback(workspace, *pasteboard, *loan, poster, runLoop, guard) {}

    void TearDown() override {
        loan.reset();
        DesktopTest::TearDown();
    }

    ExternalTextReadResult read(const Program& program) {
        return fallback.readFocusedText(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"),
                                        {program.pid(), program.window(), nullptr});
    }
    bool waitForClipboard(const QString& text, double seconds = 5) {
        return eventually(seconds, [&] { return clipboard().text() == text; });
    }
    Program editorWith(const QString& text) {
        return Program::qtEditor(desktop(), {QStringLiteral("--text"), text});
    }

    std::unique_ptr<X11Connection> connection;
    X11Windows windows;
    DesktopEntries desktopEntries;
    X11Workspace workspace;
    std::unique_ptr<X11Pasteboard> pasteboard;
    std::function<void()> atPaste;
    X11KeyPoster poster;
    QtRunLoop runLoop;
    std::unique_ptr<PasteboardLoan> loan;
    ClipboardFallbackInterferenceGuard guard{runLoop};
    ExternalTextClipboardFallback fallback;
};

TEST_F(ClipboardRoadOnX11, readsAndWritesEditorsOfThreeToolkitsAndGivesTheClipboardBack) {
    const QString text = QStringLiteral(
        "Gr\u00FC\u00DFe \u4F60\u597D \U0001F468\u200D\U0001F469\u200D\U0001F467\nsecond line");
    const QString result = QStringLiteral("new \u4F60 \U0001F600\ntext");
    Program (*const starters[])(RealDesktop&, const QString&) = {
        &Program::mousepad, &Program::gnomeTextEditor, [](RealDesktop& on, const QString& with) {
            return Program::qtEditor(on, {QStringLiteral("--text"), with});
        }};
    for (const auto start : starters) {
        clipboard().ownText(QStringLiteral("the user's"));
        auto program = start(desktop(), text);
        const auto field = atspi().waitForField(program);
        ASSERT_EQ(atspi().waitForText(field, text), text);
        const auto found = read(program);
        EXPECT_EQ(found.text, text);
        EXPECT_EQ(found.source, Source::value);
        EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
        ASSERT_TRUE(fallback.write(result, found));
        EXPECT_EQ(atspi().waitForText(field, result), result);
        EXPECT_TRUE(waitForClipboard(QStringLiteral("the user's")));
        program.kill();
    }
}

TEST_F(ClipboardRoadOnX11, aMillionCharactersGoOutAndBackUnchanged) {
    clipboard().ownText(QStringLiteral("the user's"));
    const QString text = textOf(1'000'000);
    auto program = editorWith(QStringLiteral("short"));
    const auto empty = read(program);
    ASSERT_EQ(empty.text, QStringLiteral("short"));
    ASSERT_TRUE(fallback.write(text, empty));
    ASSERT_TRUE(waitForClipboard(QStringLiteral("the user's")));
    ExternalTextReadResult found;
    EXPECT_TRUE(waitUntil(10, [&] {
        found = read(program);
        return found.text.size() == text.size();
    }));
    EXPECT_TRUE(found.text == text);
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
}

TEST_F(ClipboardRoadOnX11, aClipboardOfAMegabyteAndAHalfComesBackUnchanged) {
    const QString users = textOf(1'500'000);
    clipboard().ownText(users);
    auto program = editorWith(QStringLiteral("short"));
    const auto found = read(program);
    EXPECT_EQ(found.text, QStringLiteral("short"));
    EXPECT_TRUE(clipboard().text() == users);
    ASSERT_TRUE(fallback.write(QStringLiteral("new"), found));
    EXPECT_TRUE(waitForClipboard(users));
}

TEST_F(ClipboardRoadOnX11, ofAClipboardWithManyTypesThePlainStringComesBack) {
    ClipboardSnapshot users = ClipboardSnapshot::ofText(QStringLiteral("the user's"));
    users.contents[QStringLiteral("text/html")] = "<b>the user's</b>";
    users.contents[QStringLiteral("image/png")] = QByteArray("\x89PNG\r\n") + QByteArray(300'000, 'p');
    users.contents[QStringLiteral("application/x-custom")] = QByteArray("\0\1\2", 3);
    clipboard().own(users);
    auto program = editorWith(QStringLiteral("text"));
    EXPECT_EQ(read(program).text, QStringLiteral("text"));
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
    EXPECT_FALSE(clipboard().targets().contains(QStringLiteral("text/html")));
}

// Accepted: content without a plain string is gone after the round trip.
TEST_F(ClipboardRoadOnX11, aPictureAloneIsGone) {
    ClipboardSnapshot picture;
    picture.contents[QStringLiteral("image/png")] = "\x89PNG";
    clipboard().own(picture);
    auto program = editorWith(QStringLiteral("text"));
    EXPECT_EQ(read(program).text, QStringLiteral("text"));
    EXPECT_TRUE(clipboard().hasOwner());
    EXPECT_EQ(clipboard().text(), std::nullopt);
}

TEST_F(ClipboardRoadOnX11, anOwnerThatNeverAnswersKeepsTheClipboardAndTheFieldIsLeftAlone) {
    auto program = editorWith(QStringLiteral("text"));
    const auto field = atspi().waitForField(program);
    clipboard().ownSilently();
    const double begin = monotonicSeconds();
    const auto found = read(program);
    EXPECT_LT(monotonicSeconds() - begin, 1.0);
    EXPECT_EQ(found.source, Source::none);
    EXPECT_FALSE(fallback.write(QStringLiteral("new"), found));
    EXPECT_TRUE(clipboard().isOwner());
    EXPECT_EQ(atspi().text(field), QStringLiteral("text"));
    EXPECT_TRUE(atspi().read(field).selections.isEmpty());
}

TEST_F(ClipboardRoadOnX11, fiftyMegabytesOnTheClipboardCostABoundedTimeAndAreNotLost) {
    const QString users(50'000'000, u'x');
    clipboard().ownText(users);
    auto program = editorWith(QStringLiteral("text"));
    const double begin = monotonicSeconds();
    const auto found = read(program);
    EXPECT_LT(monotonicSeconds() - begin, 3.0);
    // Read in time it went out and back; else it was not touched.
    EXPECT_TRUE(found.text == QStringLiteral("text") || clipboard().isOwner());
    EXPECT_TRUE(clipboard().text(30) == users);
}

TEST_F(ClipboardRoadOnX11, anOwnerThatDiesInTheMiddleOfItsTextLeavesAnEmptyClipboard) {
    auto program = editorWith(QStringLiteral("text"));
    auto* dying = xcb_connect(desktop().display().toLatin1().constData(), nullptr);
    const auto window = xcb_generate_id(dying);
    xcb_create_window(dying, 0, window, x().root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0,
                      nullptr);
    xcb_set_selection_owner(dying, window, x().atom("CLIPBOARD"), XCB_CURRENT_TIME);
    xcb_flush(dying);
    ASSERT_TRUE(waitUntil(3, [&] { return clipboard().hasOwner(); }));
    const xcb_atom_t inPieces = x().atom("INCR");
    std::thread owner([&] {
        // Announces a long text, and is gone.
        while (const XReply<xcb_generic_event_t> event{xcb_wait_for_event(dying)}) {
            if ((event->response_type & 0x7F) != XCB_SELECTION_REQUEST) continue;
            const auto& request = reinterpret_cast<const xcb_selection_request_event_t&>(*event);
            const quint32 size = 1'000'000;
            xcb_change_property(dying, XCB_PROP_MODE_REPLACE, request.requestor, request.property, inPieces,
                                32, 1, &size);
            xcb_selection_notify_event_t notify{};
            notify.response_type = XCB_SELECTION_NOTIFY;
            notify.time = request.time;
            notify.requestor = request.requestor;
            notify.selection = request.selection;
            notify.target = request.target;
            notify.property = request.property;
            xcb_send_event(dying, 0, request.requestor, 0, reinterpret_cast<const char*>(&notify));
            xcb_flush(dying);
            break;
        }
        xcb_disconnect(dying);
    });
    const double begin = monotonicSeconds();
    EXPECT_EQ(pasteboard->string().status, PasteboardString::Status::none);
    EXPECT_LT(monotonicSeconds() - begin, 1.0);
    owner.join();
    EXPECT_EQ(read(program).text, QStringLiteral("text"));
    EXPECT_EQ(clipboard().text(), std::nullopt);
}

TEST_F(ClipboardRoadOnX11, aPasteThatIsTakenAfterTheClipboardCameBackStillGetsOurText) {
    clipboard().ownText(QStringLiteral("the user's"));
    for (const bool isQt : {false, true}) {
        auto program =
            isQt ? editorWith(QStringLiteral("old")) : Program::mousepad(desktop(), QStringLiteral("old"));
        const auto field = atspi().waitForField(program);
        const auto found = read(program);
        ASSERT_EQ(found.text, QStringLiteral("old"));
        atPaste = [&] { program.stop(); };
        ASSERT_TRUE(fallback.write(QStringLiteral("ours"), found));
        ASSERT_TRUE(waitForClipboard(QStringLiteral("the user's")));
        program.resume();
        EXPECT_EQ(atspi().waitForText(field, QStringLiteral("ours")), QStringLiteral("ours"));
        EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
        atPaste = {};
        program.kill();
    }
}

TEST_F(ClipboardRoadOnX11, ourTextIsMarkedForClipboardManagersAndTheUsersIsNot) {
    clipboard().ownText(QStringLiteral("the user's"));
    auto program = editorWith(QStringLiteral("old"));
    const auto found = read(program);
    EXPECT_FALSE(clipboard().targets().contains(secretHint));
    ASSERT_TRUE(fallback.write(QStringLiteral("ours"), found));
    EXPECT_TRUE(clipboard().targets().contains(secretHint));
    EXPECT_EQ(clipboard().read(secretHint).bytes, QByteArray("secret"));
    ASSERT_TRUE(waitForClipboard(QStringLiteral("the user's")));
    EXPECT_FALSE(clipboard().targets().contains(secretHint));
}

TEST_F(ClipboardRoadOnX11, aPasswordOnTheClipboardComesBackMarked) {
    ClipboardSnapshot password = ClipboardSnapshot::ofText(QStringLiteral("pass"));
    password.contents[secretHint] = "secret";
    clipboard().own(password);
    auto program = editorWith(QStringLiteral("old"));
    EXPECT_EQ(read(program).text, QStringLiteral("old"));
    EXPECT_EQ(clipboard().text(), QStringLiteral("pass"));
    EXPECT_EQ(clipboard().read(secretHint).bytes, QByteArray("secret"));
}

TEST_F(ClipboardRoadOnX11, theEndGivesTheClipboardBackAtOnce) {
    clipboard().ownText(QStringLiteral("the user's"));
    auto program = editorWith(QStringLiteral("old"));
    ASSERT_TRUE(fallback.write(QStringLiteral("ours"), read(program)));
    ASSERT_EQ(clipboard().text(), QStringLiteral("ours"));
    loan->giveBackPending();
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
}

TEST_F(ClipboardRoadOnX11, aHungApplicationIsRefusedInTimeAndGetsNoKeyLater) {
    clipboard().ownText(QStringLiteral("the user's"));
    auto program = editorWith(QStringLiteral("old"));
    const auto field = atspi().waitForField(program);
    const auto found = read(program);
    atspi().setCaret(field, 0);
    program.stop();
    double begin = monotonicSeconds();
    EXPECT_EQ(read(program).source, Source::none);
    EXPECT_LT(monotonicSeconds() - begin, 1.0);
    begin = monotonicSeconds();
    EXPECT_FALSE(fallback.write(QStringLiteral("new"), found));
    EXPECT_LT(monotonicSeconds() - begin, 1.0);
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
    program.resume();
    EXPECT_EQ(atspi().text(field), QStringLiteral("old"));
    EXPECT_TRUE(atspi().read(field).selections.isEmpty());
}

TEST_F(ClipboardRoadOnX11, anApplicationThatHangsBetweenTheKeysCostsABoundedTime) {
    clipboard().ownText(QStringLiteral("the user's"));
    auto program = editorWith(QStringLiteral("old"));
    ASSERT_EQ(read(program).text, QStringLiteral("old"));
    std::thread hang([&] {
        const int before = clipboard().ownerChanges();
        waitUntil(3, [&] { return clipboard().ownerChanges() > before; });
        program.stop();
    });
    const double begin = monotonicSeconds();
    const auto found = read(program);
    EXPECT_LT(monotonicSeconds() - begin, 4.5);
    hang.join();
    program.resume();
    EXPECT_TRUE(found.text.isEmpty() || found.text == QStringLiteral("old"));
    // The copy may come in late, after the clipboard was given back: what stands there is then the field's.
    EXPECT_TRUE(clipboard().text() == QStringLiteral("the user's") ||
                clipboard().text() == QStringLiteral("old"));
}

TEST_F(ClipboardRoadOnX11, anApplicationThatChangesItsTextMeanwhileKeepsTheNewText) {
    clipboard().ownText(QStringLiteral("the user's"));
    auto program = editorWith(QStringLiteral("old"));
    const auto field = atspi().waitForField(program);
    std::string problem;
    std::thread change([&] {
        try {
            atspi().setText(field, QStringLiteral("changed"));
        } catch (const std::exception& error) {
            problem = error.what();
        }
    });
    const auto found = read(program);
    change.join();
    EXPECT_EQ(problem, "");
    EXPECT_TRUE(found.text == QStringLiteral("old") || found.text == QStringLiteral("changed"))
        << qPrintable(found.text);
    EXPECT_EQ(atspi().waitForText(field, QStringLiteral("changed")), QStringLiteral("changed"));
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
}

TEST_F(ClipboardRoadOnX11, anApplicationThatEndsBetweenReadAndWriteGetsNothingAndNobodyElseDoes) {
    clipboard().ownText(QStringLiteral("the user's"));
    auto innocent = editorWith(QStringLiteral("innocent"));
    const auto field = atspi().waitForField(innocent);
    auto program = editorWith(QStringLiteral("old"));
    const auto found = read(program);
    program.kill();
    ASSERT_TRUE(waitUntil(5, [&] { return x().activeWindow() == innocent.window(); }));
    EXPECT_FALSE(fallback.write(QStringLiteral("new"), found));
    EXPECT_EQ(atspi().text(field), QStringLiteral("innocent"));
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
}

TEST_F(ClipboardRoadOnX11, aTerminalRunsOnAndGetsNoKey) {
    clipboard().ownText(QStringLiteral("the user's"));
    // Ends at the first interrupt, and notes every other byte.
    const QString seen = desktop().file(QStringLiteral("terminal-bytes"));
    auto terminal = Program::xterm(
        desktop(), {QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("exec cat > '%1'").arg(seen)});
    const auto found = fallback.readFocusedText(QStringLiteral("XTerm"), QStringLiteral("xterm"),
                                                {terminal.pid(), terminal.window(), nullptr});
    EXPECT_EQ(found.source, Source::none);
    EXPECT_FALSE(fallback.write(QStringLiteral("rm -rf\n"), found));
    EXPECT_EQ(clipboard().text(), QStringLiteral("the user's"));
    typist().type(QStringLiteral("ok\n"));
    QFile bytes(seen);
    EXPECT_TRUE(waitUntil(5, [&] { return bytes.exists() && bytes.size() == 3; }));
    EXPECT_TRUE(terminal.isRunning());
}

TEST_F(ClipboardRoadOnX11, theChangeCountOfAKeyIsThatBeforeIt) {
    clipboard().ownText(QStringLiteral("before"));
    const qint64 before = pasteboard->changeCount();
    runLoop.sleepFor(0.01);
    const auto key = static_cast<quint64>(runLoop.now() * 1e9);
    runLoop.sleepFor(0.01);
    clipboard().ownText(QStringLiteral("after"));
    EXPECT_GT(pasteboard->changeCount(), before);
    EXPECT_EQ(pasteboard->changeCountAt(key), before);
    EXPECT_EQ(pasteboard->changeCountAt(static_cast<quint64>(runLoop.now() * 1e9)),
              pasteboard->changeCount());
}

}  // namespace
}  // namespace veltrin
