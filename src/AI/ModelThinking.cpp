#include "AI/ModelConfiguration.h"
#include "Foundation/Characters.h"
#include "Foundation/Text.h"

#include <array>

namespace veltrin {
namespace {

/// A prompt longer than this, or an answer that may grow past this, is worth thinking about.
constexpr qsizetype longPromptCharacters = 900;
constexpr int longAnswerTokens = 220;
constexpr auto reasoningWords = std::to_array<const char16_t*>(
    {u"分析", u"推理", u"计划", u"架构", u"重构", u"复杂", u"比较", u"为什么", u"步骤", u"方案"});

QString flag(bool value) {
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

}  // namespace

QString label(ModelThinkingRequestKind kind) {
    switch (kind) {
        case ModelThinkingRequestKind::unsupported:
            return QStringLiteral("不发送思考参数");
        case ModelThinkingRequestKind::ollamaThinkParameter:
            return QStringLiteral("Ollama think");
        case ModelThinkingRequestKind::qwenEnableThinking:
            return QStringLiteral("enable_thinking");
        case ModelThinkingRequestKind::deepseekReasonerModel:
            return QStringLiteral("模型路由");
        case ModelThinkingRequestKind::genericThinkParameter:
            break;
    }
    return QStringLiteral("兼容 think");
}

QString title(ModelThinkingMode mode) {
    switch (mode) {
        case ModelThinkingMode::smart:
            return QStringLiteral("智能打开");
        case ModelThinkingMode::alwaysOn:
            return QStringLiteral("全局打开");
        case ModelThinkingMode::alwaysOff:
            break;
    }
    return QStringLiteral("全局关闭");
}

QString explanation(ModelThinkingMode mode) {
    switch (mode) {
        case ModelThinkingMode::smart:
            return QStringLiteral("短任务不开思考，长任务和复杂推理自动打开。");
        case ModelThinkingMode::alwaysOn:
            return QStringLiteral("所有任务都开启思考，质量更稳，但等待时间更长。");
        case ModelThinkingMode::alwaysOff:
            break;
    }
    return QStringLiteral("所有任务都关闭思考，响应最快，适合翻译和短改写。");
}

QString ModelThinkingRequestPlan::requestPreview() const {
    switch (requestKind) {
        case ModelThinkingRequestKind::unsupported:
            return QStringLiteral("无额外参数");
        case ModelThinkingRequestKind::ollamaThinkParameter:
        case ModelThinkingRequestKind::genericThinkParameter:
            return QStringLiteral("\"think\": ") + flag(thinkValue.value_or(false));
        case ModelThinkingRequestKind::qwenEnableThinking:
            return QStringLiteral("\"enable_thinking\": ") + flag(thinkValue.value_or(false));
        case ModelThinkingRequestKind::deepseekReasonerModel:
            break;
    }
    return QStringLiteral("\"model\": \"") + model + u'"';
}

namespace ModelThinking {

bool shouldThink(ModelThinkingMode mode, const QString& prompt, std::optional<int> requestedTokens) {
    switch (mode) {
        case ModelThinkingMode::alwaysOn:
            return true;
        case ModelThinkingMode::alwaysOff:
            return false;
        case ModelThinkingMode::smart:
            break;
    }
    return Characters::count(prompt) > longPromptCharacters ||
           requestedTokens.value_or(0) > longAnswerTokens || Text::containsAny(prompt, reasoningWords);
}

ModelThinkingRequestPlan requestPlan(ModelThinkingMode mode, ModelProvider provider, const QString& model,
                                     const QString& prompt, std::optional<int> requestedTokens) {
    ModelThinkingRequestPlan plan;
    plan.provider = provider;
    plan.mode = mode;
    plan.model = Text::trimmed(model);
    const QString lowered = plan.model.toLower();
    const bool think = shouldThink(mode, prompt, requestedTokens);

    const auto controlled = [&](ModelThinkingRequestKind kind, const QString& message) {
        plan.isControllable = true;
        plan.thinkValue = think;
        plan.requestKind = kind;
        plan.message = message;
        return plan;
    };
    // A model that cannot be controlled gets no invented switch.
    const auto uncontrolled = [&](const QString& message) {
        plan.message = message;
        return plan;
    };

    switch (provider) {
        case ModelProvider::ollama:
            if (!lowered.startsWith(u"qwen"))
                return uncontrolled(QStringLiteral("当前本地模型没有明确可控的思考开关。"));
            return controlled(ModelThinkingRequestKind::ollamaThinkParameter,
                              think ? QStringLiteral("本地 Qwen 会发送 think=true。")
                                    : QStringLiteral("本地 Qwen 会发送 think=false。"));
        case ModelProvider::deepseek:
            // Controlled by routing to another model. Without thinking nothing routes back: a reasoner that
            // the user chose stays, although the message speaks of the ordinary model. Meant so.
            if (!think)
                return controlled(ModelThinkingRequestKind::deepseekReasonerModel,
                                  QStringLiteral("DeepSeek 会使用普通聊天模型。"));
            if (lowered == u"deepseek-chat") plan.model = QStringLiteral("deepseek-reasoner");
            return controlled(ModelThinkingRequestKind::deepseekReasonerModel,
                              QStringLiteral("DeepSeek 会切换到 deepseek-reasoner。"));
        case ModelProvider::qwen:
            return controlled(ModelThinkingRequestKind::qwenEnableThinking,
                              think ? QStringLiteral("通义千问会发送 enable_thinking=true。")
                                    : QStringLiteral("通义千问会发送 enable_thinking=false。"));
        case ModelProvider::siliconFlow:
        case ModelProvider::volcengine:
            if (!lowered.contains(u"qwen"))
                return uncontrolled(QStringLiteral("该模型没有明确可控的思考参数，Veltrin 不会伪造开关。"));
            return controlled(ModelThinkingRequestKind::genericThinkParameter,
                              think ? QStringLiteral("该兼容接口会发送 think=true。")
                                    : QStringLiteral("该兼容接口会发送 think=false。"));
        default:
            return uncontrolled(ModelProviders::displayName(provider) +
                                QStringLiteral(" 当前 API 格式没有接入可控思考参数。"));
    }
}

}  // namespace ModelThinking

}  // namespace veltrin
