#include "AI/GenerationTokenBudget.h"
#include "AI/ModelTasks.h"
#include "AI/OllamaError.h"
#include "AI/TranslationOutputGuard.h"
#include "AI/Wires/ModelWire.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"

#include <utility>

namespace veltrin {
namespace {

using Parts = std::shared_ptr<const ModelTasks::Parts>;

constexpr double translationTemperature = 0;
constexpr double optimizationTemperature = 0.2;
constexpr double strictTranslationTimeout = 60;

QString preview(const QString& text) {
    return Wire::bodyPreview(text.toUtf8());
}

QString directionLine(TranslationLanguage source, TranslationLanguage target) {
    if (source == TranslationLanguage::automatic)
        return QStringLiteral("Detect the language of INPUT and translate it to ") + englishName(target) +
               u'.';
    return QStringLiteral("Translate INPUT from ") + englishName(source) + QStringLiteral(" to ") +
           englishName(target) + u'.';
}

QString translationPrompt(const QString& text, const ModelTasks::Parts& parts) {
    const QString direction =
        directionLine(parts.settings.translationSourceLang(), parts.settings.translationTargetLang());
    const QString contract = parts.contractBlock(QStringLiteral("translation"));
    const QString dictionary =
        parts.dictionaryBlock(QStringLiteral("用户私有词典（专有名词必须优先遵守）："));
    return QStringLiteral("You are Veltrin's fast translation engine.\n") + direction +
           QStringLiteral(
               "\n- Output ONLY the translated text."
               "\n- Do not explain, do not add quotes, do not copy INPUT."
               "\n- Preserve names, product terms, acronyms, and dictionary terms when appropriate.") +
           contract + dictionary + QStringLiteral("\n\nINPUT:\n\"\"\"\n") + text + QStringLiteral("\n\"\"\"");
}

QString strictTranslationPrompt(const QString& text, const QString& firstAnswer, TranslationLanguage target) {
    return QStringLiteral(
               "You are a strict translation engine.\n"
               "The previous answer was invalid because it copied the input or used the wrong target "
               "language.\n\nTarget language: ") +
           englishName(target) +
           QStringLiteral(
               "\nRules:\n- Output ONLY the translated text.\n- Do not explain."
               "\n- Do not repeat the source text."
               "\n- Preserve names, product terms, and acronyms only when they should stay unchanged."
               "\n\nSource:\n\"\"\"\n") +
           text + QStringLiteral("\n\"\"\"\n\nInvalid previous answer:\n\"\"\"\n") + firstAnswer +
           QStringLiteral("\n\"\"\"");
}

QCoro::Task<QString> translating(Parts parts, QString text) {
    const TranslationLanguage target = parts->settings.translationTargetLang();
    const QString prompt = translationPrompt(text, *parts);
    const int limit =
        GenerationTokenBudget::replacementOutputLimit(Characters::count(text), 512, 3.0, 256, 12000);
    const int retryLimit = GenerationTokenBudget::retryLimit(limit);

    auto first = parts->client.generateNonEmpty(prompt, translationTemperature, limit, retryLimit);
    const QString firstOutput = co_await first;
    auto guarded = parts->client.repairMetaInstructionLeakIfNeeded(firstOutput, text, prompt,
                                                                   translationTemperature, retryLimit);
    const QString answer = co_await guarded;
    if (!TranslationOutputGuard::needsRetry(text, answer, target)) co_return answer;

    MVPLog::write("Translation output guard retrying:", "inputLength:", Characters::count(text),
                  "firstOutputLength:", Characters::count(answer), "firstPreview:", preview(answer));
    const QString strict = strictTranslationPrompt(text, answer, target);
    auto second =
        parts->client.generate(strict, translationTemperature, retryLimit, strictTranslationTimeout);
    const QString secondOutput = co_await second;
    auto guardedAgain = parts->client.repairMetaInstructionLeakIfNeeded(secondOutput, text, strict,
                                                                        translationTemperature, retryLimit);
    const QString retried = co_await guardedAgain;
    if (TranslationOutputGuard::needsRetry(text, retried, target)) {
        MVPLog::write("Translation output guard rejected retry:", "retryLength:", Characters::count(retried),
                      "retryPreview:", preview(retried));
        throw OllamaError::unusableTranslation();
    }
    co_return retried;
}

QString optionText(OptimizeOption option) {
    switch (option) {
        case OptimizeOption::refine:
            return QStringLiteral(
                "你是快速提示词优化器。对用户给的提示词做“更精确”：\n- 保留原意，不改变任务对象；\n"
                "- 补充必要的风格、范围、质量标准；\n- 让表达更清晰可执行。");
        case OptimizeOption::restructure:
            return QStringLiteral(
                "你是快速提示词优化器。对用户给的提示词做“重组结构”：\n- 用“目标 / 要求 / 输出”三段组织；\n"
                "- 每段只写和原始意图直接相关的内容；\n- 不要编造输入材料或外部上下文。");
        case OptimizeOption::modelAdapt:
            return QStringLiteral(
                "你是快速提示词优化器。对用户给的提示词做“适配模型”：\n- 改成更适合大模型执行的直接指令；\n"
                "- 任务、约束、输出期望清楚分离；\n- 不要加入模型名称或解释过程。");
        case OptimizeOption::outFmt:
            break;
    }
    return QStringLiteral(
        "你是快速提示词优化器。为用户的提示词添加“输出格式”：\n- 根据原任务选择最自然的格式；\n"
        "- 明确输出结构和字段；\n- 保留原始任务，不额外扩展主题。");
}

QString optimizationPrompt(const QString& text, OptimizeOption option, const ModelTasks::Parts& parts) {
    const QString contract = parts.contractBlock(QStringLiteral("optimize"));
    const QString dictionary =
        parts.dictionaryBlock(QStringLiteral("用户私有词典（专有名词、缩写和业务含义必须优先遵守）："));
    return optionText(option) +
           QStringLiteral(
               "\n\n硬性规则：只输出优化后的提示词正文；不要解释、不要寒暄、不要 Markdown 代码块包裹；"
               "保持原有语言；保留原始主题和对象；不要添加原文没有的文件名、App、截图、图片识别结果或虚构背景"
               "；"
               "长度控制在原文的 1.5 到 3 倍。") +
           contract + dictionary +
           QStringLiteral(
               "\n\n原始提示词如下。若其中包含“文本框上下文”，上下文只用于理解指代、语气和前后关系；"
               "最终只输出“当前需要处理的文本”的改写结果，不要输出上下文本身：\n\n") +
           text;
}

int optimizationLimit(qsizetype characters, OptimizeOption option) {
    return option == OptimizeOption::restructure
               ? GenerationTokenBudget::replacementOutputLimit(characters, 1400, 5.0, 512, 16000)
               : GenerationTokenBudget::replacementOutputLimit(characters, 1024, 4.0, 512, 16000);
}

QCoro::Task<QString> optimizing(Parts parts, QString text, OptimizeOption option) {
    const QString prompt = optimizationPrompt(text, option, *parts);
    parts->record(QStringLiteral("optimize"), text);
    const int limit = optimizationLimit(Characters::count(text), option);
    const int retryLimit = GenerationTokenBudget::retryLimit(limit);
    auto task = parts->client.generateNonEmpty(prompt, optimizationTemperature, limit, retryLimit);
    const QString output = co_await task;
    auto guarded = parts->client.repairMetaInstructionLeakIfNeeded(output, text, prompt,
                                                                   optimizationTemperature, retryLimit);
    const QString answer = co_await guarded;
    co_return answer;
}

}  // namespace

QCoro::Task<QString> ModelTasks::translate(QString text) const {
    return translating(parts_, std::move(text));
}

QCoro::Task<QString> ModelTasks::optimize(QString text, OptimizeOption option) const {
    return optimizing(parts_, std::move(text), option);
}

}  // namespace veltrin
