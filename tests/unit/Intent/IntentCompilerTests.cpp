#include "Intent/IntentCompiler.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

ContextDocument document(const QString& text) {
    ContextDocument context;
    context.text = text;
    return context;
}

ActionSpec optimize(const QString& text, OptimizeCompileMode mode = OptimizeCompileMode::refine) {
    return IntentCompiler::compileOptimize(document(text), mode);
}

/// No row may let a model invent a subject or a fact.
void expectSafe(const ActionSpec& spec) {
    EXPECT_TRUE(spec.preservation.preserveIntent);
    EXPECT_TRUE(spec.preservation.preserveSubject);
    EXPECT_TRUE(spec.preservation.preserveFacts);
    EXPECT_FALSE(spec.preservation.allowNewFacts);
    EXPECT_FALSE(spec.preservation.allowSubjectInvention);
    EXPECT_FALSE(spec.targetLanguage);
}

TEST(IntentCompiler, expandsAShortVisualConcept) {
    const ActionSpec spec = optimize(u"  极简海报\n"_s);
    EXPECT_EQ(spec.inputKind, IntentInputKind::conceptPhrase);
    EXPECT_EQ(spec.domain, IntentDomain::visualDesign);
    EXPECT_EQ(spec.operation, ActionOperation::semanticExpansion);
    EXPECT_EQ(spec.strategy, OptimizationStrategy::expressionStandards);
    EXPECT_EQ(spec.outputContract, OutputContractKind::semanticExpansion);
    EXPECT_FALSE(spec.preservation.preserveStructure);
    EXPECT_TRUE(spec.preservation.allowExpansion);
    expectSafe(spec);
}

TEST(IntentCompiler, takesAVisualTextOfNineteenCharactersForADraftAndKeepsItsDomain) {
    const QString eighteen = u"海报"_s + QString(16, u'字');
    EXPECT_EQ(IntentCompiler::classifyInputKind(eighteen), IntentInputKind::conceptPhrase);
    const ActionSpec spec = optimize(eighteen + u'字');
    EXPECT_EQ(spec.inputKind, IntentInputKind::writingDraft);
    EXPECT_EQ(spec.domain, IntentDomain::visualDesign);
    EXPECT_EQ(spec.operation, ActionOperation::writingRefinement);
    EXPECT_EQ(spec.strategy, OptimizationStrategy::plainRewrite);
    EXPECT_EQ(spec.outputContract, OutputContractKind::plainTextTransform);
    EXPECT_TRUE(spec.preservation.preserveStructure);
    EXPECT_FALSE(spec.preservation.allowExpansion);
    expectSafe(spec);
}

TEST(IntentCompiler, countsAnEmojiSequenceAsOneCharacterOfAConcept) {
    const QString family = u"👨‍👩‍👧‍👦"_s;
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"海报"_s + family.repeated(16)),
              IntentInputKind::conceptPhrase);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"海报"_s + family.repeated(17)),
              IntentInputKind::writingDraft);
}

TEST(IntentCompiler, takesThreeNonEmptyLinesForStructuredTextEvenWithADesignWord) {
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"海报\n红\n蓝"_s), IntentInputKind::structuredText);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"a\r\nb\r\nc"_s), IntentInputKind::structuredText);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"class A\nb\nc"_s), IntentInputKind::structuredText);
}

TEST(IntentCompiler, doesNotCountEmptyLinesAsLines) {
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"a\n\n\n\nb"_s), IntentInputKind::writingDraft);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"a\n\nb\n\nc"_s), IntentInputKind::structuredText);
}

TEST(IntentCompiler, comparesCodeMarksByCase) {
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"class Foo"_s), IntentInputKind::codeOrError);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"Class Foo"_s), IntentInputKind::writingDraft);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"func go"_s), IntentInputKind::codeOrError);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"Error: no"_s), IntentInputKind::codeOrError);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"NullPointerException"_s), IntentInputKind::codeOrError);
    EXPECT_EQ(IntentCompiler::classifyInputKind(u"functional classic"_s), IntentInputKind::writingDraft);
}

TEST(IntentCompiler, comparesDesignWordsWithoutCase) {
    EXPECT_EQ(IntentCompiler::classifyDomain(u"a ui kit"_s), IntentDomain::visualDesign);
    EXPECT_EQ(IntentCompiler::classifyDomain(u"MINIMAL"_s), IntentDomain::visualDesign);
    EXPECT_EQ(IntentCompiler::classifyDomain(u"CyberPunk"_s), IntentDomain::visualDesign);
    EXPECT_EQ(IntentCompiler::classifyDomain(u"明天开会"_s), IntentDomain::unknown);
}

TEST(IntentCompiler, knowsEachOfTheDesignWords) {
    for (const QString& word :
         {u"海报"_s,      u"logo"_s, u"Logo"_s,   u"UI"_s,   u"界面"_s,    u"视觉"_s,   u"排版"_s,
          u"构图"_s,      u"摄影"_s, u"产品图"_s, u"极简"_s, u"minimal"_s, u"poster"_s, u"赛博朋克"_s,
          u"cyberpunk"_s, u"夜景"_s, u"插画"_s,   u"字体"_s, u"配色"_s,    u"风格"_s}) {
        EXPECT_EQ(IntentCompiler::classifyDomain(u"x"_s + word), IntentDomain::visualDesign)
            << qPrintable(word);
    }
}

TEST(IntentCompiler, givesABlankTextTheFallbacksOfItsMode) {
    EXPECT_EQ(IntentCompiler::classifyInputKind(u" \n\t"_s), IntentInputKind::unknown);
    const ActionSpec restructured = optimize(u" \n "_s, OptimizeCompileMode::restructure);
    EXPECT_EQ(restructured.inputKind, IntentInputKind::structuredText);
    EXPECT_EQ(restructured.domain, IntentDomain::unknown);
    const ActionSpec refined = optimize(u" \n "_s);
    EXPECT_EQ(refined.inputKind, IntentInputKind::writingDraft);
    EXPECT_EQ(refined.domain, IntentDomain::writing);
}

TEST(IntentCompiler, restructuresWhateverTheTextIs) {
    const ActionSpec spec = optimize(u"极简海报"_s, OptimizeCompileMode::restructure);
    EXPECT_EQ(spec.operation, ActionOperation::structureOrganization);
    EXPECT_EQ(spec.strategy, OptimizationStrategy::structureExtraction);
    EXPECT_EQ(spec.inputKind, IntentInputKind::conceptPhrase);
    EXPECT_EQ(spec.domain, IntentDomain::visualDesign);
    EXPECT_EQ(spec.outputContract, OutputContractKind::analysis);
    EXPECT_FALSE(spec.preservation.preserveStructure);
    EXPECT_TRUE(spec.preservation.allowExpansion);
    expectSafe(spec);
}

TEST(IntentCompiler, compilesModelAdaptAndOutputFormatAsRefine) {
    for (const QString& text : {u"极简海报"_s, u"明天三点开会"_s, u""_s, u"a\nb\nc"_s, u"class A"_s}) {
        EXPECT_EQ(optimize(text, OptimizeCompileMode::modelAdapt), optimize(text));
        EXPECT_EQ(optimize(text, OptimizeCompileMode::outputFormat), optimize(text));
    }
}

TEST(IntentCompiler, compilesASelectionIntoAReply) {
    const ActionSpec spec =
        IntentCompiler::compileSmartSelect(document(u""_s), SmartSelectCompileMode::reply);
    EXPECT_EQ(spec.operation, ActionOperation::reply);
    EXPECT_EQ(spec.strategy, OptimizationStrategy::replyGeneration);
    EXPECT_EQ(spec.inputKind, IntentInputKind::chatMessage);
    EXPECT_EQ(spec.domain, IntentDomain::chat);
    EXPECT_EQ(spec.outputContract, OutputContractKind::replyDraft);
    EXPECT_FALSE(spec.preservation.preserveStructure);
    EXPECT_TRUE(spec.preservation.allowExpansion);
    expectSafe(spec);
    const ActionSpec known =
        IntentCompiler::compileSmartSelect(document(u"海报怎么改？"_s), SmartSelectCompileMode::reply);
    EXPECT_EQ(known.inputKind, IntentInputKind::conceptPhrase);
    EXPECT_EQ(known.domain, IntentDomain::visualDesign);
}

TEST(IntentCompiler, compilesASelectionIntoItsOrganisation) {
    const ActionSpec spec =
        IntentCompiler::compileSmartSelect(document(u" "_s), SmartSelectCompileMode::organize);
    EXPECT_EQ(spec.operation, ActionOperation::structureOrganization);
    EXPECT_EQ(spec.strategy, OptimizationStrategy::structureExtraction);
    EXPECT_EQ(spec.inputKind, IntentInputKind::structuredText);
    EXPECT_EQ(spec.domain, IntentDomain::knowledge);
    EXPECT_EQ(spec.outputContract, OutputContractKind::analysis);
    EXPECT_TRUE(spec.preservation.allowExpansion);
    expectSafe(spec);
}

TEST(IntentTaxonomy, keepsTheOrderAndSpellingOfItsRawValues) {
    EXPECT_EQ(rawValue(ActionOperation::visualPromptRefinement), u"visualPromptRefinement"_s);
    EXPECT_EQ(fromRawValue<IntentInputKind>(u"voiceTranscript"), IntentInputKind::voiceTranscript);
    EXPECT_EQ(fromRawValue<IntentDomain>(u"VisualDesign"), std::nullopt);
    EXPECT_EQ(caseCount<ActionOperation>, 10U);
    EXPECT_EQ(caseCount<IntentInputKind>, 12U);
    EXPECT_EQ(caseCount<IntentDomain>, 9U);
    EXPECT_EQ(caseCount<OptimizationStrategy>, 11U);
    EXPECT_EQ(caseCount<OutputContractKind>, 6U);
}

}  // namespace
}  // namespace veltrin
