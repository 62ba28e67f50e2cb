#pragma once

#include "Data/PromptAsset.h"
#include "Foundation/Date.h"
#include "Foundation/RawValues.h"
#include "Foundation/Records.h"

#include <QStringList>
#include <QUuid>

#include <optional>
#include <tuple>
#include <vector>

namespace veltrin {

/// The material that the reverse workbench was given.
struct WorkbenchSource {
    QString kind;
    QString title;
    QString content;
    friend bool operator==(const WorkbenchSource&, const WorkbenchSource&) = default;
};

template <>
inline constexpr auto recordFields<WorkbenchSource> = std::tuple{
    required(u"kind", &WorkbenchSource::kind),
    required(u"title", &WorkbenchSource::title),
    required(u"content", &WorkbenchSource::content),
};

/// Something the model saw in the material.
struct ExtractedInsight {
    QUuid id;
    QString title;
    QString detail;
    QString kind;  ///< the model's own word, as "style" or "risk"
    friend bool operator==(const ExtractedInsight&, const ExtractedInsight&) = default;
};

template <>
inline constexpr auto recordFields<ExtractedInsight> = std::tuple{
    required(u"id", &ExtractedInsight::id),
    required(u"title", &ExtractedInsight::title),
    required(u"detail", &ExtractedInsight::detail),
    required(u"kind", &ExtractedInsight::kind),
};

/// Something that the user can keep.
struct GeneratedArtifact {
    enum class ArtifactType { promptAsset, memoryAction, dictionaryTerm, plainPrompt };

    QUuid id;
    ArtifactType type = ArtifactType::plainPrompt;
    QString title;
    QString summary;
    QString content;
    QStringList tags;
    friend bool operator==(const GeneratedArtifact&, const GeneratedArtifact&) = default;
};
template <>
inline constexpr auto rawValuesOf<GeneratedArtifact::ArtifactType> =
    std::to_array<const char*>({"promptAsset", "memoryAction", "dictionaryTerm", "plainPrompt"});

template <>
inline constexpr auto recordFields<GeneratedArtifact> = std::tuple{
    required(u"id", &GeneratedArtifact::id),           required(u"type", &GeneratedArtifact::type),
    required(u"title", &GeneratedArtifact::title),     required(u"summary", &GeneratedArtifact::summary),
    required(u"content", &GeneratedArtifact::content), required(u"tags", &GeneratedArtifact::tags),
};

/// What the reverse workbench made of a material.
struct WorkbenchProject {
    QUuid id;
    WorkbenchSource source;
    QString userGoal;
    QString detectedScenario;
    std::vector<ExtractedInsight> insights;
    std::optional<PromptAsset> promptAsset;
    std::vector<GeneratedArtifact> artifacts;
    QStringList nextQuestions;
    Date createdAt;
    friend bool operator==(const WorkbenchProject&, const WorkbenchProject&) = default;

    /// Reads a model's answer and keeps whatever it can. An answer that holds neither an asset nor an
    /// artifact is kept itself, as an artifact. Never fails. `now` dates the project.
    static WorkbenchProject parse(const QString& response, const WorkbenchSource& source, Date now);

    /// The text to show as the result: the first plain prompt, else the asset's blocks, else the first
    /// artifact that has a content; empty when there is none.
    QString primaryPromptText() const;
};
template <>
inline constexpr auto recordFields<WorkbenchProject> = std::tuple{
    required(u"id", &WorkbenchProject::id),
    required(u"source", &WorkbenchProject::source),
    required(u"userGoal", &WorkbenchProject::userGoal),
    required(u"detectedScenario", &WorkbenchProject::detectedScenario),
    required(u"insights", &WorkbenchProject::insights),
    optional(u"promptAsset", &WorkbenchProject::promptAsset),
    required(u"artifacts", &WorkbenchProject::artifacts),
    required(u"nextQuestions", &WorkbenchProject::nextQuestions),
    required(u"createdAt", &WorkbenchProject::createdAt),
};

}  // namespace veltrin
