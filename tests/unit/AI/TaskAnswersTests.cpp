#include "AI/TaskAnswers.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Indices = std::vector<std::size_t>;

TEST(TaskAnswers, readsIndicesWithoutJson) {
    EXPECT_EQ(TaskAnswers::indices(u"```[0, 2, 99]```"_s, 3), (Indices{0, 2}));
    EXPECT_EQ(TaskAnswers::indices(u"```json\n[2, 0]\n```"_s, 3), (Indices{2, 0}));
    EXPECT_EQ(TaskAnswers::indices(u" {1,x, 2 ,0x1,1.0,-1,,+0} "_s, 3), (Indices{1, 2, 0}));
    EXPECT_EQ(TaskAnswers::indices(u"1,1"_s, 3), (Indices{1, 1})) << "no index is dropped as a repeat";
    for (const QString& nothing :
         {u"no match"_s, u""_s, u"[]"_s, u"[3]"_s, u"[99999999999999999999]"_s, u"The best are 0 and 2."_s})
        EXPECT_TRUE(TaskAnswers::indices(nothing, 3).empty()) << qPrintable(nothing);
}

TEST(TaskAnswers, cleansAFencedListOfTags) {
    const QStringList tags{u"写作"_s, u"产品"_s, u"营销"_s};
    EXPECT_EQ(TaskAnswers::tags(u"```json\n[\"写作\", \"产品\",\"营销\"]\n```"_s), tags);
    EXPECT_EQ(TaskAnswers::tags(u"```\n['写作', “产品” , 营销, \"\", ]\n```\n"_s), tags);
    EXPECT_EQ(TaskAnswers::tags(u"写作,产品, 营销"_s), tags);
    EXPECT_TRUE(TaskAnswers::tags(u" [] "_s).isEmpty());
    EXPECT_TRUE(TaskAnswers::tags(QString()).isEmpty());
}

TEST(TaskAnswers, readsAPromptFromTheFirstBrace) {
    const Date now{1795255200};
    const auto prompt = TaskAnswers::prompt(
        u"好的：```json\n{\"title\":\"道歉信\",\"content\":\"写 {一封} 信\",\"categoryTag\":\"writing\","
        "\"tags\":[\"信\",1,\"歉\"]}\n```"_s,
        now);
    ASSERT_TRUE(prompt);
    EXPECT_EQ(prompt->title, u"道歉信"_s);
    EXPECT_EQ(prompt->content, u"写 {一封} 信"_s);
    EXPECT_EQ(prompt->categoryTag, u"writing"_s);
    EXPECT_EQ(prompt->tags, (QStringList{u"信"_s, u"歉"_s}));
    EXPECT_EQ(prompt->source, u"ai"_s);
    EXPECT_EQ(prompt->createdAt, now);
    EXPECT_EQ(prompt->updatedAt, now);
    EXPECT_FALSE(prompt->id.isNull());
}

TEST(TaskAnswers, givesAPromptWithoutCategoryOrTagsTheDefaults) {
    const auto prompt = TaskAnswers::prompt(
        u"{\"title\":\"t\",\"content\":\"c\",\"categoryTag\":null,\"tags\":\"x\"}"_s, Date{});
    ASSERT_TRUE(prompt);
    EXPECT_EQ(prompt->categoryTag, u"general"_s);
    EXPECT_TRUE(prompt->tags.isEmpty());
}

TEST(TaskAnswers, readsNoPromptWhereNoneStands) {
    for (const QString& answer :
         {u""_s, u"no braces"_s, u"} {"_s, u"{\"title\":\"t\"}"_s, u"{\"content\":\"c\"}"_s,
          u"{\"title\":1,\"content\":\"c\"}"_s, u"[{\"title\":\"t\",\"content\":\"c\"},{}]"_s, u"{{}}"_s})
        EXPECT_FALSE(TaskAnswers::prompt(answer, Date{})) << qPrintable(answer);
}

}  // namespace
}  // namespace veltrin
