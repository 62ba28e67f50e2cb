#include "AI/ModelTasks.h"
#include "AI/OllamaError.h"
#include "Data/StoredPrompt.h"
#include "support/Golden.h"
#include "support/fake/TaskRunner.h"
#include "support/fake/TaskWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

StoredPrompt prompt(const QString& title, const QString& content, const QStringList& tags = {}) {
    StoredPrompt prompt;
    prompt.id = QUuid::createUuid();
    prompt.title = title;
    prompt.content = content;
    prompt.tags = tags;
    return prompt;
}

class ModelLibraryTasks : public testing::Test {
protected:
    std::vector<QUuid> found(const QString& answer) {
        world.answerLocally(answer);
        return valueOf(world.tasks().semanticSearch(u"画图"_s, prompts));
    }

    TaskWorld world;
    const std::vector<StoredPrompt> prompts{prompt(u"水墨山水"_s, u"一"_s, {u"SD"_s, u"艺术"_s}),
                                            prompt(u"代码审查专家"_s, u"二"_s),
                                            prompt(u"产品概念图"_s, u"三"_s, {u"DALL·E"_s})};
};

TEST_F(ModelLibraryTasks, searchesByIndicesInTheAnswersOrder) {
    EXPECT_EQ(found(u"```[0, 2, 99]```"_s), (std::vector{prompts[0].id, prompts[2].id}));
    EXPECT_EQ(world.localPrompt(0), golden(u"semantic-search"_s));
    EXPECT_EQ(found(u"[2, 1]"_s), (std::vector{prompts[2].id, prompts[1].id}));
    EXPECT_TRUE(found(u"no match"_s).empty());
    EXPECT_TRUE(found(QString()).empty());
}

TEST_F(ModelLibraryTasks, searchesNothingWithoutARequest) {
    EXPECT_TRUE(valueOf(world.tasks().semanticSearch(u"画"_s, {})).empty());
    EXPECT_TRUE(world.http.requests.empty());
}

TEST_F(ModelLibraryTasks, generatesAPromptFromADescription) {
    world.answerLocally(u"{\"title\":\"道歉信\",\"content\":\"写\"}"_s);
    const StoredPrompt made = valueOf(world.tasks().generatePrompt(u"写一封道歉信"_s));
    EXPECT_EQ(world.localPrompt(0), golden(u"prompt-generate"_s));
    EXPECT_EQ(made.title, u"道歉信"_s);
    EXPECT_EQ(made.source, u"ai"_s);
    EXPECT_EQ(made.createdAt.secondsSince1970, world.runLoop.wallNow());
}

TEST_F(ModelLibraryTasks, anAnswerWithoutAPromptIsInvalid) {
    for (const QString& answer : {u"抱歉"_s, QString(), u"{\"title\":\"t\"}"_s}) {
        world.answerLocally(answer);
        EXPECT_TRUE(follow(world.tasks().generatePrompt(u"x"_s))->failedWith<OllamaError>());
    }
}

TEST_F(ModelLibraryTasks, improvesACopyByTheUsersDirection) {
    const StoredPrompt cat = prompt(u"猫"_s, u"画一只猫"_s, {u"动物"_s});
    world.answerLocally(u"\n画一只写实的猫 "_s);
    StoredPrompt expected = cat;
    expected.content = u"画一只写实的猫"_s;
    expected.updatedAt = Date{world.runLoop.wallNow()};
    EXPECT_EQ(valueOf(world.tasks().improvePrompt(cat, u"更写实"_s)), expected);
    EXPECT_EQ(world.localPrompt(0), golden(u"prompt-optimize-with-direction"_s));
    world.answerLocally(u"画猫"_s);
    valueOf(world.tasks().improvePrompt(cat, u" "_s));
    EXPECT_EQ(world.localPrompt(1), golden(u"prompt-optimize"_s));
}

TEST_F(ModelLibraryTasks, anEmptyImprovementIsInvalid) {
    world.answerLocally(u" "_s);
    EXPECT_TRUE(follow(world.tasks().improvePrompt(prompt(u"猫"_s, u"画"_s), {}))->failedWith<OllamaError>());
}

TEST_F(ModelLibraryTasks, suggestsTagsFromTheFirstThreeHundredCharacters) {
    world.answerLocally(u"```json\n[\"写作\",\"产品\"]\n```"_s);
    EXPECT_EQ(valueOf(world.tasks().suggestTags(prompt(u"水墨山水"_s, u"云雾缭绕的山川"_s))),
              (QStringList{u"写作"_s, u"产品"_s}));
    EXPECT_EQ(world.localPrompt(0), golden(u"prompt-tag"_s));
    world.answerLocally(u"[]"_s);
    valueOf(world.tasks().suggestTags(prompt(u"t"_s, u"👩‍👩‍👧"_s.repeated(301))));
    EXPECT_TRUE(world.localPrompt(1).endsWith(u"\nContent: "_s + u"👩‍👩‍👧"_s.repeated(300)));
}

}  // namespace
}  // namespace veltrin
