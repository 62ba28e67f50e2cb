#pragma once

#include "Data/PromptAsset.h"
#include "Foundation/Date.h"
#include "Foundation/RawValues.h"
#include "Foundation/Records.h"

#include <QStringList>
#include <QUuid>

#include <map>
#include <optional>
#include <tuple>
#include <vector>

/// What the prompt lab's diagnosis speaks of.
namespace veltrin {

/// Where the text under test came from.
enum class DiagnosisSource { manual, asset, history, agent };
template <>
inline constexpr auto rawValuesOf<DiagnosisSource> =
    std::to_array<const char*>({"manual", "asset", "history", "agent"});

/// The parts of a prompt. Not the kinds of an asset's blocks, which say "constraints".
enum class PromptStructureKind { role, task, context, constraint, output };
template <>
inline constexpr auto rawValuesOf<PromptStructureKind> =
    std::to_array<const char*>({"role", "task", "context", "constraint", "output"});

/// A prompt split into its parts.
struct PromptStructureAnalysis {
    QString title;
    QString content;  ///< trimmed
    std::map<PromptStructureKind, QString> blocks;
    std::vector<PromptStructureKind> missing;  ///< without a block or with an empty one; in the kinds' order
    QStringList notes;                         ///< advice for the user, in Chinese
};

/// What a model found out about a prompt. Scores run from 0 to 100 as the model gives them; nothing holds
/// them to it.
struct PromptDiagnosisReport {
    struct Dimension {
        QUuid id;
        QString name;
        double score = 0;
        QString summary;
        QString evidence;
        friend bool operator==(const Dimension&, const Dimension&) = default;
    };
    struct Issue {
        QUuid id;
        QString severity;  ///< "high", "medium" or "low"; anything else is possible
        QString title;
        QString detail;
        QString fix;
        std::optional<PromptStructureKind> affectedBlock;
        friend bool operator==(const Issue&, const Issue&) = default;
    };
    struct RewriteVersion {
        QUuid id;
        QString title;
        QString intent;
        QString prompt;
        QStringList tags;
        friend bool operator==(const RewriteVersion&, const RewriteVersion&) = default;
    };

    QUuid id;
    QString originalText;
    QString targetScenario;
    QString modelFit;
    double overallScore = 0;
    QString verdict;
    std::vector<Dimension> dimensions;
    std::vector<Issue> issues;
    std::vector<RewriteVersion> rewrites;
    std::optional<PromptAsset> suggestedAsset;
    Date createdAt;
    friend bool operator==(const PromptDiagnosisReport&, const PromptDiagnosisReport&) = default;

    /// Reads a model's answer however imperfect it is: other key names, the older format, a default for what
    /// is missing, and a report that says so when nothing can be read. Never fails. `now` dates the report.
    static PromptDiagnosisReport parse(const QString& response, const QString& originalText, Date now);
};

template <>
inline constexpr auto recordFields<PromptDiagnosisReport::Dimension> = std::tuple{
    required(u"id", &PromptDiagnosisReport::Dimension::id),
    required(u"name", &PromptDiagnosisReport::Dimension::name),
    required(u"score", &PromptDiagnosisReport::Dimension::score),
    required(u"summary", &PromptDiagnosisReport::Dimension::summary),
    required(u"evidence", &PromptDiagnosisReport::Dimension::evidence),
};
template <>
inline constexpr auto recordFields<PromptDiagnosisReport::Issue> = std::tuple{
    required(u"id", &PromptDiagnosisReport::Issue::id),
    required(u"severity", &PromptDiagnosisReport::Issue::severity),
    required(u"title", &PromptDiagnosisReport::Issue::title),
    required(u"detail", &PromptDiagnosisReport::Issue::detail),
    required(u"fix", &PromptDiagnosisReport::Issue::fix),
    optional(u"affectedBlock", &PromptDiagnosisReport::Issue::affectedBlock),
};
template <>
inline constexpr auto recordFields<PromptDiagnosisReport::RewriteVersion> = std::tuple{
    required(u"id", &PromptDiagnosisReport::RewriteVersion::id),
    required(u"title", &PromptDiagnosisReport::RewriteVersion::title),
    required(u"intent", &PromptDiagnosisReport::RewriteVersion::intent),
    required(u"prompt", &PromptDiagnosisReport::RewriteVersion::prompt),
    required(u"tags", &PromptDiagnosisReport::RewriteVersion::tags),
};
template <>
inline constexpr auto recordFields<PromptDiagnosisReport> = std::tuple{
    required(u"id", &PromptDiagnosisReport::id),
    required(u"originalText", &PromptDiagnosisReport::originalText),
    required(u"targetScenario", &PromptDiagnosisReport::targetScenario),
    required(u"modelFit", &PromptDiagnosisReport::modelFit),
    required(u"overallScore", &PromptDiagnosisReport::overallScore),
    required(u"verdict", &PromptDiagnosisReport::verdict),
    required(u"dimensions", &PromptDiagnosisReport::dimensions),
    required(u"issues", &PromptDiagnosisReport::issues),
    required(u"rewrites", &PromptDiagnosisReport::rewrites),
    optional(u"suggestedAsset", &PromptDiagnosisReport::suggestedAsset),
    required(u"createdAt", &PromptDiagnosisReport::createdAt),
};

/// What the lab shows.
struct DiagnosisResult {
    struct Score {
        QString label;
        double score = 0;
        friend bool operator==(const Score&, const Score&) = default;
    };

    DiagnosisResult() = default;
    explicit DiagnosisResult(const PromptDiagnosisReport& report);

    double overall = 0;
    std::vector<Score> scores;
    QStringList issues;  ///< each with its advice on a second line
    QString rewrite;
    std::optional<PromptDiagnosisReport> report;
};

}  // namespace veltrin
