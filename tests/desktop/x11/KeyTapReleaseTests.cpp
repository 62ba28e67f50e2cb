#include "desktop/x11/KeyTapTest.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace veltrin {
namespace {

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

}  // namespace
}  // namespace veltrin
