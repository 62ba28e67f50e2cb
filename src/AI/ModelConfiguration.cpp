#include "AI/ModelConfiguration.h"

#include "Foundation/Characters.h"
#include "Foundation/Text.h"

#include <array>
#include <cstddef>

namespace veltrin {
namespace {

struct ProviderRow {
    const char* selectionID;
    const char* displayName;
    const char* shortName;
    const char* defaultEndpoint;
    std::array<const char*, 4> defaultModels;  ///< the rest is null
};

/// In the order of ModelProvider.
constexpr ProviderRow catalogue[] = {
    {"ollama",
     "Ollama 本地",
     "Local",
     "http://127.0.0.1:11434",
     {"qwen3:8b", "qwen2.5:7b", "llama3.1:8b", "gemma3:4b"}},
    {"openAI", "OpenAI", "OpenAI", "https://api.openai.com/v1", {"gpt-4o-mini", "gpt-4o", "gpt-4.1-mini"}},
    {"anthropic",
     "Anthropic",
     "Claude",
     "https://api.anthropic.com/v1/messages",
     {"claude-3-5-haiku-latest", "claude-3-5-sonnet-latest"}},
    {"google",
     "Google Gemini",
     "Gemini",
     "https://generativelanguage.googleapis.com/v1beta",
     {"gemini-1.5-flash", "gemini-1.5-pro"}},
    {"deepseek",
     "DeepSeek",
     "DeepSeek",
     "https://api.deepseek.com/v1",
     {"deepseek-chat", "deepseek-reasoner"}},
    {"qwen",
     "通义千问",
     "Qwen",
     "https://dashscope.aliyuncs.com/compatible-mode/v1",
     {"qwen-plus", "qwen-turbo", "qwen-max"}},
    {"moonshot",
     "月之暗面 Kimi",
     "Kimi",
     "https://api.moonshot.cn/v1",
     {"moonshot-v1-8k", "moonshot-v1-32k", "moonshot-v1-128k"}},
    {"zhipu",
     "智谱 GLM",
     "GLM",
     "https://open.bigmodel.cn/api/paas/v4",
     {"glm-4-flash", "glm-4-plus", "glm-4-air"}},
    {"siliconflow",
     "硅基流动",
     "Silicon",
     "https://api.siliconflow.cn/v1",
     {"Qwen/Qwen2.5-7B-Instruct", "deepseek-ai/DeepSeek-V3", "THUDM/glm-4-9b-chat"}},
    {"volcengine",
     "火山方舟 / 豆包",
     "Doubao",
     "https://ark.cn-beijing.volces.com/api/v3",
     {"doubao-seed-1-6-flash", "doubao-seed-1-6", "deepseek-v3"}},
    {"hunyuan",
     "腾讯混元",
     "Hunyuan",
     "https://api.hunyuan.cloud.tencent.com/v1",
     {"hunyuan-lite", "hunyuan-standard", "hunyuan-turbo"}},
    {"qianfan",
     "百度千帆",
     "Qianfan",
     "https://qianfan.baidubce.com/v2",
     {"ernie-4.0-turbo-8k", "ernie-speed-8k", "deepseek-v3"}},
    // The user is expected to overwrite this one.
    {"custom", "自定义兼容 API", "Custom", "https://api.example.com/v1", {"your-model-id"}},
};
static_assert(std::size(catalogue) == caseCount<ModelProvider>);

const ProviderRow& row(ModelProvider provider) {
    return catalogue[static_cast<std::size_t>(provider)];
}

QString orIfBlank(const std::optional<QString>& text, const QString& fallback) {
    return text && !Text::isBlank(*text) ? *text : fallback;
}

const QString chatCompletionsPath = QStringLiteral("/chat/completions");

}  // namespace

QString label(ModelAPIStyle style) {
    switch (style) {
        case ModelAPIStyle::ollama:
            return QStringLiteral("Ollama Generate");
        case ModelAPIStyle::openAICompatible:
            return QStringLiteral("OpenAI Chat Completions（兼容）");
        case ModelAPIStyle::anthropicMessages:
            return QStringLiteral("Anthropic Messages（原生）");
        case ModelAPIStyle::googleGenerateContent:
            break;
    }
    return QStringLiteral("Google Generate Content");
}

QString label(ModelAuthField field) {
    switch (field) {
        case ModelAuthField::authorizationBearer:
            return QStringLiteral("Authorization: Bearer（默认）");
        case ModelAuthField::xAPIKey:
            return QStringLiteral("x-api-key");
        case ModelAuthField::anthropicAuthToken:
            return QStringLiteral("ANTHROPIC_AUTH_TOKEN");
        case ModelAuthField::queryKey:
            return QStringLiteral("URL Query: key");
        case ModelAuthField::customHeader:
            break;
    }
    return QStringLiteral("自定义 Header");
}

namespace ModelProviders {

QString id(ModelProvider provider) {
    return rawValue(provider);
}

QString selectionID(ModelProvider provider) {
    return QString::fromUtf8(row(provider).selectionID);
}

QString displayName(ModelProvider provider) {
    return QString::fromUtf8(row(provider).displayName);
}

QString shortName(ModelProvider provider) {
    return QString::fromUtf8(row(provider).shortName);
}

QString defaultEndpoint(ModelProvider provider) {
    return QString::fromUtf8(row(provider).defaultEndpoint);
}

QStringList defaultModels(ModelProvider provider) {
    QStringList models;
    for (const char* model : row(provider).defaultModels) {
        if (model != nullptr) models << QString::fromUtf8(model);
    }
    return models;
}

QString defaultModel(ModelProvider provider) {
    return defaultModels(provider).value(0);
}

std::vector<ModelProvider> cloudCases() {
    const auto cases = allCases<ModelProvider>();
    return {cases.begin() + 1, cases.end()};
}

QUrl chatCompletionsURL(ModelProvider provider, const QString& endpoint) {
    QString text = Text::trimmed(endpoint);
    if (text.isEmpty()) text = defaultEndpoint(provider);
    if (text.endsWith(chatCompletionsPath)) {
        QUrl url(text, QUrl::StrictMode);
        if (url.isValid()) return url;
    }
    QUrl url(Text::trimmed(text, u"/") + chatCompletionsPath, QUrl::StrictMode);
    if (url.isValid()) return url;
    return QUrl(defaultEndpoint(provider) + chatCompletionsPath);
}

}  // namespace ModelProviders

QString ModelProviderConfiguration::key(const char* prefix) const {
    return QString::fromUtf8(prefix) + ModelProviders::id(provider_);
}

QString ModelProviderConfiguration::storedEndpoint() const {
    return orIfBlank(preferences_.string(key("model_endpoint_")), ModelProviders::defaultEndpoint(provider_));
}

QString ModelProviderConfiguration::storedModel() const {
    return orIfBlank(preferences_.string(key("model_name_")), ModelProviders::defaultModel(provider_));
}

QString ModelProviderConfiguration::storedAPIKey() const {
    return preferences_.string(key("model_api_key_")).value_or(QString());
}

ModelAPIStyle ModelProviderConfiguration::storedAPIStyle() const {
    const auto stored =
        fromRawValue<ModelAPIStyle>(preferences_.string(key("model_api_style_")).value_or(QString()));
    if (stored) return *stored;
    // The first four providers have a style of their own, at the same place in its list.
    const auto index = static_cast<std::size_t>(provider_);
    return index < caseCount<ModelAPIStyle> ? static_cast<ModelAPIStyle>(index)
                                            : ModelAPIStyle::openAICompatible;
}

ModelAuthField ModelProviderConfiguration::storedAuthField() const {
    const auto stored =
        fromRawValue<ModelAuthField>(preferences_.string(key("model_auth_field_")).value_or(QString()));
    if (stored) return *stored;
    switch (provider_) {
        case ModelProvider::google:
            return ModelAuthField::queryKey;
        case ModelProvider::anthropic:
            return ModelAuthField::xAPIKey;
        default:
            return ModelAuthField::authorizationBearer;
    }
}

void ModelProviderConfiguration::saveConfiguration(const QString& model, const QString& endpoint,
                                                   const std::optional<QString>& apiKey) {
    preferences_.set(key("model_name_"),
                     orIfBlank(Text::trimmed(model), ModelProviders::defaultModel(provider_)));
    preferences_.set(key("model_endpoint_"),
                     orIfBlank(Text::trimmed(endpoint), ModelProviders::defaultEndpoint(provider_)));
    if (apiKey) preferences_.set(key("model_api_key_"), Text::trimmed(*apiKey));
}

void ModelProviderConfiguration::saveRequestConfiguration(ModelAPIStyle apiStyle, ModelAuthField authField) {
    preferences_.set(key("model_api_style_"), rawValue(apiStyle));
    preferences_.set(key("model_auth_field_"), rawValue(authField));
}

}  // namespace veltrin
