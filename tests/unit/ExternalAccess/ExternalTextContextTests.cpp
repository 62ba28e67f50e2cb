#include "ExternalAccess/ExternalTextContext.h"

#include <gtest/gtest.h>

#include <limits>

namespace veltrin {
namespace {

constexpr qsizetype budget = ExternalTextContext::standardBudget;

QString numbered(qsizetype length) {
    QString text;
    for (qsizetype i = 0; i < length; ++i)
        text += QChar(static_cast<char16_t>(u'a' + i % 26));
    return text;
}

TEST(ExternalTextContext, withoutSelectionTheWholeTextIsInFocus) {
    const QString text = QStringLiteral("第一行\n第二行👨‍👩‍👧‍👦");
    const auto context = ExternalTextContext::build(text, std::nullopt, TextRange{3, 0}, budget);
    EXPECT_EQ(context.focusText, text);
    EXPECT_EQ(context.fullTextLength, 8);
    EXPECT_TRUE(context.contextBefore.isEmpty());
    EXPECT_TRUE(context.contextAfter.isEmpty());
    EXPECT_EQ(context.promptBlock(), QStringLiteral("当前需要处理的文本：\n\"\"\"\n") + text +
                                         QStringLiteral("\n\"\"\"\n\n全文长度：8 字"));
}

TEST(ExternalTextContext, aBlankSelectionCountsAsNone) {
    const auto context =
        ExternalTextContext::build(QStringLiteral("a b"), QStringLiteral(" \n"), TextRange{1, 1}, budget);
    EXPECT_EQ(context.focusText, QStringLiteral("a b"));
    EXPECT_TRUE(context.contextBefore.isEmpty());
}

TEST(ExternalTextContext, withoutARangeThereIsNoContext) {
    const auto context =
        ExternalTextContext::build(QStringLiteral("one two"), QStringLiteral("two"), std::nullopt, budget);
    EXPECT_EQ(context.focusText, QStringLiteral("two"));
    EXPECT_EQ(context.fullTextLength, 7);
    EXPECT_TRUE(context.contextBefore.isEmpty());
    EXPECT_TRUE(context.contextAfter.isEmpty());
}

TEST(ExternalTextContext, focusTextKeepsTheEdgesOfTheSelection) {
    const auto context = ExternalTextContext::build(QStringLiteral("x two y"), QStringLiteral(" two "),
                                                    TextRange{1, 5}, budget);
    EXPECT_EQ(context.focusText, QStringLiteral(" two "));
    EXPECT_EQ(context.contextBefore, QStringLiteral("x"));
    EXPECT_EQ(context.contextAfter, QStringLiteral("y"));
}

TEST(ExternalTextContext, aSelectionAtTheStartShowsOnlyWhatFollows) {
    const auto context =
        ExternalTextContext::build(QStringLiteral("one two"), QStringLiteral("one"), TextRange{0, 3}, budget);
    EXPECT_TRUE(context.contextBefore.isEmpty());
    EXPECT_EQ(context.contextAfter, QStringLiteral("two"));
    EXPECT_EQ(context.promptBlock(),
              QStringLiteral("当前需要处理的文本：\n\"\"\"\none\n\"\"\"\n\n"
                             "文本框上下文（只用于理解语气、指代和前后关系，不要直接照抄）：\n后文：two\n\n"
                             "全文长度：7 字"));
}

TEST(ExternalTextContext, bothSidesShowInThePromptBlock) {
    const auto context =
        ExternalTextContext::build(QStringLiteral("a bc d"), QStringLiteral("bc"), TextRange{2, 2}, budget);
    EXPECT_TRUE(context.promptBlock().contains(QStringLiteral("照抄）：\n前文：a\n后文：d\n\n全文")));
}

TEST(ExternalTextContext, aSelectionLongerThanTheBudgetStillHasSixtyOnEachSide) {
    const QString text = numbered(2400);
    const auto context = ExternalTextContext::build(text, text.mid(200, 2000), TextRange{200, 2000}, budget);
    EXPECT_EQ(context.contextBefore, text.mid(140, 60));
    EXPECT_EQ(context.contextAfter, text.mid(2200, 60));
}

TEST(ExternalTextContext, aShortSelectionHasHalfTheRestOfTheBudgetOnEachSide) {
    const QString text = numbered(3000);
    const auto context = ExternalTextContext::build(text, text.mid(1500, 5), TextRange{1500, 5}, budget);
    EXPECT_EQ(context.contextBefore, text.mid(1500 - 597, 597));  // (1200 - 5) / 2, rounded down
    EXPECT_EQ(context.contextAfter, text.mid(1505, 597));
}

TEST(ExternalTextContext, theRangeIsClampedToTheText) {
    // What is read of a field whose value cannot be read: the selection stands for the full text.
    const QString selection = QStringLiteral("hello");
    const auto beyond = ExternalTextContext::build(selection, selection, TextRange{40, 5}, budget);
    EXPECT_EQ(beyond.contextBefore, QStringLiteral("hello"));
    EXPECT_TRUE(beyond.contextAfter.isEmpty());
    const auto negative = ExternalTextContext::build(selection, selection, TextRange{-3, 2}, budget);
    EXPECT_TRUE(negative.contextBefore.isEmpty());
    EXPECT_EQ(negative.contextAfter, QStringLiteral("llo"));
    const auto absurd = ExternalTextContext::build(selection, selection,
                                                   TextRange{1, std::numeric_limits<qint64>::max()}, budget);
    EXPECT_EQ(absurd.contextBefore, QStringLiteral("h"));
    EXPECT_TRUE(absurd.contextAfter.isEmpty());
}

TEST(ExternalTextContext, noEllipsisShowsSinceTheCutIsInUnitsFirst) {
    const QString text = numbered(4000);
    const auto context = ExternalTextContext::build(text, text.mid(2000, 1), TextRange{2000, 1}, budget);
    EXPECT_FALSE(context.contextBefore.contains(u"..."));
    EXPECT_FALSE(context.contextAfter.contains(u"..."));
}

}  // namespace
}  // namespace veltrin
