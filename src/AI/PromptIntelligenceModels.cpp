#include "AI/PromptIntelligenceModels.h"

#include "AI/AIJSONExtractor.h"
#include "AI/AnswerReading.h"
#include "AI/PromptAssetReader.h"
#include "Foundation/Text.h"

#include <utility>

namespace veltrin {
namespace {

using namespace AnswerReading;
using Report = PromptDiagnosisReport;

constexpr double unknownScore = 50;
/// Told apart from every score a reader could give, so that the fallback is recognised.
constexpr double unreadableScore = 53;

QString verdictFor(double score) {
    if (score >= 85) return QStringLiteral("结构稳定，可直接使用");
    if (score >= 70) return QStringLiteral("基本可用，建议补齐关键约束");
    if (score >= 50) return QStringLiteral("存在明显缺口，建议先修复再使用");
    return QStringLiteral("风险较高，需要重写");
}

Report::Dimension dimension(QString name, double score) {
    Report::Dimension dimension;
    dimension.id = QUuid::createUuid();
    dimension.name = std::move(name);
    dimension.score = score;
    return dimension;
}

std::vector<Report::Dimension> defaultDimensions(double overall) {
    return {dimension(QStringLiteral("角色定义"), overall), dimension(QStringLiteral("任务描述"), overall),
            dimension(QStringLiteral("上下文"), overall * 0.85),
            dimension(QStringLiteral("约束条件"), overall * 0.8),
            dimension(QStringLiteral("输出格式"), overall * 0.75)};
}

const QString& unnamedDimension() {
    static const QString name = QStringLiteral("质量维度");
    return name;
}

/// The older format: labels and numbers only.
std::vector<Report::Dimension> parseLegacyScores(const Json& object, double overall) {
    std::vector<Report::Dimension> dimensions;
    for (const Json* each : objects(object, u"scores")) {
        dimensions.push_back(dimension(string(*each, {u"label", u"name"}, unnamedDimension()),
                                       number(*each, {u"score"}).value_or(overall)));
    }
    return dimensions;
}

std::vector<Report::Dimension> readDimensions(const Json& object, double overall) {
    std::vector<Report::Dimension> dimensions;
    for (const Json* each : objects(object, u"dimensions")) {
        auto read = dimension(string(*each, {u"name", u"label"}, unnamedDimension()),
                              number(*each, {u"score"}).value_or(overall));
        read.summary = string(*each, {u"summary"}, {});
        read.evidence = string(*each, {u"evidence"}, {});
        dimensions.push_back(std::move(read));
    }
    if (dimensions.empty()) dimensions = parseLegacyScores(object, overall);
    if (dimensions.empty()) dimensions = defaultDimensions(overall);
    return dimensions;
}

/// A model is asked for an asset's word, "constraints", where the kind is "constraint"; both are read.
std::optional<PromptStructureKind> structureKind(const std::optional<QString>& text) {
    if (!text) return std::nullopt;
    if (*text == u"constraints") return PromptStructureKind::constraint;
    return fromRawValue<PromptStructureKind>(*text);
}

Report::Issue readIssue(const Json& object) {
    Report::Issue issue;
    issue.id = QUuid::createUuid();
    issue.severity = string(object, {u"severity"}, QStringLiteral("medium"));
    issue.title = string(object, {u"title", u"problem"}, QStringLiteral("提示词问题"));
    issue.detail = string(object, {u"detail", u"evidence"}, QStringLiteral("补充更明确的说明。"));
    issue.fix = string(object, {u"fix", u"suggestion"}, QStringLiteral("根据问题补齐缺失信息。"));
    issue.affectedBlock = structureKind(string(object, {u"affectedBlock"}));
    return issue;
}

Report::RewriteVersion rewrite(QString title, QString intent, QString prompt) {
    Report::RewriteVersion version;
    version.id = QUuid::createUuid();
    version.title = std::move(title);
    version.intent = std::move(intent);
    version.prompt = std::move(prompt);
    return version;
}

std::vector<Report::RewriteVersion> readRewrites(const Json& object, const QString& originalText) {
    std::vector<Report::RewriteVersion> rewrites;
    for (const Json* each : objects(object, u"rewrites")) {
        auto version = rewrite(string(*each, {u"title"}, {}), string(*each, {u"intent"}, {}),
                               string(*each, {u"prompt", u"content"}, {}));
        version.tags = strings(*each, u"tags");
        rewrites.push_back(std::move(version));
    }
    if (!rewrites.empty()) return rewrites;
    if (auto older = string(object, {u"rewrite"}))
        return {rewrite(QStringLiteral("结构化重写"), QStringLiteral("兼容旧诊断格式"), *std::move(older))};
    return {rewrite(QStringLiteral("原文"), QStringLiteral("未生成重写版本"), originalText)};
}

Report newReport(const QString& originalText, Date now) {
    Report report;
    report.id = QUuid::createUuid();
    report.originalText = originalText;
    report.createdAt = now;
    return report;
}

Report fallbackReport(const QString& originalText, const QString& reason, Date now) {
    Report report = newReport(originalText, now);
    report.targetScenario = QStringLiteral("general");
    report.modelFit = QStringLiteral("smart");
    report.overallScore = unreadableScore;
    report.verdict = reason;
    report.dimensions = defaultDimensions(unreadableScore);
    Report::Issue issue;
    issue.id = QUuid::createUuid();
    issue.severity = QStringLiteral("high");
    issue.title = QStringLiteral("诊断结果解析失败");
    issue.detail = reason;
    issue.fix = QStringLiteral("请重试，或切换到更稳定的模型。");
    report.issues.push_back(std::move(issue));
    report.rewrites = {rewrite(QStringLiteral("原文保留"), QStringLiteral("解析失败兜底"), originalText)};
    return report;
}

}  // namespace

PromptDiagnosisReport PromptDiagnosisReport::parse(const QString& response, const QString& originalText,
                                                   Date now) {
    const auto object = AIJSONExtractor::object(response);
    if (!object) return fallbackReport(originalText, QStringLiteral("无法解析 AI 返回的诊断 JSON。"), now);
    Report report = newReport(originalText, now);
    report.overallScore = number(*object, {u"overallScore", u"overall"}).value_or(unknownScore);
    report.verdict = string(*object, {u"verdict", u"summary"}, verdictFor(report.overallScore));
    report.targetScenario = string(*object, {u"targetScenario", u"scenario"}, QStringLiteral("general"));
    report.modelFit = string(*object, {u"modelFit", u"recommendedThinkingMode"}, QStringLiteral("smart"));
    report.dimensions = readDimensions(*object, report.overallScore);
    for (const Json* each : objects(*object, u"issues"))
        report.issues.push_back(readIssue(*each));
    report.rewrites = readRewrites(*object, originalText);
    const Json* asset = object->find(u"suggestedAsset");
    if (asset != nullptr && asset->isObject())
        report.suggestedAsset = PromptAssetReader::parseAsset(*asset, QStringLiteral("诊断修复提示词"),
                                                              PromptAssetSource::diagnosis, now);
    return report;
}

DiagnosisResult::DiagnosisResult(const PromptDiagnosisReport& from)
    : overall(from.overallScore), report(from) {
    for (const auto& dimension : from.dimensions)
        scores.push_back({dimension.name, dimension.score});
    for (const auto& issue : from.issues) {
        QString text = issue.title + u'：' + issue.detail;
        if (!Text::isBlank(issue.fix)) text += QStringLiteral("\n建议：") + issue.fix;
        issues.append(text);
    }
    rewrite = from.rewrites.empty() ? from.originalText : from.rewrites.front().prompt;
}

}  // namespace veltrin
