#include "AI/OllamaError.h"
#include "AI/Wires/ModelWire.h"
#include "support/Slowdown.h"
#include "support/fake/LogCapture.h"
#include "support/fake/ModelWorld.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <random>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

/// What cleaning means, word by word, at any cost.
QString naivelyCleaned(QString text) {
    for (;;) {
        const qsizetype open = text.indexOf(u"<think>");
        if (open < 0) break;
        const qsizetype close = text.indexOf(u"</think>", open + 7);
        if (close < 0) break;
        text.remove(open, close + 8 - open);
    }
    return text.trimmed();
}

ModelTarget target(ModelProvider provider, const QString& model = u"m"_s) {
    ModelTarget target;
    target.provider = provider;
    target.thinkingMode = ModelThinkingMode::alwaysOff;
    target.model = model;
    target.endpoint = ModelProviders::defaultEndpoint(provider);
    target.apiKey = u"sk-0123456789abcdef"_s;
    return target;
}

GenerationRequest request(const QString& prompt = u"你好"_s, std::optional<int> limit = 300,
                          double timeout = 15) {
    GenerationRequest request;
    request.prompt = prompt;
    request.temperature = 0.2;
    request.numPredict = limit;
    request.timeout = timeout;
    return request;
}

HttpResponse answer(int status, const QByteArray& body) {
    HttpResponse response;
    response.status = status;
    response.body = body;
    return response;
}

QString parsed(const ModelWire& wire, const QByteArray& body, int status = 200) {
    return wire.parseAnswer(target(ModelProvider::openAI), request(), answer(status, body));
}

OllamaError::Kind failure(const ModelWire& wire, const QByteArray& body, int status = 200) {
    try {
        parsed(wire, body, status);
    } catch (const OllamaError& error) {
        return error.kind();
    }
    ADD_FAILURE() << "no error for " << body.constData();
    return OllamaError::Kind::unusableTranslation;
}

constexpr auto invalidResponse = OllamaError::Kind::invalidResponse;

TEST(Wire, removesClosedThinkBlocksAndTrims) {
    EXPECT_EQ(Wire::cleaned(u"<think>a</think>b<think>c</think>d"_s), u"bd"_s);
    EXPECT_EQ(Wire::cleaned(u"<think>a"_s), u"<think>a"_s);
    EXPECT_EQ(Wire::cleaned(u" x "_s), u"x"_s);
    EXPECT_EQ(Wire::cleaned(u"</think>a<think>b"_s), u"</think>a<think>b"_s);
    EXPECT_EQ(Wire::cleaned(u"<THINK>a</THINK>"_s), u"<THINK>a</THINK>"_s);
    EXPECT_EQ(Wire::cleaned(u"<th<think>x</think>ink>y</think>z"_s), u"z"_s)
        << "a mark joined by a removal counts";
    EXPECT_EQ(Wire::cleaned(u"<think>\n\n</think>\n"_s), QString());
}

TEST(Wire, cleansLikeTheStepByStepRule) {
    std::mt19937 random(7);
    const QStringList pieces{u"<think>"_s, u"</think>"_s, u"<thi"_s, u"nk>"_s,
                             u"</th"_s,    u"ink>"_s,     u"字"_s,   u" "_s};
    for (int round = 0; round < 20000; ++round) {
        QString text;
        for (int i = static_cast<int>(random() % 12); i > 0; --i)
            text += pieces.at(static_cast<qsizetype>(random() % 8));
        ASSERT_EQ(Wire::cleaned(text), naivelyCleaned(text)) << qPrintable(text);
    }
}

TEST(Wire, cleansALongAnswerInOnePass) {
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(Wire::cleaned(u"<think>x</think>字"_s.repeated(100000)).size(), 100000);
    EXPECT_EQ(Wire::cleaned(u"<think>"_s.repeated(100000)).size(), 700000);
    EXPECT_LT(timer.elapsed(), 3000);
}

TEST(Wire, previewsABodyOnOneLineOfAtMost120Characters) {
    EXPECT_EQ(Wire::bodyPreview(" a\n\tb "), u"a  b"_s);
    EXPECT_EQ(Wire::bodyPreview(QByteArray(120, 'x')), QString(120, u'x'));
    EXPECT_EQ(Wire::bodyPreview(QByteArray(121, 'x')), QString(120, u'x') + u"..."_s);
    EXPECT_EQ(Wire::bodyPreview("ok \xff\xfe"), QString());
    EXPECT_EQ(Wire::bodyPreview("cut \xe4\xbd"), QString());
}

TEST(Wire, blotsOutAKeyThatABodyEchoes) {
    EXPECT_EQ(Wire::bodyPreview("bad key sk-0123456789abcdef!", u"sk-0123456789abcdef"_s), u"bad key ***!"_s);
    EXPECT_EQ(Wire::bodyPreview("bad key", u"key"_s), u"bad key"_s) << "too short to be a key";
}

TEST(OllamaWire, writesItsRequest) {
    const HttpRequest http = ollamaWire.makeRequest(target(ModelProvider::ollama, u"qwen3:8b"_s), request());
    EXPECT_EQ(http.url.toString(), u"http://127.0.0.1:11434/api/generate"_s);
    EXPECT_EQ(http.method, QByteArray("POST"));
    EXPECT_EQ(header(http, "Content-Type"), QByteArray("application/json"));
    EXPECT_EQ(http.headers.size(), 1U);
    EXPECT_EQ(http.timeout, 15);
    EXPECT_EQ(http.body,
              QByteArray(R"({"model":"qwen3:8b","prompt":"你好","stream":false,"keep_alive":"10m",)"
                         R"("options":{"temperature":0.2,"num_predict":300},"think":false})"));
}

TEST(OllamaWire, leavesOutWhatIsNotGiven) {
    auto plain = request(u"x"_s, std::nullopt);
    plain.temperature = 0;
    const HttpRequest http = ollamaWire.makeRequest(target(ModelProvider::ollama, u"llama3.1:8b"_s), plain);
    EXPECT_EQ(http.body,
              QByteArray(R"({"model":"llama3.1:8b","prompt":"x","stream":false,"keep_alive":"10m",)"
                         R"("options":{"temperature":0}})"));
}

TEST(OllamaWire, readsTheResponseOnStatus200Only) {
    EXPECT_EQ(parsed(ollamaWire, R"({"response":"<think>a</think> b "})"), u"b"_s);
    EXPECT_EQ(failure(ollamaWire, R"({"response":"b"})", 204), OllamaError::Kind::badStatus);
    EXPECT_EQ(failure(ollamaWire, R"({"response":"b"})", 404), OllamaError::Kind::badStatus);
    EXPECT_EQ(failure(ollamaWire, {}, -1), OllamaError::Kind::badStatus);
    EXPECT_EQ(failure(ollamaWire, "{}"), invalidResponse);
    EXPECT_EQ(failure(ollamaWire, "[]"), invalidResponse);
    EXPECT_EQ(failure(ollamaWire, R"({"response":1})"), invalidResponse);
    EXPECT_THROW(parsed(ollamaWire, "not json"), Json::ParseError);
}

TEST(OllamaWire, logsAnAnswerThatIsEmptyAfterCleaning) {
    const LogCapture log;
    EXPECT_EQ(parsed(ollamaWire, R"({"response":"<think>a\nb</think>","thinking":"想想"})"), QString());
    EXPECT_EQ(log.lines(),
              QStringList(u"Ollama returned empty after cleanup: rawLength: 18 thinkingLength: 2 "
                          u"rawPreview: <think>a b</think>"_s));
}

TEST(OpenAICompatibleWire, writesItsRequest) {
    const HttpRequest http =
        openAICompatibleWire.makeRequest(target(ModelProvider::zhipu, u"glm-4-flash"_s), request());
    EXPECT_EQ(http.url.toString(), u"https://open.bigmodel.cn/api/paas/v4/chat/completions"_s);
    EXPECT_EQ(http.method, QByteArray("POST"));
    EXPECT_EQ(header(http, "Content-Type"), QByteArray("application/json"));
    EXPECT_EQ(header(http, "Authorization"), QByteArray("Bearer sk-0123456789abcdef"));
    EXPECT_EQ(http.body, QByteArray(R"({"model":"glm-4-flash","messages":[{"role":"user","content":"你好"}],)"
                                    R"("temperature":0.2,"max_tokens":300})"));
}

TEST(OpenAICompatibleWire, namesTheLimitAsEachServiceWantsIt) {
    for (const auto provider : ModelProviders::cloudCases()) {
        const QByteArray body = openAICompatibleWire.makeRequest(target(provider), request()).body;
        const bool completion = provider == ModelProvider::openAI || provider == ModelProvider::moonshot;
        EXPECT_EQ(body.contains(R"("max_completion_tokens":300)"), completion);
        EXPECT_EQ(body.contains(R"("max_tokens":300)"), !completion);
    }
    const QByteArray unlimited =
        openAICompatibleWire.makeRequest(target(ModelProvider::openAI), request(u"x"_s, std::nullopt)).body;
    EXPECT_FALSE(unlimited.contains("max_"));
}

TEST(OpenAICompatibleWire, sendsTheThinkingSwitchOfTheService) {
    const auto body = [](ModelProvider provider, const QString& model, ModelThinkingMode mode) {
        auto where = target(provider, model);
        where.thinkingMode = mode;
        return openAICompatibleWire.makeRequest(where, request()).body;
    };
    EXPECT_TRUE(body(ModelProvider::qwen, u"qwen-plus"_s, ModelThinkingMode::alwaysOff)
                    .endsWith(R"("max_tokens":300,"enable_thinking":false})"));
    EXPECT_TRUE(
        body(ModelProvider::volcengine, u"qwen"_s, ModelThinkingMode::alwaysOn).endsWith(R"("think":true})"));
    EXPECT_FALSE(
        body(ModelProvider::volcengine, u"deepseek-v3"_s, ModelThinkingMode::alwaysOn).contains("think"));
    EXPECT_TRUE(body(ModelProvider::deepseek, u"deepseek-chat"_s, ModelThinkingMode::alwaysOn)
                    .startsWith(R"({"model":"deepseek-reasoner")"));
    EXPECT_FALSE(
        body(ModelProvider::deepseek, u"deepseek-chat"_s, ModelThinkingMode::alwaysOn).contains("think"));
}

TEST(OpenAICompatibleWire, raisesAShortTimeoutToItsFloor) {
    const auto timeout = [](qsizetype characters, double asked) {
        return openAICompatibleWire
            .makeRequest(target(ModelProvider::openAI), request(QString(characters, u'字'), 300, asked))
            .timeout;
    };
    EXPECT_EQ(timeout(2000, 15), 45);
    EXPECT_EQ(timeout(2001, 15), 75);
    EXPECT_EQ(timeout(2000, 90), 90);
}

TEST(OpenAICompatibleWire, carriesTheKeyAsTheAuthFieldSays) {
    const auto sent = [](ModelAuthField field) {
        auto where = target(ModelProvider::custom);
        where.authField = field;
        return openAICompatibleWire.makeRequest(where, request());
    };
    EXPECT_EQ(header(sent(ModelAuthField::xAPIKey), "x-api-key"), QByteArray("sk-0123456789abcdef"));
    EXPECT_EQ(header(sent(ModelAuthField::anthropicAuthToken), "x-api-key"),
              QByteArray("sk-0123456789abcdef"));
    EXPECT_EQ(header(sent(ModelAuthField::customHeader), "Authorization"), QByteArray("sk-0123456789abcdef"));
    EXPECT_EQ(sent(ModelAuthField::queryKey).headers.size(), 1U);
    EXPECT_FALSE(sent(ModelAuthField::queryKey).url.hasQuery());
}

TEST(OpenAICompatibleWire, wantsAKeyFromEveryService) {
    for (const auto provider : ModelProviders::cloudCases()) {
        auto where = target(provider);
        where.apiKey.clear();
        try {
            openAICompatibleWire.makeRequest(where, request());
            ADD_FAILURE();
        } catch (const OllamaError& error) {
            EXPECT_EQ(error.errorDescription(), ModelProviders::displayName(provider) + u" 缺少 API Key"_s);
        }
    }
}

TEST(OpenAICompatibleWire, readsTheFirstChoice) {
    EXPECT_EQ(parsed(openAICompatibleWire,
                     R"({"choices":[{"message":{"content":" a "}},{"message":{"content":"b"}}]})"),
              u"a"_s);
    EXPECT_EQ(parsed(openAICompatibleWire, R"({"choices":[{"message":{}}]})", 299), QString());
    for (const char* body : {"[]", "{}", R"({"choices":{}})", R"({"choices":[]})", R"({"choices":[1]})",
                             R"({"choices":[{"message":{"content":"a"}},1]})", R"({"choices":[{}]})",
                             R"({"choices":[{"message":"a"}]})"}) {
        EXPECT_EQ(failure(openAICompatibleWire, body), invalidResponse);
    }
    EXPECT_THROW(parsed(openAICompatibleWire, "", 204), Json::ParseError)
        << "accepted, then it does not parse";
}

TEST(OpenAICompatibleWire, neverTakesTheReasoningForTheAnswer) {
    const LogCapture log;
    EXPECT_EQ(parsed(openAICompatibleWire,
                     R"({"choices":[{"message":{"content":null,"reasoning_content":"hmm"}}]})"),
              QString());
    EXPECT_EQ(
        log.lines(),
        QStringList(u"Model returned reasoning_content without final content: provider: OpenAI model: m"_s));
    parsed(openAICompatibleWire, R"({"choices":[{"message":{"content":"a","reasoning_content":"hmm"}}]})");
    parsed(openAICompatibleWire, R"({"choices":[{"message":{"content":"","reasoning_content":" "}}]})");
    EXPECT_EQ(log.lines().size(), 1);
}

TEST(CloudWires, passOnABadStatusWithAPreviewOfTheBody) {
    for (const ModelWire* wire : {&openAICompatibleWire, &anthropicWire, &googleWire}) {
        for (const int status : {-1, 199, 300, 401, 529}) {
            try {
                parsed(*wire, "{\n\t\"error\": \"no\"}", status);
                ADD_FAILURE();
            } catch (const OllamaError& error) {
                EXPECT_EQ(error.kind(), OllamaError::Kind::badStatusCode);
                EXPECT_EQ(error.code(), status);
                EXPECT_EQ(error.detail(), u"{  \"error\": \"no\"}"_s);
            }
        }
    }
}

TEST(AnthropicWire, writesItsRequest) {
    auto where = target(ModelProvider::anthropic, u"claude"_s);
    where.authField = ModelAuthField::xAPIKey;
    where.thinkingMode = ModelThinkingMode::alwaysOn;
    const HttpRequest http = anthropicWire.makeRequest(where, request());
    EXPECT_EQ(http.url.toString(), u"https://api.anthropic.com/v1/messages"_s);
    EXPECT_EQ(http.timeout, 15) << "no floor on this wire";
    EXPECT_EQ(http.headers,
              (std::vector<std::pair<QByteArray, QByteArray>>{{"Content-Type", "application/json"},
                                                              {"x-api-key", "sk-0123456789abcdef"},
                                                              {"anthropic-version", "2023-06-01"}}));
    EXPECT_EQ(http.body, QByteArray(R"({"model":"claude","max_tokens":300,"temperature":0.2,)"
                                    R"("messages":[{"role":"user","content":"你好"}]})"));
    EXPECT_TRUE(
        anthropicWire.makeRequest(where, request(u"x"_s, std::nullopt)).body.contains(R"("max_tokens":512)"));
}

TEST(AnthropicWire, takesTheEndpointWholeOrTheDefault) {
    auto where = target(ModelProvider::anthropic);
    where.endpoint = u"https://proxy.test/a?b=c"_s;
    EXPECT_EQ(anthropicWire.makeRequest(where, request()).url.toString(), u"https://proxy.test/a?b=c"_s);
    where.endpoint = u"https://proxy test"_s;
    EXPECT_EQ(anthropicWire.makeRequest(where, request()).url.toString(),
              u"https://api.anthropic.com/v1/messages"_s);
}

TEST(AnthropicWire, answersTheFirstTextBlockAlone) {
    EXPECT_EQ(
        parsed(anthropicWire,
               R"({"content":[{"type":"thinking","thinking":"x"},{"type":"redacted_thinking","data":"y"},)"
               R"({"type":"text","text":" a "},{"type":"text","text":"b"}]})"),
        u"a"_s);
    EXPECT_EQ(parsed(anthropicWire, R"({"content":[{"text":""},{"text":"b"}]})"), QString());
    for (const char* body : {"1", "{}", R"({"content":[]})", R"({"content":"a"})",
                             R"({"content":[{"text":1}]})", R"({"content":["a"]})"}) {
        EXPECT_EQ(failure(anthropicWire, body), invalidResponse);
    }
}

TEST(GoogleWire, writesItsRequestWithTheKeyInTheUrl) {
    auto where = target(ModelProvider::google, u"gemini-1.5-flash"_s);
    where.endpoint = u"/https://g.test/v1beta//"_s;
    where.authField = ModelAuthField::authorizationBearer;
    const HttpRequest http = googleWire.makeRequest(where, request());
    EXPECT_EQ(http.url.toString(),
              u"https://g.test/v1beta/models/gemini-1.5-flash:generateContent?key=sk-0123456789abcdef"_s);
    EXPECT_EQ(http.headers.size(), 1U) << "the auth field is not read here";
    EXPECT_EQ(http.timeout, 15);
    EXPECT_EQ(http.body, QByteArray(R"({"contents":[{"parts":[{"text":"你好"}]}],)"
                                    R"("generationConfig":{"temperature":0.2,"maxOutputTokens":300}})"));
    EXPECT_TRUE(googleWire.makeRequest(where, request(u"x"_s, std::nullopt))
                    .body.endsWith(R"("generationConfig":{"temperature":0.2}})"));
}

TEST(GoogleWire, usesTheBareDefaultForAnUnreadableUrl) {
    auto where = target(ModelProvider::google, u"two words"_s);
    EXPECT_EQ(googleWire.makeRequest(where, request()).url.toString(),
              u"https://generativelanguage.googleapis.com/v1beta"_s);
}

TEST(GoogleWire, answersTheFirstTextPartOfTheFirstCandidate) {
    EXPECT_EQ(
        parsed(googleWire, R"({"candidates":[{"content":{"parts":[{"x":1},{"text":"a"},{"text":"b"}]}}]})"),
        u"a"_s);
    for (const char* body :
         {"{}", R"({"candidates":[]})", R"({"candidates":[{"finishReason":"SAFETY"}]})",
          R"({"candidates":[{"content":{}}]})", R"({"candidates":[{"content":{"parts":["a"]}}]})",
          R"({"promptFeedback":{"blockReason":"OTHER"}})", R"({"candidates":[{"content":{"parts":[]}}]})"}) {
        EXPECT_EQ(failure(googleWire, body), invalidResponse);
    }
}

TEST(CloudWires, staySwiftOnAPromptOfAMillionCharacters) {
    QElapsedTimer timer;
    timer.start();
    const GenerationRequest large = request(u"长长的提示，"_s.repeated(160000 / slowdown) + u"\"\n"_s);
    for (const ModelWire* wire : {&ollamaWire, &openAICompatibleWire, &anthropicWire, &googleWire})
        EXPECT_GT(wire->makeRequest(target(ModelProvider::openAI), large).body.size(), 2800000 / slowdown);
    EXPECT_LT(timer.elapsed(), 5000);
}

}  // namespace
}  // namespace veltrin
