#include "AI/OllamaClient.h"
#include "AI/OllamaError.h"
#include "support/fake/LogCapture.h"
#include "support/fake/ModelWorld.h"
#include "support/fake/TaskRunner.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QByteArray openAIAnswer = R"({"choices":[{"message":{"content":"好"}}]})";

TEST(OllamaClient, asksTheLocalServiceByDefault) {
    ModelWorld world;
    world.answerLocally(u" 好 "_s);
    EXPECT_EQ(valueOf(world.client().generate(u"你好"_s, 0.2, std::nullopt, 15)), u"好"_s);
    EXPECT_EQ(world.http.requests.back().url.toString(), u"http://127.0.0.1:11434/api/generate"_s);
    EXPECT_EQ(world.lastBody(),
              QByteArray(R"({"model":"qwen3:8b","prompt":"你好","stream":false,"keep_alive":"10m",)"
                         R"("options":{"temperature":0.2},"think":false})"));
}

TEST(OllamaClient, answersAnEmptyTextWithoutAnError) {
    ModelWorld world;
    world.answerLocally(u"<think>x</think>"_s);
    EXPECT_EQ(valueOf(world.client().generate(u"x"_s, 0, 8, 5)), QString());
}

TEST(OllamaClient, findsTheLocalServiceWhereTheSettingSays) {
    ModelWorld world;
    const auto at = [&](const QString& setting) {
        world.settings().ollamaEndpoint.set(setting);
        return world.client().endpoint().toString();
    };
    EXPECT_EQ(at(u" http://box:1234/base/ \n"_s), u"http://box:1234/base/"_s);
    EXPECT_EQ(at(u" "_s), u"http://127.0.0.1:11434"_s);
    EXPECT_EQ(at(u"http://a b"_s), u"http://127.0.0.1:11434"_s);
    world.settings().ollamaEndpoint.set(u"http://box:1234/base/"_s);
    world.answerLocally(u"x"_s);
    valueOf(world.client().generate(u"x"_s, 0, 8, 5));
    EXPECT_EQ(world.http.requests.back().url.toString(), u"http://box:1234/base/api/generate"_s);
}

TEST(OllamaClient, takesTheModelOfTheActiveProvider) {
    ModelWorld world;
    world.settings().selectedModel.set(u" llama3.1:8b\n"_s);
    EXPECT_EQ(world.client().model(), u"llama3.1:8b"_s);
    world.settings().selectedModel.set(u" "_s);
    EXPECT_EQ(world.client().model(), u"qwen3:8b"_s);
    world.use(ModelProvider::zhipu, u"glm-4-plus"_s);
    EXPECT_EQ(world.client().model(), u"glm-4-plus"_s);
}

TEST(OllamaClient, speaksTheStyleThatIsStoredForAProvider) {
    ModelWorld world;
    const auto urlFor = [&](ModelAPIStyle style, const QByteArray& answer) {
        world.settings().saveActiveModelConfiguration(ModelProvider::custom, u"m"_s, u"https://h.test/v1"_s,
                                                      u"sk-0123456789abcdef"_s, style);
        world.http.answer(200, answer);
        EXPECT_EQ(valueOf(world.client().generate(u"x"_s, 0.2, 8, 5)), u"好"_s);
        return world.http.requests.back().url.toString();
    };
    EXPECT_EQ(urlFor(ModelAPIStyle::openAICompatible, openAIAnswer), u"https://h.test/v1/chat/completions"_s);
    EXPECT_EQ(urlFor(ModelAPIStyle::anthropicMessages, R"({"content":[{"text":"好"}]})"),
              u"https://h.test/v1"_s);
    EXPECT_EQ(urlFor(ModelAPIStyle::googleGenerateContent,
                     R"({"candidates":[{"content":{"parts":[{"text":"好"}]}}]})"),
              u"https://h.test/v1/models/m:generateContent?key=sk-0123456789abcdef"_s);
}

TEST(OllamaClient, refusesTheLocalStyleOnACloudProviderWithoutARequest) {
    ModelWorld world;
    world.use(ModelProvider::custom);
    world.preferences.values[u"model_api_style_custom"_s] = u"ollama"_s;
    const auto outcome = follow(world.client().generate(u"x"_s, 0.2, 8, 5));
    EXPECT_EQ(outcome->errorDescription(), OllamaError::invalidResponse().errorDescription());
    EXPECT_TRUE(world.http.requests.empty());
}

TEST(OllamaClient, makesNoCloudRequestWithoutAKey) {
    ModelWorld world;
    for (const auto provider : {ModelProvider::custom, ModelProvider::anthropic, ModelProvider::google}) {
        world.use(provider, {}, u" \n"_s);
        EXPECT_EQ(follow(world.client().generate(u"x"_s, 0.2, 8, 5))->errorDescription(),
                  ModelProviders::displayName(provider) + u" 缺少 API Key"_s);
    }
    EXPECT_TRUE(world.http.requests.empty());
}

TEST(OllamaClient, trimsTheStoredKey) {
    ModelWorld world;
    world.use(ModelProvider::openAI);
    world.preferences.values[u"model_api_key_openAI"_s] = u" sk-abc\n"_s;
    world.http.answer(200, openAIAnswer);
    valueOf(world.client().generate(u"x"_s, 0.2, 8, 5));
    EXPECT_EQ(header(world.http.requests.back(), "Authorization"), QByteArray("Bearer sk-abc"));
}

TEST(OllamaClient, routesAReasoningPromptOfDeepseekToTheReasoner) {
    ModelWorld world;
    world.use(ModelProvider::deepseek, u"deepseek-chat"_s);
    world.http.answer(200, openAIAnswer);
    world.http.answer(200, openAIAnswer);
    valueOf(world.client().generate(u"分析一下"_s, 0.2, 100, 5));
    EXPECT_TRUE(world.lastBody().startsWith(R"({"model":"deepseek-reasoner","messages")"));
    valueOf(world.client().generate(u"你好"_s, 0.2, 100, 5));
    EXPECT_TRUE(world.lastBody().startsWith(R"({"model":"deepseek-chat","messages")"));
}

TEST(OllamaClient, passesOnATransportErrorUntouched) {
    ModelWorld world;
    world.http.fail(UrlError::timedOut, u"The request timed out."_s);
    const auto outcome = follow(world.client().generate(u"x"_s, 0.2, 8, 5));
    EXPECT_TRUE(outcome->failedWith<UrlError>());
    EXPECT_EQ(outcome->errorDescription(), u"The request timed out."_s);
}

TEST(OllamaClient, passesOnAParseError) {
    ModelWorld world;
    world.http.answer(200, "<html>");
    EXPECT_TRUE(follow(world.client().generate(u"x"_s, 0.2, 8, 5))->failedWith<Json::ParseError>());
}

TEST(OllamaClient, keepsToTheProviderItBeganWith) {
    ModelWorld world;
    world.http.holding = true;
    const auto outcome = follow(world.client().generate(u"x"_s, 0.2, 8, 5));
    world.use(ModelProvider::openAI);
    world.answerLocally(u"本地"_s);
    ASSERT_TRUE(world.http.release());
    EXPECT_EQ(outcome->value, u"本地"_s);
}

TEST(OllamaClient, mayGoWhileItsCallIsUnderWay) {
    ModelWorld world;
    world.http.holding = true;
    auto client = std::make_unique<OllamaClient>(world.client());
    const auto outcome = follow(client->generateNonEmpty(u"x"_s, 0.2, 100, 612));
    client.reset();
    world.answerLocally(QString());
    world.answerLocally(u"好。"_s);
    ASSERT_TRUE(world.http.release());
    ASSERT_TRUE(world.http.release());
    EXPECT_EQ(outcome->value, u"好。"_s);
}

TEST(OllamaClient, runsSeveralCallsAtOnce) {
    ModelWorld world;
    world.http.holding = true;
    const auto first = follow(world.client().generate(u"a"_s, 0.2, 8, 5));
    const auto second = follow(world.client().generate(u"b"_s, 0.2, 8, 5));
    EXPECT_EQ(world.http.heldCount(), 2U);
    world.answerLocally(u"A"_s);
    world.answerLocally(u"B"_s);
    world.http.release();
    EXPECT_FALSE(second->finished());
    world.http.release();
    EXPECT_EQ(first->value, u"A"_s);
    EXPECT_EQ(second->value, u"B"_s);
}

TEST(OllamaClientRetry, acceptsAFinishedAnswer) {
    ModelWorld world;
    world.answerLocally(QString(39, u'x') + u'。');
    EXPECT_EQ(valueOf(world.client().generateNonEmpty(u"p"_s, 0.2, 100, 612)), QString(39, u'x') + u'。');
    ASSERT_EQ(world.http.requests.size(), 1U);
    EXPECT_EQ(world.http.requests[0].timeout, 30);
    EXPECT_TRUE(world.lastBody().contains(R"("num_predict":100)"));
}

TEST(OllamaClientRetry, asksOnceMoreForAnAnswerThatLooksCutOff) {
    const LogCapture log;
    ModelWorld world;
    world.answerLocally(QString(40, u'x'));
    world.answerLocally(QString(41, u'y'));
    EXPECT_EQ(valueOf(world.client().generateNonEmpty(u"p"_s, 0.2, 100, 612)), QString(41, u'y'))
        << "taken as it is";
    ASSERT_EQ(world.http.requests.size(), 2U);
    EXPECT_EQ(world.http.requests[1].timeout, 45);
    EXPECT_EQ(
        world.localPrompt(1),
        u"p\n\n上一次输出为空或疑似被截断。请不要解释，不要加引号，必须完整输出最终文本，直到句子自然结束。"_s);
    EXPECT_TRUE(world.lastBody().contains(R"("temperature":0.2,"num_predict":612)"));
    EXPECT_EQ(log.lines(),
              QStringList(u"Ollama output retrying: empty: false likelyTruncated: true primaryLimit: 100 "
                          u"retryLimit: 612 firstLength: 40"_s));
}

TEST(OllamaClientRetry, asksOnceMoreForAnEmptyAnswerAndMayStayEmpty) {
    ModelWorld world;
    world.answerLocally(u" "_s);
    world.answerLocally(QString());
    EXPECT_EQ(valueOf(world.client().generateNonEmpty(u"p"_s, 0.2, 100, 612)), QString());
    EXPECT_EQ(world.http.requests.size(), 2U);
}

TEST(OllamaClientRetry, readsTheSettingsAgain) {
    ModelWorld world;
    world.http.holding = true;
    const auto outcome = follow(world.client().generateNonEmpty(u"p"_s, 0.2, 100, 612));
    world.settings().selectedModel.set(u"llama3.1:8b"_s);
    world.answerLocally(QString());
    world.answerLocally(u"好"_s);
    world.http.release();
    world.http.release();
    EXPECT_EQ(outcome->value, u"好"_s);
    EXPECT_TRUE(world.http.requests[0].body.startsWith(R"({"model":"qwen3:8b")"));
    EXPECT_TRUE(world.http.requests[1].body.startsWith(R"({"model":"llama3.1:8b")"));
}

TEST(OllamaClientRetry, doesNotRetryAnErrorAndPassesOnThatOfTheRetry) {
    ModelWorld world;
    world.http.answer(500, {});
    EXPECT_TRUE(follow(world.client().generateNonEmpty(u"p"_s, 0.2, 100, 612))->failedWith<OllamaError>());
    EXPECT_EQ(world.http.requests.size(), 1U);
    world.answerLocally(QString());
    world.http.fail(UrlError::timedOut, u"late"_s);
    EXPECT_EQ(follow(world.client().generateNonEmpty(u"p"_s, 0.2, 100, 612))->errorDescription(), u"late"_s);
}

TEST(OllamaClientRepair, leavesAResultAlone) {
    ModelWorld world;
    EXPECT_EQ(valueOf(world.client().repairMetaInstructionLeakIfNeeded(u" 好 "_s, u"源"_s, u"p"_s, 0.2, 612)),
              u" 好 "_s);
    EXPECT_TRUE(world.http.requests.empty());
}

TEST(OllamaClientRepair, asksOnceMoreForALeak) {
    const LogCapture log;
    ModelWorld world;
    world.answerLocally(u" 干净 "_s);
    EXPECT_EQ(valueOf(world.client().repairMetaInstructionLeakIfNeeded(u"以下文本：\nx"_s, u"源文"_s,
                                                                       u"提示"_s, 0.3, 700)),
              u"干净"_s);
    EXPECT_EQ(world.localPrompt(0),
              u"提示\n\n"
              u"上一次输出错误地复述了任务说明或 Agent 规则，而不是最终正文。\n\n"
              u"原始待处理文本：\n\"\"\"\n源文\n\"\"\"\n\n"
              u"错误输出：\n\"\"\"\n以下文本：\nx\n\"\"\"\n\n"
              u"现在重新执行：只输出最终处理后的正文。不要解释，不要输出“请你”“为以下文本”"
              u"“为以下提示词”“下面这段”“提示词”等元指令。"_s);
    EXPECT_EQ(world.http.requests[0].timeout, 45);
    EXPECT_TRUE(world.lastBody().contains(R"("temperature":0.3,"num_predict":700)"));
    EXPECT_EQ(
        log.lines(),
        (QStringList{u"Agent output guard repairing meta-instruction leak: sourceLength: 2 outputPreview: "
                     u"以下文本： x"_s,
                     u"Agent output guard repaired output: repairedLength: 2 repairedPreview: 干净"_s}));
}

TEST(OllamaClientRepair, blocksASecondLeakAndAnEmptyRepair) {
    for (const QString& second : {u"待处理文本"_s, u" "_s}) {
        const LogCapture log;
        ModelWorld world;
        world.answerLocally(second);
        const auto outcome = follow(
            world.client().repairMetaInstructionLeakIfNeeded(u"以下文本"_s, u"源"_s, u"p"_s, 0.2, 612));
        EXPECT_EQ(outcome->errorDescription(),
                  u"模型输出了任务说明而不是处理结果，已阻止自动写回。请重试或切换模型。"_s);
        EXPECT_TRUE(
            log.lines().last().startsWith(u"Agent output guard rejected repaired output: repairedLength: "));
        EXPECT_EQ(world.http.requests.size(), 1U) << "one repair, no more";
    }
}

TEST(OllamaClientService, isThereWhenItsTagsAnswer) {
    ModelWorld world;
    world.use(ModelProvider::openAI);
    world.settings().ollamaEndpoint.set(u"http://box:1"_s);
    world.http.answer(200, {});
    world.http.answer(299, {});
    world.http.answer(300, {});
    world.http.fail(UrlError::cannotConnectToHost, u"no"_s);
    EXPECT_TRUE(valueOf(world.client().isAvailable()));
    EXPECT_TRUE(valueOf(world.client().isAvailable()));
    EXPECT_FALSE(valueOf(world.client().isAvailable()));
    EXPECT_FALSE(valueOf(world.client().isAvailable()));
    EXPECT_EQ(world.http.requests[0].url.toString(), u"http://box:1/api/tags"_s);
    EXPECT_EQ(world.http.requests[0].method, QByteArray("GET"));
    EXPECT_EQ(world.http.requests[0].timeout, 3);
    EXPECT_TRUE(world.http.requests[0].body.isEmpty());
}

TEST(OllamaClientService, listsTheNamesOfItsModels) {
    ModelWorld world;
    const auto listed = [&](int status, const QByteArray& body) {
        world.http.answer(status, body);
        return valueOf(world.client().listModels()).join(u',');
    };
    EXPECT_EQ(listed(200, R"({"models":[{"name":"b"},{"size":1},{"name":2},{"name":"a"}]})"), u"b,a"_s);
    EXPECT_EQ(listed(404, R"({"models":[{"name":"b"}]})"), QString());
    EXPECT_EQ(listed(200, R"({"models":["b"]})"), QString());
    EXPECT_EQ(listed(200, "[]"), QString());
    EXPECT_EQ(listed(200, "no json"), QString());
    world.http.fail(UrlError::timedOut, u"late"_s);
    EXPECT_TRUE(valueOf(world.client().listModels()).isEmpty());
}

TEST(OllamaClientWarmup, isSkippedWithoutTheLocalService) {
    const LogCapture log;
    ModelWorld world;
    world.http.answer(500, {});
    valueOf(world.client().warmup());
    EXPECT_EQ(world.http.requests.size(), 1U);
    EXPECT_EQ(log.lines(), QStringList(u"Ollama warmup skipped: service unavailable"_s));
}

TEST(OllamaClientWarmup, sendsAShortPrompt) {
    const LogCapture log;
    ModelWorld world;
    world.http.answer(200, {});
    world.answerLocally(u"OK."_s);
    valueOf(world.client().warmup());
    EXPECT_EQ(world.http.requests[1].timeout, 20);
    EXPECT_EQ(world.lastBody(),
              QByteArray(R"({"model":"qwen3:8b","prompt":"Reply OK.","stream":false,"keep_alive":"10m",)"
                         R"("options":{"temperature":0,"num_predict":8},"think":false})"));
    EXPECT_EQ(log.lines(), QStringList(u"Ollama warmup completed"_s));
}

TEST(OllamaClientWarmup, goesToTheActiveCloudProviderOnceTheLocalServiceIsUp) {
    ModelWorld world;
    world.use(ModelProvider::openAI);
    world.http.answer(200, {});
    world.http.answer(200, openAIAnswer);
    valueOf(world.client().warmup());
    EXPECT_EQ(world.http.requests[1].url.toString(), u"https://api.openai.com/v1/chat/completions"_s);
}

TEST(OllamaClientWarmup, logsAFailureCutToEightyCharacters) {
    const LogCapture log;
    ModelWorld world;
    for (const int length : {80, 81}) {
        world.http.answer(200, {});
        world.http.fail(UrlError::timedOut, QString(length, u'x'));
        valueOf(world.client().warmup());
    }
    EXPECT_EQ(log.lines(), (QStringList{u"Ollama warmup failed: "_s + QString(80, u'x'),
                                        u"Ollama warmup failed: "_s + QString(80, u'x') + u"..."_s}));
}

}  // namespace
}  // namespace veltrin
