#include "AI/AIChatCreateSheet.h"
#include "AI/AdaptiveRecommender.h"
#include "AI/AgentGeneration.h"
#include "AI/PromptDiagnosis.h"
#include "AI/ReverseWorkbench.h"
#include "AI/WorkbenchProject.h"
#include "Data/DictionaryStore.h"
#include "Data/MemoryActionPreset.h"
#include "Data/StoredPrompt.h"
#include "Engines/TransformEngine.h"
#include "Engines/TransformEngineRuntime.h"
#include "Session/UserBehaviorTracker.h"
#include "wire/model/TaskWorldOnTheWire.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

/// What one request of a task asks for.
struct Call {
    double temperature = 0;
    std::optional<int> limit;
    double timeout = 0;
    friend bool operator==(const Call&, const Call&) = default;
};

void PrintTo(const Call& call, std::ostream* out) {
    *out << "{" << call.temperature << ", " << (call.limit ? std::to_string(*call.limit) : "no limit") << ", "
         << call.timeout << " s}";
}

/// One row of the table of all model calls: the task, what the model answers, and the requests that follow.
struct Row {
    std::string name;
    std::function<void(TaskWorldOnTheWire&)> run;
    QStringList answers;
    std::vector<Call> calls;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class TaskTable : public TaskWorldOnTheWire, public testing::WithParamInterface<Row> {
protected:
    /// The calls as they came over the connection, with their time-outs.
    std::vector<Call> calls() const {
        std::vector<Call> calls;
        for (const ServiceRequest& request : service.requests()) {
            if (request.wire != ServiceWire::localGenerate) continue;
            const Json* options = request.json->find(u"options");
            const Json* limit = options->find(u"num_predict");
            Call call;
            call.temperature = options->find(u"temperature")->toDouble().value_or(-1);
            if (limit != nullptr) call.limit = static_cast<int>(limit->toInteger().value_or(-1));
            calls.push_back(call);
        }
        // Only the warm-up sends another request, ahead of its one call.
        const std::size_t others = noting.timeouts.size() - calls.size();
        for (std::size_t i = 0; i < calls.size(); ++i)
            calls[i].timeout = noting.timeouts[others + i];
        return calls;
    }
};

TEST_P(TaskTable, asksAsToldOnTheWire) {
    const Row& row = GetParam();
    use(ModelProvider::ollama, u"llama3.1:8b"_s);
    service.setDefault(ServiceBehaviours::error(500));
    if (row.name == "WarmUp") service.enqueue(ServiceBehaviours::models({u"llama3.1:8b"_s}));
    for (const QString& answer : row.answers)
        service.enqueue(answer.isEmpty() ? ServiceBehaviours::empty() : ServiceBehaviours::success(answer));
    row.run(*this);
    EXPECT_EQ(calls(), row.calls);
}

const QString ten = u"一二三四五六七八九十"_s;

StoredPrompt cat() {
    StoredPrompt prompt;
    prompt.id = QUuid::createUuid();
    prompt.title = u"猫"_s;
    prompt.content = u"画一只猫"_s;
    return prompt;
}

void translate(TaskWorldOnTheWire& world) {
    finish(world.tasks().translate(ten));
}

std::function<void(TaskWorldOnTheWire&)> optimize(OptimizeOption option) {
    return [option](TaskWorldOnTheWire& world) { finish(world.tasks().optimize(ten, option)); };
}

std::function<void(TaskWorldOnTheWire&)> transform(ActionOperation operation) {
    return [operation](TaskWorldOnTheWire& world) {
        const auto engine = TransformEngineRuntime::engine(world.notedClient(), u"external-test"_s);
        ContextDocument context;
        context.text = ten;
        ActionSpec spec;
        spec.operation = operation;
        finish(engine.run(context, spec, std::nullopt));
    };
}

ReverseWorkbench workbench(TaskWorldOnTheWire& world) {
    return ReverseWorkbench(world.notedClient(), world.runLoop, world.material());
}

void chat(TaskWorldOnTheWire& world) {
    AIChatCreateSheet sheet(world.notedClient(), world.runLoop, [](const AgentProfile&) {});
    for (const QString& words : {u"校对论文"_s, u"给导师看"_s}) {
        sheet.userInput = words;
        sheet.sendMessage();
        runUntil([&] { return !sheet.isThinking(); });
    }
}

const std::vector<Row> rows{
    {"WarmUp",
     [](TaskWorldOnTheWire& world) { finish(world.notedClient().warmup()); },
     {u"OK"_s},
     {{0, 8, 20}}},
    {"Translate", translate, {QString(), u"Fine."_s}, {{0, 512, 30}, {0, 1024, 45}}},
    {"TranslateRetry",
     translate,
     {ten + u"。"_s, u"以下文本"_s, u"Fine."_s},
     {{0, 512, 30}, {0, 1024, 60}, {0, 1024, 45}}},
    {"OptimizeRefine",
     optimize(OptimizeOption::refine),
     {QString(), u"好。"_s},
     {{0.2, 1024, 30}, {0.2, 2048, 45}}},
    {"OptimizeRestructure",
     optimize(OptimizeOption::restructure),
     {QString(), u"好。"_s},
     {{0.2, 1400, 30}, {0.2, 2800, 45}}},
    {"OptimizeModelAdapt",
     optimize(OptimizeOption::modelAdapt),
     {QString(), u"好。"_s},
     {{0.2, 1024, 30}, {0.2, 2048, 45}}},
    {"OptimizeOutFmt",
     optimize(OptimizeOption::outFmt),
     {QString(), u"好。"_s},
     {{0.2, 1024, 30}, {0.2, 2048, 45}}},
    {"Transform",
     transform(ActionOperation::writingRefinement),
     {QString(), u"好的，就这样办。"_s},
     {{0.2, 1024, 30}, {0.2, 2048, 45}}},
    {"TransformStructure",
     transform(ActionOperation::structureOrganization),
     {QString(), u"好的，就这样办。"_s},
     {{0.2, 1400, 30}, {0.2, 2800, 45}}},
    {"LeakRepair",
     [](TaskWorldOnTheWire& world) {
         finish(world.notedClient().repairMetaInstructionLeakIfNeeded(u"以下文本"_s, ten, u"p"_s, 0.2, 777));
     },
     {u"好。"_s},
     {{0.2, 777, 45}}},
    {"MemoryActionDraft",
     [](TaskWorldOnTheWire& world) { finish(world.tasks().draftMemoryAction(u"客气"_s)); },
     {QString(), u"{}"_s},
     {{0.25, 260, 30}, {0.25, 420, 45}}},
    {"DictionaryTermDraft",
     [](TaskWorldOnTheWire& world) { finish(world.tasks().draftDictionaryTerm(u"ESC"_s)); },
     {QString(), u"{}"_s},
     {{0.15, 220, 30}, {0.15, 360, 45}}},
    {"SemanticSearch",
     [](TaskWorldOnTheWire& world) { finish(world.tasks().semanticSearch(u"猫"_s, {cat()})); },
     {u"[0]"_s},
     {{0, 80, 15}}},
    {"PromptGenerationSheet",
     [](TaskWorldOnTheWire& world) { finish(world.tasks().generatePrompt(u"猫"_s)); },
     {u"{}"_s},
     {{0.6, 800, 25}}},
    {"PromptOptimizationSheet",
     [](TaskWorldOnTheWire& world) { finish(world.tasks().improvePrompt(cat(), u"更好"_s)); },
     {u"好"_s},
     {{0.4, 600, 25}}},
    {"PromptTaggingSheet",
     [](TaskWorldOnTheWire& world) { finish(world.tasks().suggestTags(cat())); },
     {u"[]"_s},
     {{0.2, 120, 15}}},
    {"Diagnose",
     [](TaskWorldOnTheWire& world) {
         finish(PromptDiagnosis(world.notedClient(), world.runLoop, world.material()).diagnose(u"猫"_s));
     },
     {u"{}"_s},
     {{0.3, std::nullopt, 30}}},
    {"ReverseWorkbench",
     [](TaskWorldOnTheWire& world) {
         finish(workbench(world).reverseEngineerProject(u"猫"_s, {u"文本优化"_s}, std::nullopt));
     },
     {u"{}"_s},
     {{0.3, std::nullopt, 30}}},
    {"IteratePrompt",
     [](TaskWorldOnTheWire& world) { finish(workbench(world).iteratePrompt(u"猫"_s, u"更短"_s)); },
     {u"好"_s},
     {{0.3, std::nullopt, 30}}},
    {"CommandRecommendation",
     [](TaskWorldOnTheWire& world) {
         const UserBehaviorTracker tracker(u"/dev/null/Veltrin"_s, world.runLoop);
         finish(AdaptiveRecommender::recommend(u"猫"_s, u"Editor"_s, world.notedClient(), tracker));
     },
     {QString(), u"[]"_s},
     {{0.1, 600, 30}, {0.1, 900, 45}}},
    {"AgentChat",
     chat,
     {u"给谁看？"_s, u"明白了。"_s, u"{}"_s},
     {{0.5, 180, 15}, {0.5, 180, 15}, {0.5, 600, 25}}},
    {"AgentGeneration",
     [](TaskWorldOnTheWire& world) {
         finish(AgentGeneration::generate(world.notedClient(), &world.runLoop, u"诗人"_s));
     },
     {u"{}"_s},
     {{0.3, std::nullopt, 30}}},
    {"AgentOptimization",
     [](TaskWorldOnTheWire& world) {
         finish(AgentGeneration::optimize(world.notedClient(), &world.runLoop, AgentProfile::made(Date{})));
     },
     {u"{}"_s},
     {{0.3, std::nullopt, 30}}},
};

INSTANTIATE_TEST_SUITE_P(AllTasks, TaskTable, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace veltrin
