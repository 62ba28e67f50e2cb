#pragma once

#include "Foundation/RawValues.h"
#include "Platform/Preferences.h"

#include <QStringList>
#include <QUrl>

#include <optional>
#include <vector>

/// Where a language model can be reached: the catalogue of providers, how each is stored, and the thinking
/// policy. No network traffic happens here.
namespace veltrin {

enum class ModelProvider {
    ollama,
    openAI,
    anthropic,
    google,
    deepseek,
    qwen,
    moonshot,
    zhipu,
    siliconFlow,
    volcengine,
    tencentHunyuan,
    baiduQianfan,
    custom,
};
template <>
inline constexpr auto rawValuesOf<ModelProvider> = std::to_array<const char*>(
    {"ollama", "openAI", "anthropic", "google", "deepseek", "qwen", "moonshot", "zhipu", "siliconFlow",
     "volcengine", "tencentHunyuan", "baiduQianfan", "custom"});

enum class ModelAPIStyle { ollama, openAICompatible, anthropicMessages, googleGenerateContent };
template <>
inline constexpr auto rawValuesOf<ModelAPIStyle> =
    std::to_array<const char*>({"ollama", "openAICompatible", "anthropicMessages", "googleGenerateContent"});

enum class ModelAuthField { authorizationBearer, xAPIKey, anthropicAuthToken, queryKey, customHeader };
template <>
inline constexpr auto rawValuesOf<ModelAuthField> = std::to_array<const char*>(
    {"authorizationBearer", "xAPIKey", "anthropicAuthToken", "queryKey", "customHeader"});

enum class ModelThinkingMode { smart, alwaysOn, alwaysOff };
template <>
inline constexpr auto rawValuesOf<ModelThinkingMode> =
    std::to_array<const char*>({"smart", "alwaysOn", "alwaysOff"});

enum class ModelThinkingRequestKind {
    unsupported,
    ollamaThinkParameter,
    qwenEnableThinking,
    deepseekReasonerModel,
    genericThinkParameter,
};
template <>
inline constexpr auto rawValuesOf<ModelThinkingRequestKind> =
    std::to_array<const char*>({"unsupported", "ollamaThinkParameter", "qwenEnableThinking",
                                "deepseekReasonerModel", "genericThinkParameter"});

/// The labels of the advanced model sheet and the thinking sheet.
QString label(ModelAPIStyle style);
QString label(ModelAuthField field);
QString label(ModelThinkingRequestKind kind);
QString title(ModelThinkingMode mode);
QString explanation(ModelThinkingMode mode);

namespace ModelProviders {
QString id(ModelProvider provider);
/// The first-run picker's own name of a provider; settings keys always use `id`.
QString selectionID(ModelProvider provider);
QString displayName(ModelProvider provider);
QString shortName(ModelProvider provider);
QString defaultEndpoint(ModelProvider provider);
QStringList defaultModels(ModelProvider provider);
/// The first of `defaultModels`, or the empty string.
QString defaultModel(ModelProvider provider);
/// All but the local service, in order.
std::vector<ModelProvider> cloudCases();
/// The chat URL for an endpoint as the user typed it.
QUrl chatCompletionsURL(ModelProvider provider, const QString& endpoint);
}  // namespace ModelProviders

/// The stored request settings of one provider. Reads fall back to the catalogue; writes go through at once.
class ModelProviderConfiguration {
public:
    ModelProviderConfiguration(Preferences& preferences, ModelProvider provider)
        : preferences_(preferences), provider_(provider) {}

    /// As it was stored, untrimmed; the default when only white space is stored.
    QString storedEndpoint() const;
    QString storedModel() const;
    /// The stored key or the empty string; request builders trim it.
    QString storedAPIKey() const;
    ModelAPIStyle storedAPIStyle() const;
    ModelAuthField storedAuthField() const;

    /// An absent `apiKey` keeps the stored one, an empty one clears it.
    void saveConfiguration(const QString& model, const QString& endpoint,
                           const std::optional<QString>& apiKey);
    void saveRequestConfiguration(ModelAPIStyle apiStyle, ModelAuthField authField);

private:
    QString key(const char* prefix) const;

    Preferences& preferences_;
    ModelProvider provider_;
};

/// The thinking policy's answer for one request.
struct ModelThinkingRequestPlan {
    ModelProvider provider = ModelProvider::ollama;
    ModelThinkingMode mode = ModelThinkingMode::smart;
    bool isControllable = false;     ///< the provider and model have a control that is really sent
    std::optional<bool> thinkValue;  ///< absent when nothing is sent
    ModelThinkingRequestKind requestKind = ModelThinkingRequestKind::unsupported;
    QString model;    ///< the identifier to put into the request
    QString message;  ///< the sentence shown to the user

    /// One line: what the plan adds to a request.
    QString requestPreview() const;
};

namespace ModelThinking {
/// `requestedTokens` is the request's token limit, when it has one.
bool shouldThink(ModelThinkingMode mode, const QString& prompt, std::optional<int> requestedTokens);
ModelThinkingRequestPlan requestPlan(ModelThinkingMode mode, ModelProvider provider, const QString& model,
                                     const QString& prompt, std::optional<int> requestedTokens);
}  // namespace ModelThinking

}  // namespace veltrin
