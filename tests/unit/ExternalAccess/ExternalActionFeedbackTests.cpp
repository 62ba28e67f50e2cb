#include "ExternalAccess/ExternalActionFeedback.h"
#include "Foundation/Error.h"
#include "Platform/HttpClient.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace veltrin {
namespace {

class Saying : public Error {
public:
    explicit Saying(QString words) : words_(std::move(words)) {}
    QString errorDescription() const override { return words_; }

private:
    QString words_;
};

const QString title = QStringLiteral("优化失败");

ExternalActionFeedback cardFor(const char16_t* words) {
    return ExternalActionFeedback::message(Saying(QString::fromUtf16(words)), title);
}
ExternalActionFeedback cardFor(int code, const QString& words = QStringLiteral("transport words")) {
    return ExternalActionFeedback::message(UrlError(code, words), title);
}

void expectCard(const ExternalActionFeedback& card, const char16_t* detail, const char16_t* suggestion) {
    EXPECT_EQ(card.title, title);
    EXPECT_EQ(card.detail, QString::fromUtf16(detail)) << qPrintable(card.detail);
    EXPECT_EQ(card.suggestion, QString::fromUtf16(suggestion)) << qPrintable(card.suggestion);
    EXPECT_FALSE(card.copyableText);
    EXPECT_FALSE(card.primaryActionTitle);
}

TEST(FailureCard, aMissingKeyKeepsItsWordsAndSendsToTheSettings) {
    const char16_t* suggestion = u"请到设置页检查当前模型服务商、API Key、认证方式和 Endpoint。";
    expectCard(cardFor(u"缺少 API Key"), u"缺少 API Key", suggestion);
    expectCard(cardFor(u"oh, missingapikey!"), u"oh, missingapikey!", suggestion);
    expectCard(cardFor(u"MissingAPIKEY"), u"MissingAPIKEY", suggestion);
    // "API Key" itself is compared as it stands.
    EXPECT_NE(cardFor(u"api key").suggestion, QString::fromUtf16(suggestion));
}

TEST(FailureCard, theKeyComesBeforeTheNetwork) {
    expectCard(cardFor(UrlError::timedOut, QStringLiteral("API Key refused")), u"API Key refused",
               u"请到设置页检查当前模型服务商、API Key、认证方式和 Endpoint。");
}

TEST(FailureCard, aTimeOutIsCalledSlow) {
    expectCard(cardFor(-1001), u"模型请求超时，当前服务响应太慢或文本较长。",
               u"请稍后重试，或切换更快的模型；这不是系统权限问题。");
}

TEST(FailureCard, fourCodesMeanNoConnection) {
    for (const int code : {-1009, -1005, -1004, -1003}) {
        expectCard(cardFor(code), u"网络连接不可用，模型服务没有连上。",
                   u"请检查网络、代理或服务商 Endpoint。");
    }
}

TEST(FailureCard, fourCodesMeanABadCertificate) {
    for (const int code : {-1200, -1201, -1202, -1204}) {
        expectCard(cardFor(code), u"模型服务 SSL 连接失败。", u"请检查系统时间、代理证书或服务商地址。");
    }
}

TEST(FailureCard, anUnknownRootAndAllOtherCodesAreOrdinaryNetworkFailures) {
    for (const int code : {-1203, -1000, -1006, -1011, -999, -1, 0, -4711}) {
        expectCard(cardFor(code), u"transport words", u"请检查网络、代理或模型服务地址。");
    }
    expectCard(cardFor(-1203, QString()), u"网络请求失败。", u"请检查网络、代理或模型服务地址。");
}

TEST(FailureCard, aTransportFailureIsNotReadForWords) {
    expectCard(cardFor(-1011, QStringLiteral("badStatus 无法解析")), u"badStatus 无法解析",
               u"请检查网络、代理或模型服务地址。");
}

TEST(FailureCard, anErrorStatus) {
    const char16_t* detail = u"模型服务返回错误状态，当前请求没有成功。";
    const char16_t* suggestion = u"请检查服务地址、模型名称、API Key 额度，或切换到设置页测试连接。";
    expectCard(cardFor(u"返回错误状态 500"), detail, suggestion);
    expectCard(cardFor(u"BADSTATUS(500)"), detail, suggestion);
    expectCard(cardFor(u"错误状态，无法解析"), detail, suggestion);  // comes before the next row
}

TEST(FailureCard, anAnswerThatCannotBeParsed) {
    const char16_t* detail = u"模型返回格式无法解析。";
    const char16_t* suggestion = u"请确认 API 格式和模型服务商匹配，例如 OpenAI 兼容、Anthropic 或 Gemini。";
    expectCard(cardFor(u"回答无法解析"), detail, suggestion);
    expectCard(cardFor(u"invalidresponse"), detail, suggestion);
}

TEST(FailureCard, noUsableTranslation) {
    expectCard(cardFor(u"没有可用译文"), u"没有可用译文", u"可以重试一次，或换成更稳定的模型。");
}

TEST(FailureCard, instructionsInsteadOfAResult) {
    const char16_t* suggestion =
        u"这是模型把 Agent 规则当成正文了。请重试一次，或把该 Agent 改成更明确的动作规则。";
    expectCard(cardFor(u"返回了任务说明而不是处理结果"), u"返回了任务说明而不是处理结果", suggestion);
    expectCard(cardFor(u"模型输出被 Veltrin 阻止自动写回：emptyOutput"),
               u"模型输出被 Veltrin 阻止自动写回：emptyOutput", suggestion);
}

TEST(FailureCard, anythingElse) {
    const char16_t* suggestion = u"请检查模型配置、网络和当前 App 权限。";
    expectCard(cardFor(u"boom"), u"boom", suggestion);
    expectCard(cardFor(u""), u"请求失败，但没有返回明确原因。", suggestion);
    expectCard(ExternalActionFeedback::message(std::runtime_error("plain words"), title), u"plain words",
               suggestion);
}

ExternalActionFeedback feedback(const char16_t* heading, const char16_t* detail, const char16_t* suggestion) {
    ExternalActionFeedback made;
    made.title = QString::fromUtf16(heading);
    made.detail = QString::fromUtf16(detail);
    made.suggestion = QString::fromUtf16(suggestion);
    return made;
}

void expectCompact(const ExternalActionFeedback& card, const char16_t* message) {
    EXPECT_EQ(card.compactMessage(), QString::fromUtf16(message)) << qPrintable(card.compactMessage());
}

TEST(CompactMessage, followsItsRulesInOrder) {
    expectCompact(feedback(u"没有读到模型", u"", u""), u"没有读到模型\n请先选中或点进文本框");
    for (const char16_t* word : {u"替换", u"写回", u"文本框"}) {
        const QString heading = QString::fromUtf16(word) + QStringLiteral("失败");
        ExternalActionFeedback card = feedback(u"", u"API Key", u"");
        card.title = heading;
        EXPECT_EQ(card.compactMessage(), heading + QStringLiteral("\n结果已复制，可手动粘贴"));
    }
    expectCompact(feedback(u"失败", u"模型没有 API Key", u""), u"失败\n请检查模型 API Key");
    expectCompact(feedback(u"API Key 失败", u"", u""), u"API Key 失败\n请检查模型 API Key");
    expectCompact(feedback(u"模型失败", u"", u"权限"), u"模型失败\n请重试或切换模型");
    expectCompact(feedback(u"失败", u"", u"系统权限"), u"失败\n请检查系统权限");
    expectCompact(feedback(u"权限失败", u"x", u"y"), u"权限失败\n请检查系统权限");
    // A right that only the detail names is no right that is missing.
    expectCompact(feedback(u"失败", u"权限", u"再试"), u"失败\n再试");
}

TEST(CompactMessage, aTimedOutTranslationSaysToTryAgain) {
    ExternalActionFeedback card =
        ExternalActionFeedback::message(UrlError(UrlError::timedOut, QString()), QStringLiteral("翻译失败"));
    expectCompact(card, u"翻译失败\n请重试或切换模型");
}

TEST(CompactMessage, eighteenCharactersStayAndTheNineteenthCuts) {
    expectCompact(feedback(u"失败", u"", u"一二三四五六七八九十一二三四五六七八"),
                  u"失败\n一二三四五六七八九十一二三四五六七八");
    expectCompact(feedback(u"失败", u"", u"一二三四五六七八九十一二三四五六七八九"),
                  u"失败\n一二三四五六七八九十一二三四五六七八...");
}

TEST(CompactMessage, withoutASuggestionTheDetailStandsIn) {
    expectCompact(feedback(u"失败", u" a\n\tb ", u""), u"失败\na  b");
    expectCompact(feedback(u"失败", u"", u""), u"失败");
}

TEST(CopiedResultMessage, isALabelWithAShortSummary) {
    const QString label = QStringLiteral("翻译后的内容");
    const QString head = QStringLiteral("已复制\n翻译后的内容：");
    EXPECT_EQ(ExternalActionFeedback::copiedResultMessage(QStringLiteral(" a\nb\t"), label),
              head + QStringLiteral("a b"));
    EXPECT_EQ(ExternalActionFeedback::copiedResultMessage(QString(28, u'x'), label),
              head + QString(28, u'x'));
    EXPECT_EQ(ExternalActionFeedback::copiedResultMessage(QString(29, u'x'), label),
              head + QString(28, u'x') + QStringLiteral("..."));
    EXPECT_EQ(ExternalActionFeedback::copiedResultMessage(QStringLiteral(" \n"), label), head);
}

}  // namespace
}  // namespace veltrin
