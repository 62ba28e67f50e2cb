#pragma once

#include "AI/ModelConfiguration.h"
#include "Foundation/Date.h"
#include "Foundation/RawValues.h"
#include "Foundation/Records.h"

#include <QStringList>
#include <QUuid>

#include <tuple>
#include <vector>

/// The structured form of a prompt, for the library's next step: no store reads or writes it yet.
namespace veltrin {

/// The parts of an asset. Not the kinds that the structure analysis finds, which say "constraint".
enum class PromptAssetBlockKind { role, task, context, constraints, output };
template <>
inline constexpr auto rawValuesOf<PromptAssetBlockKind> =
    std::to_array<const char*>({"role", "task", "context", "constraints", "output"});

enum class PromptAssetSource { promptCenter, workbench, diagnosis, memory, dictionary, manual, imported, ai };
template <>
inline constexpr auto rawValuesOf<PromptAssetSource> = std::to_array<const char*>(
    {"promptCenter", "workbench", "diagnosis", "memory", "dictionary", "manual", "imported", "ai"});

struct PromptAssetBlock {
    QUuid id;
    PromptAssetBlockKind kind = PromptAssetBlockKind::task;
    QString content;
    bool isRequired = false;
    friend bool operator==(const PromptAssetBlock&, const PromptAssetBlock&) = default;
};
template <>
inline constexpr auto recordFields<PromptAssetBlock> = std::tuple{
    required(u"id", &PromptAssetBlock::id),
    required(u"kind", &PromptAssetBlock::kind),
    required(u"content", &PromptAssetBlock::content),
    required(u"isRequired", &PromptAssetBlock::isRequired),
};

/// Which model the prompt is made for; empty words mean any.
struct PromptAssetModelHint {
    QString preferredProvider;
    QString preferredModel;
    ModelThinkingMode thinkingMode = ModelThinkingMode::smart;
    QString reason;
    friend bool operator==(const PromptAssetModelHint&, const PromptAssetModelHint&) = default;
};
template <>
inline constexpr auto recordFields<PromptAssetModelHint> = std::tuple{
    required(u"preferredProvider", &PromptAssetModelHint::preferredProvider),
    required(u"preferredModel", &PromptAssetModelHint::preferredModel),
    required(u"thinkingMode", &PromptAssetModelHint::thinkingMode),
    required(u"reason", &PromptAssetModelHint::reason),
};

struct PromptAsset {
    QUuid id;
    QString title;
    QString summary;
    QString categoryTag = QStringLiteral("general");
    QStringList tags;
    std::vector<PromptAssetBlock> blocks;
    PromptAssetSource source = PromptAssetSource::manual;
    QString sourceReference;
    PromptAssetModelHint modelHint;
    Date createdAt;
    Date updatedAt;
    bool isFavorite = false;
    friend bool operator==(const PromptAsset&, const PromptAsset&) = default;
};
template <>
inline constexpr auto recordFields<PromptAsset> = std::tuple{
    required(u"id", &PromptAsset::id),
    required(u"title", &PromptAsset::title),
    required(u"summary", &PromptAsset::summary),
    required(u"categoryTag", &PromptAsset::categoryTag),
    required(u"tags", &PromptAsset::tags),
    required(u"blocks", &PromptAsset::blocks),
    required(u"source", &PromptAsset::source),
    required(u"sourceReference", &PromptAsset::sourceReference),
    required(u"modelHint", &PromptAsset::modelHint),
    required(u"createdAt", &PromptAsset::createdAt),
    required(u"updatedAt", &PromptAsset::updatedAt),
    required(u"isFavorite", &PromptAsset::isFavorite),
};

}  // namespace veltrin
