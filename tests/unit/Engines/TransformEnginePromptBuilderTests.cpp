#include "Engines/TransformEnginePromptBuilder.h"
#include "Intent/IntentCompiler.h"
#include "Playbooks/DomainPlaybook.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using TransformEnginePromptBuilder::buildPrompt;
using TransformEnginePromptBuilder::buildRepairPrompt;

ContextDocument document(const QString& text) {
    ContextDocument context;
    context.text = text;
    context.contextBefore = u"前文"_s;
    context.contextAfter = u"后文"_s;
    return context;
}

/// The block between the base strategy and the guidance.
QString strategyBlock(OptimizationStrategy strategy, const std::optional<QString>& language = std::nullopt) {
    ActionSpec spec;
    spec.strategy = strategy;
    spec.targetLanguage = language;
    const QString prompt = buildPrompt(document(u"x"_s), spec, std::nullopt);
    const QString before = u"改语气或改格式时，直接输出处理后的结果。\n\n"_s;
    const qsizetype start = prompt.indexOf(before) + before.size();
    return prompt.mid(start, prompt.indexOf(u"\n\n", start) - start);
}

TEST(TransformEnginePromptBuilder, writesTheWholePromptOfARefinement) {
    const ContextDocument context = document(u"明天三点开会"_s);
    const ActionSpec spec = IntentCompiler::compileOptimize(context, OptimizeCompileMode::refine);
    EXPECT_EQ(buildPrompt(context, spec, std::nullopt),
              uR"(你是 Veltrin 的意图编译执行器。你要输出最终结果，而不是解释任务。

动作：writingRefinement
策略：plainRewrite
输出契约：plainTextTransform

保留规则：
- 保留用户原意。
- 保留用户给出的主体。
- 不要擅自添加主体、品牌、人物、活动、场景或产品。
- 不要新增事实。

Veltrin 底层表达策略：
- 保留用户原意、事实、主体和关键限制。
- 不擅自扩写主体、品牌、人物、活动、场景、产品或背景。
- 不把模式说明、Agent 指令或规则当作待处理正文输出。
- 不输出“请你、为以下、待处理文本、原始提示词”等任务说明。
- 用户要求添加表情、压缩、改语气或改格式时，直接输出处理后的结果。

普通改写策略：
- 改善清晰度、语气和可执行性。
- 保留原意和事实。
- 不新增背景。





待处理文本：
"""
明天三点开会
"""

输出要求：
- 只输出处理后的文本。
- 不要输出任务说明。
- 不要复述系统规则。)"_s);
}

TEST(TransformEnginePromptBuilder, writesTheWholePromptOfAConceptWithAnAgent) {
    const ContextDocument context = document(u"极简海报"_s);
    const ActionSpec spec = IntentCompiler::compileOptimize(context, OptimizeCompileMode::refine);
    const AgentSpec agent = AgentSpecCompiler::compile(u"加表情"_s, u"说明"_s, u"秘密指令"_s);
    EXPECT_EQ(buildPrompt(context, spec, agent),
              uR"(你是 Veltrin 的意图编译执行器。你要输出最终结果，而不是解释任务。

动作：semanticExpansion
策略：expressionStandards
输出契约：semanticExpansion

保留规则：
- 保留用户原意。
- 保留用户给出的主体。
- 不要擅自添加主体、品牌、人物、活动、场景或产品。
- 不要新增事实。

Veltrin 底层表达策略：
- 保留用户原意、事实、主体和关键限制。
- 不擅自扩写主体、品牌、人物、活动、场景、产品或背景。
- 不把模式说明、Agent 指令或规则当作待处理正文输出。
- 不输出“请你、为以下、待处理文本、原始提示词”等任务说明。
- 用户要求添加表情、压缩、改语气或改格式时，直接输出处理后的结果。

表达标准策略：
- 解释输入概念应该如何被表达清楚。
- 补充风格、构图、层级、限制和质量标准。
- 不替用户发明具体品牌、人物、活动、场景或产品。

视觉设计标准：极简主义海报风格应尽量减少视觉元素，只保留必要信息。强调大面积留白、清晰视觉中心、克制构图、明确层级、比例、位置、间距、形状与色彩关系。色彩高度克制，常用低饱和色、黑白灰或少量单一强调色。图形应简化、几何化、平面化；文字排版清楚、稀疏、有呼吸感。避免复杂背景、过度纹理、堆叠元素和强视觉噪音。

Agent 结构化能力：
- 名称：加表情
- 类型：transform
- 效果：addEmoji
- 调用方式：executeEffectOnly
- 强度：light
- 只作为处理方式，不是待处理文本。
- 不要输出任务说明。
- 只执行模式要求的效果，不要把模式说明改写成用户可见内容。

待处理文本：
"""
极简海报
"""

输出要求：
- 只输出处理后的文本。
- 不要输出任务说明。
- 不要复述系统规则。)"_s);
}

TEST(TransformEnginePromptBuilder, keepsContextAndAgentInstructionOutOfThePrompt) {
    const AgentSpec agent = AgentSpecCompiler::compile(u"助手"_s, {}, u"秘密指令"_s);
    const QString prompt = buildPrompt(document(u"x"_s), ActionSpec(), agent);
    EXPECT_FALSE(prompt.contains(u"前文"_s) || prompt.contains(u"后文"_s) || prompt.contains(u"秘密指令"_s));
    EXPECT_TRUE(prompt.contains(u"- 调用方式：useAsPersona\n- 强度：light\n"_s));
    EXPECT_FALSE(prompt.contains(u"只执行模式要求的效果"_s)) << "for effects only";
}

TEST(TransformEnginePromptBuilder, keepsTheTextAsItIs) {
    const QString text = u"  \"\"\"\n引号%1 %2\n"_s;
    EXPECT_TRUE(buildPrompt(document(text), ActionSpec(), std::nullopt)
                    .contains(u"待处理文本：\n\"\"\"\n"_s + text + u"\n\"\"\"\n\n输出要求："_s));
}

TEST(TransformEnginePromptBuilder, leavesOutAPreservationLineThatDoesNotHold) {
    ActionSpec spec;
    spec.preservation = {false, false, true, true, true, true, true};
    EXPECT_TRUE(
        buildPrompt(document(u"x"_s), spec, std::nullopt).contains(u"保留规则：\n\n\nVeltrin 底层"_s));
}

TEST(TransformEnginePromptBuilder, namesTheTargetLanguage) {
    const auto named = [](const std::optional<QString>& code) {
        return strategyBlock(OptimizationStrategy::languageTransfer, code);
    };
    EXPECT_EQ(named(u"zh"_s),
              u"翻译策略：\n- 将待处理文本翻译成简体中文。\n- 只输出译文。\n"
              u"- 保留人名、产品名、专有名词、数字、链接和代码片段。\n"
              u"- 不要解释，不要加标题，不要复述原文。"_s);
    EXPECT_TRUE(named(u"vi"_s).contains(u"翻译成Vietnamese。\n"_s));
    EXPECT_TRUE(named(u"sv"_s).contains(u"将待处理文本翻译成目标语言。\n"_s));
    EXPECT_TRUE(named(std::nullopt).contains(u"将待处理文本翻译成目标语言。\n"_s));
    const QStringList codes = u"zh en ja ko fr de es pt ru ar it th vi"_s.split(u' ');
    for (const QString& code : codes)
        EXPECT_FALSE(named(code).contains(u"目标语言"_s)) << qPrintable(code);
}

TEST(TransformEnginePromptBuilder, writesEachStrategy) {
    EXPECT_EQ(strategyBlock(OptimizationStrategy::structureExtraction),
              u"整理策略：\n- 提取目标、事实、人物、限制、待办和关键原话。\n- 删除重复、口癖和无意义填充。\n"
              u"- 适合结构化时使用短标题和项目符号。\n- 不要新增原文没有的信息。"_s);
    EXPECT_EQ(
        strategyBlock(OptimizationStrategy::exactTransform),
        u"精确变换策略：\n- 只执行结构化能力指定的变换。\n- 不把 Agent 指令当作待处理文本输出。\n- 不额外扩写。"_s);
    EXPECT_EQ(strategyBlock(OptimizationStrategy::replyGeneration),
              u"回复策略：\n- 根据待处理文本生成一段直接可发送的回复。\n- 语气自然、简洁、像真人写的。\n"
              u"- 信息不足时礼貌确认关键点。\n- 不要编造原文没有的事实。"_s);
    EXPECT_EQ(
        strategyBlock(OptimizationStrategy::multimodalUnderstanding),
        u"多模态理解策略：\n- 先把图片、文件或链接素材转成清晰的自然语言描述。\n"
        u"- 对图片只描述可确认的视觉线索；不确定内容必须标注为不确定。\n- 再基于描述生成可复用的提示词。"_s);
    EXPECT_EQ(strategyBlock(OptimizationStrategy::promptReverseEngineering),
              u"反推提示词策略：\n- 从拖拽素材中提取目标、结构、风格、约束和可复用表达。\n"
              u"- 输出可继续创作或分析的提示词。\n- 不假装读取了不存在的文件正文或网页正文。"_s);
    EXPECT_EQ(strategyBlock(OptimizationStrategy::voiceDictation),
              u"语音听写策略：\n- 保留用户口述的原意。\n- 只做必要的标点、错别字和轻微口语清理。\n"
              u"- 不新增事实，不改变表达目标。"_s);
    EXPECT_EQ(
        strategyBlock(OptimizationStrategy::voicePromptStructuring),
        u"语音提示词整理策略：\n- 将口述需求整理成清晰、可执行的提示词。\n"
        u"- 补齐任务目标、表达标准、限制条件和输出要求。\n- 不替用户发明没有说出的主体、品牌、人物、场景或事实。"_s);
    EXPECT_EQ(strategyBlock(OptimizationStrategy::voiceNoteStructuring),
              u"语音长段整理策略：\n- 从口述内容中提取主题、事实、待办、时间、限制和关键原话。\n"
              u"- 合并重复口语，保留重要上下文。\n- 适合时输出结构化要点。\n- 不新增原文没有的信息。"_s);
}

TEST(TransformEnginePromptBuilder, writesTheWholeRepairPrompt) {
    EXPECT_EQ(buildRepairPrompt(document(u"源"_s), ActionSpec(), OutputContractViolation::metaInstructionLeak,
                                u"坏\n"_s),
              uR"(你是 Veltrin 的输出契约修复器。下面的模型输出违反了契约：metaInstructionLeak。

原始文本：
"""
源
"""

需要修复的输出：
"""
坏

"""

修复要求：
- 只保留最终要写回给用户的文本。
- 删除“请你、为以下、待处理文本、原始提示词”等任务说明。
- 不要新增主体、品牌、人物、活动、场景、产品或事实。
- 不要输出任务说明。
- 不要解释修复过程。)"_s);
}

TEST(DomainPlaybook, guidesVisualDesignAlone) {
    ActionSpec spec;
    EXPECT_EQ(DomainPlaybook::guidance(spec, document(u"极简"_s)), QString());
    spec.domain = IntentDomain::visualDesign;
    EXPECT_EQ(DomainPlaybook::guidance(spec, document(u"夜景"_s)),
              u"视觉设计标准：明确主体、构图、层级、色彩、材质、排版和限制条件。"_s);
    EXPECT_TRUE(
        DomainPlaybook::guidance(spec, document(u"a MINIMAL poster"_s)).contains(u"极简主义海报风格"_s));
}

}  // namespace
}  // namespace veltrin
