#include "PipelineWorld.h"

#include <QRegularExpression>

namespace veltrin {
namespace {

using namespace test;

TEST(ExternalActionPipeline, aTranslationIsWrittenBackAndRemembered) {
    World world;
    LogCapture log;
    run(world, Action::translate(), session(source));
    EXPECT_EQ(world.events,
              list({"thinking translate", "state translating", "check notes", "write 'Hello' part",
                    "behaviour translate", "memory 'Hello' yes", "dismiss", "completed translate"}));
    ASSERT_EQ(world.requests.size(), 1U);
    const ExpressionRequest& request = world.requests.front();
    EXPECT_EQ(request.trigger, ExpressionTrigger::translate);
    EXPECT_EQ(request.targetLanguage, QStringLiteral("ja"));
    EXPECT_TRUE(request.requiresTransform);
    EXPECT_EQ(request.context.fullText, source);
    EXPECT_EQ(request.context.text, source);
    EXPECT_EQ(request.context.appName, QStringLiteral("Editor"));
    EXPECT_EQ(request.context.bundleIdentifier, QStringLiteral("org.editor"));
    EXPECT_FALSE(request.optimizeMode);
    EXPECT_FALSE(request.mode);

    const QStringList lines = log.lines();
    ASSERT_EQ(lines.size(), 5);
    const QRegularExpression started(QStringLiteral(
        "^ActionPipeline started: id: ([0-9a-fA-F]{8}) action: translate source: value length: 2$"));
    const auto match = started.match(lines[0]);
    ASSERT_TRUE(match.hasMatch()) << qPrintable(lines[0]);
    const QString id = match.captured(1);
    EXPECT_EQ(lines[1], QStringLiteral("ActionPipeline completed: id: %1 action: translate inputLength: 2 "
                                       "outputLength: 5")
                            .arg(id));
    EXPECT_EQ(lines[2],
              QStringLiteral("AI action completed: action: translate inputLength: 2 outputLength: 5"));
    EXPECT_EQ(lines[3],
              QStringLiteral("ActionPipeline writeback: id: %1 action: translate forceReplaceAll: "
                             "false success: true strategy: clipboardPaste message: Applied via paste")
                  .arg(id));
    EXPECT_EQ(lines[4],
              QStringLiteral("AI action direct writeback: action: translate success: true strategy: "
                             "clipboardPaste message: Applied via paste"));
}

TEST(ExternalActionPipeline, theSurroundingsOfASelectionTravelWithTheRequest) {
    World world;
    world.force = true;
    ExternalTextSession of = session(QStringLiteral("two"));
    of.readResult.fullText = QStringLiteral("one two three");
    of.readResult.textContext = ExternalTextContext::build(
        of.readResult.fullText, QStringLiteral("two"), TextRange{4, 3}, ExternalTextContext::standardBudget);
    run(world, Action::optimize(ExternalOptimizeMode::outputFormat), of);
    ASSERT_EQ(world.requests.size(), 1U);
    EXPECT_EQ(world.requests[0].trigger, ExpressionTrigger::optimize);
    EXPECT_EQ(world.requests[0].optimizeMode, OptimizeCompileMode::outputFormat);
    EXPECT_FALSE(world.requests[0].targetLanguage);
    EXPECT_EQ(world.requests[0].context.contextBefore, QStringLiteral("one"));
    EXPECT_EQ(world.requests[0].context.contextAfter, QStringLiteral("three"));
    EXPECT_EQ(world.events,
              list({"thinking optimize", "state optimizing", "check notes", "write 'Hello' all",
                    "behaviour optimize(4)", "memory 'Hello' yes", "dismiss", "completed optimize"}));
}

TEST(ExternalActionPipeline, aShortcutActionBringsItsAgentAndItsSlotCountedFromOne) {
    World world;
    MemoryActionPreset preset;
    preset.title = QStringLiteral("口语化");
    preset.description = QStringLiteral("说人话");
    preset.instruction = QStringLiteral("改得口语一些");
    run(world, Action::memoryAction(preset, 1), session(source));
    ASSERT_EQ(world.requests.size(), 1U);
    EXPECT_EQ(world.requests[0].trigger, ExpressionTrigger::shortcut);
    const ExpressionMode mode = world.requests[0].mode.value_or(ExpressionMode());
    EXPECT_EQ(mode.name, QStringLiteral("口语化"));
    EXPECT_EQ(mode.slot, 2);
    EXPECT_EQ(mode.agentSpec.value_or(AgentSpec()).name, QStringLiteral("口语化"));
    EXPECT_TRUE(world.events.contains(QStringLiteral("behaviour memoryAction(口语化,slot:2)")));
    EXPECT_TRUE(world.events.contains(QStringLiteral("completed optimize")));
}

TEST(ExternalActionPipeline, aReadOfBlanksIsSkippedWithoutASound) {
    World world;
    LogCapture log;
    run(world, Action::translate(), session(QStringLiteral("  \n ")));
    EXPECT_EQ(world.events, list({"card"}));
    ASSERT_EQ(world.cards.size(), 1U);
    EXPECT_EQ(world.cards[0].title, QStringLiteral("没有读到可处理的文本"));
    EXPECT_EQ(world.cards[0].detail,
              QStringLiteral("请先点进真实的可编辑文本框，或选中一段文字后再触发 Veltrin。"));
    EXPECT_EQ(world.cards[0].suggestion,
              QStringLiteral("如果是在网页或 Electron 应用里，先用鼠标点击输入区，再重试一次。"));
    EXPECT_FALSE(world.cards[0].copyableText);
    EXPECT_FALSE(world.cards[0].primaryActionTitle);
    EXPECT_TRUE(log.has(QStringLiteral("AI action skipped: no readable external text action: translate")));
    EXPECT_TRUE(
        log.hasStartingWith(QStringLiteral("ActionPipeline skipped: no readable external text id: ")));
}

TEST(ExternalActionPipeline, aReadWithoutATargetOffersItsTextForCopying) {
    World world;
    LogCapture log;
    ExternalTextSession of = session(source);
    of.readResult.element = nullptr;
    run(world, Action::translate(), of);
    EXPECT_EQ(world.events, list({"card"}));
    ASSERT_EQ(world.cards.size(), 1U);
    EXPECT_EQ(world.cards[0].title, QStringLiteral("没有识别到可替换的文本框"));
    EXPECT_EQ(world.cards[0].detail, QStringLiteral("当前内容可以读取，但目标区域不支持自动替换。"));
    EXPECT_EQ(world.cards[0].suggestion,
              QStringLiteral("你可以复制当前读取到的内容，或先点进可编辑文本框后再试。"));
    EXPECT_EQ(world.cards[0].copyableText, source);
    EXPECT_EQ(world.cards[0].primaryActionTitle, QStringLiteral("复制内容"));
    EXPECT_TRUE(log.has(QStringLiteral("AI action skipped: no writable target action: translate")));
    EXPECT_TRUE(log.hasStartingWith(QStringLiteral("ActionPipeline skipped: no writable target id: ")));
}

TEST(ExternalActionPipeline, aReadByTheClipboardNeedsNoElement) {
    World world;
    ExternalTextSession of = session(source);
    of.readResult.element = nullptr;
    of.readResult.requiresClipboardWriteback = true;
    run(world, Action::translate(), of);
    EXPECT_TRUE(world.events.contains(QStringLiteral("write 'Hello' part")));
}

TEST(ExternalActionPipeline, aTargetThatMovedGetsNothingAndTheUserACopy) {
    World world;
    world.targetMoved = true;
    LogCapture log;
    run(world, Action::translate(), session(source));
    EXPECT_EQ(world.events,
              list({"thinking translate", "state translating", "check notes", "copied 'Hello' translate",
                    "behaviour translate", "memory 'Hello' no", "completed translate"}));
    EXPECT_TRUE(log.lines().last().contains(
        QStringLiteral(" action: translate target: pid:42 bundle:org.editor role:unknown source:value "
                       "clipboard:false element:ax window:notes signature:2:你好:你好")));
    EXPECT_TRUE(log.hasStartingWith(
        QStringLiteral("AI action target changed before writeback; copying result instead: id: ")));
}

TEST(ExternalActionPipeline, aWriteThatFailsLeavesACopyAndStillSoundsCompleted) {
    World world;
    world.written = {false, WritebackStrategy::none, QStringLiteral("Write failed"),
                     WritebackFailure::writeFailed};
    LogCapture log;
    run(world, Action::translate(), session(source));
    EXPECT_EQ(world.events,
              list({"thinking translate", "state translating", "check notes", "write 'Hello' part", "dismiss",
                    "copied 'Hello' translate", "memory 'Hello' no", "completed translate"}));
    EXPECT_TRUE(
        log.has(QStringLiteral("AI action direct writeback: action: translate success: false strategy: "
                               "none message: Write failed")));
    const QString last = log.lines().last();
    EXPECT_TRUE(last.startsWith(QStringLiteral("AI action writeback failed; copying result instead: id: ")));
    EXPECT_TRUE(last.endsWith(QStringLiteral(" action: translate reason: writeFailed")));
}

TEST(ExternalActionPipeline, everyWritebackFailureHasItsWord) {
    for (const auto failure : allCases<WritebackFailure>()) {
        World world;
        world.written = {false, WritebackStrategy::none, QString(), failure};
        LogCapture log;
        run(world, Action::translate(), session(source));
        EXPECT_TRUE(log.lines().last().endsWith(QStringLiteral("reason: ") + rawValue(failure)));
    }
    World world;
    world.written = {false, WritebackStrategy::none, QStringLiteral("AppDelegate unavailable"), std::nullopt};
    LogCapture log;
    run(world, Action::translate(), session(source));
    EXPECT_TRUE(log.lines().last().endsWith(QStringLiteral("reason: unknown")));
}

TEST(ExternalActionPipeline, recommendationsAreRecordedOneByOneAndWrittenWithoutAMemory) {
    World world;
    world.windowTitle = QStringLiteral("repo - Cursor");
    world.recommendations = {
        {QStringLiteral("/help"), QStringLiteral("slash-command"), QStringLiteral("获取帮助"),
         QStringLiteral("high")},
        {QStringLiteral("loop"), QStringLiteral("skill"), QStringLiteral("重复"), QStringLiteral("medium")}};
    run(world, Action::commandRecommend(), session(source));
    EXPECT_EQ(world.events,
              list({"thinking optimize", "state optimizing", "used /help Editor", "used loop Editor",
                    "check repo - Cursor", "write '★ /help — 获取帮助\n☆ loop — 重复' part",
                    "behaviour commandRecommend", "dismiss", "completed optimize"}));
    EXPECT_EQ(world.recommendedContext, session(source).readResult.textContext.promptBlock());
    const auto application = world.recommendedFor.value_or(ExternalAppContext());
    EXPECT_EQ(application.appName, QStringLiteral("Editor"));
    EXPECT_EQ(application.windowTitle, QStringLiteral("repo - Cursor"));
    EXPECT_TRUE(application.sceneHint.startsWith(QStringLiteral("开发工具场景")));
}

TEST(ExternalActionPipeline, withoutRecommendationsTheEmptyTextGoesToTheTargetStep) {
    World world;
    run(world, Action::commandRecommend(), session(source));
    EXPECT_TRUE(world.events.contains(QStringLiteral("write '' part")));
    EXPECT_TRUE(world.cards.empty());
}

TEST(ExternalActionPipeline, aRecommenderThatIsNotThereFailsWithWords) {
    World world;
    auto outside = dependencies(world);
    outside.recommendCommands = nullptr;
    const ExternalActionPipeline pipeline(outside);
    auto task = pipeline.run(Action::commandRecommend(), session(source));
    ASSERT_EQ(world.cards.size(), 1U);
    EXPECT_EQ(world.cards[0].title, QStringLiteral("推荐失败"));
    EXPECT_EQ(world.cards[0].detail, QStringLiteral("命令推荐功能当前不可用。"));
    EXPECT_EQ(world.events.last(), QStringLiteral("cancelled optimize"));
}

TEST(ExternalActionPipeline, whatIsOptionalMayBeLeftOut) {
    World world;
    auto outside = dependencies(world);
    outside.recordSuccess = nullptr;
    outside.recordMemoryEvent = nullptr;
    outside.startThinking = nullptr;
    outside.playCompletion = nullptr;
    outside.playCancel = nullptr;
    const ExternalActionPipeline pipeline(outside);
    auto task = pipeline.run(Action::translate(), session(source));
    EXPECT_EQ(world.events, list({"state translating", "check notes", "write 'Hello' part", "dismiss"}));
}

TEST(ExternalActionPipeline, aRunOutlivesItsPipelineAndItsCaller) {
    World world;
    Gate gate;
    world.gate = &gate;
    run(world, Action::translate(), session(source));  // pipeline, task and session are gone behind this line
    EXPECT_EQ(world.events, list({"thinking translate", "state translating"}));
    ASSERT_TRUE(gate.waiting);
    gate.open();
    EXPECT_EQ(world.events.last(), QStringLiteral("completed translate"));
    EXPECT_TRUE(world.events.contains(QStringLiteral("write 'Hello' part")));
}

TEST(ExternalActionPipeline, theSnapshotIsTakenBeforeTheModelIsAsked) {
    World world;
    Gate gate;
    world.gate = &gate;
    run(world, Action::translate(), session(source));
    world.windowTitle = QStringLiteral("another window");
    gate.open();
    EXPECT_TRUE(world.events.contains(QStringLiteral("check notes")));
}

TEST(ExternalActionPipeline, runsThatOverlapKeepApart) {
    World first;
    World second;
    Gate gate;
    first.gate = &gate;
    first.answer = QStringLiteral("one");
    second.answer = QStringLiteral("two");
    run(first, Action::translate(), session(source));
    run(second, Action::optimize(ExternalOptimizeMode::refine), session(QStringLiteral("other")));
    gate.open();
    EXPECT_TRUE(first.events.contains(QStringLiteral("write 'one' part")));
    EXPECT_TRUE(second.events.contains(QStringLiteral("write 'two' part")));
}

TEST(ExternalActionPipeline, marksRecommendationsByConfidence) {
    const auto row = [](const char16_t* confidence) {
        return CommandRecommendation{
            QStringLiteral("c"), {}, QStringLiteral("e"), QString::fromUtf16(confidence)};
    };
    EXPECT_EQ(
        ExternalActionPipeline::formatRecommendations({row(u"high"), row(u"medium"), row(u"low"), row(u"")}),
        QStringLiteral("★ c — e\n☆ c — e\n· c — e\n· c — e"));
    EXPECT_EQ(ExternalActionPipeline::formatRecommendations({}), QString());
}

}  // namespace
}  // namespace veltrin
