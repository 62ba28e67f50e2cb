#include "Agents/AgentSpecCompiler.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(AgentSpecCompiler, takesATitleOfBrandTermsForKnowledge) {
    const AgentSpec spec = AgentSpecCompiler::compile(u"品牌术语规范"_s, {}, {});
    EXPECT_EQ(spec.kind, AgentSpecKind::knowledge);
    EXPECT_EQ(spec.effect, AgentEffect::none);
    EXPECT_EQ(spec.invocationPolicy, AgentInvocationPolicy::useAsKnowledge);
    EXPECT_TRUE(spec.operations.empty());
    EXPECT_TRUE(spec.allowExpansion);
}

TEST(AgentSpecCompiler, seesAnEffectBeforeAWorkflow) {
    const AgentSpec translating = AgentSpecCompiler::compile({}, {}, u"先总结再翻译"_s);
    EXPECT_EQ(translating.effect, AgentEffect::translate);
    EXPECT_EQ(translating.kind, AgentSpecKind::transform);
    EXPECT_EQ(translating.invocationPolicy, AgentInvocationPolicy::executeEffectOnly);
    const AgentSpec sorting = AgentSpecCompiler::compile({}, {}, u"先总结再分类"_s);
    EXPECT_EQ(sorting.kind, AgentSpecKind::workflow);
    EXPECT_EQ(sorting.invocationPolicy, AgentInvocationPolicy::useAsWorkflow);
    EXPECT_EQ(AgentSpecCompiler::compile({}, {}, u"先总结"_s).kind, AgentSpecKind::persona);
}

TEST(AgentSpecCompiler, findsWordsInEachPartWhateverTheirCase) {
    EXPECT_EQ(AgentSpecCompiler::compile(u"JSON"_s, {}, {}).effect, AgentEffect::formatOutput);
    EXPECT_EQ(AgentSpecCompiler::compile({}, u"Add Emoji"_s, {}).effect, AgentEffect::addEmoji);
    EXPECT_EQ(AgentSpecCompiler::compile({}, {}, u"TRANSLATE it"_s).effect, AgentEffect::translate);
}

TEST(AgentSpecCompiler, takesTheFirstEffectOfItsList) {
    EXPECT_EQ(AgentSpecCompiler::compile({}, {}, u"改写并翻译成精简的 json，加表情"_s).effect,
              AgentEffect::addEmoji);
    EXPECT_EQ(AgentSpecCompiler::compile({}, {}, u"改写并翻译成精简的 json"_s).effect,
              AgentEffect::makeConcise);
    EXPECT_EQ(AgentSpecCompiler::compile({}, {}, u"改写并翻译成 json"_s).effect, AgentEffect::formatOutput);
    EXPECT_EQ(AgentSpecCompiler::compile({}, {}, u"改写并翻译"_s).effect, AgentEffect::translate);
    EXPECT_EQ(AgentSpecCompiler::compile({}, {}, u"改写"_s).effect, AgentEffect::custom);
}

TEST(AgentSpecCompiler, doesNotKnowTheToneWordsOfARuntimeContract) {
    EXPECT_EQ(AgentSpecCompiler::compile({}, {}, u"改成商务语气"_s).effect, AgentEffect::none);
}

TEST(AgentSpecCompiler, forbidsGrowthToEmojiAndCompressionOnly) {
    EXPECT_FALSE(AgentSpecCompiler::compile(u"表情"_s, {}, {}).allowExpansion);
    EXPECT_FALSE(AgentSpecCompiler::compile(u"压缩"_s, {}, {}).allowExpansion);
    EXPECT_TRUE(AgentSpecCompiler::compile(u"格式"_s, {}, {}).allowExpansion);
    EXPECT_TRUE(AgentSpecCompiler::compile(u"翻译"_s, {}, {}).allowExpansion);
    EXPECT_TRUE(AgentSpecCompiler::compile(u"润色"_s, {}, {}).allowExpansion);
    EXPECT_TRUE(AgentSpecCompiler::compile(u"助手"_s, {}, {}).allowExpansion);
}

TEST(AgentSpecCompiler, namesTheVisualDomainAndTheTransformOperation) {
    const AgentSpec spec = AgentSpecCompiler::compile(u"海报润色"_s, {}, {});
    EXPECT_EQ(spec.domains, std::vector<IntentDomain>{IntentDomain::visualDesign});
    EXPECT_EQ(spec.operations, std::vector<ActionOperation>{ActionOperation::agentTransform});
    EXPECT_TRUE(AgentSpecCompiler::compile(u"润色"_s, {}, {}).domains.empty());
}

TEST(AgentSpecCompiler, keepsNameAndInstructionAndGrantsNoPower) {
    const AgentSpec spec = AgentSpecCompiler::compile(u" 助手 "_s, u"改变替换范围"_s, u" 写回别处\n"_s);
    EXPECT_EQ(spec.name, u" 助手 "_s);
    EXPECT_EQ(spec.instruction, u" 写回别处\n"_s);
    EXPECT_EQ(spec.strength, AgentStrength::light);
    EXPECT_FALSE(spec.canChangeAction || spec.canChangeReplacementScope || spec.canChangeWriteback);
}

}  // namespace
}  // namespace veltrin
