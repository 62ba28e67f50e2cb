#include "Platform/Linux/X11/XcbHeaders.h"
#include "desktop/x11/KeyTapTest.h"
#include "support/desktop/XWithoutXInput.h"

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <chrono>
#include <thread>

namespace veltrin {
namespace {

constexpr qint64 f5 = 96;
constexpr qint64 down = 125;
constexpr qint64 up = 126;

class KeyTap : public KeyTapTest {};

/// With the limit that the program has.
class KeyTapInTime : public KeyTapTest {
protected:
    KeyTapInTime() : KeyTapTest(X11KeyEventTaps::usualAnswerLimit) {}
};

TEST_F(KeyTap, tellsAnOrdinaryKeyWithCodeFlagsAndTime) {
    start();
    const double before = monotonicSeconds();
    type([](Typist& t) {
        t.tap(QStringLiteral("c"));
        t.chord(QStringLiteral("Ctrl+Shift+A"));
        t.chord(QStringLiteral("Alt+Super+space"));
    });
    ASSERT_TRUE(waitForEvents(6));
    const double after = monotonicSeconds();
    EXPECT_EQ(words(events), "+8 -8 +0 -0 +49 -49");
    EXPECT_EQ(events[0].flags, 0U);
    EXPECT_EQ(events[2].flags, KeyFlags::command | KeyFlags::shift);
    EXPECT_EQ(events[4].flags, KeyFlags::option | KeyFlags::control);
    double last = before - 0.002;
    for (const auto& event : events) {
        const double time = static_cast<double>(event.timestamp) * 1e-9;
        EXPECT_GE(time, last);
        EXPECT_LE(time, after);
        last = time;
    }
    EXPECT_TRUE(client.waitForKeys(14));
    EXPECT_EQ(client.presses(), 7);
}

TEST_F(KeyTap, locksAreNoFlags) {
    start();
    type([](Typist& t) {
        t.tap(QStringLiteral("Caps_Lock"));
        t.tap(QStringLiteral("Num_Lock"));
        t.tap(QStringLiteral("v"));
        t.tap(QStringLiteral("Caps_Lock"));
        t.tap(QStringLiteral("Num_Lock"));
    });
    ASSERT_TRUE(waitForEvents(2));
    EXPECT_EQ(words(events), "+9 -9");
    EXPECT_EQ(events[0].flags, 0U);
}

TEST_F(KeyTap, tellsTheRepeatsOfAHeldKeyAsTheApplicationGetsThem) {
    start();
    type([](Typist& t) {
        t.press(QStringLiteral("space"));
        t.pause(1.0);
        t.release(QStringLiteral("space"));
    });
    runEventLoopFor(0.1);
    ASSERT_GE(events.size(), 4U);
    EXPECT_FALSE(events.front().isAutoRepeat);
    EXPECT_EQ(events.back().type, KeyEventType::keyUp);
    int repeats = 0;
    for (const auto& event : events)
        repeats += event.isAutoRepeat ? 1 : 0;
    EXPECT_EQ(repeats, static_cast<int>(events.size()) - 2);
    // A server repeats by releasing and pressing; both run on the same settings.
    EXPECT_NEAR(repeats, client.presses() - 1, 2);
    const auto first =
        std::find_if(events.begin(), events.end(), [](const auto& e) { return e.isAutoRepeat; });
    EXPECT_NEAR(static_cast<double>(first->timestamp - events.front().timestamp) * 1e-9, 0.66, 0.03);
}

TEST_F(KeyTap, aModifierAloneIsNeverTold) {
    start();
    type([](Typist& t) {
        for (const auto* key : {"Shift_L", "Control_R", "Alt_L", "Super_L"})
            t.tap(QString::fromLatin1(key));
        t.tap(QStringLiteral("x"));
    });
    ASSERT_TRUE(waitForEvents(2));
    EXPECT_EQ(words(events), "+7 -7");
}

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

TEST_F(KeyTap, suspendedItHearsAndClaimsNothingAndNothingIsDeliveredLater) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent&) { return false; };
    tap->setEnabled(false);
    type([](Typist& t) { t.type(QStringLiteral("a\n")); });
    ASSERT_TRUE(client.waitForKeys(4));
    EXPECT_TRUE(events.empty());
    tap->setEnabled(true);
    runEventLoopFor(0.05);
    EXPECT_TRUE(events.empty());
    type([](Typist& t) { t.type(QStringLiteral("\nb")); });
    ASSERT_TRUE(waitForEvents(4));
    EXPECT_EQ(words(events), "+36 -36 +11 -11");
    ASSERT_TRUE(client.waitForKeys(6));
    EXPECT_EQ(client.text(), "+a -a +Return -Return +b -b");
}

TEST_F(KeyTap, eventsQueuedForASuspendedTapAreDroppedWhenItGoesOnAgain) {
    start();
    // Queued while the main thread is busy, before the suspension and during it.
    std::thread([&] { typist.type(QStringLiteral("ab")); }).join();
    ASSERT_TRUE(client.waitForKeys(4));
    tap->setEnabled(false);
    tap->setEnabled(true);
    runEventLoopFor(0.05);
    EXPECT_TRUE(events.empty()) << words(events);
}

TEST_F(KeyTap, offTheRunLoopItDeliversNothing) {
    start();
    tap->removeFromRunLoop();
    type([](Typist& t) { t.tap(QStringLiteral("a")); });
    ASSERT_TRUE(client.waitForKeys(2));
    runEventLoopFor(0.02);
    EXPECT_TRUE(events.empty());
    tap->addToRunLoop();
    runEventLoopFor(0.005);
    type([](Typist& t) { t.tap(QStringLiteral("a")); });
    EXPECT_TRUE(waitForEvents(2));
}

TEST_F(KeyTap, aKeyDownTapIsToldNoReleases) {
    start({}, KeyEventMask::keyDown);
    type([](Typist& t) { t.type(QStringLiteral("ab")); });
    ASSERT_TRUE(waitForEvents(2));
    runEventLoopFor(0.05);
    EXPECT_EQ(words(events), "+0 +11");
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

TEST_F(KeyTap, destroyingTheTapInTheMiddleOfAClaimLeavesTheKeyboardFree) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [this](const KeyEvent& event) {
        if (isDown(event, KeyCode::returnKey)) loop.post([this] { tap.reset(); });
        return event.keyCode != KeyCode::returnKey;
    };
    type([](Typist& t) {
        t.press(QStringLiteral("Return"));
        t.pause(0.05);
        t.tap(QStringLiteral("a"));
        t.pause(0.02);
        t.release(QStringLiteral("Return"));
        t.pause(0.05);
        t.tap(QStringLiteral("Return"));
        t.tap(QStringLiteral("b"));
    });
    ASSERT_TRUE(client.waitForKeys(6)) << client.text();
    EXPECT_EQ(client.text(), "+a -a +Return -Return +b -b");
}

TEST_F(KeyTap, aReleaseInTheSameInstantAsAnotherKeysNeverHoldsTheKeyboard) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::returnKey; };
    for (int round = 0; round < 20; ++round) {
        client.clear();
        type([](Typist& t) {
            t.press(QStringLiteral("Return"));
            t.pause(0.01);
            t.press(QStringLiteral("a"));
            t.release(QStringLiteral("a"));
            t.release(QStringLiteral("Return"));
            t.pause(0.01);
            t.tap(QStringLiteral("b"));
        });
        ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+b -b"); })) << client.text();
        EXPECT_TRUE(client.text().starts_with("+a -a")) << client.text();
    }
    answer = nullptr;
    client.clear();
    type([](Typist& t) { t.tap(QStringLiteral("Return")); });
    EXPECT_TRUE(client.waitForKeys(2));
    EXPECT_EQ(client.text(), "+Return -Return");
}

TEST_F(KeyTap, endingTheTapsInAHandlerNeitherHangsNorHoldsTheKeyboard) {
    auto own = std::make_unique<X11KeyEventTaps>(loop, desktop.display().toLatin1());
    std::unique_ptr<KeyEventTap> inner;
    inner = own->create(KeyEventMask::keyDown, [&](const KeyEvent&) {
        own.reset();
        return false;
    });
    inner->setClaimable({{KeyCode::returnKey, 0, false}});
    inner->addToRunLoop();
    inner->setEnabled(true);
    runEventLoopFor(0.005);
    type([](Typist& t) { t.type(QStringLiteral("\nab")); });
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+a -a +b -b"); })) << client.text();
    EXPECT_FALSE(own);
}

TEST_F(KeyTap, lettingGoFreesTheKeyboardWhileASwallowedKeyIsStillHeld) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::returnKey; };
    type([](Typist& t) { t.press(QStringLiteral("Return")); });
    ASSERT_TRUE(waitForEvents(1));
    tap->setEnabled(false);
    const double begin = monotonicSeconds();
    taps.letGo(std::chrono::milliseconds(100));
    EXPECT_NEAR(monotonicSeconds() - begin, 0.1, 0.05);
    Typist robot(desktop, Typist::Device::xtest);
    robot.tap(QStringLiteral("v"));
    ASSERT_TRUE(client.waitForKeys(2));
    EXPECT_EQ(client.text(), "+v -v");
    tap->setEnabled(true);
    runEventLoopFor(0.9);  // repeats of Return would come now
    type([](Typist& t) {
        t.release(QStringLiteral("Return"));
        t.tap(QStringLiteral("b"));
    });
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+b -b"); }));
    EXPECT_EQ(client.text().find("+Return"), std::string::npos) << client.text();
    client.clear();
    answer = nullptr;
    type([](Typist& t) { t.tap(QStringLiteral("Return")); });
    EXPECT_TRUE(client.waitForKeys(2));
    EXPECT_EQ(client.text(), "+Return -Return");
}

TEST_F(KeyTap, lettingGoReturnsAsSoonAsTheKeyIsUp) {
    start({{KeyCode::returnKey, 0, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::returnKey; };
    type([](Typist& t) { t.press(QStringLiteral("Return")); });
    ASSERT_TRUE(waitForEvents(1));
    tap->setEnabled(false);
    std::thread hands([&] {
        typist.pause(0.03);
        typist.release(QStringLiteral("Return"));
    });
    const double begin = monotonicSeconds();
    taps.letGo(std::chrono::milliseconds(1000));
    EXPECT_LT(monotonicSeconds() - begin, 0.5);
    hands.join();
    EXPECT_TRUE(client.keys().empty()) << client.text();
}

TEST_F(KeyTap, afterASwallowedAltSpaceTheApplicationSeesMoreThanAltAlone) {
    // Alt pressed and released with nothing in between opens a menu bar, which then eats the next letter.
    start({{KeyCode::space, KeyFlags::option, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::space; };
    type([](Typist& t) {
        t.press(QStringLiteral("Alt"));
        t.pause(0.03);
        t.tap(QStringLiteral("space"));
        t.pause(0.05);
        t.release(QStringLiteral("Alt"));
        t.tap(QStringLiteral("x"));
    });
    ASSERT_TRUE(waitForEvents(4));
    EXPECT_EQ(words(events), "+49 -49 +7 -7");
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+x -x"); }));
    EXPECT_EQ(client.text(), "+Alt_L +? -? -Alt_L +x -x");
}

TEST_F(KeyTap, altLetGoBeforeTheSwallowedSpaceDisturbsNobody) {
    start({{KeyCode::space, KeyFlags::option, false}});
    answer = [](const KeyEvent& event) { return event.keyCode != KeyCode::space; };
    type([](Typist& t) {
        t.press(QStringLiteral("Alt"));
        t.pause(0.02);
        t.press(QStringLiteral("space"));
        t.pause(0.02);
        t.release(QStringLiteral("Alt"));
        t.pause(0.02);
        t.release(QStringLiteral("space"));
        t.tap(QStringLiteral("x"));
    });
    ASSERT_TRUE(waitUntil(3, [&] { return client.text().ends_with("+x -x"); }));
    // The release of Alt is eaten; applications know their modifiers from the state of each event.
    EXPECT_EQ(client.text(), "+Alt_L +x -x");
    EXPECT_EQ(client.keys().back().state, 0);
}

TEST(KeyTaps, aServerWithoutXInputOrNoServerGivesNoTap) {
    const XWithoutXInput poor(RealDesktop::shared().display());
    QtRunLoop loop;
    for (const auto& display : {poor.display().toLatin1(), QByteArray("/nonexistent/display:0")}) {
        X11KeyEventTaps taps(loop, display);
        EXPECT_FALSE(taps.preflightListenEventAccess());
        EXPECT_FALSE(taps.requestListenEventAccess());
        EXPECT_EQ(taps.create(KeyEventMask::keyDown, [](const KeyEvent&) { return true; }), nullptr);
    }
    X11KeyEventTaps taps(loop, RealDesktop::shared().display().toLatin1());
    EXPECT_TRUE(taps.preflightListenEventAccess());
}

TEST(KeyTaps, aWaylandSessionIsNotListenedTo) {
    QtRunLoop loop;
    const X11KeyEventTaps taps(loop, RealDesktop::shared().display().toLatin1());
    const QByteArray before = qgetenv("XDG_SESSION_TYPE");
    qputenv("XDG_SESSION_TYPE", "wayland");
    EXPECT_FALSE(taps.preflightListenEventAccess());
    qputenv("XDG_SESSION_TYPE", before);
}

TEST(KeyTaps, aLostServerEndsTheListeningAndNotTheProgram) {
    RealDesktop desktop;
    QtRunLoop loop;
    X11KeyEventTaps taps(loop, desktop.display().toLatin1());
    auto tap = taps.create(KeyEventMask::keyDownAndKeyUp, [](const KeyEvent&) { return true; });
    ASSERT_TRUE(tap);
    tap->addToRunLoop();
    tap->setEnabled(true);
    desktop.killServer();
    runEventLoopFor(0.05);
    tap->setClaimable({{KeyCode::returnKey, 0, false}});
    tap->setEnabled(false);
    tap->setEnabled(true);
    tap.reset();
}

}  // namespace
}  // namespace veltrin
