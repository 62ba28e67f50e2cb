#include "AI/PromptSheets.h"
#include "Data/PromptStore.h"
#include "support/fake/TaskRunner.h"
#include "support/fake/TaskWorld.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class PromptSheets : public testing::Test {
protected:
    TaskWorld world;
    QTemporaryDir folder;
    PromptStore prompts{folder.path(), world.runLoop};
};

TEST_F(PromptSheets, aGeneratedPromptIsShownAndThenSavedOnce) {
    AIGenerateSheet sheet(world.tasks(), prompts);
    int changes = 0;
    const auto subscription = sheet.changed.subscribe([&] { ++changes; });
    world.http.holding = true;
    world.answerLocally(u"{\"title\":\"信\",\"content\":\"写\"}"_s);
    const auto outcome = follow(sheet.run(u"道歉信"_s));
    EXPECT_TRUE(sheet.isRunning());
    follow(sheet.run(u"再来"_s));
    EXPECT_EQ(world.http.requests.size(), 1U) << "one run at a time";
    ASSERT_TRUE(world.http.release());
    EXPECT_TRUE(outcome->finished() && !sheet.isRunning());
    EXPECT_EQ(changes, 2);
    ASSERT_TRUE(sheet.result());
    EXPECT_EQ(prompts.prompts().size(), 10U) << "not before it is confirmed";
    sheet.onSave();
    sheet.onSave();
    EXPECT_EQ(prompts.prompts().size(), 11U);
    EXPECT_EQ(prompts.prompts().front().title, u"信"_s);
    EXPECT_EQ(prompts.prompts().front().source, u"ai"_s);
}

TEST_F(PromptSheets, aFailureShowsItsWordsAndLeavesTheLibrary) {
    const auto before = prompts.prompts();
    AIGenerateSheet generate(world.tasks(), prompts);
    world.answerLocally(u"抱歉"_s);
    valueOf(generate.run(u"x"_s));
    EXPECT_EQ(generate.errorMsg(), u"Ollama 返回了无法解析的响应"_s);
    generate.onSave();
    AIOptimizeSheet optimize(world.tasks(), prompts, before[0]);
    world.http.fail(UrlError::timedOut, u"late"_s);
    valueOf(optimize.run({}));
    EXPECT_EQ(optimize.errorMsg(), u"late"_s);
    optimize.onSave();
    AITagSheet tag(world.tasks(), prompts, {before[0]});
    world.http.fail(UrlError::timedOut, u"late"_s);
    valueOf(tag.run());
    EXPECT_EQ(tag.errorMsg(), u"late"_s);
    tag.onSave();
    EXPECT_EQ(prompts.prompts(), before);

    world.answerLocally(u"更好"_s);
    valueOf(optimize.run({}));
    EXPECT_TRUE(optimize.errorMsg().isEmpty()) << "a run that goes well takes the words away";
}

TEST_F(PromptSheets, aBlankDescriptionAsksNothing) {
    AIGenerateSheet sheet(world.tasks(), prompts);
    valueOf(sheet.run(u" \n"_s));
    EXPECT_TRUE(world.http.requests.empty());
    EXPECT_FALSE(sheet.isRunning());
}

TEST_F(PromptSheets, aBetterPromptTakesTheContentAlone) {
    const StoredPrompt first = prompts.prompts()[0];
    AIOptimizeSheet sheet(world.tasks(), prompts, first);
    world.answerLocally(u"更好的正文"_s);
    valueOf(sheet.run(u"更好"_s));
    StoredPrompt renamed = first;
    renamed.title = u"改名"_s;
    prompts.update(renamed);
    world.runLoop.advance(60);
    sheet.onSave();
    EXPECT_EQ(prompts.prompts()[0].content, u"更好的正文"_s);
    EXPECT_EQ(prompts.prompts()[0].title, u"改名"_s) << "what changed while the sheet was open stays";
    EXPECT_EQ(prompts.prompts()[0].updatedAt.secondsSince1970, world.runLoop.wallNow());
}

TEST_F(PromptSheets, aBetterPromptOfADeletedOneIsDropped) {
    const StoredPrompt first = prompts.prompts()[0];
    AIOptimizeSheet sheet(world.tasks(), prompts, first);
    world.answerLocally(u"更好"_s);
    valueOf(sheet.run({}));
    prompts.deletePrompt(first.id);
    sheet.onSave();
    EXPECT_EQ(prompts.prompts().size(), 9U);
}

TEST_F(PromptSheets, tagsReplaceTheOldOnesPromptByPrompt) {
    const auto before = prompts.prompts();
    AITagSheet sheet(world.tasks(), prompts, {before[0], before[1], before[2]});
    world.answerLocally(u"[\"城市\",\"夜\"]"_s);
    world.answerLocally(u"[]"_s);
    world.answerLocally(u"```[\"设计\"]```"_s);
    valueOf(sheet.run());
    ASSERT_EQ(sheet.results().size(), 2U);
    EXPECT_EQ(prompts.prompts(), before);
    sheet.onSave();
    EXPECT_EQ(prompts.prompts()[0].tags, (QStringList{u"城市"_s, u"夜"_s}));
    EXPECT_EQ(prompts.prompts()[1].tags, before[1].tags) << "an answer without tags takes none away";
    EXPECT_EQ(prompts.prompts()[2].tags, QStringList{u"设计"_s});
    EXPECT_TRUE(world.localPrompt(1).contains(u"Title: 水墨山水\n"_s));
}

TEST_F(PromptSheets, taggingEndsAtTheFirstFailure) {
    const auto before = prompts.prompts();
    AITagSheet sheet(world.tasks(), prompts, {before[0], before[1], before[2]});
    world.answerLocally(u"[\"城市\"]"_s);
    world.http.fail(UrlError::timedOut, u"late"_s);
    valueOf(sheet.run());
    EXPECT_EQ(sheet.errorMsg(), u"late"_s);
    EXPECT_EQ(sheet.results().size(), 1U);
    EXPECT_EQ(world.http.requests.size(), 2U);
}

TEST_F(PromptSheets, aSheetMayCloseWhileItsModelIsAsked) {
    world.http.holding = true;
    std::optional<AIGenerateSheet> generate(std::in_place, world.tasks(), prompts);
    std::optional<AIOptimizeSheet> optimize(std::in_place, world.tasks(), prompts, prompts.prompts()[0]);
    std::optional<AITagSheet> tag(std::in_place, world.tasks(), prompts, prompts.prompts());
    world.answerLocally(u"{\"title\":\"信\",\"content\":\"写\"}"_s);
    world.answerLocally(u"更好"_s);
    world.http.fail(UrlError::timedOut, u"late"_s);
    const auto a = follow(generate->run(u"x"_s));
    const auto b = follow(optimize->run({}));
    const auto c = follow(tag->run());
    generate.reset();
    optimize.reset();
    tag.reset();
    while (world.http.release())
        continue;
    EXPECT_TRUE(a->finished() && b->finished() && c->finished());
    EXPECT_EQ(world.http.requests.size(), 3U) << "no further prompt is sent";
}

}  // namespace
}  // namespace veltrin
