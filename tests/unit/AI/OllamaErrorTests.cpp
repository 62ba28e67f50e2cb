#include "AI/OllamaError.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(OllamaError, wordsAStatusByItsCodeAndAppendsThePreview) {
    const auto words = [](int code) {
        return OllamaError::badStatusCode(code, u"{body}"_s).errorDescription();
    };
    EXPECT_EQ(words(400), u"模型服务参数错误（400），请检查模型名称、API 格式和 token 参数。{body}"_s);
    EXPECT_EQ(words(401), u"模型服务认证失败（401），请检查 API Key 和认证方式。{body}"_s);
    EXPECT_EQ(words(403), u"模型服务认证失败（403），请检查 API Key 和认证方式。{body}"_s);
    EXPECT_EQ(words(429), u"模型服务请求过于频繁或额度不足（429），请稍后重试或检查额度。{body}"_s);
    EXPECT_EQ(words(529), u"模型服务返回错误状态（529）。{body}"_s);
    EXPECT_EQ(words(-1), u"模型服务返回错误状态（-1）。{body}"_s);
}

TEST(OllamaError, wordsTheOtherCases) {
    EXPECT_EQ(OllamaError::missingAPIKey(u"月之暗面 Kimi"_s).errorDescription(),
              u"月之暗面 Kimi 缺少 API Key"_s);
    EXPECT_EQ(OllamaError::badStatus().errorDescription(), u"模型服务返回了错误状态，请确认服务正在运行"_s);
    EXPECT_EQ(OllamaError::invalidResponse().errorDescription(), u"Ollama 返回了无法解析的响应"_s);
    EXPECT_EQ(OllamaError::unusableTranslation().errorDescription(), u"模型没有返回可用译文"_s);
    EXPECT_EQ(OllamaError::metaInstructionLeak().errorDescription(),
              u"模型输出了任务说明而不是处理结果，已阻止自动写回。请重试或切换模型。"_s);
}

}  // namespace
}  // namespace veltrin
