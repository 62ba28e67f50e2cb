#include "AI/AgentRuntimeContract.h"

#include "Foundation/Text.h"

#include <array>
#include <span>

namespace veltrin {
namespace {

template <std::size_t N>
using Words = std::array<const char16_t*, N>;

// AgentSpecCompiler answers the same question with other words: see there why the lists differ.
constexpr Words<3> emojiWords{u"emoji", u"emoj", u"表情"};
constexpr Words<4> conciseWords{u"压缩", u"简短", u"精简", u"一句话"};
constexpr Words<8> toneWords{u"改成", u"改为", u"调整语气", u"转换语气",
                             u"转成", u"变成", u"商务语气", u"专业语气"};
constexpr Words<4> formatWords{u"格式", u"表格", u"json", u"markdown"};
constexpr Words<2> translateWords{u"翻译", u"translate"};
constexpr Words<4> customWords{u"改写", u"润色", u"转换", u"添加"};

struct EffectRule {
    AgentTransformEffect effect;
    std::span<const char16_t* const> words;
};
/// The first rule that fits decides.
constexpr EffectRule effectRules[] = {
    {AgentTransformEffect::addEmoji, emojiWords},      {AgentTransformEffect::makeConcise, conciseWords},
    {AgentTransformEffect::rewriteTone, toneWords},    {AgentTransformEffect::formatOutput, formatWords},
    {AgentTransformEffect::translate, translateWords}, {AgentTransformEffect::custom, customWords},
};

constexpr Words<10> knowledgeWords{u"知识库", u"领域知识", u"术语", u"法规", u"合同",
                                   u"论文",   u"医学",     u"法律", u"财务", u"专家知识"};

AgentTransformEffect effectOf(const QString& corpus) {
    for (const EffectRule& rule : effectRules) {
        if (Text::containsAny(corpus, rule.words)) return rule.effect;
    }
    return AgentTransformEffect::none;
}

QString orIfBlank(const QString& text, const QString& fallback) {
    return Text::isBlank(text) ? fallback : text;
}

/// For the known effects the agent's own free text never reaches the model as an instruction.
QString instructionOf(AgentTransformEffect effect, const QString& systemPrompt) {
    switch (effect) {
        case AgentTransformEffect::none:
            return orIfBlank(systemPrompt, QStringLiteral("作为风格偏好参考。"));
        case AgentTransformEffect::addEmoji:
            return QStringLiteral(
                "在不改变原意的前提下，为用户文本添加少量自然表情；表情服务于语气，不要把文本改成任务说明。");
        case AgentTransformEffect::makeConcise:
            return QStringLiteral("压缩表达，保留关键信息、语气和必要约束；不要新增事实。");
        case AgentTransformEffect::rewriteTone:
            return QStringLiteral("按 Agent 风格调整语气和措辞，但保留用户原意和任务对象。");
        case AgentTransformEffect::formatOutput:
            return QStringLiteral("按 Agent 偏好的格式组织输出，但只格式化最终正文，不输出格式说明。");
        case AgentTransformEffect::translate:
            return QStringLiteral("只影响翻译风格和术语取舍，不改变目标语言和翻译动作。");
        case AgentTransformEffect::custom:
            break;
    }
    return orIfBlank(systemPrompt, QStringLiteral("按 Agent 规则轻量处理正文。"));
}

}  // namespace

AgentRuntimeContract AgentRuntimeContract::build(const QString& name, const QString& description,
                                                 const QString& systemPrompt, const QStringList& skills,
                                                 const QString& outputStyle, const QString& category,
                                                 const QStringList& tags) {
    const QStringList parts =
        QStringList{name, description, systemPrompt, outputStyle, category} + skills + tags;
    const QString corpus = parts.join(u' ').toLower();
    AgentRuntimeContract contract;
    contract.name = name;
    contract.effect = effectOf(corpus);
    if (contract.effect != AgentTransformEffect::none) {
        contract.kind = AgentRuntimeContractKind::transform;
    } else if (Text::containsAny(corpus, knowledgeWords)) {
        contract.kind = AgentRuntimeContractKind::knowledge;
    }
    contract.instruction = instructionOf(contract.effect, systemPrompt);
    contract.outputStyle = outputStyle;
    return contract;
}

QString AgentRuntimeContract::promptBlock() const {
    return QStringLiteral("Agent Contract（由 Veltrin 编译的执行规则，不是待处理文本）：\n- Agent：") + name +
           QStringLiteral("\n- 类型：") + rawValue(kind) + QStringLiteral("\n- 转换效果：") +
           rawValue(effect) + QStringLiteral("\n- 执行规则：") + instruction +
           QStringLiteral("\n- 输出风格：") + orIfBlank(outputStyle, QStringLiteral("默认")) +
           QStringLiteral(
               "\n- 硬性边界：Agent 只能影响处理方式，不能改变快捷键动作、替换范围、写回策略或用户原意。"
               "\n- 禁止输出：不要复述 Agent 规则；不要输出“请你”“为以下文本”“为以下提示词”“下面这段”"
               "“提示词”等元指令；只输出最终处理后的正文。");
}

}  // namespace veltrin
