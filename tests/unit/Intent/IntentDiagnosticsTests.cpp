#include "Intent/IntentCompiler.h"
#include "Intent/IntentDiagnostics.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

ContextDocument poster() {
    ContextDocument context;
    context.text = u"极简海报"_s;
    return context;
}

TEST(IntentDiagnostics, summarisesAnIntentInOneLine) {
    const ContextDocument context = poster();
    const ActionSpec spec = IntentCompiler::compileOptimize(context, OptimizeCompileMode::refine);
    EXPECT_EQ(
        IntentDiagnostics::summary(context, spec, std::nullopt, u"external-optimize"_s),
        u"IntentCompiler source=external-optimize operation=semanticExpansion strategy=expressionStandards "
        u"input=conceptPhrase domain=visualDesign contract=semanticExpansion length=4 agent=none "
        u"preserveSubject=true allowNewFacts=false allowSubjectInvention=false"_s);
}

TEST(IntentDiagnostics, hasElevenNamedTokensWithoutAgentAndTarget) {
    const QString line = IntentDiagnostics::summary(poster(), ActionSpec(), std::nullopt, u"voice"_s);
    EXPECT_EQ(line.count(u'='), 11);
    EXPECT_EQ(line.split(u' ').filter(u"="_s).size(), 11);
}

TEST(IntentDiagnostics, namesTheTargetLanguageAndTheAgent) {
    ActionSpec spec;
    spec.targetLanguage = u"ja"_s;
    const AgentSpec agent = AgentSpecCompiler::compile(u"表情"_s, {}, {});
    EXPECT_EQ(
        IntentDiagnostics::summary(poster(), spec, agent, u"s"_s),
        u"IntentCompiler source=s operation=writingRefinement strategy=plainRewrite input=unknown "
        u"domain=unknown "
        u"contract=plainTextTransform length=4 target=ja agent=表情 agentKind=transform agentEffect=addEmoji "
        u"agentPolicy=executeEffectOnly preserveSubject=true allowNewFacts=false allowSubjectInvention=false"_s);
}

TEST(IntentDiagnostics, neverHoldsTheTextItself) {
    EXPECT_FALSE(IntentDiagnostics::summary(poster(), ActionSpec(), std::nullopt, u"s"_s).contains(u"海报"));
}

TEST(IntentDiagnostics, wordsEachDecisionOfTheContract) {
    EXPECT_EQ(IntentDiagnostics::contract(OutputContractDecision::accept(), 12, u"primary"_s),
              u"OutputContract stage=primary decision=accept outputLength=12"_s);
    EXPECT_EQ(
        IntentDiagnostics::contract(
            OutputContractDecision::repair(OutputContractViolation::metaInstructionLeak), 7, u"repair"_s),
        u"OutputContract stage=repair decision=repair reason=metaInstructionLeak outputLength=7"_s);
    EXPECT_EQ(IntentDiagnostics::contract(
                  OutputContractDecision::reject(OutputContractViolation::emptyOutput), 0, u"primary"_s),
              u"OutputContract stage=primary decision=reject reason=emptyOutput outputLength=0"_s);
}

}  // namespace
}  // namespace veltrin
