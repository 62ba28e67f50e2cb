#pragma once

#include "Platform/Linux/QtRunLoop.h"
#include "Platform/Linux/X11/X11KeyEventTaps.h"
#include "desktop/x11/RecordingClient.h"
#include "support/desktop/RealDesktop.h"
#include "support/desktop/Typist.h"
#include "support/desktop/Waiting.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace veltrin {

/// A tap that writes down what it is told, between a typist and a client that writes down what it is sent.
class KeyTapTest : public testing::Test {
protected:
    /// The answers of the main thread are waited for long enough for any machine; the tests of the limit
    /// itself use the real one.
    explicit KeyTapTest(std::chrono::milliseconds answerLimit = std::chrono::seconds(5))
        : desktop(RealDesktop::shared()),
          client(desktop),
          typist(desktop),
          taps(loop, desktop.display().toLatin1(), answerLimit) {
        desktop.setKeyboardLayout(QStringLiteral("us"));
    }
    ~KeyTapTest() override {
        tap.reset();
        typist.releaseAll();
        EXPECT_EQ(desktop.x().keysDown(), 0) << "a key stayed down";
        desktop.setKeyboardLayout(QStringLiteral("us"));
    }

    void start(std::vector<ClaimableKey> keys = {}, KeyEventMask mask = KeyEventMask::keyDownAndKeyUp) {
        tap = taps.create(mask, [this](const KeyEvent& event) {
            events.push_back(event);
            return !answer || answer(event);
        });
        ASSERT_TRUE(tap);
        tap->setClaimable(std::move(keys));
        tap->addToRunLoop();
        tap->setEnabled(true);
        runEventLoopFor(0.005);  // events of the millisecond in which a tap went on are not its events
    }
    void type(const std::function<void(Typist&)>& work) { typist.whileLoopRuns(work); }
    bool waitForEvents(std::size_t count) {
        return eventually(3, [&] { return events.size() >= count; });
    }
    static std::string words(const std::vector<KeyEvent>& list) {
        std::string result;
        for (const auto& event : list) {
            if (!result.empty()) result += ' ';
            result += event.isAutoRepeat ? "*" : (event.type == KeyEventType::keyDown ? "+" : "-");
            result += std::to_string(event.keyCode);
        }
        return result;
    }
    static bool isDown(const KeyEvent& event, qint64 code) {
        return event.type == KeyEventType::keyDown && event.keyCode == code;
    }

    RealDesktop& desktop;
    RecordingClient client;
    Typist typist;
    QtRunLoop loop;
    X11KeyEventTaps taps;
    std::unique_ptr<KeyEventTap> tap;
    std::vector<KeyEvent> events;
    std::function<bool(const KeyEvent&)> answer;  ///< true lets the key go on
};

class KeyTap : public KeyTapTest {};

/// With the limit that the program has.
class KeyTapInTime : public KeyTapTest {
protected:
    KeyTapInTime() : KeyTapTest(X11KeyEventTaps::usualAnswerLimit) {}
};

}  // namespace veltrin
