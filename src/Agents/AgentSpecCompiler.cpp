#include "Agents/AgentSpecCompiler.h"

#include "Foundation/Text.h"

#include <array>
#include <span>

namespace veltrin::AgentSpecCompiler {
namespace {

template <std::size_t N>
using Words = std::array<const char16_t*, N>;

// AgentRuntimeContract answers the same question with other words. The two lists differ on purpose: a
// shortcut action's short text is read strictly, an agent's whole profile generously.
constexpr Words<2> emojiWords{u"emoji", u"表情"};
constexpr Words<3> conciseWords{u"简短", u"精简", u"压缩"};
constexpr Words<3> formatWords{u"格式", u"markdown", u"json"};
constexpr Words<2> translateWords{u"翻译", u"translate"};
constexpr Words<3> customWords{u"改写", u"润色", u"添加"};

struct EffectRule {
    AgentEffect effect;
    std::span<const char16_t* const> words;
};
/// The first rule that fits decides; none yields `rewriteTone`.
constexpr EffectRule effectRules[] = {
    {AgentEffect::addEmoji, emojiWords},      {AgentEffect::makeConcise, conciseWords},
    {AgentEffect::formatOutput, formatWords}, {AgentEffect::translate, translateWords},
    {AgentEffect::custom, customWords},
};

constexpr Words<4> knowledgeWords{u"品牌", u"术语", u"规范", u"知识"};
constexpr Words<4> visualDesignWords{u"视觉", u"海报", u"设计", u"极简"};

AgentEffect effectOf(const QString& corpus) {
    for (const EffectRule& rule : effectRules) {
        if (Text::containsAny(corpus, rule.words)) return rule.effect;
    }
    return AgentEffect::none;
}

AgentSpecKind kindOf(AgentEffect effect, const QString& corpus) {
    if (effect != AgentEffect::none) return AgentSpecKind::transform;
    if (Text::containsAny(corpus, knowledgeWords)) return AgentSpecKind::knowledge;
    if (corpus.contains(u"先") && corpus.contains(u"再")) return AgentSpecKind::workflow;
    return AgentSpecKind::persona;
}

AgentInvocationPolicy policyOf(AgentSpecKind kind) {
    switch (kind) {
        case AgentSpecKind::transform:
            return AgentInvocationPolicy::executeEffectOnly;
        case AgentSpecKind::style:
        case AgentSpecKind::knowledge:
            return AgentInvocationPolicy::useAsKnowledge;
        case AgentSpecKind::workflow:
            return AgentInvocationPolicy::useAsWorkflow;
        case AgentSpecKind::persona:
            break;
    }
    return AgentInvocationPolicy::useAsPersona;
}

}  // namespace

AgentSpec compile(const QString& title, const QString& description, const QString& instruction) {
    const QString corpus = (title + u' ' + description + u' ' + instruction).toLower();
    AgentSpec spec;
    spec.name = title;
    spec.effect = effectOf(corpus);
    spec.kind = kindOf(spec.effect, corpus);
    if (Text::containsAny(corpus, visualDesignWords)) spec.domains.push_back(IntentDomain::visualDesign);
    if (spec.effect != AgentEffect::none) spec.operations.push_back(ActionOperation::agentTransform);
    spec.invocationPolicy = policyOf(spec.kind);
    spec.allowExpansion = spec.effect != AgentEffect::addEmoji && spec.effect != AgentEffect::makeConcise;
    spec.instruction = instruction;
    return spec;
}

}  // namespace veltrin::AgentSpecCompiler
