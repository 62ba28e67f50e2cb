#include "desktop/x11/KeyTapTest.h"
#include "support/desktop/XWithoutXInput.h"

#include <gtest/gtest.h>

#include <thread>

namespace veltrin {
namespace {

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
