#include "Engines/ExpressionRunner.h"
#include "Foundation/Json.h"
#include "support/fake/FakeHttpClient.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/FakeSystemEnvironment.h"
#include "support/fake/LogCapture.h"
#include "support/fake/TaskRunner.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class ExpressionRunnerTest : public testing::Test {
protected:
    void answer(const QString& text) {
        Json body;
        body.set(QStringLiteral("response"), text);
        http.answer(200, body.serialized());
    }
    ExpressionRequest request(ExpressionTrigger trigger, const QString& text) const {
        ExpressionRequest made;
        made.trigger = trigger;
        made.context.text = text;
        made.context.fullText = text;
        return made;
    }
    std::shared_ptr<Outcome<ExpressionResult>> run(const ExpressionRequest& of) {
        const ExpressionRunner runner{OllamaClient(http, settings)};
        return follow(runner.runExpression(of));
    }
    QString prompt(std::size_t index) const {
        return sent(index).find(u"prompt")->toString().value_or(QString());
    }
    Json sent(std::size_t index) const { return Json::parse(http.requests.at(index).body); }

    FakePreferences preferences;
    FakeSystemEnvironment environment;
    NotificationCenter notifications;
    AppSettings settings{preferences, notifications, environment};
    FakeHttpClient http;
};

TEST_F(ExpressionRunnerTest, aTranslationGoesToTheModelAndComesBackTrimmed) {
    const LogCapture log;
    answer(QStringLiteral("\n Good morning. \n"));
    ExpressionRequest translation = request(ExpressionTrigger::translate, QStringLiteral("早上好。"));
    translation.targetLanguage = QStringLiteral("en");
    const auto outcome = run(translation);
    ASSERT_TRUE(outcome->value) << qPrintable(outcome->errorDescription());
    const ExpressionResult result = outcome->value.value_or(ExpressionResult());
    EXPECT_EQ(result.outputText, QStringLiteral("Good morning."));
    EXPECT_EQ(result.sourceText, QStringLiteral("早上好。"));
    EXPECT_EQ(result.plan.trigger, ExpressionTrigger::translate);
    EXPECT_EQ(result.plan.decision, ExpressionDecision::proceed);
    ASSERT_EQ(http.requests.size(), 1U);
    const Json body = sent(0);
    EXPECT_TRUE(prompt(0).contains(QStringLiteral("翻译成English")));
    EXPECT_EQ(body.find(u"options")->find(u"temperature")->toDouble(), 0.2);
    EXPECT_EQ(body.find(u"options")->find(u"num_predict")->toInteger(), 1024);
    EXPECT_FALSE(log.lines().filter(QStringLiteral("external-translate")).isEmpty());
}

TEST_F(ExpressionRunnerTest, theAgentOfAShortcutReachesThePrompt) {
    answer(QStringLiteral("short"));
    ExpressionRequest shortcut = request(ExpressionTrigger::shortcut, QStringLiteral("a long sentence"));
    ExpressionMode mode;
    mode.name = QStringLiteral("简洁");
    mode.agentSpec =
        AgentSpecCompiler::compile(mode.name, QStringLiteral("变短"), QStringLiteral("压缩文字"));
    shortcut.mode = mode;
    const LogCapture log;
    const auto outcome = run(shortcut);
    ASSERT_TRUE(outcome->value) << qPrintable(outcome->errorDescription());
    const ExpressionResult result = outcome->value.value_or(ExpressionResult());
    EXPECT_EQ(result.outputText, QStringLiteral("short"));
    EXPECT_TRUE(prompt(0).contains(QStringLiteral("- 名称：简洁")));
    EXPECT_FALSE(log.lines().filter(QStringLiteral("external-shortcut")).isEmpty());
}

TEST_F(ExpressionRunnerTest, anAnswerIsAskedForAgainWithARaisedLimit) {
    answer(QString());
    answer(QStringLiteral("better"));
    const auto outcome = run(request(ExpressionTrigger::optimize, QStringLiteral("some text to improve")));
    ASSERT_TRUE(outcome->value) << qPrintable(outcome->errorDescription());
    const ExpressionResult result = outcome->value.value_or(ExpressionResult());
    EXPECT_EQ(result.outputText, QStringLiteral("better"));
    ASSERT_EQ(http.requests.size(), 2U);
    EXPECT_EQ(sent(0).find(u"options")->find(u"num_predict")->toInteger(), 1024);
    EXPECT_EQ(sent(1).find(u"options")->find(u"num_predict")->toInteger(), 2048);
}

TEST_F(ExpressionRunnerTest, textThatNeedsNoTransformPassesWithoutAModel) {
    ExpressionRequest plain = request(ExpressionTrigger::optimize, QStringLiteral("  as it stands \n"));
    plain.requiresTransform = false;
    const auto outcome = run(plain);
    ASSERT_TRUE(outcome->value);
    const ExpressionResult result = outcome->value.value_or(ExpressionResult());
    EXPECT_EQ(result.outputText, QStringLiteral("as it stands"));
    EXPECT_EQ(result.sourceText, QStringLiteral("  as it stands \n"));
    EXPECT_TRUE(http.requests.empty());
}

TEST_F(ExpressionRunnerTest, whatCannotBePlannedIsAnError) {
    EXPECT_TRUE(run(request(ExpressionTrigger::optimize, QStringLiteral(" ")))
                    ->failedWith<ExpressionIntentEngineError>());
    const auto voice = run(request(ExpressionTrigger::voice, QStringLiteral("hello")));
    EXPECT_EQ(voice->errorDescription(), QStringLiteral("当前表达入口暂不支持：voice"));
    EXPECT_TRUE(http.requests.empty());
}

TEST_F(ExpressionRunnerTest, failuresOfTheModelPassThrough) {
    http.fail(UrlError::timedOut, QStringLiteral("slow"));
    EXPECT_TRUE(run(request(ExpressionTrigger::optimize, QStringLiteral("text")))->failedWith<UrlError>());
}

TEST_F(ExpressionRunnerTest, aRunOutlivesItsRunner) {
    http.holding = true;
    answer(QStringLiteral("late answer"));
    const auto outcome = run(request(ExpressionTrigger::optimize, QStringLiteral("some text")));
    EXPECT_FALSE(outcome->finished());
    ASSERT_TRUE(http.release());
    ASSERT_TRUE(outcome->value) << qPrintable(outcome->errorDescription());
    const ExpressionResult result = outcome->value.value_or(ExpressionResult());
    EXPECT_EQ(result.outputText, QStringLiteral("late answer"));
}

}  // namespace
}  // namespace veltrin
