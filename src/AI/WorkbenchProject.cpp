#include "AI/WorkbenchProject.h"

#include "AI/AIJSONExtractor.h"
#include "AI/AnswerReading.h"
#include "AI/PromptAssetReader.h"
#include "Foundation/Text.h"

#include <utility>

namespace veltrin {
namespace {

using namespace AnswerReading;
using ArtifactType = GeneratedArtifact::ArtifactType;

const QString& defaultGoal() {
    static const QString goal = QStringLiteral("根据输入材料生成可复用提示词");
    return goal;
}

ExtractedInsight insight(QString title, QString detail, QString kind) {
    return {QUuid::createUuid(), std::move(title), std::move(detail), std::move(kind)};
}

ExtractedInsight readInsight(const Json& object) {
    return insight(string(object, {u"title"}, {}), string(object, {u"detail", u"content"}, {}),
                   string(object, {u"kind"}, QStringLiteral("insight")));
}

/// One without a known type is a plain prompt, so that its content stays.
GeneratedArtifact readArtifact(const Json& object) {
    GeneratedArtifact artifact;
    artifact.id = QUuid::createUuid();
    artifact.type =
        fromRawValue<ArtifactType>(string(object, {u"type"}, {})).value_or(ArtifactType::plainPrompt);
    artifact.title = string(object, {u"title"}, {});
    artifact.summary = string(object, {u"summary"}, {});
    artifact.content = string(object, {u"content"}, {});
    artifact.tags = strings(object, u"tags");
    return artifact;
}

GeneratedArtifact wholeAnswer(const QString& response) {
    GeneratedArtifact artifact;
    artifact.id = QUuid::createUuid();
    artifact.title = QStringLiteral("反推提示词");
    artifact.summary = QStringLiteral("模型原始输出");
    artifact.content = response;
    return artifact;
}

WorkbenchProject newProject(const WorkbenchSource& source, Date now) {
    WorkbenchProject project;
    project.id = QUuid::createUuid();
    project.source = source;
    project.createdAt = now;
    return project;
}

WorkbenchProject fallbackProject(const QString& response, const WorkbenchSource& source, Date now) {
    WorkbenchProject project = newProject(source, now);
    project.userGoal = defaultGoal();
    project.detectedScenario = QStringLiteral("general");
    project.insights.push_back(insight(QStringLiteral("未解析为结构化结果"),
                                       QStringLiteral("已保留模型原始输出。"), QStringLiteral("insight")));
    project.artifacts.push_back(wholeAnswer(response));
    return project;
}

/// The first artifact of the type, or of any, that has a content; empty when there is none.
QString firstContent(const std::vector<GeneratedArtifact>& artifacts, std::optional<ArtifactType> type) {
    for (const GeneratedArtifact& each : artifacts) {
        if ((!type || each.type == *type) && !Text::isBlank(each.content)) return each.content;
    }
    return {};
}

QString joinedBlocks(const PromptAsset& asset) {
    QStringList texts;
    for (const PromptAssetBlock& block : asset.blocks) {
        if (!Text::isBlank(block.content)) texts.append(block.content);
    }
    return texts.join(QStringLiteral("\n\n"));
}

}  // namespace

WorkbenchProject WorkbenchProject::parse(const QString& response, const WorkbenchSource& source, Date now) {
    const auto object = AIJSONExtractor::object(response);
    if (!object) return fallbackProject(response, source, now);
    WorkbenchProject project = newProject(source, now);
    project.userGoal = string(*object, {u"userGoal"}, defaultGoal());
    project.detectedScenario = string(*object, {u"detectedScenario"}, QStringLiteral("general"));
    for (const Json* each : objects(*object, u"insights"))
        project.insights.push_back(readInsight(*each));
    const Json* asset = object->find(u"promptAsset");
    if (asset != nullptr && asset->isObject()) {
        project.promptAsset = PromptAssetReader::parseAsset(*asset, QStringLiteral("工作台生成提示词"),
                                                            PromptAssetSource::workbench, now);
    }
    for (const Json* each : objects(*object, u"artifacts"))
        project.artifacts.push_back(readArtifact(*each));
    project.nextQuestions = strings(*object, u"nextQuestions");
    if (!project.promptAsset && project.artifacts.empty()) project.artifacts.push_back(wholeAnswer(response));
    return project;
}

QString WorkbenchProject::primaryPromptText() const {
    if (QString plain = firstContent(artifacts, ArtifactType::plainPrompt); !plain.isEmpty()) return plain;
    if (QString blocks = promptAsset ? joinedBlocks(*promptAsset) : QString(); !blocks.isEmpty())
        return blocks;
    return firstContent(artifacts, std::nullopt);
}

}  // namespace veltrin
