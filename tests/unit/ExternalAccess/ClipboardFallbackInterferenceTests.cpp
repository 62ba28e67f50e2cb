#include "ExternalAccess/ClipboardFallbackInterferenceGuard.h"
#include "support/fake/FakeRunLoop.h"

#include <gtest/gtest.h>

#include <thread>

namespace veltrin {
namespace {

constexpr double cooldown = 1.25;

bool skips(double now, std::optional<double> keyAt, std::optional<qint64> countAtKey, qint64 count) {
    return ClipboardFallbackInterferencePolicy::shouldSkipFallback(now, keyAt, countAtKey, count, cooldown);
}

TEST(ClipboardFallbackInterferencePolicy, withoutACopyKeyNothingIsSkipped) {
    EXPECT_FALSE(skips(10, std::nullopt, std::nullopt, 5));
    EXPECT_FALSE(skips(10, 9.5, std::nullopt, 5));
    EXPECT_FALSE(skips(10, std::nullopt, 4, 5));
}

TEST(ClipboardFallbackInterferencePolicy, aCopyThatChangedThePasteboardCountsForTheCooldown) {
    EXPECT_TRUE(skips(10, 9, 4, 5));
    EXPECT_TRUE(skips(10, 10 - cooldown, 4, 5));
    EXPECT_FALSE(skips(10, 10 - cooldown - 0.001, 4, 5));
}

TEST(ClipboardFallbackInterferencePolicy, aCopyThatChangedNothingDoesNotCount) {
    EXPECT_FALSE(skips(10, 9, 5, 5));
}

class InterferenceGuard : public testing::Test {
protected:
    FakeRunLoop loop;
    ClipboardFallbackInterferenceGuard guard{loop};
};

TEST_F(InterferenceGuard, remembersTheLatestCopyKeyUntilItsTimeRunsOut) {
    EXPECT_FALSE(guard.shouldSkipFallback(2, cooldown));
    guard.recordPotentialUserCopyKeyDown(1);
    EXPECT_FALSE(guard.shouldSkipFallback(1, cooldown));
    EXPECT_TRUE(guard.shouldSkipFallback(2, cooldown));
    loop.advance(1);
    EXPECT_TRUE(guard.shouldSkipFallback(2, cooldown));
    loop.advance(0.3);
    EXPECT_FALSE(guard.shouldSkipFallback(2, cooldown));
    guard.recordPotentialUserCopyKeyDown(2);
    EXPECT_FALSE(guard.shouldSkipFallback(2, cooldown));
    EXPECT_TRUE(guard.shouldSkipFallback(3, cooldown));
}

TEST_F(InterferenceGuard, aCopyKeyOfOurOwnIsNotRecorded) {
    guard.ignoreSyntheticCopy(0.6);
    loop.advance(0.5);
    guard.recordPotentialUserCopyKeyDown(1);
    EXPECT_FALSE(guard.shouldSkipFallback(2, cooldown));
    loop.advance(0.2);
    guard.recordPotentialUserCopyKeyDown(1);
    EXPECT_TRUE(guard.shouldSkipFallback(2, cooldown));
}

TEST_F(InterferenceGuard, mayBeToldAndAskedFromTwoThreads) {
    std::thread tap([this] {
        for (qint64 i = 0; i < 2000; ++i)
            guard.recordPotentialUserCopyKeyDown(i);
    });
    for (int i = 0; i < 2000; ++i)
        guard.shouldSkipFallback(-1, cooldown);
    tap.join();
    EXPECT_TRUE(guard.shouldSkipFallback(-1, cooldown));
    EXPECT_FALSE(guard.shouldSkipFallback(1999, cooldown));
}

}  // namespace
}  // namespace veltrin
