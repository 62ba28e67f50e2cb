#include "Expression/ExpressionIntentEngine.h"
#include "Expression/ExpressionMemoryStore.h"
#include "Intent/IntentCompiler.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

ExpressionRequest request(ExpressionTrigger trigger, const QString& text = u"明天三点开会"_s) {
    ExpressionRequest request;
    request.trigger = trigger;
    request.context.text = text;
    return request;
}

QString failure(const ExpressionRequest& request) {
    try {
        ExpressionIntentEngine::plan(request);
    } catch (const ExpressionIntentEngineError& error) {
        return error.errorDescription();
    }
    return u"no failure"_s;
}

ActionSpec planned(const ExpressionRequest& request) {
    return ExpressionIntentEngine::plan(request).actionSpec;
}

ExpressionMode agentMode(const QString& title) {
    ExpressionMode mode;
    mode.name = title;
    mode.agentSpec = AgentSpecCompiler::compile(title, {}, {});
    return mode;
}

TEST(ExpressionIntentEngine, refusesABlankTextWhateverTheTrigger) {
    for (const auto trigger : allCases<ExpressionTrigger>())
        EXPECT_EQ(failure(request(trigger, u" \n\t"_s)), u"没有可校准的表达内容。"_s);
}

TEST(ExpressionIntentEngine, wantsAReadySpecForDragAndVoice) {
    EXPECT_EQ(failure(request(ExpressionTrigger::drag)), u"当前表达入口暂不支持：drag"_s);
    EXPECT_EQ(failure(request(ExpressionTrigger::voice)), u"当前表达入口暂不支持：voice"_s);
    auto ready = request(ExpressionTrigger::drag);
    ready.actionSpec.emplace();
    ready.actionSpec->operation = ActionOperation::extract;
    EXPECT_EQ(planned(ready).operation, ActionOperation::extract);
}

TEST(ExpressionIntentEngine, tightensAReadySpec) {
    auto ready = request(ExpressionTrigger::voice);
    ready.actionSpec.emplace();
    ready.actionSpec->preservation = {false, false, false, true, true, true, true};
    const PreservationPolicy expected{true, true, true, true, false, false, true};
    EXPECT_EQ(planned(ready).preservation, expected);
    ready.actionSpec->preservation.preserveStructure = false;
    EXPECT_FALSE(planned(ready).preservation.preserveStructure) << "stays as it was";
}

TEST(ExpressionIntentEngine, letsAnAgentNarrowTheExpansionAndNeverWidenIt) {
    auto visual = request(ExpressionTrigger::optimize, u"极简海报"_s);
    EXPECT_TRUE(planned(visual).preservation.allowExpansion);
    visual.mode = agentMode(u"压缩"_s);
    EXPECT_FALSE(planned(visual).preservation.allowExpansion);
    auto plain = request(ExpressionTrigger::optimize);
    plain.mode = agentMode(u"格式"_s);
    EXPECT_FALSE(planned(plain).preservation.allowExpansion);
    visual.mode = ExpressionMode();
    EXPECT_TRUE(planned(visual).preservation.allowExpansion) << "a mode without an agent changes nothing";
}

TEST(ExpressionIntentEngine, translatesIntoEnglishUnlessToldOtherwise) {
    auto translate = request(ExpressionTrigger::translate, u"海报"_s);
    const ActionSpec spec = planned(translate);
    EXPECT_EQ(spec.operation, ActionOperation::translate);
    EXPECT_EQ(spec.inputKind, IntentInputKind::conceptPhrase);
    EXPECT_EQ(spec.domain, IntentDomain::translation);
    EXPECT_EQ(spec.strategy, OptimizationStrategy::languageTransfer);
    EXPECT_EQ(spec.outputContract, OutputContractKind::translation);
    EXPECT_EQ(spec.targetLanguage, u"en"_s);
    const PreservationPolicy expected{true, true, true, true, false, false, true};
    EXPECT_EQ(spec.preservation, expected);
    translate.targetLanguage = u"ja"_s;
    EXPECT_EQ(planned(translate).targetLanguage, u"ja"_s);
}

TEST(ExpressionIntentEngine, carriesOutAShortcutExactly) {
    const ActionSpec spec = planned(request(ExpressionTrigger::shortcut, u"海报"_s));
    EXPECT_EQ(spec.operation, ActionOperation::agentTransform);
    EXPECT_EQ(spec.inputKind, IntentInputKind::conceptPhrase);
    EXPECT_EQ(spec.domain, IntentDomain::visualDesign);
    EXPECT_EQ(spec.strategy, OptimizationStrategy::exactTransform);
    EXPECT_EQ(spec.outputContract, OutputContractKind::plainTextTransform);
    EXPECT_EQ(spec.targetLanguage, std::nullopt);
    const PreservationPolicy expected{true, true, true, true, false, false, false};
    EXPECT_EQ(spec.preservation, expected);
}

TEST(ExpressionIntentEngine, refinesWithoutAModeAndInTheApp) {
    auto optimize = request(ExpressionTrigger::optimize);
    const ActionSpec refined = IntentCompiler::compileOptimize(optimize.context, OptimizeCompileMode::refine);
    EXPECT_EQ(planned(optimize), refined);
    optimize.optimizeMode = OptimizeCompileMode::restructure;
    EXPECT_EQ(planned(optimize).operation, ActionOperation::structureOrganization);
    optimize.trigger = ExpressionTrigger::inApp;
    EXPECT_EQ(planned(optimize), refined) << "the app's own field always refines";
}

TEST(ExpressionIntentEngine, compilesASelectionByItsModeOrElseItsTrigger) {
    auto reply = request(ExpressionTrigger::smartSelectReply);
    EXPECT_EQ(planned(reply).operation, ActionOperation::reply);
    reply.smartSelectMode = SmartSelectCompileMode::organize;
    EXPECT_EQ(planned(reply).operation, ActionOperation::structureOrganization);
    EXPECT_EQ(planned(request(ExpressionTrigger::smartSelectOrganize)).operation,
              ActionOperation::structureOrganization);
}

TEST(ExpressionIntentEngine, passesTheTextThroughWhenNoModelIsWanted) {
    auto plain = request(ExpressionTrigger::optimize);
    EXPECT_EQ(ExpressionIntentEngine::plan(plain).decision, ExpressionDecision::proceed);
    plain.requiresTransform = false;
    EXPECT_EQ(ExpressionIntentEngine::plan(plain).decision, ExpressionDecision::passThrough);
    plain.context.text = u" "_s;
    EXPECT_EQ(ClarificationPolicy::decision(plain, ActionSpec()), ExpressionDecision::needsInput);
}

TEST(ExpressionIntentEngine, keepsTriggerContextAndModeInThePlan) {
    auto slotted = request(ExpressionTrigger::shortcut);
    slotted.context.appName = u"Editor"_s;
    slotted.mode = agentMode(u"格式"_s);
    slotted.mode->slot = 3;
    const ExpressionPlan plan = ExpressionIntentEngine::plan(slotted);
    EXPECT_EQ(plan.trigger, ExpressionTrigger::shortcut);
    EXPECT_EQ(plan.context.appName, u"Editor"_s);
    const ExpressionMode mode = plan.mode.value_or(ExpressionMode());
    EXPECT_EQ(mode.slot, 3);
    EXPECT_EQ(mode.name, u"格式"_s);
}

ExpressionResult resultOf(ExpressionTrigger trigger, IntentDomain domain, qsizetype characters) {
    ExpressionResult result;
    result.plan.trigger = trigger;
    result.plan.actionSpec.domain = domain;
    result.sourceText = u"源"_s;
    result.outputText = QString(characters, u'字');
    return result;
}

TEST(ExpressionMemoryEvent, cutsItsPreviewsWithoutAnEllipsis) {
    ExpressionResult result;
    result.sourceText = u"\n a\tb\r\n"_s + QString(100, u'x');
    result.outputText = QString(200, u'y');
    result.plan.actionSpec.inputKind = IntentInputKind::chatMessage;
    const auto event = ExpressionIntentEngine::memoryEvent(result, true, 12.5);
    EXPECT_EQ(event.sourcePreview, u"a b "_s + QString(76, u'x'));
    EXPECT_EQ(event.outputPreview, QString(120, u'y'));
    EXPECT_EQ(event.trigger, u"optimize"_s);
    EXPECT_EQ(event.inputKind, u"chatMessage"_s);
    EXPECT_EQ(event.domain, u"unknown"_s);
    EXPECT_EQ(event.modeName, std::nullopt);
    EXPECT_EQ(event.writebackSucceeded, true);
    EXPECT_EQ(event.createdAt, 12.5);
    result.plan.mode = agentMode(u"助手"_s);
    EXPECT_EQ(ExpressionIntentEngine::memoryEvent(result, std::nullopt, 0).modeName, u"助手"_s);
}

TEST(ExpressionMemoryEvent, valuesLongOutputsVisualWorkAndDrops) {
    const auto high = [](ExpressionTrigger trigger, IntentDomain domain, qsizetype characters) {
        return ExpressionIntentEngine::memoryEvent(resultOf(trigger, domain, characters), std::nullopt, 0)
            .isHighValueCandidate;
    };
    EXPECT_FALSE(high(ExpressionTrigger::optimize, IntentDomain::writing, 79));
    EXPECT_TRUE(high(ExpressionTrigger::optimize, IntentDomain::writing, 80));
    EXPECT_TRUE(high(ExpressionTrigger::optimize, IntentDomain::visualDesign, 1));
    EXPECT_TRUE(high(ExpressionTrigger::drag, IntentDomain::unknown, 1));
}

}  // namespace
}  // namespace veltrin
