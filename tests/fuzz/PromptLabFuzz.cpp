#include "AI/PromptIntelligenceModels.h"
#include "AI/PromptStructureAnalyzer.h"
#include "AI/ReverseResult.h"
#include "AI/WorkbenchProject.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

namespace {

constexpr Date now{1735689600};
const QString source = QStringLiteral("原文");

/// Whatever a model said, the record goes to a file and comes back.
template <Record R>
void checkRoundTrip(const R& record) {
    const auto json = writeRecord(record);
    fuzz::check(json.has_value(), "a read answer can be written");
    fuzz::check(readRecord<R>(*json) == record, "and reads back as it was");
}

void diagnose(const QString& answer) {
    const auto report = PromptDiagnosisReport::parse(answer, source, now);
    fuzz::check(report.originalText == source, "the source stays");
    fuzz::check(!report.dimensions.empty() && !report.rewrites.empty(), "there is something to show");
    fuzz::check(DiagnosisResult(report).scores.size() == report.dimensions.size(),
                "every dimension is shown");
    checkRoundTrip(report);
}

void reverse(const QString& answer) {
    const auto project = WorkbenchProject::parse(answer, {}, now);
    fuzz::check(project.promptAsset || !project.artifacts.empty(), "something is kept");
    ReverseResult::read(project.primaryPromptText());
    checkRoundTrip(project);
}

void analyze(const QString& text) {
    const auto analysis = PromptStructureAnalyzer::analyze({}, text);
    fuzz::check(analysis.content.isEmpty() ? analysis.blocks.empty()
                                           : analysis.blocks.contains(PromptStructureKind::task),
                "a content has a task");
    std::size_t filled = 0;
    for (const auto& [kind, block] : analysis.blocks)
        filled += block.isEmpty() ? 0 : 1;
    fuzz::check(filled + analysis.missing.size() == caseCount<PromptStructureKind>,
                "every kind is there or missing");
    const ReverseResult result = ReverseResult::read(text);
    fuzz::check(!result.enPrompt.isEmpty() || text.isEmpty(), "a text has a prompt");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        const QString answer = QString::fromUtf8(fuzz::rest(input));
        diagnose(answer);
        reverse(answer);
    } else {
        analyze(fuzz::text(input, 8192));
    }
    return 0;
}
