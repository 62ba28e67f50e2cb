#include "Data/HistoryRetry.h"
#include "support/fake/FakeRunLoop.h"
#include "support/fake/ModelWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class HistoryRetryTest : public testing::Test {
protected:
    HistoryRetryTest() {
        ModelTaskMaterial material;
        material.runtimeContractPromptFor = [](const QString&, std::optional<int>) { return QString(); };
        material.contextPrompt = [](int) { return QString(); };
        material.recordHistory = [](const QString&, const QString&, const QString&) {};
        retry.emplace(ModelTasks(world.client(), world.settings(), loop, material));
        subscription = retry->changed.subscribe([this] { told << retry->buttonTitle(entry().id); });
    }
    static HistoryEntry entry(const QString& type = u"translate"_s) {
        static const QUuid id = QUuid::createUuid();
        return {id, type, u"你好"_s, u"Veltrin"_s, {}};
    }

    ModelWorld world;
    FakeRunLoop loop;
    std::optional<HistoryRetry> retry;
    Subscription subscription;
    QStringList told;
};

TEST_F(HistoryRetryTest, aTranslationIsTranslatedAgainFromItsSnippet) {
    EXPECT_EQ(retry->buttonTitle(entry().id), u"重试"_s);
    EXPECT_EQ(retry->result(entry().id), QString());
    world.answerLocally(u"Hello"_s);
    retry->retry(entry());
    EXPECT_EQ(retry->result(entry().id), u"Hello"_s);
    EXPECT_TRUE(world.localPrompt(0).contains(u"你好"_s));
    EXPECT_TRUE(world.localPrompt(0).contains(u"translation engine"_s));
    EXPECT_EQ(told, (QStringList{u"重试中"_s, u"重试"_s}));
}

TEST_F(HistoryRetryTest, everythingElseIsOptimised) {
    world.answerLocally(u"更好"_s);
    retry->retry(entry(u"memoryAction:更专业"_s));
    EXPECT_EQ(retry->result(entry().id), u"更好"_s);
    EXPECT_TRUE(world.localPrompt(0).contains(u"更精确"_s));
}

TEST_F(HistoryRetryTest, aFailureIsTheResult) {
    world.http.answer(500, "broken");
    world.http.answer(500, "broken");
    retry->retry(entry());
    EXPECT_TRUE(retry->result(entry().id).startsWith(u"重试失败："_s));
    EXPECT_GT(retry->result(entry().id).size(), 5);
    EXPECT_FALSE(retry->isRunning(entry().id));
}

TEST_F(HistoryRetryTest, anEntryThatRunsIsNotRunTwice) {
    world.http.holding = true;
    world.answerLocally(u"Hello"_s);
    retry->retry(entry());
    retry->retry(entry());
    EXPECT_TRUE(retry->isRunning(entry().id));
    EXPECT_EQ(world.http.requests.size(), 1U);
    EXPECT_TRUE(world.http.release());
    EXPECT_EQ(retry->result(entry().id), u"Hello"_s);
}

TEST_F(HistoryRetryTest, aViewThatIsGoneIsNotTold) {
    world.http.holding = true;
    world.answerLocally(u"Hello"_s);
    retry->retry(entry());
    retry.reset();
    EXPECT_TRUE(world.http.release());
    EXPECT_EQ(told, QStringList{u"重试中"_s});
}

}  // namespace
}  // namespace veltrin
