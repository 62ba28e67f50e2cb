#include "Intent/OutputContractValidator.h"

#include "Foundation/Text.h"

#include <algorithm>
#include <array>

namespace veltrin::OutputContractValidator {
namespace {

/// Shorter than AgentOutputGuard's list, and meant so: this one judges every transform, and a user's own text
/// may well speak of a "system prompt".
constexpr auto metaInstructionMarkers = std::to_array<const char16_t*>(
    {u"请你为以下", u"请为以下", u"为以下文本", u"为以下提示词", u"下面这段", u"待处理文本", u"原始提示词"});

/// A sample of what a model likes to add to a short visual concept; no full test, and to be kept as it
/// stands.
constexpr auto inventedSubjects =
    std::to_array<const char16_t*>({u"苹果", u"iphone", u"发布会", u"品牌", u"产品", u"人物", u"城市",
                                    u"咖啡", u"汽车", u"活动", u"slogan"});

bool inventsSubject(const QString& output, const QString& sourceText) {
    const QString source = sourceText.toLower();
    return std::any_of(inventedSubjects.begin(), inventedSubjects.end(), [&](const char16_t* word) {
        return output.contains(QStringView(word), Qt::CaseInsensitive) &&
               !source.contains(QStringView(word), Qt::CaseInsensitive);
    });
}

}  // namespace

OutputContractDecision validate(const QString& output, const QString& sourceText,
                                const ActionSpec& actionSpec) {
    const QString trimmed = Text::trimmed(output);
    if (trimmed.isEmpty()) return OutputContractDecision::reject(OutputContractViolation::emptyOutput);
    if (Text::containsAny(trimmed.toLower(), metaInstructionMarkers))
        return OutputContractDecision::repair(OutputContractViolation::metaInstructionLeak);
    if (actionSpec.outputContract == OutputContractKind::semanticExpansion &&
        !actionSpec.preservation.allowSubjectInvention && inventsSubject(trimmed, sourceText))
        return OutputContractDecision::reject(OutputContractViolation::subjectInvented);
    return OutputContractDecision::accept();
}

}  // namespace veltrin::OutputContractValidator
