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

TEST(TaskAnswers, readsADraftedAction) {
    const Date now{1795255200};
    const auto action = TaskAnswers::memoryAction(
        u" {\"title\":\" 更客气 \",\"description\":\"说得客气\\n\",\"instruction\":\" 改得客气。\","
        "\"icon\":\"hand.wave\",\"colorHex\":\" #B5D8FF\"} "_s,
        u"把话说得客气些"_s, now);
    EXPECT_EQ(action.title, u"更客气"_s);
    EXPECT_EQ(action.description, u"说得客气"_s);
    EXPECT_EQ(action.instruction, u"改得客气。"_s);
    EXPECT_EQ(action.icon, u"hand.wave"_s);
    EXPECT_EQ(action.colorHex, u"#B5D8FF"_s);
    EXPECT_FALSE(action.isQuickAction || action.shortcutSlot || action.id.isNull());
    EXPECT_EQ(action.createdAt, now);
    EXPECT_EQ(action.updatedAt, now);
}

void expectDefaultAction(const MemoryActionPreset& action, const QString& instruction) {
    EXPECT_EQ(action.title, u"自定义动作"_s);
    EXPECT_EQ(action.description, u"按你的规则处理文本"_s);
    EXPECT_EQ(action.instruction, instruction);
    EXPECT_EQ(action.icon, u"wand.and.stars"_s);
    EXPECT_EQ(action.colorHex, u"#FFE066"_s);
}

TEST(TaskAnswers, makesAnActionOfTheDescriptionAlone) {
    for (const QString& answer :
         {u"{}"_s, u"{\"title\":1,\"instruction\":null}"_s, u""_s, u"[]"_s, u"\"x\""_s,
          u"好的：{\"title\":\"x\"}"_s, u"```json\n{\"title\":\"x\"}\n```"_s})
        expectDefaultAction(TaskAnswers::memoryAction(answer, u"客气些"_s, Date{}), u"客气些"_s);
    expectDefaultAction(TaskAnswers::memoryAction(u"抱歉"_s, {}, Date{}), u"保留原意，优化表达。"_s);
}

TEST(TaskAnswers, readsADraftedTerm) {
    const Date now{1795255200};
    const auto term = TaskAnswers::dictionaryTerm(
        u"{\"term\":\"ESC\",\"meaning\":\"排版工具\",\"context\":\"工作\",\"aliases\":[\"Esc\",\"esc\"]}"_s,
        u"描述"_s, now);
    EXPECT_EQ(term.term, u"ESC"_s);
    EXPECT_EQ(term.meaning, u"排版工具"_s);
    EXPECT_EQ(term.context, u"工作"_s);
    EXPECT_EQ(term.aliases, (QStringList{u"Esc"_s, u"esc"_s}));
    EXPECT_EQ(term.source, u"ai"_s);
    EXPECT_EQ(term.createdAt, now);
    EXPECT_EQ(term.updatedAt, now);
    EXPECT_FALSE(term.id.isNull());
}

TEST(TaskAnswers, givesATermItsDefaultsMemberByMember) {
    const auto term = TaskAnswers::dictionaryTerm(u"{\"aliases\":[\"a\",1]}"_s, u"描述"_s, Date{});
    EXPECT_EQ(term.term, u"描述"_s) << "a term without a word is named by the description";
    EXPECT_EQ(term.meaning, u"用户自定义专有名词。"_s);
    EXPECT_EQ(term.context, u"Veltrin 私有词典"_s);
    EXPECT_TRUE(term.aliases.isEmpty()) << "an array that is not all strings is none";
    EXPECT_EQ(term.source, u"ai"_s);
}

TEST(TaskAnswers, makesATermOfTheDescriptionAlone) {
    for (const QString& answer : {u"抱歉"_s, u"[]"_s, u"词条：{\"term\":\"x\"}"_s}) {
        const auto term = TaskAnswers::dictionaryTerm(answer, u"👩‍👩‍👧"_s.repeated(29), Date{});
        EXPECT_EQ(term.term, u"👩‍👩‍👧"_s.repeated(28));
        EXPECT_EQ(term.meaning, u"👩‍👩‍👧"_s.repeated(29));
        EXPECT_EQ(term.context, u"Veltrin 私有词典"_s);
        EXPECT_EQ(term.source, u"ai"_s);
    }
    const auto term = TaskAnswers::dictionaryTerm(u"抱歉"_s, {}, Date{});
    EXPECT_EQ(term.term, u"新词条"_s);
    EXPECT_EQ(term.meaning, u"用户自定义专有名词。"_s);
}

}  // namespace
}  // namespace veltrin
