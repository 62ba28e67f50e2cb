#include "desktop/road/RoadTest.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace ServiceBehaviours;

/// What the user sees when the model fails: the card's words, beside the untouched text.
class ModelFailure : public RoadTest {
protected:
    void translateAndExpect(const QString& card, double seconds = 8) {
        Program editor = Program::mousepad(desktop());
        const ProbedField field = atspi().waitForField(editor);
        clipboard().ownText(QStringLiteral("mine"));
        typeSentence(QStringLiteral("hello"));
        tapTranslate();
        EXPECT_TRUE(waitForLog(QStringLiteral("UI showFailureCard requested:"), seconds)) << qPrintable(log());
        EXPECT_TRUE(waitForLog(card, 2)) << qPrintable(log());
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
    translateAndExpect(QStringLiteral("网络连接不可用，模型服务没有连上。"));
}

TEST_F(ModelFailure, slowerThanItsTimeOut) {
    startProgram();
    service().setDefault(silent());
    translateAndExpect(QStringLiteral("模型请求超时，当前服务响应太慢或文本较长。"), 40);
}

TEST_F(ModelFailure, anErrorStatus) {
    startProgram();
    service().setDefault(error(500));
    translateAndExpect(QStringLiteral("模型服务返回错误状态，当前请求没有成功。"));
}

TEST_F(ModelFailure, anAnswerOfAnotherShape) {
    startProgram();
    service().setDefault(plain(200, R"({"unexpected":true})"));
    translateAndExpect(QStringLiteral("模型返回格式无法解析。"));
}

TEST_F(ModelFailure, emptyTwice) {
    startProgram();
    service().setDefault(empty());
    translateAndExpect(QStringLiteral("模型没有返回可用内容。"));
    EXPECT_EQ(generations().size(), 2U);
}

TEST_F(ModelFailure, leakingAlsoWhenAskedToRepair) {
    startProgram();
    service().setDefault(leaking());
    translateAndExpect(QStringLiteral("模型输出了任务说明而不是处理结果，已阻止自动写回。请重试或切换模型。"));
}

}  // namespace
}  // namespace veltrin
