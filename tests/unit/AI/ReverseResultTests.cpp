#include "AI/ReverseResult.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

TEST(ReverseResult, splitsAPromptBySections) {
    const auto result = ReverseResult::read(
        uR"(前言
## 中文描述
一只猫
在窗边

**英文 Prompt：** A cat by the window
# Lighting
soft: warm
【风格关键词】：水彩、留白，手绘
- 构图: 三分法; 近景
色彩：
- 暖黄
* 米白
材质： 纸
Midjourney 版：a cat --ar 3:4
### Stable Diffusion
(cat:1.2)
)"_s);
    EXPECT_EQ(result.cnDescription, u"一只猫\n在窗边"_s);
    EXPECT_EQ(result.enPrompt, u"A cat by the window\n# Lighting\nsoft: warm"_s)
        << "a heading that is not looked for belongs to the text";
    EXPECT_EQ(result.styleKeywords, (QStringList{u"水彩"_s, u"留白"_s, u"手绘"_s}));
    EXPECT_EQ(result.compositionKeywords, (QStringList{u"三分法"_s, u"近景"_s}));
    EXPECT_EQ(result.colorKeywords, (QStringList{u"暖黄"_s, u"米白"_s}));
    EXPECT_EQ(result.materialKeywords, QStringList{u"纸"_s});
    EXPECT_EQ(result.modelVersions,
              (std::vector<ModelVersionPrompt>{{u"Midjourney"_s, u"a cat --ar 3:4"_s},
                                               {u"Stable Diffusion"_s, u"(cat:1.2)"_s}}));
}

TEST(ReverseResult, takesTheWholeTextForThePromptWhenNothingSaysOtherwise) {
    const QString text = u"画一只猫。\nPrompt engineering for everybody is quite another thing: no header"_s;
    const auto result = ReverseResult::read(text);
    EXPECT_EQ(result.enPrompt, text);
    EXPECT_TRUE(result.cnDescription.isEmpty());
    EXPECT_TRUE(result.modelVersions.empty());
    EXPECT_TRUE(result.styleKeywords.isEmpty());
    EXPECT_EQ(ReverseResult::read({}), ReverseResult{});
}

TEST(ReverseResult, fallsBackToTheShorterPromptHeader) {
    EXPECT_EQ(ReverseResult::read(u"Prompt: a cat\n中文描述：猫"_s).enPrompt, u"a cat"_s);
    EXPECT_EQ(ReverseResult::read(u"Prompt: a\n英文 Prompt: b"_s).enPrompt, u"b"_s);
}

TEST(ReverseTarget, theLabelsAreTheRawValues) {
    QStringList labels;
    for (const auto target : allCases<ReverseTarget>())
        labels.append(rawValue(target));
    EXPECT_EQ(labels, (QStringList{u"文本优化"_s, u"图像生成"_s, u"风格分析"_s, u"代码审查"_s, u"写作润色"_s,
                                   u"信息提取"_s, u"构图拆解"_s, u"色彩与材质"_s}));
}

TEST(ReverseMaterial, anEmptyTextWithAChosenImageIsAPicture) {
    EXPECT_TRUE(ReverseMaterial::hasInput(u" \n"_s, true));
    EXPECT_EQ(ReverseMaterial::material(u" \n"_s), u"图片素材"_s);
    EXPECT_EQ(ReverseMaterial::material(u" 文字 \n"_s), u"文字"_s);
    EXPECT_FALSE(ReverseMaterial::hasInput(u" \n"_s, false));
    EXPECT_TRUE(ReverseMaterial::hasInput(u"文字"_s, false));
}

}  // namespace
}  // namespace veltrin
