#include "Intent/OutputContractValidator.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

ActionSpec under(OutputContractKind contract, bool allowSubjectInvention = false) {
    ActionSpec spec;
    spec.outputContract = contract;
    spec.preservation.allowSubjectInvention = allowSubjectInvention;
    return spec;
}

const auto accept = OutputContractDecision::accept();
const auto leak = OutputContractDecision::repair(OutputContractViolation::metaInstructionLeak);
const auto empty = OutputContractDecision::reject(OutputContractViolation::emptyOutput);
const auto invented = OutputContractDecision::reject(OutputContractViolation::subjectInvented);

TEST(OutputContractValidator, rejectsABlankOutputUnderEveryContract) {
    for (const auto contract : allCases<OutputContractKind>()) {
        EXPECT_EQ(OutputContractValidator::validate(u" \n\t "_s, u"源"_s, under(contract)), empty);
        EXPECT_EQ(OutputContractValidator::validate(QString(), u"源"_s, under(contract)), empty);
    }
}

TEST(OutputContractValidator, wantsAMetaInstructionRepairedUnderEveryContract) {
    for (const auto contract : allCases<OutputContractKind>())
        EXPECT_EQ(OutputContractValidator::validate(u"请为以下文本润色"_s, u"源"_s, under(contract)), leak);
}

TEST(OutputContractValidator, knowsEachMarkerWhereverItStands) {
    for (const QString& marker : {u"请你为以下"_s, u"请为以下"_s, u"为以下文本"_s, u"为以下提示词"_s,
                                  u"下面这段"_s, u"待处理文本"_s, u"原始提示词"_s}) {
        EXPECT_EQ(OutputContractValidator::validate(u"好的，"_s + marker + u"。"_s, u"源"_s,
                                                    under(OutputContractKind::plainTextTransform)),
                  leak)
            << qPrintable(marker);
    }
}

TEST(OutputContractValidator, leavesTheLongerMarkerListToTheAgentGuard) {
    const auto spec = under(OutputContractKind::plainTextTransform);
    EXPECT_EQ(OutputContractValidator::validate(u"SYSTEM PROMPT"_s, u"源"_s, spec), accept);
    EXPECT_EQ(OutputContractValidator::validate(u"以下文本"_s, u"源"_s, spec), accept);
    EXPECT_EQ(OutputContractValidator::validate(u"以下提示词"_s, u"源"_s, spec), accept);
}

TEST(OutputContractValidator, rejectsASubjectThatTheConceptDidNotName) {
    const auto spec = under(OutputContractKind::semanticExpansion);
    const QString output = u"一张苹果发布会海报"_s;
    EXPECT_EQ(OutputContractValidator::validate(output, u"极简海报"_s, spec), invented);
    EXPECT_EQ(OutputContractValidator::validate(output, u"苹果海报"_s, spec), invented)
        << "the event is invented";
    EXPECT_EQ(OutputContractValidator::validate(output, u"苹果发布会海报"_s, spec), accept);
    EXPECT_EQ(OutputContractValidator::validate(u"一张苹果海报"_s, u"苹果海报"_s, spec), accept);
    EXPECT_EQ(OutputContractValidator::validate(output, u"极简海报"_s,
                                                under(OutputContractKind::semanticExpansion, true)),
              accept);
}

TEST(OutputContractValidator, looksForInventedSubjectsWithoutCase) {
    const auto spec = under(OutputContractKind::semanticExpansion);
    EXPECT_EQ(OutputContractValidator::validate(u"An IPHONE poster"_s, u"poster"_s, spec), invented);
    EXPECT_EQ(OutputContractValidator::validate(u"An iphone poster"_s, u"iPhone poster"_s, spec), accept);
    EXPECT_EQ(OutputContractValidator::validate(u"a bold Slogan"_s, u"poster"_s, spec), invented);
}

TEST(OutputContractValidator, testsForInventionUnderTheExpansionContractOnly) {
    EXPECT_EQ(OutputContractValidator::validate(u"写给苹果的信"_s, u"写信"_s,
                                                under(OutputContractKind::plainTextTransform)),
              accept);
}

}  // namespace
}  // namespace veltrin
