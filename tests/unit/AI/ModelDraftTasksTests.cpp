#include "AI/ModelTasks.h"
#include "AI/OllamaError.h"
#include "Data/DictionaryStore.h"
#include "Data/MemoryActionPreset.h"
#include "support/Golden.h"
#include "support/fake/TaskRunner.h"
#include "support/fake/TaskWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(ModelDraftTasks, draftsAnActionFromADescription) {
    TaskWorld world;
    world.answerLocally(u"{\"title\":\"更客气\",\"instruction\":\"改得客气。\"}"_s);
    const auto action = valueOf(world.tasks().draftMemoryAction(u"把话说得客气些"_s));
    EXPECT_EQ(world.localPrompt(0), golden(u"draft-memory-action"_s));
    EXPECT_EQ(action.title, u"更客气"_s);
    EXPECT_EQ(action.createdAt.secondsSince1970, world.runLoop.wallNow());
    EXPECT_TRUE(world.material.asked.isEmpty() && world.material.history.isEmpty());
}

TEST(ModelDraftTasks, anActionWithTextAroundItsJsonFallsBack) {
    TaskWorld world;
    world.answerLocally(u"这是动作：{\"title\":\"更客气\"}。"_s);
    const auto action = valueOf(world.tasks().draftMemoryAction(u"客气些"_s));
    EXPECT_EQ(action.title, u"自定义动作"_s);
    EXPECT_EQ(action.instruction, u"客气些"_s);
}

TEST(ModelDraftTasks, draftsATermFromADescription) {
    TaskWorld world;
    world.answerLocally(u"{\"term\":\"ESC\",\"meaning\":\"排版工具\"}"_s);
    const auto term = valueOf(world.tasks().draftDictionaryTerm(u"ESC 是我们的排版工具"_s));
    EXPECT_EQ(world.localPrompt(0), golden(u"draft-dictionary-term"_s));
    EXPECT_EQ(term.term, u"ESC"_s);
    EXPECT_EQ(term.updatedAt.secondsSince1970, world.runLoop.wallNow());
}

TEST(ModelDraftTasks, anErrorOfTheGenerationPasses) {
    TaskWorld world;
    world.http.answer(500, "{}");
    EXPECT_TRUE(follow(world.tasks().draftMemoryAction(u"x"_s))->failedWith<OllamaError>());
    world.http.fail(UrlError::timedOut, u"late"_s);
    EXPECT_TRUE(follow(world.tasks().draftDictionaryTerm(u"x"_s))->failedWith<UrlError>());
}

}  // namespace
}  // namespace veltrin
