#include "AI/PromptAssetReader.h"

#include "AI/AnswerReading.h"

#include <utility>

namespace veltrin {
namespace {

using namespace AnswerReading;

/// Models use the analysis's word, "constraint", as well.
std::optional<PromptAssetBlockKind> blockKind(const QString& text) {
    if (text == u"constraint") return PromptAssetBlockKind::constraints;
    return fromRawValue<PromptAssetBlockKind>(text);
}

void append(std::vector<PromptAssetBlock>& blocks, const QString& kind, QString content, bool isRequired) {
    if (const auto known = blockKind(kind))
        blocks.push_back({QUuid::createUuid(), *known, std::move(content), isRequired});
}

std::vector<PromptAssetBlock> readBlocks(const Json& object) {
    std::vector<PromptAssetBlock> blocks;
    for (const Json* each : objects(object, u"blocks")) {
        const Json* isRequired = each->find(u"isRequired");
        append(blocks, string(*each, {u"kind", u"type"}, {}), string(*each, {u"content", u"text"}, {}),
               isRequired != nullptr && isRequired->toBool().value_or(false));
    }
    const Json* member = object.find(u"blocks");
    const Json::Object* byKind = member == nullptr ? nullptr : member->object();
    if (byKind == nullptr) return blocks;
    for (const auto& [kind, content] : *byKind) {
        if (auto text = content.toString()) append(blocks, kind, *std::move(text), false);
    }
    return blocks;
}

PromptAssetModelHint readModelHint(const Json& object) {
    PromptAssetModelHint hint;
    const Json* member = object.find(u"modelHint");
    if (member == nullptr) return hint;
    hint.preferredProvider = string(*member, {u"preferredProvider"}, {});
    hint.preferredModel = string(*member, {u"preferredModel"}, {});
    hint.thinkingMode = fromRawValue<ModelThinkingMode>(string(*member, {u"thinkingMode"}, {}))
                            .value_or(ModelThinkingMode::smart);
    hint.reason = string(*member, {u"reason"}, {});
    return hint;
}

}  // namespace

PromptAsset PromptAssetReader::parseAsset(const Json& object, const QString& fallbackTitle,
                                          PromptAssetSource fallbackSource, Date now) {
    PromptAsset asset;
    asset.id = QUuid::createUuid();
    asset.title = string(object, {u"title"}, fallbackTitle);
    asset.summary = string(object, {u"summary"}, {});
    asset.categoryTag = string(object, {u"categoryTag"}, asset.categoryTag);
    asset.tags = strings(object, u"tags");
    asset.blocks = readBlocks(object);
    asset.source = fromRawValue<PromptAssetSource>(string(object, {u"source"}, {})).value_or(fallbackSource);
    asset.sourceReference = string(object, {u"sourceReference"}, {});
    asset.modelHint = readModelHint(object);
    asset.createdAt = now;
    asset.updatedAt = now;
    return asset;
}

}  // namespace veltrin
