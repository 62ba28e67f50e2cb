#include "AI/GenerationTokenBudget.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using namespace GenerationTokenBudget;

TEST(GenerationTokenBudget, takesAnUnfinishedTextOfFairLengthForCutOff) {
    EXPECT_FALSE(shouldRetryLikelyTruncatedOutput(QString(11, u'x'), 100));
    EXPECT_TRUE(shouldRetryLikelyTruncatedOutput(QString(12, u'x'), 100));
    EXPECT_FALSE(shouldRetryLikelyTruncatedOutput(QString(11, u'x') + u'。', 100));
    EXPECT_FALSE(shouldRetryLikelyTruncatedOutput(QString(50, u'x'), 1000)) << "below a tenth of the limit";
    EXPECT_TRUE(shouldRetryLikelyTruncatedOutput(QString(100, u'x'), 1000));
    EXPECT_FALSE(shouldRetryLikelyTruncatedOutput(QString(), 0));
}

TEST(GenerationTokenBudget, usesATenthOfTheLimitOnceThatIsAboveEleven) {
    EXPECT_TRUE(shouldRetryLikelyTruncatedOutput(QString(12, u'x'), 129)) << "12.9 counts as 12";
    EXPECT_FALSE(shouldRetryLikelyTruncatedOutput(QString(12, u'x'), 130));
    EXPECT_TRUE(shouldRetryLikelyTruncatedOutput(QString(13, u'x'), 130));
}

TEST(GenerationTokenBudget, knowsEveryClosingMark) {
    const QString marks = u"。！？.!?；;：:」』）)]}》>”\"'`…"_s;
    for (const QChar mark : marks)
        EXPECT_FALSE(shouldRetryLikelyTruncatedOutput(QString(20, u'x') + mark + u" \n"_s, 100))
            << qPrintable(QString(mark));
    for (const QChar other : u"，、(“（《a1"_s)
        EXPECT_TRUE(shouldRetryLikelyTruncatedOutput(QString(20, u'x') + other, 100))
            << qPrintable(QString(other));
    EXPECT_TRUE(shouldRetryLikelyTruncatedOutput(QString(20, u'x') + u"👨‍👩‍👧‍👦"_s, 100));
}

TEST(GenerationTokenBudget, growsTheLimitWithTheInputBetweenItsBounds) {
    EXPECT_EQ(replacementOutputLimit(0, 512, 3.0, 256, 12000), 512);
    EXPECT_EQ(replacementOutputLimit(10000, 512, 3.0, 256, 12000), 12000);
    EXPECT_EQ(replacementOutputLimit(1000, 512, 3.0, 256, 12000), 3256);
    EXPECT_EQ(replacementOutputLimit(3, 1, 1.5, 0, 100), 5) << "4.5 is raised";
    EXPECT_EQ(replacementOutputLimit(-7, 1, 4.0, 2, 100), 6) << "no input counts as one character";
    EXPECT_EQ(replacementOutputLimit(10, 200, 1.0, 0, 100), 100) << "the maximum has the last word";
    EXPECT_EQ(replacementOutputLimit(2000000000, 512, 5.0, 512, 16000), 16000);
}

TEST(GenerationTokenBudget, raisesARetryByHalfAThousandOrTwofold) {
    EXPECT_EQ(retryLimit(100), 612);
    EXPECT_EQ(retryLimit(512), 1024);
    EXPECT_EQ(retryLimit(4000), 8000);
    EXPECT_EQ(retryLimit(16000), 20000);
}

}  // namespace
}  // namespace veltrin
