#include "Platform/Linux/X11/XcbHeaders.h"
#include "desktop/x11/KeyTapTest.h"

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <chrono>
#include <thread>

namespace veltrin {
namespace {

constexpr qint64 f5 = 96;
constexpr qint64 down = 125;
constexpr qint64 up = 126;

TEST_F(KeyTap, swallowsAClaimedKeyWithItsReleaseAndTellsEachOnce) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::returnKey; };
    type([](Typist& t) {
        t.tap(QStringLiteral("a"));
        t.tap(QStringLiteral("Return"));
        t.tap(QStringLiteral("b"));
    });
    ASSERT_TRUE(waitForEvents(6));
    runEventLoopFor(0.05);
    EXPECT_EQ(words(events), "+0 -0 +36 -36 +11 -11");
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.text(), "+a -a +b -b");
}

TEST_F(KeyTap, swallowsTheRepeatsOfASwallowedPressWhateverIsAnswered) {
    start({{down, 0, false}});
    answer = [this](const KeyEvent& event) { return event.isAutoRepeat || event.keyCode != down; };
    type([](Typist& t) {
        t.press(QStringLiteral("Down"));
        t.pause(0.9);
        t.release(QStringLiteral("Down"));
        t.tap(QStringLiteral("b"));
    });
    ASSERT_TRUE(client.waitForKeys(2));
    runEventLoopFor(0.05);
    EXPECT_EQ(client.text(), "+b -b");
    int repeats = 0;
    for (const auto& event : events)
        repeats += event.isAutoRepeat ? 1 : 0;
    EXPECT_GE(repeats, 3);
    EXPECT_EQ(events.front().isAutoRepeat, false);
}

TEST_F(KeyTap, aClaimableKeyThatIsNotClaimedReachesTheApplicationInOrderAndInTime) {
    start({{KeyCode::space, 0, false}});
    type([](Typist& t) { t.type(QStringLiteral("a b c d e"), 0.004); });
    ASSERT_TRUE(client.waitForKeys(18));
    EXPECT_EQ(client.text(),
              "+a -a +space -space +b -b +space -space +c -c +space -space +d -d +space -space +e -e");
    ASSERT_TRUE(waitForEvents(18));
    EXPECT_EQ(words(events), "+0 -0 +49 -49 +11 -11 +49 -49 +8 -8 +49 -49 +2 -2 +49 -49 +14 -14");
    const auto keys = client.keys();
    for (std::size_t i = 1; i < keys.size(); ++i)
        EXPECT_GE(keys[i].time, keys[i - 1].time);
}

TEST_F(KeyTap, aPassedKeyRepeatsForItsApplicationAndEachRepeatIsAsked) {
    start({{KeyCode::space, 0, false}});
    type([](Typist& t) {
        t.press(QStringLiteral("space"));
        t.pause(0.9);
        t.release(QStringLiteral("space"));
    });
    runEventLoopFor(0.1);
    int repeats = 0;
    for (const auto& event : events)
        repeats += event.isAutoRepeat ? 1 : 0;
    EXPECT_NEAR(repeats, client.presses() - 1, 1);
    EXPECT_GE(repeats, 3);
    EXPECT_EQ(events.back().type, KeyEventType::keyUp);
}

TEST_F(KeyTap, theReleaseOfAPassedPressGoesOnThoughARepeatWasSwallowed) {
    start({{KeyCode::space, 0, false}});
    answer = [](const KeyEvent& event) { return !event.isAutoRepeat; };
    type([](Typist& t) {
        t.press(QStringLiteral("space"));
        t.pause(0.9);
        t.release(QStringLiteral("space"));
        t.tap(QStringLiteral("a"));
    });
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.text(), "+space -space +a -a");
}

TEST_F(KeyTap, exactFlagsClaimOnlyTheExactCombinationAndAnyFlagsEveryOneAbove) {
    start({{KeyCode::c, KeyFlags::option, false}, {KeyCode::q, KeyFlags::command, true}});
    answer = [](const KeyEvent&) { return false; };
    type([](Typist& t) {
        t.chord(QStringLiteral("Alt+c"));
        t.chord(QStringLiteral("Alt+Shift+c"));
        t.tap(QStringLiteral("c"));
        t.tap(QStringLiteral("q"));
        t.chord(QStringLiteral("Ctrl+q"));
        t.chord(QStringLiteral("Ctrl+Shift+Super+q"));
        t.tap(QStringLiteral("b"));
    });
    ASSERT_TRUE(waitForEvents(14));
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+b -b"); }));
    const std::string text = client.text();
    std::string plain;
    for (const auto& key : client.keys())
        plain += key.isPress && key.state == 0 ? 'p' : '.';
    int cs = 0;
    int qs = 0;
    for (std::size_t at = 0; (at = text.find("+c", at)) != std::string::npos; ++at)
        ++cs;
    for (std::size_t at = 0; (at = text.find("+q", at)) != std::string::npos; ++at)
        ++qs;
    EXPECT_EQ(cs, 2) << text;  // with Alt and Shift, and alone
    EXPECT_EQ(qs, 1) << text;  // alone
}

TEST_F(KeyTap, claimsUnderCapsLockAndNumLock) {
    start({{KeyCode::space, KeyFlags::option, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::space; };
    type([](Typist& t) {
        t.tap(QStringLiteral("Caps_Lock"));
        t.tap(QStringLiteral("Num_Lock"));
        t.chord(QStringLiteral("Alt+space"));
        t.tap(QStringLiteral("Caps_Lock"));
        t.tap(QStringLiteral("Num_Lock"));
        t.tap(QStringLiteral("b"));
    });
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+b -b"); }));
    EXPECT_EQ(client.text().find("space"), std::string::npos) << client.text();
}

TEST_F(KeyTap, rollsOverFromASwallowedKeyWithoutHalfKeys) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::returnKey; };
    type([](Typist& t) {
        t.press(QStringLiteral("a"));
        t.pause(0.02);
        t.press(QStringLiteral("Return"));
        t.pause(0.02);
        t.release(QStringLiteral("a"));
        t.pause(0.02);
        t.press(QStringLiteral("b"));
        t.pause(0.02);
        t.release(QStringLiteral("Return"));
        t.pause(0.02);
        t.release(QStringLiteral("b"));
        t.pause(0.02);
        t.tap(QStringLiteral("c"));
    });
    ASSERT_TRUE(waitForEvents(8));
    EXPECT_EQ(words(events), "+0 +36 -0 +11 -36 -11 +8 -8");
    ASSERT_TRUE(client.waitForKeys(6));
    EXPECT_EQ(client.text(), "+a -a +b -b +c -c");
}

TEST_F(KeyTap, twoSwallowedKeysAtOnceLeaveNothingBehind) {
    start({{down, 0, false}, {up, 0, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != down && event.keyCode != up; };
    type([](Typist& t) {
        t.press(QStringLiteral("Down"));
        t.pause(0.02);
        t.press(QStringLiteral("Up"));
        t.pause(0.02);
        t.release(QStringLiteral("Down"));
        t.pause(0.02);
        t.release(QStringLiteral("Up"));
        t.pause(0.02);
        t.tap(QStringLiteral("c"));
    });
    ASSERT_TRUE(waitForEvents(6));
    EXPECT_EQ(words(events), "+125 +126 -125 -126 +8 -8");
    ASSERT_TRUE(client.waitForKeys(2));
    EXPECT_EQ(client.text(), "+c -c");
}

TEST_F(KeyTapInTime, aSlowHandlerLosesTheKeyToTheApplicationAfterFiftyMilliseconds) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent& event) {
        if (isDown(event, KeyCode::returnKey)) std::this_thread::sleep_for(std::chrono::seconds(3));
        return event.keyCode != KeyCode::returnKey;
    };
    double pressed = 0;
    type([&](Typist& t) {
        pressed = monotonicSeconds();
        t.type(QStringLiteral("\nab"));
    });
    ASSERT_TRUE(client.waitForKeys(6));
    EXPECT_EQ(client.text(), "+Return -Return +a -a +b -b");
    EXPECT_LT(client.keys().front().arrivedAt - pressed, 1.5) << "it waited for the handler";
}

TEST_F(KeyTapInTime, aBlockedMainThreadDelaysAKeyFiftyMillisecondsAndNeverActsOnItLater) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent&) { return false; };
    std::thread hands([&] { typist.type(QStringLiteral("\n\nab\n"), 0.05); });
    const double begin = monotonicSeconds();
    // The main thread runs no loop here.
    ASSERT_TRUE(client.waitForKeys(10, 20));
    hands.join();
    EXPECT_EQ(client.text(), "+Return -Return +Return -Return +a -a +b -b +Return -Return");
    // Only the first question is waited for while the main thread owes it an answer.
    EXPECT_LT(client.keys().front().arrivedAt - begin, 1.5);
    runEventLoopFor(0.1);
    for (const auto& event : events)
        EXPECT_FALSE(isDown(event, KeyCode::returnKey));
    // A busy machine may be late again; in the end it claims as before.
    EXPECT_TRUE(waitUntil(20,
                          [&] {
                              events.clear();
                              client.clear();
                              type([](Typist& t) { t.type(QStringLiteral("\nc")); });
                              return eventually(3, [&] { return words(events).ends_with("-8"); }) &&
                                     words(events) == "+36 -36 +8 -8" && client.waitForKeys(2) &&
                                     client.text() == "+c -c";
                          }))
        << words(events) << client.text();
}

TEST_F(KeyTap, theNewestTapThatSwallowsWins) {
    start({{f5, 0, false}});
    std::vector<KeyEvent> newer;
    auto second = taps.create(KeyEventMask::keyDown, [&](const KeyEvent& event) {
        newer.push_back(event);
        return event.keyCode != f5;
    });
    second->setClaimable({{f5, 0, false}});
    second->addToRunLoop();
    second->setEnabled(true);
    runEventLoopFor(0.005);
    type([](Typist& t) {
        t.tap(QStringLiteral("F5"));
        t.tap(QStringLiteral("a"));
    });
    ASSERT_TRUE(client.waitForKeys(2));
    runEventLoopFor(0.05);
    EXPECT_EQ(words(newer), "+96 +0");
    // The older tap is not asked about the press; of the release it learns.
    EXPECT_EQ(words(events), "-96 +0 -0");
    second.reset();
    type([](Typist& t) { t.tap(QStringLiteral("F5")); });
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.text(), "+a -a +F5 -F5");
}

TEST_F(KeyTap, anAnswerToAKeyThatTheTapDidNotNameIsVoid) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent&) { return false; };
    type([](Typist& t) { t.type(QStringLiteral("ab")); });
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_EQ(client.text(), "+a -a +b -b");
}

TEST_F(KeyTap, claimsFollowAChangedKeyboardLayout) {
    start({{6, KeyFlags::option, false}});  // Option and Z
    answer = [](const KeyEvent& event) { return event.keyCode != 6; };
    desktop.setKeyboardLayout(QStringLiteral("de"));
    runEventLoopFor(0.3);
    type([](Typist& t) {
        t.chord(QStringLiteral("Alt+z"));
        t.chord(QStringLiteral("Alt+y"));
    });
    ASSERT_TRUE(waitForEvents(4));
    EXPECT_EQ(words(events), "+6 -6 +16 -16");
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().find("-y") != std::string::npos; }));
    EXPECT_EQ(client.text().find("+z"), std::string::npos) << client.text();
}

TEST_F(KeyTap, claimsByTheLatinLetterWhileAnotherScriptIsActive) {
    desktop.setKeyboardLayout(QStringLiteral("us,ru"));
    start({{KeyCode::v, KeyFlags::option, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::v; };
    auto* x = desktop.x().connection();
    const auto lock = [&](quint8 group) {
        xcb_xkb_use_extension_reply_t* use =
            xcb_xkb_use_extension_reply(x, xcb_xkb_use_extension(x, 1, 0), nullptr);
        std::free(use);
        xcb_xkb_latch_lock_state(x, XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, group, 0, 0, 0);
        desktop.x().sync();
    };
    lock(1);
    runEventLoopFor(0.2);
    type([](Typist& t) {
        t.chord(QStringLiteral("Alt+v"));
        t.tap(QStringLiteral("c"));
    });
    EXPECT_TRUE(waitForEvents(4));
    EXPECT_EQ(words(events), "+9 -9 +8 -8");
    EXPECT_EQ(client.text().find("+v"), std::string::npos) << client.text();
    lock(0);
}

}  // namespace
}  // namespace veltrin
