#include "AI/ModelConfiguration.h"
#include "support/fake/FakePreferences.h"

#include <gtest/gtest.h>

#include <array>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

ModelProviderConfiguration configuration(FakePreferences& preferences, ModelProvider provider) {
    return {preferences, provider};
}

TEST(ModelProviders, listsThirteenInTheirOrder) {
    QStringList ids;
    for (const auto provider : allCases<ModelProvider>())
        ids << ModelProviders::id(provider);
    EXPECT_EQ(ids.join(u' '),
              u"ollama openAI anthropic google deepseek qwen moonshot zhipu siliconFlow volcengine "
              u"tencentHunyuan baiduQianfan custom"_s);
    const auto cloud = ModelProviders::cloudCases();
    ASSERT_EQ(cloud.size(), 12U);
    EXPECT_EQ(cloud.front(), ModelProvider::openAI);
    EXPECT_EQ(cloud.back(), ModelProvider::custom);
}

TEST(ModelProviders, giveTheFirstRunPickerThreeNamesOfItsOwn) {
    for (const auto provider : allCases<ModelProvider>()) {
        const QString selection = ModelProviders::selectionID(provider);
        switch (provider) {
            case ModelProvider::siliconFlow:
                EXPECT_EQ(selection, u"siliconflow"_s);
                break;
            case ModelProvider::tencentHunyuan:
                EXPECT_EQ(selection, u"hunyuan"_s);
                break;
            case ModelProvider::baiduQianfan:
                EXPECT_EQ(selection, u"qianfan"_s);
                break;
            default:
                EXPECT_EQ(selection, ModelProviders::id(provider));
        }
    }
}

TEST(ModelProviders, haveNamesModelsAndAPublicEndpoint) {
    EXPECT_EQ(ModelProviders::displayName(ModelProvider::ollama), u"Ollama 本地"_s);
    EXPECT_EQ(ModelProviders::displayName(ModelProvider::volcengine), u"火山方舟 / 豆包"_s);
    EXPECT_EQ(ModelProviders::shortName(ModelProvider::anthropic), u"Claude"_s);
    EXPECT_EQ(ModelProviders::shortName(ModelProvider::volcengine), u"Doubao"_s);
    EXPECT_EQ(ModelProviders::defaultModels(ModelProvider::ollama).join(u' '),
              u"qwen3:8b qwen2.5:7b llama3.1:8b gemma3:4b"_s);
    EXPECT_EQ(ModelProviders::defaultModels(ModelProvider::google).join(u' '),
              u"gemini-1.5-flash gemini-1.5-pro"_s);
    EXPECT_EQ(ModelProviders::defaultModels(ModelProvider::custom), QStringList(u"your-model-id"_s));
    EXPECT_EQ(ModelProviders::defaultEndpoint(ModelProvider::ollama), u"http://127.0.0.1:11434"_s);
    const std::array<QString, caseCount<ModelProvider>> paths = {
        u""_s,    u"/v1"_s,          u"/v1/messages"_s, u"/v1beta"_s, u"/v1"_s, u"/compatible-mode/v1"_s,
        u"/v1"_s, u"/api/paas/v4"_s, u"/v1"_s,          u"/api/v3"_s, u"/v1"_s, u"/v2"_s,
        u"/v1"_s};
    for (const auto provider : allCases<ModelProvider>()) {
        const QUrl url(ModelProviders::defaultEndpoint(provider), QUrl::StrictMode);
        EXPECT_TRUE(url.isValid());
        EXPECT_EQ(url.scheme(), provider == ModelProvider::ollama ? u"http"_s : u"https"_s);
        EXPECT_EQ(url.path(), paths.at(static_cast<std::size_t>(provider)));
        EXPECT_FALSE(ModelProviders::defaultModel(provider).isEmpty());
    }
}

TEST(ModelProviderConfiguration, readsABlankValueAsTheDefaultAndAPaddedOneAsItIs) {
    FakePreferences preferences;
    preferences.values[u"model_endpoint_qwen"_s] = u" \n"_s;
    preferences.values[u"model_name_qwen"_s] = u" qwen-max "_s;
    const auto stored = configuration(preferences, ModelProvider::qwen);
    EXPECT_EQ(stored.storedEndpoint(), ModelProviders::defaultEndpoint(ModelProvider::qwen));
    EXPECT_EQ(stored.storedModel(), u" qwen-max "_s);
    EXPECT_EQ(stored.storedAPIKey(), QString());
    preferences.values[u"model_endpoint_qwen"_s] = u" https://a.b/v1 "_s;
    EXPECT_EQ(stored.storedEndpoint(), u" https://a.b/v1 "_s);
}

TEST(ModelProviderConfiguration, writesTrimmedValuesUnderTheProvidersId) {
    FakePreferences preferences;
    configuration(preferences, ModelProvider::siliconFlow).saveConfiguration(u" m "_s, u"\n"_s, u" k "_s);
    EXPECT_EQ(preferences.string(u"model_name_siliconFlow"_s), u"m"_s);
    EXPECT_EQ(preferences.string(u"model_endpoint_siliconFlow"_s), u"https://api.siliconflow.cn/v1"_s);
    EXPECT_EQ(preferences.string(u"model_api_key_siliconFlow"_s), u"k"_s);
    configuration(preferences, ModelProvider::custom).saveConfiguration(u" "_s, {}, std::nullopt);
    EXPECT_EQ(preferences.string(u"model_name_custom"_s), u"your-model-id"_s);
}

TEST(ModelProviderConfiguration, keepsTheKeyWhenNoneIsGivenAndClearsItWithAnEmptyOne) {
    FakePreferences preferences;
    auto stored = configuration(preferences, ModelProvider::openAI);
    stored.saveConfiguration({}, {}, u"secret"_s);
    stored.saveConfiguration({}, {}, std::nullopt);
    EXPECT_EQ(stored.storedAPIKey(), u"secret"_s);
    stored.saveConfiguration({}, {}, QString());
    EXPECT_EQ(preferences.string(u"model_api_key_openAI"_s), QString(u""_s));
}

TEST(ModelProviderConfiguration, fallsBackToTheProvidersStyleAndAuthField) {
    FakePreferences preferences;
    const auto style = [&](ModelProvider p) { return configuration(preferences, p).storedAPIStyle(); };
    const auto field = [&](ModelProvider p) { return configuration(preferences, p).storedAuthField(); };
    preferences.values[u"model_api_style_google"_s] = u"bogus"_s;
    preferences.values[u"model_auth_field_google"_s] = u"bogus"_s;
    EXPECT_EQ(style(ModelProvider::ollama), ModelAPIStyle::ollama);
    EXPECT_EQ(style(ModelProvider::openAI), ModelAPIStyle::openAICompatible);
    EXPECT_EQ(style(ModelProvider::anthropic), ModelAPIStyle::anthropicMessages);
    EXPECT_EQ(style(ModelProvider::google), ModelAPIStyle::googleGenerateContent);
    EXPECT_EQ(style(ModelProvider::deepseek), ModelAPIStyle::openAICompatible);
    EXPECT_EQ(style(ModelProvider::custom), ModelAPIStyle::openAICompatible);
    EXPECT_EQ(field(ModelProvider::google), ModelAuthField::queryKey);
    EXPECT_EQ(field(ModelProvider::anthropic), ModelAuthField::xAPIKey);
    EXPECT_EQ(field(ModelProvider::custom), ModelAuthField::authorizationBearer);
    configuration(preferences, ModelProvider::custom)
        .saveRequestConfiguration(ModelAPIStyle::anthropicMessages, ModelAuthField::customHeader);
    EXPECT_EQ(preferences.string(u"model_api_style_custom"_s), u"anthropicMessages"_s);
    EXPECT_EQ(style(ModelProvider::custom), ModelAPIStyle::anthropicMessages);
    EXPECT_EQ(field(ModelProvider::custom), ModelAuthField::customHeader);
}

TEST(ModelProviders, completeAnEndpointToItsChatUrl) {
    const auto url = [](const QString& endpoint) {
        return ModelProviders::chatCompletionsURL(ModelProvider::zhipu, endpoint).toString();
    };
    EXPECT_EQ(url(u" https://a.b/v1/chat/completions\n"_s), u"https://a.b/v1/chat/completions"_s);
    EXPECT_EQ(url(u"https://a.b/v1/"_s), u"https://a.b/v1/chat/completions"_s);
    EXPECT_EQ(url(u"//https://a.b/v1//"_s), u"https://a.b/v1/chat/completions"_s);
    EXPECT_EQ(url(u" "_s), u"https://open.bigmodel.cn/api/paas/v4/chat/completions"_s);
    EXPECT_EQ(url(u"https://a b/v1"_s), u"https://open.bigmodel.cn/api/paas/v4/chat/completions"_s);
    EXPECT_EQ(url(u"https://a.b:port/chat/completions"_s),
              u"https://open.bigmodel.cn/api/paas/v4/chat/completions"_s);
}

TEST(ModelConfiguration, labelsTheAdvancedSheet) {
    EXPECT_EQ(label(ModelAPIStyle::ollama), u"Ollama Generate"_s);
    EXPECT_EQ(label(ModelAPIStyle::openAICompatible), u"OpenAI Chat Completions（兼容）"_s);
    EXPECT_EQ(label(ModelAPIStyle::anthropicMessages), u"Anthropic Messages（原生）"_s);
    EXPECT_EQ(label(ModelAPIStyle::googleGenerateContent), u"Google Generate Content"_s);
    EXPECT_EQ(label(ModelAuthField::authorizationBearer), u"Authorization: Bearer（默认）"_s);
    EXPECT_EQ(label(ModelAuthField::xAPIKey), u"x-api-key"_s);
    EXPECT_EQ(label(ModelAuthField::anthropicAuthToken), u"ANTHROPIC_AUTH_TOKEN"_s);
    EXPECT_EQ(label(ModelAuthField::queryKey), u"URL Query: key"_s);
    EXPECT_EQ(label(ModelAuthField::customHeader), u"自定义 Header"_s);
}

}  // namespace
}  // namespace veltrin
