#include "AI/OllamaError.h"

namespace veltrin {
namespace {

QString statusSentence(int code) {
    switch (code) {
        case 400:
            return QStringLiteral("模型服务参数错误（400），请检查模型名称、API 格式和 token 参数。");
        case 401:
        case 403:
            return QStringLiteral("模型服务认证失败（") + QString::number(code) +
                   QStringLiteral("），请检查 API Key 和认证方式。");
        case 429:
            return QStringLiteral("模型服务请求过于频繁或额度不足（429），请稍后重试或检查额度。");
        default:
            return QStringLiteral("模型服务返回错误状态（") + QString::number(code) + QStringLiteral("）。");
    }
}

}  // namespace

QString OllamaError::errorDescription() const {
    switch (kind_) {
        case Kind::badStatusCode:
            return statusSentence(code_) + detail_;
        case Kind::missingAPIKey:
            return detail_ + QStringLiteral(" 缺少 API Key");
        case Kind::badStatus:
            return QStringLiteral("模型服务返回了错误状态，请确认服务正在运行");
        case Kind::invalidResponse:
            return QStringLiteral("Ollama 返回了无法解析的响应");
        case Kind::unusableTranslation:
            return QStringLiteral("模型没有返回可用译文");
        case Kind::metaInstructionLeak:
            break;
    }
    return QStringLiteral("模型输出了任务说明而不是处理结果，已阻止自动写回。请重试或切换模型。");
}

}  // namespace veltrin
