#include "Platform/Linux/X11/X11KeyPoster.h"
#include "Platform/Linux/X11/X11Pasteboard.h"
#include "Platform/Linux/X11/XcbHeaders.h"
#include "desktop/x11/RecordingClient.h"
#include "desktop/x11/RivalClient.h"
#include "support/Slowdown.h"
#include "support/desktop/DesktopTest.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <thread>

namespace veltrin {
namespace {

struct FakeElement final : AXElement {
    std::optional<qint32> processIdentifier() const override { return 1; }
    bool isEqual(const AXElement& other) const override { return this == &other; }
};

struct FakeInspector final : PostTargetInspector {
    PostTargetState state{true, true, false};
    int asked = 0;
    int focusedFrom = 0;  ///< the look from which on the focus is there
    std::function<void()> onLook;
    PostTargetState inspect(const AXElementRef&) override {
        ++asked;
        if (onLook) onLook();
        state.isElsewhere = asked < focusedFrom;
        return state;
    }
};

class KeyPosterOnX11 : public DesktopTest {
protected:
    KeyPosterOnX11()
        : connection(X11Connection::open(desktop().display().toLatin1())),
          windows(*connection),
          poster(windows, {[this] { ++letGo; }, &inspector}) {}

    void TearDown() override {
        desktop().setKeyboardLayout(QStringLiteral("us"));
        DesktopTest::TearDown();
    }

    /// A window of some other process, so that it is asked whether it is alive.
    static RecordingClient::Options foreign() {
        RecordingClient::Options options;
        options.process = 1;
        return options;
    }
    static KeyPost command(qint64 key, const RecordingClient& client) {
        KeyPost post;
        post.keyCode = key;
        post.flags = KeyFlags::command;
        post.target.window = client.window();
        return post;
    }

    std::unique_ptr<X11Connection> connection;
    X11Windows windows;
    FakeInspector inspector;
    int letGo = 0;
    X11KeyPoster poster;
};

TEST_F(KeyPosterOnX11, postsAChordInOnePieceAndLeavesNoKeyDown) {
    RecordingClient client(desktop(), foreign());
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.text(), "+Control_L +v -v -Control_L");
    EXPECT_EQ(client.keys()[1].state, XCB_MOD_MASK_CONTROL);
    EXPECT_EQ(x().keysDown(), 0);
    EXPECT_EQ(letGo, 1);
}

TEST_F(KeyPosterOnX11, aPasteReachesForeignEditorsOfTwoToolkits) {
    X11Pasteboard pasteboard(desktop().display().toLatin1());
    ASSERT_TRUE(pasteboard.setString(QStringLiteral("pasted \u4F60"), PasteboardContent::temporary));
    const auto paste = [&](Program& program) {
        const auto field = atspi().waitForField(program);
        KeyPost post;
        post.keyCode = KeyCode::v;
        post.flags = KeyFlags::command;
        post.target.processIdentifier = program.pid();
        post.target.window = program.window();
        // A program that has only just begun may be too busy to answer at first.
        EXPECT_TRUE(waitUntil(5, [&] { return bool(poster.post(post)); }));
        EXPECT_EQ(atspi().waitForText(field, QStringLiteral("pasted \u4F60")),
                  QStringLiteral("pasted \u4F60"));
    };
    auto mousepad = Program::mousepad(desktop());
    paste(mousepad);
    mousepad.kill();
    auto editor = Program::qtEditor(desktop());
    paste(editor);
}

TEST_F(KeyPosterOnX11, anApplicationThatPastesLateStillGetsWhatWasOnOfferAtItsKey) {
    X11Pasteboard pasteboard(desktop().display().toLatin1());
    const auto pasteLate = [&](Program& program) {
        const auto field = atspi().waitForField(program);
        ASSERT_TRUE(pasteboard.setString(QStringLiteral("pasted"), PasteboardContent::temporary));
        program.stop();  // hangs in the moment of the post
        typist().chord(QStringLiteral("Ctrl+v"));
        pasteboard.pastePosted(program.window());
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        ASSERT_TRUE(pasteboard.setString(QStringLiteral("the user's"), PasteboardContent::lasting));
        program.resume();
        EXPECT_EQ(atspi().waitForText(field, QStringLiteral("pasted")), QStringLiteral("pasted"));
    };
    auto mousepad = Program::mousepad(desktop());
    pasteLate(mousepad);
    mousepad.kill();
    auto editor = Program::qtEditor(desktop());
    pasteLate(editor);
    // What comes later is a paste of the user's own; a hand takes longer than an application's second look.
    const auto field = atspi().waitForField(editor);
    typist().pause(0.7);
    typist().chord(QStringLiteral("Ctrl+v"));
    EXPECT_EQ(atspi().waitForText(field, QStringLiteral("pastedthe user's")),
              QStringLiteral("pastedthe user's"));
}

TEST_F(KeyPosterOnX11, refusesWhenAnotherWindowOrApplicationIsInFront) {
    RecordingClient meant(desktop(), foreign());
    auto post = command(KeyCode::v, meant);
    RecordingClient other(desktop(), foreign());
    EXPECT_FALSE(poster.post(post));
    post.target.window = other.window();
    post.target.processIdentifier = 2;
    const auto result = poster.post(post);
    EXPECT_FALSE(result);
    EXPECT_FALSE(result.refusal.isEmpty());
    post.target.processIdentifier = 1;
    EXPECT_TRUE(poster.post(post));
    ASSERT_TRUE(other.waitForKeys(4));
    EXPECT_TRUE(meant.keys().empty());
}

TEST_F(KeyPosterOnX11, refusesWithNoWindowInFront) {
    KeyPost post;
    post.keyCode = KeyCode::v;
    post.flags = KeyFlags::command;
    EXPECT_FALSE(poster.post(post));
}

TEST_F(KeyPosterOnX11, aHungApplicationCostsAQuarterOfASecondOnceAndIsTrustedWhenItAnswers) {
    RecordingClient client(desktop(), foreign());
    client.hang(true);
    double begin = monotonicSeconds();
    EXPECT_FALSE(poster.post(command(KeyCode::v, client)));
    EXPECT_NEAR(monotonicSeconds() - begin, 0.25, 0.1);
    begin = monotonicSeconds();
    EXPECT_FALSE(poster.post(command(KeyCode::v, client)));
    EXPECT_LT(monotonicSeconds() - begin, 0.05);
    client.hang(false);
    EXPECT_TRUE(waitUntil(3, [&] { return bool(poster.post(command(KeyCode::v, client))); }));
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.presses(), 2);
}

TEST_F(KeyPosterOnX11, aStoppedForeignProgramIsRefusedInTime) {
    auto mousepad = Program::mousepad(desktop());
    mousepad.stop();
    KeyPost post;
    post.keyCode = KeyCode::v;
    post.flags = KeyFlags::command;
    post.target.window = mousepad.window();
    const double begin = monotonicSeconds();
    EXPECT_FALSE(poster.post(post));
    EXPECT_LT(monotonicSeconds() - begin, 0.6);
    mousepad.resume();
    EXPECT_TRUE(waitUntil(3, [&] { return bool(poster.post(post)); }));
}

TEST_F(KeyPosterOnX11, aWindowThatNeverPromisedToAnswerIsNotAsked) {
    auto options = foreign();
    options.answersPing = false;
    RecordingClient client(desktop(), options);
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
}

TEST_F(KeyPosterOnX11, waitsForTheUserToLetGoOfModifiers) {
    RecordingClient client(desktop(), foreign());
    typist().press(QStringLiteral("Alt"));
    ASSERT_TRUE(client.waitForKeys(1));
    std::thread hands([&] {
        typist().pause(0.1);
        typist().release(QStringLiteral("Alt"));
    });
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    hands.join();
    ASSERT_TRUE(client.waitForKeys(6));
    EXPECT_EQ(client.text(), "+Alt_L -Alt_L +Control_L +v -v -Control_L");
}

TEST_F(KeyPosterOnX11, liftsModifiersThatStayHeldAndNeverPutsThemBack) {
    RecordingClient client(desktop(), foreign());
    typist().press(QStringLiteral("Alt"));
    typist().press(QStringLiteral("Shift"));
    ASSERT_TRUE(client.waitForKeys(2));
    const double begin = monotonicSeconds();
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    EXPECT_NEAR(monotonicSeconds() - begin, 0.3, 0.15);
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+v -v -Control_L"); })) << client.text();
    const auto keys = client.keys();
    const auto letter = std::find_if(keys.begin(), keys.end(), [](const auto& key) {
        return key.isPress && key.state == XCB_MOD_MASK_CONTROL;
    });
    EXPECT_NE(letter, keys.end()) << "the letter came with more than Control";
    typist().releaseAll();
    EXPECT_EQ(x().keysDown(), 0);
}

TEST_F(KeyPosterOnX11, withControlHeldByTheUserOnlyTheLetterIsPosted) {
    RecordingClient client(desktop(), foreign());
    typist().press(QStringLiteral("Ctrl"));
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    ASSERT_TRUE(client.waitForKeys(3));
    EXPECT_EQ(client.text(), "+Control_L +v -v");
    EXPECT_EQ(client.keys()[1].state, XCB_MOD_MASK_CONTROL);
    typist().release(QStringLiteral("Ctrl"));
    EXPECT_EQ(x().keysDown(), 0);
}

TEST_F(KeyPosterOnX11, controlLetGoAtTheLastMomentNeverTypesTheLetter) {
    RecordingClient client(desktop(), foreign());
    typist().press(QStringLiteral("Ctrl"));
    inspector.onLook = [&] { typist().release(QStringLiteral("Ctrl")); };
    auto paste = command(KeyCode::v, client);
    paste.target.element = std::make_shared<FakeElement>();
    EXPECT_TRUE(poster.post(paste));
    ASSERT_TRUE(client.waitForKeys(6)) << client.text();
    EXPECT_EQ(client.text(), "+Control_L -Control_L +Control_L +v -v -Control_L");
    EXPECT_EQ(client.keys()[3].state, XCB_MOD_MASK_CONTROL);
}

TEST_F(KeyPosterOnX11, aModifierPressedAtTheLastMomentIsLiftedToo) {
    RecordingClient client(desktop(), foreign());
    inspector.onLook = [&] { typist().press(QStringLiteral("Alt")); };
    auto paste = command(KeyCode::v, client);
    paste.target.element = std::make_shared<FakeElement>();
    EXPECT_TRUE(poster.post(paste));
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+v -v -Control_L"); })) << client.text();
    const auto keys = client.keys();
    EXPECT_EQ(keys[keys.size() - 3].state, XCB_MOD_MASK_CONTROL);
    typist().releaseAll();
}

TEST_F(KeyPosterOnX11, theLettersOwnKeyIsWaitedForAndElseLifted) {
    // The server drops the press of a key that is down already, and the chord would never arrive.
    RecordingClient client(desktop(), foreign());
    typist().press(QStringLiteral("v"));
    ASSERT_TRUE(client.waitForKeys(1));
    std::thread hands([&] {
        typist().pause(0.1);
        typist().release(QStringLiteral("v"));
    });
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    hands.join();
    ASSERT_TRUE(client.waitForKeys(6)) << client.text();
    EXPECT_EQ(client.text(), "+v -v +Control_L +v -v -Control_L");
    client.clear();
    typist().press(QStringLiteral("v"));
    ASSERT_TRUE(client.waitForKeys(1));
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+v -v -Control_L"); })) << client.text();
    const auto keys = client.keys();
    EXPECT_EQ(keys[keys.size() - 3].state, XCB_MOD_MASK_CONTROL);
    const auto count = keys.size();
    std::this_thread::sleep_for(std::chrono::milliseconds(900));  // its repeats would come now
    EXPECT_EQ(client.keys().size(), count) << client.text();
    typist().releaseAll();
    EXPECT_EQ(x().keysDown(), 0);
}

TEST_F(KeyPosterOnX11, anOpenMenuIsWaitedForAndElseGetsNoKey) {
    RecordingClient client(desktop(), foreign());
    RivalClient menu(desktop());
    ASSERT_TRUE(menu.holdKeyboard());
    const double begin = monotonicSeconds();
    const PostResult result = poster.post(command(KeyCode::v, client));
    EXPECT_FALSE(result);
    EXPECT_EQ(result.refusal, QStringLiteral("another program holds the keyboard"));
    EXPECT_GE(monotonicSeconds() - begin, 0.3);
    EXPECT_LT(monotonicSeconds() - begin, 1.0 * patience);
    std::thread closing([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(80));
        menu.freeKeyboard();
    });
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    closing.join();
    ASSERT_TRUE(client.waitForKeys(4)) << client.text();
    EXPECT_EQ(client.text(), "+Control_L +v -v -Control_L");
    EXPECT_EQ(menu.presses(), 0);
}

TEST_F(KeyPosterOnX11, aMenuThatOpensAtTheLastMomentGetsNoKey) {
    RecordingClient client(desktop(), foreign());
    RivalClient menu(desktop());
    inspector.onLook = [&] { menu.holdKeyboard(); };
    auto paste = command(KeyCode::v, client);
    paste.target.element = std::make_shared<FakeElement>();
    EXPECT_FALSE(poster.post(paste));
    menu.freeKeyboard();
    EXPECT_EQ(menu.presses(), 0);
    EXPECT_TRUE(client.keys().empty()) << client.text();
}

TEST_F(KeyPosterOnX11, theMenusOfForeignEditorsOfTwoToolkitsAreNotPastedInto) {
    X11Pasteboard pasteboard(desktop().display().toLatin1());
    ASSERT_TRUE(pasteboard.setString(QStringLiteral("pasted"), PasteboardContent::temporary));
    const auto tryMenu = [&](Program& program) {
        const auto field = atspi().waitForField(program);
        KeyPost post;
        post.keyCode = KeyCode::v;
        post.flags = KeyFlags::command;
        post.target.window = program.window();
        ASSERT_TRUE(waitUntil(5, [&] { return bool(poster.post(post)); }));
        EXPECT_EQ(atspi().waitForText(field, QStringLiteral("pasted")), QStringLiteral("pasted"));
        const auto before = x().rootChildren().size();
        typist().tap(QStringLiteral("Menu"));
        ASSERT_TRUE(waitUntil(10, [&] { return x().rootChildren().size() > before; })) << "no menu opened";
        ASSERT_TRUE(waitUntil(10, [&] { return !poster.post(post); }));
        typist().tap(QStringLiteral("Escape"));
        ASSERT_TRUE(waitUntil(10, [&] { return x().rootChildren().size() == before; })) << "the menu is gone";
        ASSERT_TRUE(waitUntil(5, [&] { return bool(poster.post(post)); }));
        EXPECT_EQ(atspi().waitForText(field, QStringLiteral("pastedpasted")), QStringLiteral("pastedpasted"));
    };
    auto mousepad = Program::mousepad(desktop());
    tryMenu(mousepad);
    mousepad.kill();
    auto editor = Program::qtEditor(desktop());
    tryMenu(editor);
}

TEST_F(KeyPosterOnX11, findsTheLetterInTheUsersLayoutAlsoInAnotherScript) {
    RecordingClient client(desktop(), foreign());
    desktop().setKeyboardLayout(QStringLiteral("fr"));
    EXPECT_TRUE(poster.post(command(KeyCode::a, client)));
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.text(), "+Control_L +a -a -Control_L");
    const auto french = client.keys()[1].code;
    desktop().setKeyboardLayout(QStringLiteral("ru,us"));
    client.clear();
    EXPECT_TRUE(poster.post(command(KeyCode::a, client)));
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_NE(client.keys()[1].code, french);
    EXPECT_EQ(client.text(), "+Control_L +Cyrillic_ef -Cyrillic_ef -Control_L");
}

TEST_F(KeyPosterOnX11, withoutAnyLatinLettersCopyAndPasteGoByTheInsertKey) {
    RecordingClient client(desktop(), foreign());
    desktop().setKeyboardLayout(QStringLiteral("ru"));
    EXPECT_TRUE(poster.post(command(KeyCode::c, client)));
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.text(), "+Control_L +Insert -Insert -Control_L");
    client.clear();
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.text(), "+Shift_L +Insert -Insert -Shift_L");
    EXPECT_FALSE(poster.post(command(KeyCode::a, client))) << "no key means select-all there";
}

TEST_F(KeyPosterOnX11, withoutAnyLatinLettersATerminalGetsNoKeys) {
    auto options = foreign();
    options.instance = "xfce4-terminal";
    options.windowClass = "Xfce4-terminal";
    RecordingClient client(desktop(), options);
    desktop().setKeyboardLayout(QStringLiteral("ru"));
    EXPECT_FALSE(poster.post(command(KeyCode::c, client)));
    EXPECT_FALSE(poster.post(command(KeyCode::v, client)));
}

TEST_F(KeyPosterOnX11, terminalsGetTheirOwnCopyAndPasteKeys) {
    auto options = foreign();
    options.instance = "xfce4-terminal";
    options.windowClass = "Xfce4-terminal";
    RecordingClient client(desktop(), options);
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    ASSERT_TRUE(client.waitForKeys(6));
    EXPECT_EQ(client.keys()[2].state, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT);
    client.clear();
    EXPECT_FALSE(poster.post(command(KeyCode::a, client))) << "select-all is a command key in a terminal";
    auto lines = command(KeyCode::v, client);
    lines.textHasLineBreak = true;
    EXPECT_FALSE(poster.post(lines)) << "a terminal would run the lines";
    EXPECT_TRUE(poster.post(command(KeyCode::c, client)));
    ASSERT_TRUE(client.waitForKeys(6));
    EXPECT_EQ(client.presses(), 3);
}

TEST_F(KeyPosterOnX11, xtermIsPostedNothing) {
    auto xterm = Program::xterm(desktop());
    for (const auto key : {KeyCode::c, KeyCode::v, KeyCode::a}) {
        KeyPost post;
        post.keyCode = key;
        post.flags = KeyFlags::command;
        post.target.window = xterm.window();
        EXPECT_FALSE(poster.post(post));
    }
}

TEST_F(KeyPosterOnX11, aFieldThatCannotBeEditedTakesCopiesButNoPaste) {
    RecordingClient client(desktop(), foreign());
    inspector.state = {true, false, false};
    auto paste = command(KeyCode::v, client);
    paste.target.element = std::make_shared<FakeElement>();
    EXPECT_FALSE(poster.post(paste));
    auto copy = paste;
    copy.keyCode = KeyCode::c;
    EXPECT_TRUE(poster.post(copy));
    inspector.state = {true, true, true};
    EXPECT_FALSE(poster.post(paste)) << "a password field";
    EXPECT_FALSE(poster.post(copy)) << "a password field";
    inspector.state = {false, true, false};
    EXPECT_FALSE(poster.post(paste)) << "a field that does not answer";
    inspector.state = {true, true, false};
    EXPECT_TRUE(poster.post(paste));
    EXPECT_EQ(inspector.asked, 6);
}

TEST_F(KeyPosterOnX11, theFieldsFocusIsWaitedForAndAnotherFieldGetsNoKey) {
    RecordingClient client(desktop(), foreign());
    auto paste = command(KeyCode::v, client);
    paste.target.element = std::make_shared<FakeElement>();
    inspector.focusedFrom = 3;
    EXPECT_TRUE(poster.post(paste));
    EXPECT_EQ(inspector.asked, 3);
    ASSERT_TRUE(client.waitForKeys(4));
    inspector.focusedFrom = std::numeric_limits<int>::max();
    const double begin = monotonicSeconds();
    const PostResult refused = poster.post(paste);
    EXPECT_FALSE(refused);
    EXPECT_EQ(refused.refusal, QStringLiteral("another field has the focus"));
    EXPECT_LT(monotonicSeconds() - begin, 1.0 * slowdown);
    EXPECT_EQ(client.keys().size(), 4U);
}

TEST_F(KeyPosterOnX11, ourOwnWindowIsNotAskedWhetherItLives) {
    RecordingClient client(desktop());
    client.hang(true);
    const double begin = monotonicSeconds();
    EXPECT_TRUE(poster.post(command(KeyCode::v, client)));
    EXPECT_LT(monotonicSeconds() - begin, 0.1);
}

TEST_F(KeyPosterOnX11, withoutAWindowManagerTheFocusedWindowIsTheTarget) {
    RealDesktop bare({.windowManager = false, .accessibility = false});
    const auto own = X11Connection::open(bare.display().toLatin1());
    const X11Windows bareWindows(*own);
    X11KeyPoster barePoster(bareWindows, {nullptr, nullptr});
    RecordingClient client(bare, foreign());
    EXPECT_TRUE(barePoster.post(command(KeyCode::v, client)));
    ASSERT_TRUE(client.waitForKeys(4));
    bare.killServer();
    EXPECT_FALSE(barePoster.post(command(KeyCode::v, client)));
}

}  // namespace
}  // namespace veltrin
