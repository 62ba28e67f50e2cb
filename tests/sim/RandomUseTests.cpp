// A user who does anything at any time, with everything checked after every step (RandomUse.h says what).
//
// Without arguments a fixed number of stories is told. To look further, run the test program itself:
//
//     veltrin_sim_tests --gtest_filter='RandomUseTest.*' --steps=1000000 --seed=7
//
// --steps=N  steps of the long story
// --seed=N   its seed; a failure prints the seed and the step at which it came, and the same seed leads there
//            again

#include "RandomUse.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

/// About 20 seconds in a debug build with sanitizers, together with the other stories.
constexpr quint64 defaultSteps = 8000;
constexpr quint64 defaultSeed = 20240229;
constexpr int shortStories = 8;
constexpr quint64 shortSteps = 500;

quint64 argument(const QString& name, quint64 fallback) {
    const QString prefix = QStringLiteral("--") + name + u'=';
    for (const QString& each : QCoreApplication::arguments()) {
        if (each.startsWith(prefix)) return each.mid(prefix.size()).toULongLong();
    }
    return fallback;
}

/// Tells a story to its end or to the first thing that is wrong.
void tell(RandomUse& story, quint64 steps) {
    for (quint64 i = 0; i < steps && story.step(); ++i) {
    }
    story.settle();
    EXPECT_TRUE(story.failure().isEmpty()) << story.failure().toStdString();
}

TEST(RandomUseTest, aLongStory) {
    RandomUse story(argument(QStringLiteral("seed"), defaultSeed));
    tell(story, argument(QStringLiteral("steps"), defaultSteps));
    // A story in which nothing is translated would prove nothing.
    RecordProperty("runs", story.runs());
    RecordProperty("written", story.written());
    RecordProperty("copied", story.copied());
    EXPECT_GT(story.runs(), 0);
    EXPECT_GT(story.written(), 0);
    EXPECT_GT(story.copied(), 0);
}

TEST(RandomUseTest, manyShortStories) {
    const quint64 first = argument(QStringLiteral("seed"), defaultSeed) + 1;
    for (int i = 0; i < shortStories && !HasFailure(); ++i) {
        RandomUse story(first + static_cast<quint64>(i));
        tell(story, shortSteps);
    }
}

TEST(RandomUseTest, aSeedAlwaysTellsTheSameStory) {
    const auto digestOf = [](quint64 seed) {
        RandomUse story(seed);
        tell(story, shortSteps);
        return story.digest();
    };
    const quint64 first = digestOf(1);
    EXPECT_EQ(first, digestOf(1));
    EXPECT_NE(first, digestOf(2));
}

}  // namespace
}  // namespace veltrin
