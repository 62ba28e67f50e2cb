#include "AI/ModelConfiguration.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Kind = ModelThinkingRequestKind;

constexpr auto smart = ModelThinkingMode::smart;
constexpr auto on = ModelThinkingMode::alwaysOn;
constexpr auto off = ModelThinkingMode::alwaysOff;

ModelThinkingRequestPlan plan(ModelThinkingMode mode, ModelProvider provider, const QString& model) {
    return ModelThinking::requestPlan(mode, provider, model, u"x"_s, std::nullopt);
}

TEST(ModelThinking, thinksAboutLongPromptsAndLongAnswers) {
    const QString prompt(900, u'字');
    EXPECT_FALSE(ModelThinking::shouldThink(smart, prompt, 220));
    EXPECT_TRUE(ModelThinking::shouldThink(smart, prompt + u'字', 220));
    EXPECT_TRUE(ModelThinking::shouldThink(smart, prompt, 221));
    EXPECT_TRUE(ModelThinking::shouldThink(smart, prompt + u'字', std::nullopt));
    EXPECT_FALSE(
        ModelThinking::shouldThink(smart, u"👨‍👩‍👧‍👦"_s.repeated(900), std::nullopt))
        << "characters, not units";
}

TEST(ModelThinking, thinksAboutEachReasoningWord) {
    for (const QString& word : {u"分析"_s, u"推理"_s, u"计划"_s, u"架构"_s, u"重构"_s, u"复杂"_s, u"比较"_s,
                                u"为什么"_s, u"步骤"_s, u"方案"_s}) {
        EXPECT_TRUE(ModelThinking::shouldThink(smart, u"请"_s + word, std::nullopt)) << qPrintable(word);
    }
    EXPECT_FALSE(ModelThinking::shouldThink(smart, u"翻译"_s, std::nullopt));
}

TEST(ModelThinking, obeysAFixedModeWithoutReadingThePrompt) {
    EXPECT_TRUE(ModelThinking::shouldThink(on, u"x"_s, 1));
    EXPECT_FALSE(ModelThinking::shouldThink(off, u"分析"_s, 9999));
}

TEST(ModelThinking, controlsALocalQwenOnly) {
    const auto qwen = plan(on, ModelProvider::ollama, u" Qwen3:8b "_s);
    EXPECT_EQ(qwen.requestKind, Kind::ollamaThinkParameter);
    EXPECT_EQ(qwen.thinkValue, true);
    EXPECT_TRUE(qwen.isControllable);
    EXPECT_EQ(qwen.model, u"Qwen3:8b"_s);
    EXPECT_EQ(qwen.provider, ModelProvider::ollama);
    EXPECT_EQ(qwen.mode, on);
    EXPECT_EQ(qwen.message, u"本地 Qwen 会发送 think=true。"_s);
    EXPECT_EQ(plan(off, ModelProvider::ollama, u"qwen2"_s).message, u"本地 Qwen 会发送 think=false。"_s);
    const auto llama = plan(on, ModelProvider::ollama, u"llama3.1:8b"_s);
    EXPECT_EQ(llama.requestKind, Kind::unsupported);
    EXPECT_EQ(llama.thinkValue, std::nullopt);
    EXPECT_FALSE(llama.isControllable);
    EXPECT_EQ(llama.message, u"当前本地模型没有明确可控的思考开关。"_s);
    EXPECT_EQ(plan(on, ModelProvider::ollama, u"my-qwen"_s).requestKind, Kind::unsupported);
}

TEST(ModelThinking, routesDeepseekToItsReasonerAndNeverBack) {
    const auto routed = plan(on, ModelProvider::deepseek, u"DeepSeek-Chat"_s);
    EXPECT_EQ(routed.model, u"deepseek-reasoner"_s);
    EXPECT_EQ(routed.requestKind, Kind::deepseekReasonerModel);
    EXPECT_EQ(routed.thinkValue, true);
    EXPECT_EQ(routed.message, u"DeepSeek 会切换到 deepseek-reasoner。"_s);
    EXPECT_EQ(plan(on, ModelProvider::deepseek, u"deepseek-v4"_s).model, u"deepseek-v4"_s);
    const auto quiet = plan(off, ModelProvider::deepseek, u"deepseek-reasoner"_s);
    EXPECT_EQ(quiet.model, u"deepseek-reasoner"_s);
    EXPECT_EQ(quiet.thinkValue, false);
    EXPECT_TRUE(quiet.isControllable);
    EXPECT_EQ(quiet.message, u"DeepSeek 会使用普通聊天模型。"_s);
}

TEST(ModelThinking, sendsQwenItsOwnSwitchForAnyModel) {
    EXPECT_EQ(plan(on, ModelProvider::qwen, u"any"_s).requestKind, Kind::qwenEnableThinking);
    EXPECT_EQ(plan(on, ModelProvider::qwen, u"any"_s).message, u"通义千问会发送 enable_thinking=true。"_s);
    EXPECT_EQ(plan(off, ModelProvider::qwen, u"any"_s).message, u"通义千问会发送 enable_thinking=false。"_s);
    EXPECT_EQ(plan(off, ModelProvider::qwen, u"any"_s).thinkValue, false);
}

TEST(ModelThinking, controlsAQwenOnTheTwoHostingServicesAndInventsNoOtherSwitch) {
    for (const auto provider : {ModelProvider::siliconFlow, ModelProvider::volcengine}) {
        const auto qwen = plan(on, provider, u"Pro/Qwen2"_s);
        EXPECT_EQ(qwen.requestKind, Kind::genericThinkParameter);
        EXPECT_EQ(qwen.message, u"该兼容接口会发送 think=true。"_s);
        EXPECT_EQ(plan(off, provider, u"qwen"_s).message, u"该兼容接口会发送 think=false。"_s);
        const auto other = plan(on, provider, u"deepseek-v3"_s);
        EXPECT_EQ(other.requestKind, Kind::unsupported);
        EXPECT_EQ(other.message, u"该模型没有明确可控的思考参数，Veltrin 不会伪造开关。"_s);
    }
}

TEST(ModelThinking, leavesEveryOtherServiceAlone) {
    for (const auto provider : {ModelProvider::openAI, ModelProvider::anthropic, ModelProvider::google,
                                ModelProvider::moonshot, ModelProvider::zhipu, ModelProvider::tencentHunyuan,
                                ModelProvider::baiduQianfan, ModelProvider::custom}) {
        const auto none = plan(on, provider, u"qwen"_s);
        EXPECT_EQ(none.requestKind, Kind::unsupported);
        EXPECT_FALSE(none.thinkValue);
        EXPECT_EQ(none.message,
                  ModelProviders::displayName(provider) + u" 当前 API 格式没有接入可控思考参数。"_s);
    }
}

TEST(ModelThinking, previewsWhatAPlanAdds) {
    EXPECT_EQ(plan(on, ModelProvider::openAI, u"m"_s).requestPreview(), u"无额外参数"_s);
    EXPECT_EQ(plan(on, ModelProvider::ollama, u"qwen"_s).requestPreview(), u"\"think\": true"_s);
    EXPECT_EQ(plan(off, ModelProvider::volcengine, u"qwen"_s).requestPreview(), u"\"think\": false"_s);
    EXPECT_EQ(plan(on, ModelProvider::qwen, u"m"_s).requestPreview(), u"\"enable_thinking\": true"_s);
    EXPECT_EQ(plan(on, ModelProvider::deepseek, u"deepseek-chat"_s).requestPreview(),
              u"\"model\": \"deepseek-reasoner\""_s);
    ModelThinkingRequestPlan unset;
    unset.requestKind = Kind::qwenEnableThinking;
    EXPECT_EQ(unset.requestPreview(), u"\"enable_thinking\": false"_s);
}

TEST(ModelThinking, labelsTheThinkingSheet) {
    EXPECT_EQ(title(smart), u"智能打开"_s);
    EXPECT_EQ(title(on), u"全局打开"_s);
    EXPECT_EQ(title(off), u"全局关闭"_s);
    EXPECT_EQ(explanation(smart), u"短任务不开思考，长任务和复杂推理自动打开。"_s);
    EXPECT_EQ(explanation(on), u"所有任务都开启思考，质量更稳，但等待时间更长。"_s);
    EXPECT_EQ(explanation(off), u"所有任务都关闭思考，响应最快，适合翻译和短改写。"_s);
    EXPECT_EQ(label(Kind::unsupported), u"不发送思考参数"_s);
    EXPECT_EQ(label(Kind::ollamaThinkParameter), u"Ollama think"_s);
    EXPECT_EQ(label(Kind::qwenEnableThinking), u"enable_thinking"_s);
    EXPECT_EQ(label(Kind::deepseekReasonerModel), u"模型路由"_s);
    EXPECT_EQ(label(Kind::genericThinkParameter), u"兼容 think"_s);
}

}  // namespace
}  // namespace veltrin
