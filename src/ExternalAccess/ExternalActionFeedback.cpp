#include "ExternalAccess/ExternalActionFeedback.h"

#include "Foundation/Error.h"
#include "Foundation/Text.h"
#include "Platform/HttpClient.h"

#include <algorithm>
#include <span>

namespace veltrin {

namespace {

constexpr int slowCodes[] = {UrlError::timedOut};
constexpr int connectionCodes[] = {UrlError::notConnectedToInternet, UrlError::networkConnectionLost,
                                   UrlError::cannotFindHost, UrlError::cannotConnectToHost};
// One certificate failure (-1203) is left out, and is then a network failure like any other: meant so.
constexpr int certificateCodes[] = {UrlError::secureConnectionFailed, UrlError::serverCertificateUntrusted,
                                    UrlError::serverCertificateHasBadDate,
                                    UrlError::serverCertificateNotYetValid};

struct NetworkRule {
    std::span<const int> codes;
    const char16_t* detail;
    const char16_t* suggestion;
};

constexpr NetworkRule networkRules[] = {
    {slowCodes, u"模型请求超时，当前服务响应太慢或文本较长。",
     u"请稍后重试，或切换更快的模型；这不是系统权限问题。"},
    {connectionCodes, u"网络连接不可用，模型服务没有连上。", u"请检查网络、代理或服务商 Endpoint。"},
    {certificateCodes, u"模型服务 SSL 连接失败。", u"请检查系统时间、代理证书或服务商地址。"},
};

/// An empty detail means: the error's own words.
struct DescriptionRule {
    const char16_t* word;
    Qt::CaseSensitivity sensitivity;
    const char16_t* detail;
    const char16_t* suggestion;
};

constexpr const char16_t* keySuggestion = u"请到设置页检查当前模型服务商、API Key、认证方式和 Endpoint。";
constexpr const char16_t* statusDetail = u"模型服务返回错误状态，当前请求没有成功。";
constexpr const char16_t* statusSuggestion =
    u"请检查服务地址、模型名称、API Key 额度，或切换到设置页测试连接。";
constexpr const char16_t* formatDetail = u"模型返回格式无法解析。";
constexpr const char16_t* formatSuggestion =
    u"请确认 API 格式和模型服务商匹配，例如 OpenAI 兼容、Anthropic 或 Gemini。";
constexpr const char16_t* instructionSuggestion =
    u"这是模型把 Agent 规则当成正文了。请重试一次，或把该 Agent 改成更明确的动作规则。";

// A key that is missing comes before everything, also before what the network says.
constexpr DescriptionRule firstRules[] = {
    {u"API Key", Qt::CaseSensitive, u"", keySuggestion},
    {u"missingAPIKey", Qt::CaseInsensitive, u"", keySuggestion},
};

constexpr DescriptionRule laterRules[] = {
    {u"错误状态", Qt::CaseSensitive, statusDetail, statusSuggestion},
    {u"badStatus", Qt::CaseInsensitive, statusDetail, statusSuggestion},
    {u"无法解析", Qt::CaseSensitive, formatDetail, formatSuggestion},
    {u"invalidResponse", Qt::CaseInsensitive, formatDetail, formatSuggestion},
    {u"可用译文", Qt::CaseSensitive, u"", u"可以重试一次，或换成更稳定的模型。"},
    {u"任务说明而不是处理结果", Qt::CaseSensitive, u"", instructionSuggestion},
    {u"阻止自动写回", Qt::CaseSensitive, u"", instructionSuggestion},
};

ExternalActionFeedback card(const QString& title, const QString& detail, const char16_t* suggestion) {
    ExternalActionFeedback feedback;
    feedback.title = title;
    feedback.detail = detail;
    feedback.suggestion = QString::fromUtf16(suggestion);
    return feedback;
}

template <std::size_t N>
std::optional<ExternalActionFeedback> byDescription(const DescriptionRule (&rules)[N],
                                                    const QString& description, const QString& title) {
    for (const DescriptionRule& rule : rules) {
        if (!description.contains(QStringView(rule.word), rule.sensitivity)) continue;
        const QString detail = QString::fromUtf16(rule.detail);
        return card(title, detail.isEmpty() ? description : detail, rule.suggestion);
    }
    return std::nullopt;
}

ExternalActionFeedback byNetworkCode(const UrlError& error, const QString& description,
                                     const QString& title) {
    for (const NetworkRule& rule : networkRules) {
        if (std::find(rule.codes.begin(), rule.codes.end(), error.code()) != rule.codes.end())
            return card(title, QString::fromUtf16(rule.detail), rule.suggestion);
    }
    return card(title, description.isEmpty() ? QStringLiteral("网络请求失败。") : description,
                u"请检查网络、代理或模型服务地址。");
}

QString compactSubtitle(const ExternalActionFeedback& feedback) {
    const auto either = [](const QString& a, const QString& b, const QString& word) {
        return a.contains(word) || b.contains(word);
    };
    const QString& title = feedback.title;
    if (title.contains(u"读到")) return QStringLiteral("请先选中或点进文本框");
    if (title.contains(u"替换") || title.contains(u"写回") || title.contains(u"文本框"))
        return QStringLiteral("结果已复制，可手动粘贴");
    if (either(title, feedback.detail, QStringLiteral("API Key")))
        return QStringLiteral("请检查模型 API Key");
    if (either(title, feedback.detail, QStringLiteral("模型"))) return QStringLiteral("请重试或切换模型");
    if (either(title, feedback.suggestion, QStringLiteral("权限"))) return QStringLiteral("请检查系统权限");
    return Text::preview(feedback.suggestion.isEmpty() ? feedback.detail : feedback.suggestion, 18);
}

}  // namespace

QString ExternalActionFeedback::compactMessage() const {
    const QString subtitle = compactSubtitle(*this);
    return subtitle.isEmpty() ? title : title + u'\n' + subtitle;
}

QString ExternalActionFeedback::copiedResultMessage(const QString& text, const QString& label) {
    return QStringLiteral("已复制\n") + label + QStringLiteral("：") + Text::preview(text, 28);
}

ExternalActionFeedback ExternalActionFeedback::message(const std::exception& error,
                                                       const QString& fallbackTitle) {
    const QString description = describe(error);
    if (auto feedback = byDescription(firstRules, description, fallbackTitle)) return *feedback;
    if (const auto* network = dynamic_cast<const UrlError*>(&error))
        return byNetworkCode(*network, description, fallbackTitle);
    if (auto feedback = byDescription(laterRules, description, fallbackTitle)) return *feedback;
    return card(fallbackTitle,
                description.isEmpty() ? QStringLiteral("请求失败，但没有返回明确原因。") : description,
                u"请检查模型配置、网络和当前 App 权限。");
}

}  // namespace veltrin
