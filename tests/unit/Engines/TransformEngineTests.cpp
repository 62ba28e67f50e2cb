#include "Engines/TransformEngine.h"
#include "Engines/TransformEngineError.h"
#include "Engines/TransformEnginePromptBuilder.h"
#include "Engines/TransformEngineRuntime.h"
#include "Intent/IntentCompiler.h"
#include "support/fake/LogCapture.h"
#include "support/fake/ModelWorld.h"
#include "support/fake/TaskRunner.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

struct Call {
    QString prompt;
    QString sourceText;
    int limit;
};

/// A model that answers from a list and remembers what it was asked.
struct Script {
    QStringList answers;
    std::vector<Call> calls;
};

QCoro::Task<QString> answerFrom(std::shared_ptr<Script> script, QString prompt, QString sourceText,
                                int limit) {
    script->calls.push_back({prompt, sourceText, limit});
    if (script->answers.isEmpty()) throw UrlError(UrlError::timedOut, u"late"_s);
    co_return script->answers.takeFirst();
}

class TransformEngineTest : public testing::Test {
protected:
    TransformEngineTest() {
        engine.generate = [script = script](const QString& prompt, const QString& sourceText, int limit) {
            return answerFrom(script, prompt, sourceText, limit);
        };
        engine.logger = [lines = lines](const QString& line) { lines->append(line); };
        engine.source = u"external-optimize"_s;
    }

    std::shared_ptr<Outcome<QString>> run(const QString& text,
                                          ActionOperation operation = ActionOperation::writingRefinement) {
        context.text = text;
        spec.operation = operation;
        return follow(engine.run(context, spec, std::nullopt));
    }

    std::shared_ptr<Script> script = std::make_shared<Script>();
    std::shared_ptr<QStringList> lines = std::make_shared<QStringList>();
    TransformEngine engine;
    ContextDocument context;
    ActionSpec spec;
};

TEST_F(TransformEngineTest, returnsAnAcceptedAnswerUntrimmed) {
    script->answers << u" 好\n"_s;
    EXPECT_EQ(run(u"源"_s)->value, u" 好\n"_s);
    ASSERT_EQ(script->calls.size(), 1U);
    EXPECT_EQ(script->calls[0].prompt,
              TransformEnginePromptBuilder::buildPrompt(context, spec, std::nullopt));
    EXPECT_EQ(script->calls[0].sourceText, u"源"_s);
    ASSERT_EQ(lines->size(), 2);
    EXPECT_TRUE(
        lines->at(0).startsWith(u"IntentCompiler source=external-optimize operation=writingRefinement "));
    EXPECT_EQ(lines->at(1), u"OutputContract stage=primary decision=accept outputLength=3"_s);
}

TEST_F(TransformEngineTest, asksForOneRepairAndReturnsItTrimmed) {
    script->answers << u"待处理文本：xxx"_s << u" 干净\n"_s;
    EXPECT_EQ(run(u"源"_s)->value, u"干净"_s);
    ASSERT_EQ(script->calls.size(), 2U);
    EXPECT_EQ(script->calls[1].prompt,
              TransformEnginePromptBuilder::buildRepairPrompt(
                  context, spec, OutputContractViolation::metaInstructionLeak, u"待处理文本：xxx"_s));
    EXPECT_EQ(script->calls[1].limit, script->calls[0].limit);
    EXPECT_EQ(script->calls[1].sourceText, u"源"_s);
    EXPECT_EQ(lines->mid(1),
              (QStringList{
                  u"OutputContract stage=primary decision=repair reason=metaInstructionLeak outputLength=9"_s,
                  u"OutputContract stage=repair decision=accept outputLength=2"_s}));
}

TEST_F(TransformEngineTest, refusesAnEmptyAnswerWithoutASecondCall) {
    script->answers << u" "_s;
    const auto outcome = run(u"源"_s);
    EXPECT_EQ(outcome->errorDescription(), u"模型输出被 Veltrin 阻止自动写回：emptyOutput"_s);
    EXPECT_EQ(script->calls.size(), 1U);
    EXPECT_EQ(lines->last(),
              u"OutputContract stage=primary decision=reject reason=emptyOutput outputLength=1"_s);
}

TEST_F(TransformEngineTest, refusesAnInventedSubject) {
    spec.outputContract = OutputContractKind::semanticExpansion;
    script->answers << u"苹果海报"_s;
    EXPECT_EQ(run(u"极简海报"_s)->errorDescription(), u"模型输出被 Veltrin 阻止自动写回：subjectInvented"_s);
}

TEST_F(TransformEngineTest, givesUpAfterTheOneRepair) {
    script->answers << u"待处理文本"_s << u"下面这段"_s << u"never asked for"_s;
    EXPECT_EQ(run(u"源"_s)->errorDescription(),
              u"模型输出没有通过 Veltrin 输出检查，需要修复：metaInstructionLeak"_s);
    EXPECT_EQ(script->calls.size(), 2U);
}

TEST_F(TransformEngineTest, refusesAnEmptyRepair) {
    script->answers << u"待处理文本"_s << u"\n"_s;
    EXPECT_EQ(run(u"源"_s)->errorDescription(), u"模型输出被 Veltrin 阻止自动写回：emptyOutput"_s);
}

TEST_F(TransformEngineTest, passesOnTheErrorsOfTheModel) {
    EXPECT_TRUE(run(u"源"_s)->failedWith<UrlError>());
    script->answers << u"待处理文本"_s;
    EXPECT_TRUE(run(u"源"_s)->failedWith<UrlError>()) << "in the repair too";
}

TEST_F(TransformEngineTest, growsTheLimitWithTheText) {
    const auto limit = [this](qsizetype characters, ActionOperation operation) {
        script->answers << u"好"_s;
        run(QString(characters, u'字'), operation);
        return script->calls.back().limit;
    };
    EXPECT_EQ(limit(100, ActionOperation::structureOrganization), 1400);
    EXPECT_EQ(limit(100, ActionOperation::writingRefinement), 1024);
    EXPECT_EQ(limit(5000, ActionOperation::writingRefinement), 16000);
    EXPECT_EQ(limit(1000, ActionOperation::writingRefinement), 4512);
    EXPECT_EQ(limit(1000, ActionOperation::structureOrganization), 5512);
}

TEST_F(TransformEngineTest, worksWithoutALogger) {
    engine.logger = nullptr;
    script->answers << u"好"_s;
    EXPECT_EQ(run(u"源"_s)->value, u"好"_s);
    EXPECT_TRUE(lines->isEmpty());
}

TEST(TransformEngineRuntime, carriesOutTheSharedRecipe) {
    const LogCapture log;
    ModelWorld world;
    world.answerLocally(QString());
    world.answerLocally(u"以下文本：是这样。"_s);
    world.answerLocally(u" 干净。 "_s);
    const auto engine = TransformEngineRuntime::engine(world.client(), u"external-shortcut"_s);
    ContextDocument context;
    context.text = u"源"_s;
    ActionSpec spec;
    EXPECT_EQ(valueOf(engine.run(context, spec, std::nullopt)), u"干净。"_s);
    ASSERT_EQ(world.http.requests.size(), 3U);
    const QString prompt = TransformEnginePromptBuilder::buildPrompt(context, spec, std::nullopt);
    EXPECT_EQ(world.localPrompt(0), prompt);
    EXPECT_TRUE(world.localPrompt(1).startsWith(prompt + u"\n\n上一次输出为空"_s));
    EXPECT_TRUE(world.localPrompt(2).startsWith(prompt + u"\n\n上一次输出错误地复述"_s))
        << "the prompt without the retry";
    EXPECT_TRUE(world.http.requests[0].body.contains(R"("temperature":0.2,"num_predict":1024)"));
    EXPECT_TRUE(world.http.requests[1].body.contains(R"("temperature":0.2,"num_predict":2048)"));
    EXPECT_TRUE(world.http.requests[2].body.contains(R"("temperature":0.2,"num_predict":2048)"));
    EXPECT_TRUE(log.lines().first().startsWith(u"IntentCompiler source=external-shortcut "));
}

}  // namespace
}  // namespace veltrin
