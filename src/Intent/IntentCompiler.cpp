#include "Intent/IntentCompiler.h"

#include "Foundation/Characters.h"
#include "Foundation/Text.h"

#include <algorithm>
#include <array>

namespace veltrin::IntentCompiler {
namespace {

constexpr auto visualDesignWords = std::to_array<const char16_t*>(
    {u"海报", u"logo",    u"Logo",   u"UI",       u"界面",      u"视觉", u"排版", u"构图", u"摄影", u"产品图",
     u"极简", u"minimal", u"poster", u"赛博朋克", u"cyberpunk", u"夜景", u"插画", u"字体", u"配色", u"风格"});

/// Compared as they stand; the blanks keep words that merely begin so ("functional", "classic") out.
constexpr auto codeMarks = std::to_array<const char16_t*>({u"Exception", u"Error:", u"func ", u"class "});

/// A visual text shorter than this is a concept; from here on it is a draft.
constexpr qsizetype conceptCharacters = 19;
constexpr qsizetype structuredLines = 3;

bool hasLines(QStringView text, qsizetype wanted) {
    qsizetype lines = 0;
    bool inLine = false;
    for (const QChar c : text) {
        const bool starts = !inLine && !Text::isLineBreak(c);
        inLine = !Text::isLineBreak(c);
        if (starts && ++lines >= wanted) return true;
    }
    return false;
}

IntentInputKind orElse(IntentInputKind kind, IntentInputKind fallback) {
    return kind == IntentInputKind::unknown ? fallback : kind;
}

IntentDomain orElse(IntentDomain domain, IntentDomain fallback) {
    return domain == IntentDomain::unknown ? fallback : domain;
}

}  // namespace

IntentDomain classifyDomain(const QString& text) {
    return Text::containsAny(text, visualDesignWords, Qt::CaseInsensitive) ? IntentDomain::visualDesign
                                                                           : IntentDomain::unknown;
}

IntentInputKind classifyInputKind(const QString& text) {
    const QString trimmed = Text::trimmed(text);
    if (trimmed.isEmpty()) return IntentInputKind::unknown;
    if (hasLines(trimmed, structuredLines)) return IntentInputKind::structuredText;
    if (Text::containsAny(trimmed, codeMarks)) return IntentInputKind::codeOrError;
    if (Characters::count(trimmed) < conceptCharacters &&
        classifyDomain(trimmed) == IntentDomain::visualDesign)
        return IntentInputKind::conceptPhrase;
    return IntentInputKind::writingDraft;
}

ActionSpec compileOptimize(const ContextDocument& context, OptimizeCompileMode mode) {
    const QString text = Text::trimmed(context.text);
    ActionSpec spec;
    spec.inputKind = classifyInputKind(text);
    spec.domain = classifyDomain(text);
    if (mode == OptimizeCompileMode::restructure) {
        spec.operation = ActionOperation::structureOrganization;
        spec.strategy = OptimizationStrategy::structureExtraction;
        spec.inputKind = orElse(spec.inputKind, IntentInputKind::structuredText);
        spec.preservation.allowExpansion = true;
        spec.outputContract = OutputContractKind::analysis;
        return spec;
    }
    // `modelAdapt` and `outputFormat` compile as `refine` does: they differ in their prompts alone.
    if (spec.inputKind == IntentInputKind::conceptPhrase && spec.domain == IntentDomain::visualDesign) {
        spec.operation = ActionOperation::semanticExpansion;
        spec.strategy = OptimizationStrategy::expressionStandards;
        spec.preservation.allowExpansion = true;
        spec.outputContract = OutputContractKind::semanticExpansion;
        return spec;
    }
    spec.operation = ActionOperation::writingRefinement;
    spec.strategy = OptimizationStrategy::plainRewrite;
    spec.inputKind = orElse(spec.inputKind, IntentInputKind::writingDraft);
    spec.domain = orElse(spec.domain, IntentDomain::writing);
    spec.preservation.preserveStructure = true;
    spec.outputContract = OutputContractKind::plainTextTransform;
    return spec;
}

ActionSpec compileSmartSelect(const ContextDocument& context, SmartSelectCompileMode mode) {
    const IntentInputKind kind = classifyInputKind(context.text);
    const IntentDomain domain = classifyDomain(context.text);
    ActionSpec spec;
    spec.preservation.allowExpansion = true;
    switch (mode) {
        case SmartSelectCompileMode::reply:
            spec.operation = ActionOperation::reply;
            spec.strategy = OptimizationStrategy::replyGeneration;
            spec.inputKind = orElse(kind, IntentInputKind::chatMessage);
            spec.domain = orElse(domain, IntentDomain::chat);
            spec.outputContract = OutputContractKind::replyDraft;
            break;
        case SmartSelectCompileMode::organize:
            spec.operation = ActionOperation::structureOrganization;
            spec.strategy = OptimizationStrategy::structureExtraction;
            spec.inputKind = orElse(kind, IntentInputKind::structuredText);
            spec.domain = orElse(domain, IntentDomain::knowledge);
            spec.outputContract = OutputContractKind::analysis;
            break;
    }
    return spec;
}

}  // namespace veltrin::IntentCompiler
