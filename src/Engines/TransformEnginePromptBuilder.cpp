#include "Engines/TransformEnginePromptBuilder.h"

#include "Playbooks/DomainPlaybook.h"

#include <QStringList>

namespace veltrin::TransformEnginePromptBuilder {
namespace {

constexpr QStringView baseStrategy =
    u"Veltrin 底层表达策略：\n"
    u"- 保留用户原意、事实、主体和关键限制。\n"
    u"- 不擅自扩写主体、品牌、人物、活动、场景、产品或背景。\n"
    u"- 不把模式说明、Agent 指令或规则当作待处理正文输出。\n"
    u"- 不输出“请你、为以下、待处理文本、原始提示词”等任务说明。\n"
    u"- 用户要求添加表情、压缩、改语气或改格式时，直接输出处理后的结果。";

constexpr QStringView sourceOpening = u"\n\n待处理文本：\n\"\"\"\n";
constexpr QStringView outputRequirements =
    u"\n\"\"\"\n\n输出要求：\n"
    u"- 只输出处理后的文本。\n"
    u"- 不要输出任务说明。\n"
    u"- 不要复述系统规则。";

constexpr QStringView repairRequirements =
    u"\n\"\"\"\n\n修复要求：\n"
    u"- 只保留最终要写回给用户的文本。\n"
    u"- 删除“请你、为以下、待处理文本、原始提示词”等任务说明。\n"
    u"- 不要新增主体、品牌、人物、活动、场景、产品或事实。\n"
    u"- 不要输出任务说明。\n"
    u"- 不要解释修复过程。";

struct LanguageName {
    QStringView code;
    QStringView name;
};
constexpr LanguageName languageNames[] = {
    {u"zh", u"简体中文"},   {u"en", u"English"}, {u"ja", u"Japanese"}, {u"ko", u"Korean"},
    {u"fr", u"French"},     {u"de", u"German"},  {u"es", u"Spanish"},  {u"pt", u"Portuguese"},
    {u"ru", u"Russian"},    {u"ar", u"Arabic"},  {u"it", u"Italian"},  {u"th", u"Thai"},
    {u"vi", u"Vietnamese"},
};

QStringView languageName(const std::optional<QString>& code) {
    for (const LanguageName& language : languageNames) {
        if (code == language.code) return language.name;
    }
    return u"目标语言";
}

/// The block of a strategy. That of `languageTransfer` holds the language's name after its second line's
/// beginning, so it comes in two pieces.
struct StrategyBlock {
    QStringView text;
    QStringView afterLanguage;
};

StrategyBlock blockOf(OptimizationStrategy strategy) {
    switch (strategy) {
        case OptimizationStrategy::expressionStandards:
            return {
                u"表达标准策略：\n"
                u"- 解释输入概念应该如何被表达清楚。\n"
                u"- 补充风格、构图、层级、限制和质量标准。\n"
                u"- 不替用户发明具体品牌、人物、活动、场景或产品。",
                {}};
        case OptimizationStrategy::plainRewrite:
            return {
                u"普通改写策略：\n"
                u"- 改善清晰度、语气和可执行性。\n"
                u"- 保留原意和事实。\n"
                u"- 不新增背景。",
                {}};
        case OptimizationStrategy::structureExtraction:
            return {
                u"整理策略：\n"
                u"- 提取目标、事实、人物、限制、待办和关键原话。\n"
                u"- 删除重复、口癖和无意义填充。\n"
                u"- 适合结构化时使用短标题和项目符号。\n"
                u"- 不要新增原文没有的信息。",
                {}};
        case OptimizationStrategy::exactTransform:
            return {
                u"精确变换策略：\n"
                u"- 只执行结构化能力指定的变换。\n"
                u"- 不把 Agent 指令当作待处理文本输出。\n"
                u"- 不额外扩写。",
                {}};
        case OptimizationStrategy::languageTransfer:
            return {
                u"翻译策略：\n"
                u"- 将待处理文本翻译成",
                u"。\n"
                u"- 只输出译文。\n"
                u"- 保留人名、产品名、专有名词、数字、链接和代码片段。\n"
                u"- 不要解释，不要加标题，不要复述原文。"};
        case OptimizationStrategy::replyGeneration:
            return {
                u"回复策略：\n"
                u"- 根据待处理文本生成一段直接可发送的回复。\n"
                u"- 语气自然、简洁、像真人写的。\n"
                u"- 信息不足时礼貌确认关键点。\n"
                u"- 不要编造原文没有的事实。",
                {}};
        case OptimizationStrategy::multimodalUnderstanding:
            return {
                u"多模态理解策略：\n"
                u"- 先把图片、文件或链接素材转成清晰的自然语言描述。\n"
                u"- 对图片只描述可确认的视觉线索；不确定内容必须标注为不确定。\n"
                u"- 再基于描述生成可复用的提示词。",
                {}};
        case OptimizationStrategy::promptReverseEngineering:
            return {
                u"反推提示词策略：\n"
                u"- 从拖拽素材中提取目标、结构、风格、约束和可复用表达。\n"
                u"- 输出可继续创作或分析的提示词。\n"
                u"- 不假装读取了不存在的文件正文或网页正文。",
                {}};
        case OptimizationStrategy::voiceDictation:
            return {
                u"语音听写策略：\n"
                u"- 保留用户口述的原意。\n"
                u"- 只做必要的标点、错别字和轻微口语清理。\n"
                u"- 不新增事实，不改变表达目标。",
                {}};
        case OptimizationStrategy::voicePromptStructuring:
            return {
                u"语音提示词整理策略：\n"
                u"- 将口述需求整理成清晰、可执行的提示词。\n"
                u"- 补齐任务目标、表达标准、限制条件和输出要求。\n"
                u"- 不替用户发明没有说出的主体、品牌、人物、场景或事实。",
                {}};
        case OptimizationStrategy::voiceNoteStructuring:
            break;
    }
    return {
        u"语音长段整理策略：\n"
        u"- 从口述内容中提取主题、事实、待办、时间、限制和关键原话。\n"
        u"- 合并重复口语，保留重要上下文。\n"
        u"- 适合时输出结构化要点。\n"
        u"- 不新增原文没有的信息。",
        {}};
}

QString strategyBlock(const ActionSpec& actionSpec) {
    const StrategyBlock block = blockOf(actionSpec.strategy);
    QString text = block.text.toString();
    if (!block.afterLanguage.isEmpty()) text += languageName(actionSpec.targetLanguage);
    text += block.afterLanguage;
    return text;
}

/// The other three flags add no line: they steer the compilers and the contract, not the model.
QString preservationBlock(const PreservationPolicy& policy) {
    QStringList lines;
    if (policy.preserveIntent) lines << QStringLiteral("- 保留用户原意。");
    if (policy.preserveSubject) lines << QStringLiteral("- 保留用户给出的主体。");
    if (!policy.allowSubjectInvention)
        lines << QStringLiteral("- 不要擅自添加主体、品牌、人物、活动、场景或产品。");
    if (!policy.allowNewFacts) lines << QStringLiteral("- 不要新增事实。");
    return QStringLiteral("保留规则：\n") + lines.join(u'\n');
}

QString agentBlock(const AgentSpec& agent) {
    QStringList lines{
        QStringLiteral("Agent 结构化能力："),
        QStringLiteral("- 名称：") + agent.name,
        QStringLiteral("- 类型：") + rawValue(agent.kind),
        QStringLiteral("- 效果：") + rawValue(agent.effect),
        QStringLiteral("- 调用方式：") + rawValue(agent.invocationPolicy),
        QStringLiteral("- 强度：") + rawValue(agent.strength),
        QStringLiteral("- 只作为处理方式，不是待处理文本。"),
        QStringLiteral("- 不要输出任务说明。"),
    };
    if (agent.invocationPolicy == AgentInvocationPolicy::executeEffectOnly)
        lines << QStringLiteral("- 只执行模式要求的效果，不要把模式说明改写成用户可见内容。");
    return lines.join(u'\n');
}

}  // namespace

QString buildPrompt(const ContextDocument& context, const ActionSpec& actionSpec,
                    const std::optional<AgentSpec>& agentSpec) {
    // Empty blocks keep their separators: the prompt then has more blank lines.
    QString prompt =
        QStringLiteral("你是 Veltrin 的意图编译执行器。你要输出最终结果，而不是解释任务。\n\n动作：") +
        rawValue(actionSpec.operation) + QStringLiteral("\n策略：") + rawValue(actionSpec.strategy) +
        QStringLiteral("\n输出契约：") + rawValue(actionSpec.outputContract) + QStringLiteral("\n\n") +
        preservationBlock(actionSpec.preservation) + QStringLiteral("\n\n");
    prompt += baseStrategy;
    prompt += QStringLiteral("\n\n") + strategyBlock(actionSpec) + QStringLiteral("\n\n") +
              DomainPlaybook::guidance(actionSpec, context) + QStringLiteral("\n\n");
    if (agentSpec) prompt += agentBlock(*agentSpec);
    prompt += sourceOpening;
    prompt += context.text;
    prompt += outputRequirements;
    return prompt;
}

QString buildRepairPrompt(const ContextDocument& context, const ActionSpec&,
                          OutputContractViolation violation, const QString& failedOutput) {
    QString prompt = QStringLiteral("你是 Veltrin 的输出契约修复器。下面的模型输出违反了契约：") +
                     rawValue(violation) + QStringLiteral("。\n\n原始文本：\n\"\"\"\n") + context.text +
                     QStringLiteral("\n\"\"\"\n\n需要修复的输出：\n\"\"\"\n") + failedOutput;
    prompt += repairRequirements;
    return prompt;
}

}  // namespace veltrin::TransformEnginePromptBuilder
