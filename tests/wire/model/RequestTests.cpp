#include "wire/model/WireWorld.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class ModelRequest : public WireWorld {};

const std::vector<ModelProvider> chatProviders = {ModelProvider::openAI,       ModelProvider::deepseek,
                                                  ModelProvider::qwen,         ModelProvider::moonshot,
                                                  ModelProvider::zhipu,        ModelProvider::siliconFlow,
                                                  ModelProvider::volcengine,   ModelProvider::tencentHunyuan,
                                                  ModelProvider::baiduQianfan, ModelProvider::custom};

TEST_F(ModelRequest, theLocalRequestToTheByte) {
    use(ModelProvider::ollama, u"llama3.1:8b"_s);
    ASSERT_TRUE(generate(u"说 \"hi\"\n\t\\ 你好 😀"_s, 300)->value);
    const ServiceRequest request = lastRequest();
    EXPECT_EQ(request.method, QByteArray("POST"));
    EXPECT_EQ(request.target, QByteArray("/api/generate"));
    EXPECT_EQ(request.header("Content-Type"), QByteArray("application/json"));
    EXPECT_EQ(request.headerCount("Content-Type"), 1);
    EXPECT_EQ(request.headerCount("Authorization"), 0);
    EXPECT_EQ(request.headerCount("x-api-key"), 0);
    EXPECT_EQ(request.body,
              QByteArray(R"({"model":"llama3.1:8b","prompt":"说 \"hi\"\n\t\\ 你好 😀","stream":false,)"
                         R"("keep_alive":"10m","options":{"temperature":0.2,"num_predict":300}})"));
}

TEST_F(ModelRequest, theLocalRequestWithoutALimitHasATemperatureStill) {
    use(ModelProvider::ollama, u"llama3.1:8b"_s);
    ASSERT_TRUE(generate(u"x"_s, std::nullopt)->value);
    EXPECT_EQ(lastRequest().body, QByteArray(R"({"model":"llama3.1:8b","prompt":"x","stream":false,)"
                                             R"("keep_alive":"10m","options":{"temperature":0.2}})"));
}

TEST_F(ModelRequest, aLocalQwenIsToldWhetherToThink) {
    use(ModelProvider::ollama, u"Qwen3:8b"_s);
    ASSERT_TRUE(generate(u"x"_s, 220)->value);
    EXPECT_EQ(lastRequest().body,
              QByteArray(R"({"model":"Qwen3:8b","prompt":"x","stream":false,"keep_alive":"10m",)"
                         R"("options":{"temperature":0.2,"num_predict":220},"think":false})"));
    ASSERT_TRUE(generate(u"x"_s, 221)->value);
    EXPECT_EQ(lastRequest().json->find(u"think")->toBool(), true);
}

TEST_F(ModelRequest, theLocalAddressKeepsThePathItWasGiven) {
    use(ModelProvider::ollama);
    settings.ollamaEndpoint.set(service.url(u"/behind/proxy/"_s));
    ASSERT_TRUE(generate()->value);
    EXPECT_EQ(lastRequest().target, QByteArray("/behind/proxy/api/generate"));
}

TEST_F(ModelRequest, everyChatProviderGetsItsPathKeyAndBody) {
    for (const ModelProvider provider : chatProviders) {
        const std::string name = ModelProviders::id(provider).toStdString();
        use(provider, u"some-model"_s);
        ASSERT_TRUE(generate(u"你好"_s, 300)->value) << name;
        const ServiceRequest request = lastRequest();
        EXPECT_EQ(request.method, QByteArray("POST")) << name;
        EXPECT_EQ(request.target, (basePath(provider) + u"/chat/completions"_s).toUtf8()) << name;
        EXPECT_EQ(request.header("Content-Type"), QByteArray("application/json")) << name;
        EXPECT_EQ(request.header("Authorization"), "Bearer " + apiKey.toUtf8()) << name;
        EXPECT_EQ(request.headerCount("x-api-key"), 0) << name;
        const bool newer = provider == ModelProvider::openAI || provider == ModelProvider::moonshot;
        QByteArray expected =
            R"({"model":"some-model","messages":[{"role":"user","content":"你好"}],"temperature":0.2,")";
        expected += newer ? "max_completion_tokens" : "max_tokens";
        expected += R"(":300)";
        if (provider == ModelProvider::qwen) expected += R"(,"enable_thinking":true)";
        EXPECT_EQ(request.body, expected + "}") << name;
    }
}

TEST_F(ModelRequest, aChatRequestWithoutALimitNamesNone) {
    for (const ModelProvider provider : chatProviders) {
        use(provider, u"some-model"_s);
        ASSERT_TRUE(generate(u"x"_s, std::nullopt)->value);
        const Json body = *lastRequest().json;
        EXPECT_EQ(body.find(u"max_tokens"), nullptr);
        EXPECT_EQ(body.find(u"max_completion_tokens"), nullptr);
    }
}

TEST_F(ModelRequest, qwenIsToldNotToThink) {
    settings.modelThinkingMode.set(ModelThinkingMode::alwaysOff);
    use(ModelProvider::qwen);
    ASSERT_TRUE(generate(u"分析"_s)->value);
    const Json body = *lastRequest().json;
    ASSERT_NE(body.find(u"enable_thinking"), nullptr);
    EXPECT_EQ(body.find(u"enable_thinking")->toBool(), false);
}

TEST_F(ModelRequest, aHostedQwenGetsTheCompatibleSwitchAndOthersNone) {
    use(ModelProvider::siliconFlow, u"Qwen/Qwen3-8B"_s);
    ASSERT_TRUE(generate(u"x"_s)->value);
    EXPECT_EQ(lastRequest().json->find(u"think")->toBool(), false);
    use(ModelProvider::volcengine, u"deepseek-v3"_s);
    ASSERT_TRUE(generate(u"x"_s)->value);
    EXPECT_EQ(lastRequest().json->find(u"think"), nullptr);
}

TEST_F(ModelRequest, deepseekThinksByAnotherModel) {
    settings.modelThinkingMode.set(ModelThinkingMode::smart);
    use(ModelProvider::deepseek, u"deepseek-chat"_s);
    ASSERT_TRUE(generate(u"分析这段话"_s)->value);
    EXPECT_EQ(lastRequest().json->find(u"model")->toString(), u"deepseek-reasoner"_s);
    ASSERT_TRUE(generate(u"翻译"_s)->value);
    EXPECT_EQ(lastRequest().json->find(u"model")->toString(), u"deepseek-chat"_s);
}

TEST_F(ModelRequest, theKeyTravelsAsTheAuthFieldSays) {
    struct Row {
        ModelAuthField field;
        QByteArray authorization;
        QByteArray xApiKey;
    };
    const QByteArray key = apiKey.toUtf8();
    const Row rows[] = {{ModelAuthField::authorizationBearer, "Bearer " + key, {}},
                        {ModelAuthField::xAPIKey, {}, key},
                        {ModelAuthField::anthropicAuthToken, {}, key},
                        {ModelAuthField::queryKey, {}, {}},
                        {ModelAuthField::customHeader, key, {}}};
    for (const auto& [provider, style] :
         {std::pair(ModelProvider::custom, ModelAPIStyle::openAICompatible),
          std::pair(ModelProvider::anthropic, ModelAPIStyle::anthropicMessages)}) {
        for (const Row& row : rows) {
            settings.saveActiveModelConfiguration(provider, u"m"_s, service.url(basePath(provider)),
                                                  u" "_s + apiKey + u"\n"_s, style, row.field);
            ASSERT_TRUE(generate()->value);
            const ServiceRequest request = lastRequest();
            EXPECT_EQ(request.header("Authorization"), row.authorization);
            EXPECT_EQ(request.header("x-api-key"), row.xApiKey);
            EXPECT_TRUE(request.query.isEmpty());
        }
    }
}

TEST_F(ModelRequest, theAnthropicRequestToTheByte) {
    use(ModelProvider::anthropic, u"claude-3-5-haiku-latest"_s);
    ASSERT_TRUE(generate(u"你好"_s, 300, 5, 0)->value);
    const ServiceRequest request = lastRequest();
    EXPECT_EQ(request.method, QByteArray("POST"));
    EXPECT_EQ(request.target, QByteArray("/v1/messages"));
    EXPECT_EQ(request.header("Content-Type"), QByteArray("application/json"));
    EXPECT_EQ(request.header("x-api-key"), apiKey.toUtf8());
    EXPECT_EQ(request.header("anthropic-version"), QByteArray("2023-06-01"));
    EXPECT_EQ(request.headerCount("Authorization"), 0);
    EXPECT_EQ(request.body,
              QByteArray(R"({"model":"claude-3-5-haiku-latest","max_tokens":300,"temperature":0,)"
                         R"("messages":[{"role":"user","content":"你好"}]})"));
    ASSERT_TRUE(generate(u"x"_s, std::nullopt)->value);
    EXPECT_EQ(lastRequest().json->find(u"max_tokens")->toInteger(), 512);
}

TEST_F(ModelRequest, theGoogleRequestToTheByte) {
    use(ModelProvider::google, u"gemini-1.5-flash"_s);
    ASSERT_TRUE(generate(u"你好"_s, 300)->value);
    const ServiceRequest request = lastRequest();
    EXPECT_EQ(request.method, QByteArray("POST"));
    EXPECT_EQ(request.path, QByteArray("/v1beta/models/gemini-1.5-flash:generateContent"));
    EXPECT_EQ(request.query, "key=" + apiKey.toUtf8());
    EXPECT_EQ(request.header("Content-Type"), QByteArray("application/json"));
    EXPECT_EQ(request.headerCount("Authorization"), 0);
    EXPECT_EQ(request.headerCount("x-api-key"), 0);
    EXPECT_EQ(request.body, QByteArray(R"({"contents":[{"parts":[{"text":"你好"}]}],)"
                                       R"("generationConfig":{"temperature":0.2,"maxOutputTokens":300}})"));
    ASSERT_TRUE(generate(u"x"_s, std::nullopt)->value);
    EXPECT_EQ(
        lastRequest().body,
        QByteArray(R"({"contents":[{"parts":[{"text":"x"}]}],"generationConfig":{"temperature":0.2}})"));
}

TEST_F(ModelRequest, googleReadsNoAuthSetting) {
    for (const ModelAuthField field : {ModelAuthField::authorizationBearer, ModelAuthField::xAPIKey}) {
        settings.saveActiveModelConfiguration(ModelProvider::google, u"m"_s, service.url(u"/v1beta///"_s),
                                              apiKey, ModelAPIStyle::googleGenerateContent, field);
        ASSERT_TRUE(generate()->value);
        EXPECT_EQ(lastRequest().target, "/v1beta/models/m:generateContent?key=" + apiKey.toUtf8());
        EXPECT_EQ(lastRequest().headerCount("Authorization"), 0);
        EXPECT_EQ(lastRequest().headerCount("x-api-key"), 0);
    }
}

TEST_F(ModelRequest, noCloudProviderIsAskedWithoutAKey) {
    for (const ModelProvider provider : ModelProviders::cloudCases()) {
        settings.saveActiveModelConfiguration(provider, {}, service.url(basePath(provider)), u" \n"_s);
        EXPECT_EQ(generate()->errorDescription(), ModelProviders::displayName(provider) + u" 缺少 API Key"_s);
    }
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(ModelRequest, aVeryLongPromptArrivesWhole) {
    const QString prompt = u"你好 long "_s.repeated(200000);
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        ASSERT_TRUE(generate(prompt, 100, 20)->value);
        EXPECT_EQ(lastRequest().prompt(), prompt);
    }
}

}  // namespace
}  // namespace veltrin
