#include "AI/OllamaError.h"
#include "wire/model/WireWorld.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
namespace answers = ServiceBehaviours;

class ModelAnswer : public WireWorld {
protected:
    static std::optional<OllamaError::Kind> kindOf(const Outcome<QString>& outcome) {
        try {
            if (outcome.failure) std::rethrow_exception(outcome.failure);
        } catch (const OllamaError& error) {
            return error.kind();
        } catch (const std::exception&) {
            return std::nullopt;
        }
        return std::nullopt;
    }
};

TEST_F(ModelAnswer, everyWireGivesItsTextTrimmed) {
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        EXPECT_EQ(generate(answers::success(u" \n你好 \"x\" 😀\n"_s))->value, u"你好 \"x\" 😀"_s);
        EXPECT_EQ(generate(answers::cutOff(u"half a sent"_s))->value, u"half a sent"_s);
    }
}

TEST_F(ModelAnswer, closedThinkBlocksAreCutOutAndAnUnclosedOneStays) {
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        EXPECT_EQ(generate(answers::success(u"<think>a</think>b<think>c</think>d"_s))->value, u"bd"_s);
        EXPECT_EQ(generate(answers::success(u"<think>a"_s))->value, u"<think>a"_s);
        EXPECT_EQ(generate(answers::success(u" x "_s))->value, u"x"_s);
    }
}

TEST_F(ModelAnswer, aThoughtOfItsOwnIsNotTheAnswer) {
    for (const ModelProvider provider :
         {ModelProvider::ollama, ModelProvider::deepseek, ModelProvider::anthropic}) {
        use(provider);
        EXPECT_EQ(generate(answers::thinking(u"hm"_s, u"done"_s))->value, u"done"_s);
    }
}

TEST_F(ModelAnswer, googleGivesItsFirstTextPartEvenAThought) {
    use(ModelProvider::google);
    EXPECT_EQ(generate(answers::thinking(u"hm"_s, u"done"_s))->value,
              u"hm"_s);  // only the first text is used: meant so
}

TEST_F(ModelAnswer, anthropicSkipsAnyNumberOfBlocksWithoutAText) {
    use(ModelProvider::anthropic);
    QByteArray blocks;
    for (int i = 0; i < 19; ++i)
        blocks += R"({"type":"redacted_thinking","data":"Ey"},)";
    blocks += R"({"type":"text","text":"a"},{"type":"text","text":"b"})";
    EXPECT_EQ(generate(answers::plain(200, R"({"content":[)" + blocks + "]}"))->value, u"a"_s);
}

TEST_F(ModelAnswer, anEmptyLocalAnswerIsNoErrorAndSaysSoInTheLog) {
    use(ModelProvider::ollama);
    EXPECT_EQ(generate(answers::empty())->value, QString());
    EXPECT_EQ(
        log.lines(),
        QStringList{u"Ollama returned empty after cleanup: rawLength: 0 thinkingLength: 0 rawPreview: "_s});
}

TEST_F(ModelAnswer, aLocalAnswerOfThoughtsAloneIsEmptyAndItsLengthsAreLogged) {
    use(ModelProvider::ollama);
    EXPECT_EQ(generate(answers::thinking(u"思考中"_s, u"<think>a</think> "_s))->value, QString());
    EXPECT_EQ(log.lines(),
              QStringList{u"Ollama returned empty after cleanup: rawLength: 17 thinkingLength: 3 "
                          "rawPreview: <think>a</think>"_s});
}

TEST_F(ModelAnswer, anEmptyChatAnswerIsNoError) {
    use(ModelProvider::openAI);
    EXPECT_EQ(generate(answers::empty())->value, QString());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(ModelAnswer, reasoningWithoutContentIsEmptyAndLoggedOnce) {
    use(ModelProvider::moonshot, u"kimi-thinking"_s);
    const auto outcome = generate(answers::plain(
        200, R"({"choices":[{"message":{"role":"assistant","content":null,"reasoning_content":"hm"}}]})"));
    EXPECT_EQ(outcome->value, QString());
    EXPECT_EQ(log.lines(), QStringList{u"Model returned reasoning_content without final content: provider: "
                                       "月之暗面 Kimi model: kimi-thinking"_s});
}

TEST_F(ModelAnswer, anAnswerWithoutATextIsInvalidForAnthropicAndGoogle) {
    for (const ModelProvider provider : {ModelProvider::anthropic, ModelProvider::google}) {
        use(provider);
        EXPECT_EQ(kindOf(*generate(answers::empty())), OllamaError::Kind::invalidResponse);
    }
}

TEST_F(ModelAnswer, anotherShapeIsInvalidOnEveryWire) {
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        for (const char* body :
             {"[]", "{}", "1", "null", R"({"error":"x"})", R"({"choices":[1],"content":{}})"}) {
            const auto outcome = generate(answers::plain(200, body));
            EXPECT_EQ(kindOf(*outcome), OllamaError::Kind::invalidResponse) << body;
            EXPECT_EQ(outcome->errorDescription(), u"Ollama 返回了无法解析的响应"_s);
        }
    }
}

TEST_F(ModelAnswer, whatIsNoJsonFailsWithTheParsersError) {
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        EXPECT_TRUE(generate(answers::plain(200, "<html>Bad gateway</html>", "text/html"))
                        ->failedWith<Json::ParseError>());
        EXPECT_TRUE(generate(answers::garbage())->failedWith<Json::ParseError>());
        EXPECT_TRUE(generate(answers::plain(200, "{\"response\":\"\xff\"}"))->failedWith<Json::ParseError>());
    }
}

TEST_F(ModelAnswer, aLocalStatusOtherThan200IsABadStatus) {
    use(ModelProvider::ollama);
    for (const int status : {204, 400, 401, 403, 404, 429, 500, 529}) {
        const auto outcome = generate(status == 204 ? answers::plain(204, {}) : answers::error(status));
        EXPECT_EQ(kindOf(*outcome), OllamaError::Kind::badStatus) << status;
        EXPECT_EQ(outcome->errorDescription(), u"模型服务返回了错误状态，请确认服务正在运行"_s);
    }
}

TEST_F(ModelAnswer, aCloudStatus204IsAcceptedAndThenUnreadable) {
    for (const ModelProvider provider :
         {ModelProvider::openAI, ModelProvider::anthropic, ModelProvider::google}) {
        use(provider);
        EXPECT_TRUE(generate(answers::plain(204, {}))->failedWith<Json::ParseError>());
    }
}

TEST_F(ModelAnswer, aCloudErrorSaysItsStatusAndAPreviewOfTheBody) {
    const std::pair<int, QString> rows[] = {
        {400, u"模型服务参数错误（400），请检查模型名称、API 格式和 token 参数。"_s},
        {401, u"模型服务认证失败（401），请检查 API Key 和认证方式。"_s},
        {403, u"模型服务认证失败（403），请检查 API Key 和认证方式。"_s},
        {404, u"模型服务返回错误状态（404）。"_s},
        {429, u"模型服务请求过于频繁或额度不足（429），请稍后重试或检查额度。"_s},
        {500, u"模型服务返回错误状态（500）。"_s},
        {529, u"模型服务返回错误状态（529）。"_s},
    };
    for (const ModelProvider provider :
         {ModelProvider::zhipu, ModelProvider::anthropic, ModelProvider::google}) {
        use(provider);
        for (const auto& [status, sentence] : rows) {
            const auto outcome = generate(answers::error(status, u"why"_s));
            EXPECT_EQ(kindOf(*outcome), OllamaError::Kind::badStatusCode);
            const QString description = outcome->errorDescription();
            EXPECT_TRUE(description.startsWith(sentence + u'{')) << description.toStdString();
            EXPECT_TRUE(description.contains(u"why"_s)) << description.toStdString();
        }
    }
}

TEST_F(ModelAnswer, aLongErrorBodyIsCutTo120CharactersOnOneLine) {
    use(ModelProvider::openAI);
    const auto outcome = generate(answers::plain(500, "a\n\tb" + QByteArray(200, 'x'), "text/plain"));
    EXPECT_EQ(outcome->errorDescription(),
              u"模型服务返回错误状态（500）。"_s + u"a  b"_s + QString(116, u'x') + u"..."_s);
}

TEST_F(ModelAnswer, anErrorBodyThatIsNoUtf8AddsNothing) {
    use(ModelProvider::openAI);
    EXPECT_EQ(generate(answers::plain(500, "\xff\xfe"))->errorDescription(),
              u"模型服务返回错误状态（500）。"_s);
}

TEST_F(ModelAnswer, theLocalStyleOnACloudProviderFailsWithoutARequest) {
    settings.saveActiveModelConfiguration(ModelProvider::custom, u"m"_s, service.url(), apiKey,
                                          ModelAPIStyle::ollama);
    EXPECT_EQ(kindOf(*generate()), OllamaError::Kind::invalidResponse);
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(ModelAnswer, noErrorAndNoLogLineHoldsTheKey) {
    // The service of Google echoes the whole request address, key included, in the error of a bad key.
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        for (const auto& behaviour :
             {answers::error(400, u"bad"_s), answers::error(400, apiKey), answers::error(401, apiKey),
              answers::reset(), answers::empty(), answers::garbage(),
              answers::redirect(302, "/key=" + apiKey.toUtf8())}) {
            const auto outcome = generate(behaviour);
            EXPECT_FALSE(outcome->errorDescription().contains(apiKey))
                << outcome->errorDescription().toStdString();
            service.enqueue(answers::models({}));
            service.enqueue(behaviour);
            finish(client().warmup());
        }
    }
    EXPECT_FALSE(log.lines().isEmpty());
    for (const QString& line : log.lines())
        EXPECT_FALSE(line.contains(apiKey)) << line.toStdString();
}

}  // namespace
}  // namespace veltrin
