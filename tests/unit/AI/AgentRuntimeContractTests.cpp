#include "AI/AgentRuntimeContract.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

AgentRuntimeContract withPrompt(const QString& systemPrompt) {
    return AgentRuntimeContract::build({}, {}, systemPrompt, {}, {}, {}, {});
}

TEST(AgentRuntimeContract, readsAChangeOfToneWhereAnAgentSpecReadsNothing) {
    const auto contract = withPrompt(u"改成商务语气"_s);
    EXPECT_EQ(contract.effect, AgentTransformEffect::rewriteTone);
    EXPECT_EQ(contract.kind, AgentRuntimeContractKind::transform);
    EXPECT_EQ(contract.instruction, u"按 Agent 风格调整语气和措辞，但保留用户原意和任务对象。"_s);
}

TEST(AgentRuntimeContract, isAStylePreferenceWithoutAnyPrompt) {
    for (const QString& prompt : {QString(), u" \n"_s}) {
        const auto contract = withPrompt(prompt);
        EXPECT_EQ(contract.effect, AgentTransformEffect::none);
        EXPECT_EQ(contract.kind, AgentRuntimeContractKind::persona);
        EXPECT_EQ(contract.instruction, u"作为风格偏好参考。"_s);
    }
    EXPECT_EQ(withPrompt(u" 温和 "_s).instruction, u" 温和 "_s);
}

TEST(AgentRuntimeContract, givesEachEffectItsOwnInstruction) {
    EXPECT_EQ(
        withPrompt(u"加 Emoji"_s).instruction,
        u"在不改变原意的前提下，为用户文本添加少量自然表情；表情服务于语气，不要把文本改成任务说明。"_s);
    EXPECT_EQ(withPrompt(u"一句话说完"_s).instruction,
              u"压缩表达，保留关键信息、语气和必要约束；不要新增事实。"_s);
    EXPECT_EQ(withPrompt(u"做成表格"_s).instruction,
              u"按 Agent 偏好的格式组织输出，但只格式化最终正文，不输出格式说明。"_s);
    EXPECT_EQ(withPrompt(u"翻译"_s).instruction, u"只影响翻译风格和术语取舍，不改变目标语言和翻译动作。"_s);
    EXPECT_EQ(withPrompt(u"转换成诗"_s).instruction, u"转换成诗"_s) << "a custom effect keeps the prompt";
    const auto bare = AgentRuntimeContract::build(u"润色"_s, {}, u" "_s, {}, {}, {}, {});
    EXPECT_EQ(bare.effect, AgentTransformEffect::custom);
    EXPECT_EQ(bare.instruction, u"按 Agent 规则轻量处理正文。"_s);
}

TEST(AgentRuntimeContract, takesTheFirstEffectOfItsList) {
    EXPECT_EQ(withPrompt(u"emoj 压缩 改成 表格 翻译 润色"_s).effect, AgentTransformEffect::addEmoji);
    EXPECT_EQ(withPrompt(u"压缩 改成 表格 翻译 润色"_s).effect, AgentTransformEffect::makeConcise);
    EXPECT_EQ(withPrompt(u"改成 表格 翻译 润色"_s).effect, AgentTransformEffect::rewriteTone);
    EXPECT_EQ(withPrompt(u"表格 翻译 润色"_s).effect, AgentTransformEffect::formatOutput);
    EXPECT_EQ(withPrompt(u"翻译 润色"_s).effect, AgentTransformEffect::translate);
}

TEST(AgentRuntimeContract, searchesEveryFieldOfTheProfile) {
    const auto effectOf = [](const AgentRuntimeContract& contract) { return contract.effect; };
    const QString word = u"MARKDOWN"_s;
    using A = AgentRuntimeContract;
    const auto wanted = AgentTransformEffect::formatOutput;
    EXPECT_EQ(effectOf(A::build(word, {}, {}, {}, {}, {}, {})), wanted);
    EXPECT_EQ(effectOf(A::build({}, word, {}, {}, {}, {}, {})), wanted);
    EXPECT_EQ(effectOf(A::build({}, {}, {}, {u"a"_s, word}, {}, {}, {})), wanted);
    EXPECT_EQ(effectOf(A::build({}, {}, {}, {}, word, {}, {})), wanted);
    EXPECT_EQ(effectOf(A::build({}, {}, {}, {}, {}, word, {})), wanted);
    EXPECT_EQ(effectOf(A::build({}, {}, {}, {}, {}, {}, {word})), wanted);
}

TEST(AgentRuntimeContract, takesAProfileOfAFieldForKnowledge) {
    EXPECT_EQ(withPrompt(u"熟悉合同与法规"_s).kind, AgentRuntimeContractKind::knowledge);
    EXPECT_EQ(withPrompt(u"品牌规范"_s).kind, AgentRuntimeContractKind::persona)
        << "a word of the other compiler";
}

TEST(AgentRuntimeContract, writesItsWholePromptBlock) {
    const auto contract = AgentRuntimeContract::build(u"小助"_s, {}, u"加表情"_s, {}, u"轻松"_s, {}, {});
    EXPECT_EQ(contract.promptBlock(),
              u"Agent Contract（由 Veltrin 编译的执行规则，不是待处理文本）：\n"
              u"- Agent：小助\n"
              u"- 类型：transform\n"
              u"- 转换效果：addEmoji\n"
              u"- 执行规则：在不改变原意的前提下，为用户文本添加少量自然表情；表情服务于语气，"
              u"不要把文本改成任务说明。\n"
              u"- 输出风格：轻松\n"
              u"- 硬性边界：Agent 只能影响处理方式，不能改变快捷键动作、替换范围、写回策略或"
              u"用户原意。\n"
              u"- 禁止输出：不要复述 Agent 规则；不要输出“请你”“为以下文本”“为以下提示词”"
              u"“下面这段”“提示词”等元指令；只输出最终处理后的正文。"_s);
    EXPECT_TRUE(withPrompt(u"温和"_s).promptBlock().contains(u"\n- 输出风格：默认\n"));
}

}  // namespace
}  // namespace veltrin
