#include "AI/ModelTasks.h"
#include "AI/OllamaError.h"
#include "support/Golden.h"
#include "support/fake/LogCapture.h"
#include "support/fake/TaskRunner.h"
#include "support/fake/TaskWorld.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class ModelTextTasks : public testing::Test {
protected:
    void useMaterial(const QString& contract) {
        world.material.contract = contract;
        world.material.dictionary = u"- ESC：专有名词\n- Veltrin：产品名"_s;
    }
    void answerLocally(const QStringList& answers) {
        for (const QString& answer : answers)
            world.answerLocally(answer);
    }
    QString optimized(OptimizeOption option) {
        return valueOf(world.tasks().optimize(u"画一只猫"_s, option));
    }

    LogCapture log;
    TaskWorld world;
};

TEST_F(ModelTextTasks, translateDetectsTheSourceLanguageWhenItIsAutomatic) {
    answerLocally({u"Hello, world."_s});
    EXPECT_EQ(valueOf(world.tasks().translate(u"你好，世界"_s)), u"Hello, world."_s);
    EXPECT_EQ(world.localPrompt(0), golden(u"translate-detected"_s));
    EXPECT_EQ(world.material.asked, (QStringList{u"translation nil"_s, u"16"_s}));
    EXPECT_TRUE(world.material.history.isEmpty()) << "a translation leaves its entry elsewhere";
}

TEST_F(ModelTextTasks, translateNamesASetSourceAndHoldsContractAndDictionary) {
    useMaterial(u"【translation 的契约】"_s);
    world.settings().translationSourceLang.set(TranslationLanguage::japanese);
    world.settings().translationTargetLang.set(TranslationLanguage::chinese);
    answerLocally({u"你好。"_s});
    EXPECT_EQ(valueOf(world.tasks().translate(u"こんにちは"_s)), u"你好。"_s);
    EXPECT_EQ(world.localPrompt(0), golden(u"translate-with-material"_s));
}

TEST_F(ModelTextTasks, translateOfAnEchoAsksOnceMoreWithTheStrictPrompt) {
    answerLocally({u"你好，世界。"_s, u"Hello, world."_s});
    EXPECT_EQ(valueOf(world.tasks().translate(u"你好，世界"_s)), u"Hello, world."_s);
    ASSERT_EQ(world.http.requests.size(), 2U);
    EXPECT_EQ(world.localPrompt(1), golden(u"translate-strict"_s));
    EXPECT_EQ(world.http.requests[1].timeout, 60);
    EXPECT_EQ(world.localOption(1, u"num_predict"), 1024);
    EXPECT_EQ(log.lines(), QStringList{u"Translation output guard retrying: inputLength: 5 "
                                       "firstOutputLength: 6 firstPreview: 你好，世界。"_s});
}

TEST_F(ModelTextTasks, aSecondEchoEndsInAnError) {
    answerLocally({u"你好，世界。"_s, u"你好，\n世界！"_s});
    const auto outcome = follow(world.tasks().translate(u"你好，世界"_s));
    EXPECT_EQ(outcome->errorDescription(), u"模型没有返回可用译文"_s);
    EXPECT_EQ(log.lines().value(1),
              u"Translation output guard rejected retry: retryLength: 7 retryPreview: 你好， 世界！"_s);
    EXPECT_EQ(world.http.requests.size(), 2U);
}

TEST_F(ModelTextTasks, translateRepairsALeakInBothAnswers) {
    answerLocally({u"以下文本：x"_s, u"你好。"_s, u"原始提示词：y"_s, u"Hello."_s});
    EXPECT_EQ(valueOf(world.tasks().translate(u"你好"_s)), u"Hello."_s);
    ASSERT_EQ(world.http.requests.size(), 4U);
    EXPECT_TRUE(world.localPrompt(1).startsWith(world.localPrompt(0) + u"\n\n上一次输出错误地"_s));
    EXPECT_TRUE(world.localPrompt(3).startsWith(world.localPrompt(2) + u"\n\n上一次输出错误地"_s));
    for (const std::size_t repair : {1U, 3U}) {
        EXPECT_EQ(world.http.requests[repair].timeout, 45);
        EXPECT_EQ(world.localOption(repair, u"temperature"), 0);
        EXPECT_EQ(world.localOption(repair, u"num_predict"), 1024);
    }
}

TEST_F(ModelTextTasks, translateAllowsThreeTokensACharacterWithinItsBounds) {
    const std::pair<qsizetype, double> rows[] = {{1, 512}, {85, 512}, {86, 514}, {1000, 3256}, {9000, 12000}};
    for (const auto& [characters, limit] : rows) {
        answerLocally({u"Fine."_s});
        valueOf(world.tasks().translate(QString(characters, u'字')));
        EXPECT_EQ(world.localOption(world.http.requests.size() - 1, u"num_predict"), limit) << characters;
    }
}

TEST_F(ModelTextTasks, translateCountsCharactersAndNotUnits) {
    answerLocally({u"Fine."_s});
    valueOf(world.tasks().translate(u"👨‍👩‍👧‍👦"_s.repeated(90)));
    EXPECT_EQ(world.localOption(0, u"num_predict"), 90 * 3 + 256);
}

TEST_F(ModelTextTasks, translateMeasuresTheAnswerByTheTargetThatStoodWhenItBegan) {
    world.http.holding = true;
    answerLocally({u"Hello."_s});
    const auto outcome = follow(world.tasks().translate(u"你好"_s));
    world.settings().translationTargetLang.set(TranslationLanguage::korean);
    ASSERT_TRUE(world.http.release());
    EXPECT_EQ(outcome->value, u"Hello."_s);
}

TEST_F(ModelTextTasks, theTaskOutlivesTheObjectThatBeganIt) {
    world.http.holding = true;
    answerLocally({u"Hello."_s});
    std::shared_ptr<Outcome<QString>> outcome;
    {
        const ModelTasks tasks = world.tasks();
        outcome = follow(tasks.translate(u"你好"_s));
    }
    ASSERT_TRUE(world.http.release());
    EXPECT_EQ(outcome->value, u"Hello."_s);
}

TEST_F(ModelTextTasks, anErrorOfTheModelPasses) {
    world.http.answer(500, "{}");
    EXPECT_TRUE(follow(world.tasks().translate(u"你好"_s))->failedWith<OllamaError>());
    world.http.fail(UrlError::timedOut, u"late"_s);
    EXPECT_TRUE(follow(world.tasks().optimize(u"x"_s, OptimizeOption::refine))->failedWith<UrlError>());
}

TEST_F(ModelTextTasks, optimizeSendsTheTextOfItsOption) {
    const std::pair<OptimizeOption, QString> rows[] = {{OptimizeOption::refine, u"更精确"_s},
                                                       {OptimizeOption::restructure, u"重组结构"_s},
                                                       {OptimizeOption::modelAdapt, u"适配模型"_s},
                                                       {OptimizeOption::outFmt, u"输出格式"_s}};
    const QStringList names{u"refine"_s, u"restructure"_s, u"modelAdapt"_s, u"outFmt"_s};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(rawValue(rows[i].first), rows[i].second);
        answerLocally({u"画一只猫，写实。"_s});
        EXPECT_EQ(optimized(rows[i].first), u"画一只猫，写实。"_s);
        EXPECT_EQ(world.localPrompt(i), golden(u"optimize-"_s + names[static_cast<qsizetype>(i)]));
        EXPECT_EQ(world.localOption(i, u"temperature"), 0.2);
    }
    EXPECT_EQ(world.material.history, QStringList(4, u"optimize|画一只猫|Veltrin"_s));
}

TEST_F(ModelTextTasks, optimizeHoldsContractAndDictionary) {
    useMaterial(u"【optimize 的契约】"_s);
    answerLocally({u"好。"_s});
    optimized(OptimizeOption::refine);
    EXPECT_EQ(world.localPrompt(0), golden(u"optimize-with-material"_s));
    EXPECT_EQ(world.material.asked, (QStringList{u"optimize nil"_s, u"16"_s}));
}

TEST_F(ModelTextTasks, onlyRestructureHasLargerLimits) {
    const auto limits = [&](OptimizeOption option, qsizetype characters) {
        const std::size_t first = world.http.requests.size();
        answerLocally({QString(), u"好。"_s});
        valueOf(world.tasks().optimize(QString(characters, u'字'), option));
        return std::pair(world.localOption(first, u"num_predict"),
                         world.localOption(first + 1, u"num_predict"));
    };
    using Limits = std::pair<std::optional<double>, std::optional<double>>;
    EXPECT_EQ(limits(OptimizeOption::restructure, 10), Limits(1400, 2800));
    EXPECT_EQ(limits(OptimizeOption::restructure, 1000), Limits(5512, 11024));
    EXPECT_EQ(limits(OptimizeOption::restructure, 9000), Limits(16000, 20000));
    for (const auto option : {OptimizeOption::refine, OptimizeOption::modelAdapt, OptimizeOption::outFmt}) {
        EXPECT_EQ(limits(option, 10), Limits(1024, 2048));
        EXPECT_EQ(limits(option, 1000), Limits(4512, 9024));
        EXPECT_EQ(limits(option, 9000), Limits(16000, 20000));
    }
}

TEST_F(ModelTextTasks, optimizeRecordsBeforeTheModelAnswers) {
    world.http.fail(UrlError::timedOut, u"late"_s);
    EXPECT_TRUE(follow(world.tasks().optimize(u"x"_s, OptimizeOption::refine))->failed());
    EXPECT_EQ(world.material.history, QStringList{u"optimize|x|Veltrin"_s});
}

TEST_F(ModelTextTasks, optimizeBlocksInstructionsThatComeTwice) {
    answerLocally({u"请优化下面这段"_s, u"以下提示词：猫"_s});
    const auto outcome = follow(world.tasks().optimize(u"画一只猫"_s, OptimizeOption::refine));
    EXPECT_EQ(outcome->errorDescription(),
              u"模型输出了任务说明而不是处理结果，已阻止自动写回。请重试或切换模型。"_s);
    EXPECT_EQ(world.localOption(1, u"temperature"), 0.2);
    EXPECT_EQ(world.localOption(1, u"num_predict"), 2048);
}

}  // namespace
}  // namespace veltrin
