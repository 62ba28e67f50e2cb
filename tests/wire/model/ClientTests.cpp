#include "AI/OllamaError.h"
#include "wire/model/WireWorld.h"

#include <QTcpServer>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
namespace answers = ServiceBehaviours;

class ModelClientOnTheWire : public WireWorld {
protected:
    std::shared_ptr<Outcome<QString>> generateNonEmpty(int primaryLimit = 100, int retryLimit = 612) {
        return finish(client().generateNonEmpty(u"原文"_s, 0.3, primaryLimit, retryLimit));
    }
    void useClosedPort() {
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
        settings.ollamaEndpoint.set(u"http://127.0.0.1:%1"_s.arg(server.serverPort()));
    }

    const QString fortyLetters = QString(40, u'x');
};

TEST_F(ModelClientOnTheWire, aTransportErrorPassesUntouched) {
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        EXPECT_EQ(urlCode(*generate(answers::reset())), UrlError::networkConnectionLost);
        EXPECT_EQ(urlCode(*generate(answers::notHttp())), UrlError::networkConnectionLost);
    }
    use(ModelProvider::ollama);
    useClosedPort();
    EXPECT_EQ(urlCode(*generate()), UrlError::cannotConnectToHost);
}

TEST_F(ModelClientOnTheWire, aTaskTimeoutHoldsExceptOnTheChatWire) {
    service.setDefault(answers::slow(2, answers::success(u"late"_s)));
    for (const ModelProvider provider :
         {ModelProvider::ollama, ModelProvider::anthropic, ModelProvider::google}) {
        use(provider);
        QElapsedTimer clock;
        clock.start();
        EXPECT_EQ(urlCode(*generate(u"x"_s, 100, 0.2)), UrlError::timedOut);
        EXPECT_LT(clock.elapsed(), 1900);
    }
    use(ModelProvider::zhipu);
    EXPECT_EQ(generate(u"x"_s, 100, 0.2)->value, u"late"_s)
        << "a short time-out is raised to 45 s on this wire";
}

TEST_F(ModelClientOnTheWire, acceptsAFinishedFirstAnswer) {
    use(ModelProvider::ollama);
    service.enqueue(answers::success(fortyLetters + u"。"_s));
    EXPECT_EQ(generateNonEmpty()->value, fortyLetters + u"。"_s);
    EXPECT_EQ(service.requests().size(), 1U);
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ModelClientOnTheWire, asksOnceMoreForAnAnswerThatLooksCutOff) {
    use(ModelProvider::ollama, u"llama3.1:8b"_s);
    service.enqueue(answers::cutOff(fortyLetters));
    service.enqueue(answers::success(u"still cut"_s));
    EXPECT_EQ(generateNonEmpty()->value, u"still cut"_s);
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].prompt(), u"原文"_s);
    EXPECT_EQ(
        requests[1].prompt(),
        u"原文\n\n上一次输出为空或疑似被截断。请不要解释，不要加引号，必须完整输出最终文本，直到句子自然结束。"_s);
    EXPECT_EQ(requests[1].json->find(u"options")->serialized(),
              QByteArray(R"({"temperature":0.3,"num_predict":612})"));
    EXPECT_EQ(log.lines(),
              QStringList{u"Ollama output retrying: empty: false likelyTruncated: true primaryLimit: 100 "
                          "retryLimit: 612 firstLength: 40"_s});
}

TEST_F(ModelClientOnTheWire, asksOnceMoreForAnEmptyAnswerOnEveryWireThatHasOne) {
    for (const ModelProvider provider : {ModelProvider::ollama, ModelProvider::openAI}) {
        use(provider);
        service.forget();
        service.enqueue(answers::empty());
        service.enqueue(answers::empty());
        EXPECT_EQ(generateNonEmpty()->value, QString());
        EXPECT_EQ(service.requests().size(), 2U);
    }
}

TEST_F(ModelClientOnTheWire, retriesNoErrorAndPassesOnThatOfTheRetry) {
    use(ModelProvider::openAI);
    service.enqueue(answers::error(500));
    EXPECT_TRUE(generateNonEmpty()->failedWith<OllamaError>());
    EXPECT_EQ(service.requests().size(), 1U);
    service.enqueue(answers::empty());
    service.enqueue(answers::error(429));
    EXPECT_TRUE(generateNonEmpty()->failedWith<OllamaError>());
    EXPECT_EQ(service.requests().size(), 3U);
}

TEST_F(ModelClientOnTheWire, blocksInstructionsThatComeTwice) {
    use(ModelProvider::ollama);
    service.setDefault(answers::leaking());
    const auto outcome = finish(client().repairMetaInstructionLeakIfNeeded(
        u"请你为以下文本做翻译"_s, u"你好"_s, u"翻译：你好"_s, 0.2, 300));
    EXPECT_EQ(outcome->errorDescription(),
              u"模型输出了任务说明而不是处理结果，已阻止自动写回。请重试或切换模型。"_s);
    EXPECT_EQ(service.requests().size(), 1U);
}

TEST_F(ModelClientOnTheWire, isAvailableWhenTheTagsAnswerWhicheverProviderIsActive) {
    use(ModelProvider::openAI);
    settings.ollamaEndpoint.set(service.url());
    const auto available = [&] { return finish(client().isAvailable())->value; };
    EXPECT_EQ(available(), true);
    EXPECT_EQ(lastRequest().method, QByteArray("GET"));
    EXPECT_EQ(lastRequest().target, QByteArray("/api/tags"));
    EXPECT_TRUE(lastRequest().body.isEmpty());
    EXPECT_EQ(lastRequest().headerCount("Authorization"), 0);
    service.enqueue(answers::plain(204, {}));
    EXPECT_EQ(available(), true);
    for (const int status : {302, 404, 500}) {
        service.enqueue(answers::plain(status, "x"));
        EXPECT_EQ(available(), false) << status;
    }
    service.setDefault(answers::closed());
    EXPECT_EQ(available(), false);
    useClosedPort();
    EXPECT_EQ(available(), false);
}

TEST_F(ModelClientOnTheWire, waitsThreeSecondsForTheTagsAndNoLonger) {
    use(ModelProvider::ollama);
    service.enqueue(answers::silent());
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(finish(client().isAvailable())->value, false);
    EXPECT_GE(clock.elapsed(), 2990);
    EXPECT_LT(clock.elapsed(), 4500);
}

TEST_F(ModelClientOnTheWire, listsTheModelsInTheirOrder) {
    use(ModelProvider::ollama);
    const auto listed = [&](ServiceBehaviour answer) {
        service.setDefault(std::move(answer));
        return finish(client().listModels())->value.value_or(QStringList{u"failed"_s});
    };
    EXPECT_EQ(listed(answers::models({u"qwen3:8b"_s, u"a:1"_s})), (QStringList{u"qwen3:8b"_s, u"a:1"_s}));
    EXPECT_EQ(listed(answers::plain(200, R"({"models":[{"name":"a"},{"size":1},{"name":"b"}]})")),
              (QStringList{u"a"_s, u"b"_s}));
    for (const auto& answer :
         {answers::plain(200, R"({"models":["a"]})"), answers::error(500), answers::garbage(),
          answers::plain(200, "[]"), answers::closed(), answers::models({})})
        EXPECT_TRUE(listed(answer).isEmpty());
}

TEST_F(ModelClientOnTheWire, warmsTheModelUp) {
    use(ModelProvider::ollama, u"llama3.1:8b"_s);
    finish(client().warmup());
    EXPECT_EQ(lastRequest().body,
              QByteArray(R"({"model":"llama3.1:8b","prompt":"Reply OK.","stream":false,)"
                         R"("keep_alive":"10m","options":{"temperature":0,"num_predict":8}})"));
    EXPECT_EQ(log.lines(), QStringList{u"Ollama warmup completed"_s});
}

TEST_F(ModelClientOnTheWire, warmsUpTheCloudProviderWhenTheLocalServiceIsUp) {
    use(ModelProvider::anthropic);
    settings.ollamaEndpoint.set(service.url());
    finish(client().warmup());
    EXPECT_EQ(lastRequest().wire, ServiceWire::anthropic);
    EXPECT_EQ(lastRequest().prompt(), u"Reply OK."_s);
}

TEST_F(ModelClientOnTheWire, skipsTheWarmupWithoutTheLocalService) {
    use(ModelProvider::openAI);
    useClosedPort();
    finish(client().warmup());
    EXPECT_TRUE(service.requests().empty());
    EXPECT_EQ(log.lines(), QStringList{u"Ollama warmup skipped: service unavailable"_s});
}

TEST_F(ModelClientOnTheWire, logsAWarmupThatFails) {
    use(ModelProvider::openAI);
    settings.ollamaEndpoint.set(service.url());
    service.enqueue(answers::models({}));
    service.enqueue(answers::plain(400, QByteArray(300, 'y'), "text/plain"));
    finish(client().warmup());
    const QString description =
        u"模型服务参数错误（400），请检查模型名称、API 格式和 token 参数。"_s + QString(120, u'y');
    EXPECT_EQ(log.lines(), QStringList{u"Ollama warmup failed: "_s + description.left(80) + u"..."_s});
}

TEST_F(ModelClientOnTheWire, aCallKeepsToTheProviderItBeganWith) {
    use(ModelProvider::ollama);
    service.setDefault(answers::slow(0.2, answers::success(u"local"_s)));
    const auto outcome = follow(client().generate(u"x"_s, 0, 10, 5));
    use(ModelProvider::openAI);
    ASSERT_TRUE(runUntil([&] { return outcome->finished(); }));
    EXPECT_EQ(outcome->value, u"local"_s);
    EXPECT_EQ(lastRequest().wire, ServiceWire::localGenerate);
}

TEST_F(ModelClientOnTheWire, severalCallsRunAtOnceEachWithItsAnswer) {
    use(ModelProvider::ollama);
    service.setDefault(answers::slow(
        1.5,
        answers::dictionary({{u"一"_s, u"one"_s}, {u"二"_s, u"two"_s}, {u"三"_s, u"three"_s}}, u"none"_s)));
    QElapsedTimer clock;
    clock.start();
    const auto one = follow(client().generate(u"一"_s, 0, 10, 5));
    const auto two = follow(client().generate(u"二"_s, 0, 10, 5));
    const auto three = follow(client().generate(u"三"_s, 0, 10, 5));
    ASSERT_TRUE(runUntil([&] { return one->finished() && two->finished() && three->finished(); }));
    EXPECT_LT(clock.elapsed(), 4000) << "one after the other takes four and a half seconds";
    EXPECT_EQ(one->value, u"one"_s);
    EXPECT_EQ(two->value, u"two"_s);
    EXPECT_EQ(three->value, u"three"_s);
}

}  // namespace
}  // namespace veltrin
