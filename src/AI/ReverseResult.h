#pragma once

#include "Foundation/RawValues.h"

#include <QStringList>

#include <vector>

namespace veltrin {

/// What the material is to be turned into; the raw values are the labels.
enum class ReverseTarget {
    textOptimize,
    imageGenerate,
    styleAnalysis,
    codeReview,
    writingPolish,
    dataExtract,
    composeLayout,
    colorPalette,
};
template <>
inline constexpr auto rawValuesOf<ReverseTarget> = std::to_array<const char*>(
    {"文本优化", "图像生成", "风格分析", "代码审查", "写作润色", "信息提取", "构图拆解", "色彩与材质"});

/// A prompt worded for one model.
struct ModelVersionPrompt {
    QString model;
    QString prompt;
    friend bool operator==(const ModelVersionPrompt&, const ModelVersionPrompt&) = default;
};

/// A project's prompt split into what the workbench shows.
///
/// A header is a short line that begins, after a list mark, with a name that is looked for ("中文描述",
/// "英文 Prompt", "风格", a model's name…) and has a colon behind it, or a "#", 【】 or asterisks around it.
/// What follows on its line and on those below it, up to the next header, is its text.
struct ReverseResult {
    QString cnDescription;
    QString enPrompt;  ///< the whole text when it has no such section
    std::vector<ModelVersionPrompt> modelVersions;
    QStringList styleKeywords;
    QStringList compositionKeywords;
    QStringList colorKeywords;
    QStringList materialKeywords;
    friend bool operator==(const ReverseResult&, const ReverseResult&) = default;

    static ReverseResult read(const QString& text);
};

namespace ReverseMaterial {
/// Whether there is anything to reverse: a text or a chosen file.
bool hasInput(const QString& text, bool fileIsChosen);
/// What is handed to the model: the trimmed text, or a word for the picture when it is empty.
QString material(const QString& text);
}  // namespace ReverseMaterial

}  // namespace veltrin
