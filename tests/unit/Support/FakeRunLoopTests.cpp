#include "support/fake/FakeRunLoop.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace veltrin {
namespace {

class FakeRunLoopTest : public testing::Test {
protected:
    FakeRunLoop loop;
    std::string order;

    std::function<void()> note(char letter) {
        return [this, letter] { order += letter; };
    }
};

TEST_F(FakeRunLoopTest, runsWhatIsDueInTheOrderOfItsTimeThenOfItsAsking) {
    const Timer late = loop.after(0.2, note('c'));
    const Timer early = loop.after(0.1, note('a'));
    const Timer sameTime = loop.after(0.1, note('b'));
    loop.advance(0.1);
    EXPECT_EQ(order, "ab");
    loop.advance(0.1);
    EXPECT_EQ(order, "abc");
}

TEST_F(FakeRunLoopTest, aPostRunsOnTheNextTurnAndNeverAtOnce) {
    loop.post([this] {
        order += 'a';
        loop.post(note('c'));
        order += 'b';
    });
    EXPECT_EQ(order, "");
    loop.runDue();
    EXPECT_EQ(order, "abc");
}

TEST_F(FakeRunLoopTest, anInvalidatedTimerNeverFiresAndATimerMayCancelItself) {
    Timer cancelled = loop.after(0.1, note('x'));
    cancelled.invalidate();
    Timer repeating;
    repeating = loop.every(0.1, [&] {
        order += 'r';
        if (order.size() == 3) repeating.invalidate();
    });
    EXPECT_EQ(loop.pendingTimers(), 1u);
    loop.advance(2);
    EXPECT_EQ(order, "rrr");
    EXPECT_EQ(loop.pendingTimers(), 0u);
}

TEST_F(FakeRunLoopTest, asleepTheWorldGoesOnAndTheProgramWaits) {
    const Timer timer = loop.after(0.1, note('t'));
    loop.inWorld(0.1, note('w'));
    loop.inWorld(0.3, note('l'));
    loop.sleepFor(0.2);
    EXPECT_EQ(order, "w");
    EXPECT_DOUBLE_EQ(loop.blockedSeconds(), 0.2);
    loop.runDue();
    EXPECT_EQ(order, "wt");
    loop.advance(0.1);
    EXPECT_EQ(order, "wtl");
}

TEST_F(FakeRunLoopTest, neverNests) {
    loop.post([this] { EXPECT_THROW(loop.advance(1), std::logic_error); });
    loop.runDue();
}

TEST_F(FakeRunLoopTest, anActionThatSleepsMakesLaterOnesLate) {
    double firedAt = 0;
    const Timer sleeper = loop.after(0.1, [this] { loop.sleepFor(1); });
    const Timer other = loop.after(0.2, [&] { firedAt = loop.now(); });
    const double start = loop.now();
    loop.advance(0.1);
    EXPECT_NEAR(firedAt - start, 1.1, 1e-9);
}

TEST_F(FakeRunLoopTest, theWallClockRunsAlong) {
    const double before = loop.wallNow();
    loop.advance(60);
    EXPECT_DOUBLE_EQ(loop.wallNow() - before, 60);
}

}  // namespace
}  // namespace veltrin
