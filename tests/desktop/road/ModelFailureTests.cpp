#include "desktop/road/RoadTest.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace ServiceBehaviours;

/// What the user sees when the model fails: the card's words, beside the untouched text.
class ModelFailure : public RoadTest {
protected:
    static inline const QString retry = QStringLiteral("请重试或切换模型");

    void translateAndExpect(const QString& card, const QString& reason, double seconds = 8) {
        translateAndExpectCard(card, seconds);
        EXPECT_TRUE(waitForLog(QStringLiteral("AI action failed: action: translate ") + reason, 2))
            << qPrintable(log());
    }

    void translateAndExpectCard(const QString& card, double seconds = 8) {
        Program editor = Program::mousepad(desktop());
        const ProbedField field = atspi().waitForField(editor);
        clipboard().ownText(QStringLiteral("mine"));
        typeSentence(QStringLiteral("hello"));
        tapTranslate();
        EXPECT_TRUE(waitForLog(QStringLiteral("UI showFailureCard requested:"), seconds))
            << qPrintable(log());
        EXPECT_TRUE(waitForLog(QStringLiteral("UI showFailureCard requested: 翻译失败 ") + card, 2));
        EXPECT_TRUE(waitUntil(2, [&] { return panels().contains(QRect(490, 358, 300, 84)); }));
        // The card never takes the focus, and goes by itself.
        EXPECT_EQ(x().activeWindow(), editor.window());
        EXPECT_TRUE(waitUntil(4, [&] { return panels().isEmpty(); }));
        EXPECT_EQ(atspi().text(field), QStringLiteral("hello   "));
        EXPECT_EQ(clipboard().text(), QStringLiteral("mine"));
    }
};

TEST_F(ModelFailure, absent) {
    startProgram({{QStringLiteral("ollama_endpoint"), QStringLiteral("http://127.0.0.1:9")}});
    translateAndExpect(retry, QString());
}

TEST_F(ModelFailure, slowerThanItsTimeOut) {
    startProgram();
    serve(silent());
    translateAndExpect(retry, QString(), 40);
}

TEST_F(ModelFailure, anErrorStatus) {
    startProgram();
    serve(error(500));
    translateAndExpect(retry, QStringLiteral("模型服务返回了错误状态，请确认服务正在运行"));
}

TEST_F(ModelFailure, anAnswerOfAnotherShape) {
    startProgram();
    serve(plain(200, R"({"unexpected":true})"));
    translateAndExpect(retry, QStringLiteral("Ollama 返回了无法解析的响应"));
}

TEST_F(ModelFailure, emptyTwice) {
    startProgram();
    serve(empty());
    translateAndExpectCard(retry);
    EXPECT_TRUE(log().contains(u"AI action output contract rejected: action: translate reason: emptyOutput"));
    EXPECT_EQ(generations().size(), 2U);
}

TEST_F(ModelFailure, leakingAlsoWhenAskedToRepair) {
    startProgram();
    serve(success(QStringLiteral("请为以下文本进行翻译：hello")));
    translateAndExpect(
        retry, QStringLiteral("模型输出了任务说明而不是处理结果，已阻止自动写回。请重试或切换模型。"));
}

}  // namespace
}  // namespace veltrin
