#include "support/fake/SimulatedVeltrin.h"
#include "support/fake/TaskRunner.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Reply = SimulatedModel::Reply;

/// The words that only an agent's contract, or a dictionary, brings into a prompt.
const QString contractWords = u"Agent Contract（"_s;
const QString dictionaryWords = u"用户私有词典（"_s;

class TaskMaterialTest : public testing::Test {
protected:
    TaskMaterialTest() {
        desktop.focus(field);
        field.placeCaret(field.value.size());
        veltrin.model.answers(Reply::text(u"Hello."_s));
        veltrin.launch();
        veltrin.runUntilIdle();
    }
    QString run(QCoro::Task<QString> task) {
        const auto outcome = follow(std::move(task));
        veltrin.runUntilIdle();
        return outcome->value.value_or(QString());
    }
    QString prompt() const { return veltrin.model.lastPrompt; }

    SimulatedVeltrin veltrin;
    FakeDesktop& desktop = veltrin.desktop;
    FakeTextField& field = desktop.launch(u"Editor"_s, u"org.example.Editor"_s).addField(u"你好"_s);
};

TEST_F(TaskMaterialTest, aTaskCarriesTheAgentsContractAndTheDictionary) {
    DictionaryTerm term;
    term.id = QUuid::createUuid();
    term.term = u"Veltrin"_s;
    term.meaning = u"产品名"_s;
    veltrin.data().dictionary.add(term);
    const QString lines = u"\n- Veltrin：产品名\n- ESC："_s;
    EXPECT_EQ(run(veltrin.tasks().translate(u"你好"_s)), u"Hello."_s);
    EXPECT_TRUE(prompt().contains(veltrin.agents().runtimeContractPromptFor(u"translation"_s, std::nullopt)));
    EXPECT_TRUE(prompt().contains(contractWords));
    EXPECT_TRUE(prompt().contains(dictionaryWords + u"专有名词必须优先遵守）："_s + lines));
    EXPECT_EQ(run(veltrin.tasks().optimize(u"画一只猫"_s, OptimizeOption::refine)), u"Hello."_s);
    EXPECT_TRUE(prompt().contains(veltrin.agents().runtimeContractPromptFor(u"optimize"_s, std::nullopt)));
    EXPECT_TRUE(prompt().contains(dictionaryWords + u"专有名词、缩写和业务含义必须优先遵守）："_s + lines));
}

TEST_F(TaskMaterialTest, aTripleTapCarriesNeither) {
    veltrin.tapTranslate();
    veltrin.runUntilIdle();
    EXPECT_TRUE(prompt().contains(u"你好"_s));
    EXPECT_FALSE(prompt().contains(contractWords)) << "meant so";
    EXPECT_FALSE(prompt().contains(dictionaryWords)) << "meant so";
}

TEST_F(TaskMaterialTest, anOptimisationLeavesAnEntryInTheHistory) {
    run(veltrin.tasks().optimize(u"画一只猫"_s, OptimizeOption::refine));
    ASSERT_EQ(veltrin.data().history.entries().size(), 1U);
    const HistoryEntry& entry = veltrin.data().history.entries().front();
    EXPECT_EQ(entry.type, u"optimize"_s);
    EXPECT_EQ(entry.snippet, u"画一只猫"_s);
    EXPECT_EQ(entry.appName, u"Veltrin"_s);
}

TEST_F(TaskMaterialTest, thePipelinesRunnerAsksTheSameTasks) {
    const auto runner = ExternalActionHandler::aiActionRunner(veltrin.tasks());
    run(runner.translateHandler(u"你好"_s));
    EXPECT_TRUE(prompt().startsWith(u"You are Veltrin's fast translation engine."_s));
    const std::pair<ExternalOptimizeMode, QString> rows[] = {
        {ExternalOptimizeMode::refine, u"做“更精确”"_s},
        {ExternalOptimizeMode::restructure, u"做“重组结构”"_s},
        {ExternalOptimizeMode::modelAdapt, u"做“适配模型”"_s},
        {ExternalOptimizeMode::outputFormat, u"添加“输出格式”"_s}};
    for (const auto& [mode, words] : rows) {
        run(runner.optimizeHandler(u"画一只猫"_s, mode));
        EXPECT_TRUE(prompt().contains(words)) << words.toStdString();
    }
}

}  // namespace
}  // namespace veltrin
