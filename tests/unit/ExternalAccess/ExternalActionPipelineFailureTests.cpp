#include "Engines/TransformEngineError.h"
#include "PipelineWorld.h"
#include "Platform/HttpClient.h"

namespace veltrin {
namespace {

using namespace test;

/// What every failed run of an action shows after the model was asked.
QStringList failedEvents(const char* channel, const char* state) {
    return {QStringLiteral("thinking ") + QString::fromUtf8(channel),
            QStringLiteral("state ") + QString::fromUtf8(state), QStringLiteral("dismiss"),
            QStringLiteral("card"), QStringLiteral("cancelled ") + QString::fromUtf8(channel)};
}

TEST(ExternalActionPipeline, anAnswerOfBlanksOffersTheSourceForCopying) {
    World world;
    world.answer = QStringLiteral(" \n\t");
    LogCapture log;
    run(world, Action::optimize(ExternalOptimizeMode::refine), session(source));
    EXPECT_EQ(world.events, failedEvents("optimize", "optimizing"));
    ASSERT_EQ(world.cards.size(), 1U);
    EXPECT_EQ(world.cards[0].title, QStringLiteral("优化失败"));
    EXPECT_EQ(world.cards[0].detail, QStringLiteral("模型没有返回可用内容。"));
    EXPECT_EQ(world.cards[0].suggestion, QStringLiteral("请重试，或在设置里换一个更稳定的模型。"));
    EXPECT_EQ(world.cards[0].copyableText, source);
    EXPECT_EQ(world.cards[0].primaryActionTitle, QStringLiteral("复制原文"));
    EXPECT_TRUE(log.has(QStringLiteral("AI action failed: empty output action: optimize(1)")));
    EXPECT_TRUE(log.hasStartingWith(QStringLiteral("ActionPipeline failed: empty output id: ")));
}

TEST(ExternalActionPipeline, anEmptyInputHasItsOwnCard) {
    World world;
    world.failure = std::make_exception_ptr(ExternalAIActionError(ExternalAIActionError::Kind::emptyInput));
    LogCapture log;
    run(world, Action::translate(), session(source));
    EXPECT_EQ(world.events, failedEvents("translate", "translating"));
    ASSERT_EQ(world.cards.size(), 1U);
    EXPECT_EQ(world.cards[0].title, QStringLiteral("没有读到可处理的文本"));
    EXPECT_EQ(world.cards[0].detail, QStringLiteral("Veltrin 没有从当前 App 读取到文字。"));
    EXPECT_EQ(world.cards[0].suggestion, QStringLiteral("请先选中文字，或把光标放进可编辑文本框后重试。"));
    EXPECT_FALSE(world.cards[0].copyableText);
    EXPECT_TRUE(log.has(QStringLiteral("AI action failed: empty input action: translate")));
    EXPECT_TRUE(log.hasStartingWith(QStringLiteral("ActionPipeline failed: empty input id: ")));
}

TEST(ExternalActionPipeline, anAnswerThatBreaksItsContractIsNeverWritten) {
    struct Row {
        TransformEngineError::Kind kind;
        const char* first;
        const char* second;
    };
    const Row rows[] = {
        {TransformEngineError::Kind::contractRejected,
         "AI action output contract rejected:", " contractRejected: "},
        {TransformEngineError::Kind::contractNeedsRepair,
         "AI action output contract repair requested:", " contractNeedsRepair: "},
    };
    for (const Row& row : rows) {
        for (const auto violation : allCases<OutputContractViolation>()) {
            World world;
            const TransformEngineError error(row.kind, violation);
            world.failure = std::make_exception_ptr(error);
            LogCapture log;
            run(world, Action::translate(), session(source));
            EXPECT_EQ(world.events, failedEvents("translate", "translating"));
            ASSERT_EQ(world.cards.size(), 1U);
            EXPECT_EQ(world.cards[0], ExternalActionFeedback::message(error, QStringLiteral("翻译失败")));
            EXPECT_TRUE(log.has(QString::fromUtf8(row.first) + QStringLiteral(" action: translate reason: ") +
                                rawValue(violation)));
            EXPECT_TRUE(log.lines().last().startsWith(QStringLiteral("ActionPipeline failed: id: ")));
            EXPECT_TRUE(log.lines().last().endsWith(QStringLiteral("action: translate") +
                                                    QString::fromUtf8(row.second) + rawValue(violation)));
        }
    }
}

TEST(ExternalActionPipeline, anyOtherErrorIsExplainedByItsKind) {
    World world;
    world.failure = std::make_exception_ptr(UrlError(UrlError::timedOut, QStringLiteral("slow")));
    LogCapture log;
    run(world, Action::translate(), session(source));
    EXPECT_EQ(world.events, failedEvents("translate", "translating"));
    ASSERT_EQ(world.cards.size(), 1U);
    EXPECT_EQ(world.cards[0].title, QStringLiteral("翻译失败"));
    EXPECT_EQ(world.cards[0].detail, QStringLiteral("模型请求超时，当前服务响应太慢或文本较长。"));
    EXPECT_TRUE(log.has(QStringLiteral("AI action failed: action: translate slow")));
    EXPECT_TRUE(log.lines().last().endsWith(QStringLiteral("action: translate slow")));
}

TEST(ExternalActionPipeline, evenAnErrorOfNoKnownKindDoesNotEscape) {
    World world;
    world.failure = std::make_exception_ptr(7);
    run(world, Action::translate(), session(source));
    ASSERT_EQ(world.cards.size(), 1U);
    EXPECT_EQ(world.cards[0].detail, QStringLiteral("请求失败，但没有返回明确原因。"));
    EXPECT_EQ(world.events.last(), QStringLiteral("cancelled translate"));
}

}  // namespace
}  // namespace veltrin
