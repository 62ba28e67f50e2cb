#include "AI/PromptIntelligenceModels.h"
#include "AI/WorkbenchProject.h"
#include "support/RecordLaws.h"

namespace veltrin {
namespace {

TEST(PromptLabRecords, keepTheLawsOfRecords) {
    expectRecordLaws<PromptAssetBlock>();
    expectRecordLaws<PromptAssetModelHint>();
    expectRecordLaws<PromptAsset>();
    expectRecordLaws<PromptDiagnosisReport::Dimension>();
    expectRecordLaws<PromptDiagnosisReport::Issue>();
    expectRecordLaws<PromptDiagnosisReport::RewriteVersion>();
    expectRecordLaws<PromptDiagnosisReport>();
    expectRecordLaws<WorkbenchSource>();
    expectRecordLaws<ExtractedInsight>();
    expectRecordLaws<GeneratedArtifact>();
    expectRecordLaws<WorkbenchProject>();
}

}  // namespace
}  // namespace veltrin
