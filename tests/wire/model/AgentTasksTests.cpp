#include "AI/AIChatCreateSheet.h"
#include "AI/AgentStudio.h"
#include "AI/AgentTeamManager.h"
#include "Platform/Linux/QtRunLoop.h"
#include "support/Golden.h"
#include "wire/model/TaskWorldOnTheWire.h"

#include <QTemporaryDir>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
namespace answers = ServiceBehaviours;

class AgentTasksOnTheWire : public WireWorld {
protected:
    OllamaClient notedClient() { return OllamaClient(noting, settings); }
    double number(const ServiceRequest& request, QStringView option) const {
        const Json* options = request.json ? request.json->find(u"options") : nullptr;
        const Json* value = options == nullptr ? nullptr : options->find(option);
        return value == nullptr ? -1 : value->toDouble().value_or(-1);
    }
    static QString prompt(const ServiceRequest& request) {
        const Json* value = request.json ? request.json->find(u"prompt") : nullptr;
        return value == nullptr ? QString() : value->toString().value_or(QString());
    }
    void say(AIChatCreateSheet& sheet, const QString& text) {
        sheet.userInput = text;
        sheet.sendMessage();
        ASSERT_TRUE(runUntil([&] { return !sheet.isThinking(); }));
    }

    NotingHttpClient noting{http};
    QtRunLoop runLoop;
    QTemporaryDir folder;
    AgentTeamManager manager{folder.path(), preferences, runLoop};
};

TEST_F(AgentTasksOnTheWire, anAgentIsMadeOfASentence) {
    use(ModelProvider::ollama);
    service.enqueue(answers::success(u"{\"name\":\"诗人\",\"skills\":[\"押韵\"]}"_s));
    const QString description = u"帮我写小红书文案的专家，{{name}} 与 \"引号\"\n第二行"_s;
    const auto outcome = finish(manager.generateAgent(notedClient(), description));
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->name, u"诗人"_s);
    EXPECT_EQ(prompt(lastRequest()), golden(u"agents/generate"_s));
    EXPECT_EQ(number(lastRequest(), u"temperature"), 0.3);
    EXPECT_EQ(number(lastRequest(), u"num_predict"), -1) << "no limit";
    EXPECT_EQ(noting.timeouts, std::vector<double>{30});
}

TEST_F(AgentTasksOnTheWire, anAgentIsImproved) {
    use(ModelProvider::ollama);
    AgentProfile agent = manager.agents().front();
    agent.name = u"文案大师 {{prompt}}"_s;
    agent.systemPrompt = u"你是一位资深文案策划。\n1. 先理解目标受众"_s;
    service.enqueue(answers::thinking(u"想 {\"systemPrompt\":\"不是\"}"_s, u"{\"systemPrompt\":\"更好\"}"_s));
    const auto outcome = finish(manager.optimizeAgent(notedClient(), agent));
    ASSERT_TRUE(outcome->value);
    EXPECT_EQ(outcome->value->systemPrompt, u"更好"_s);
    EXPECT_EQ(prompt(lastRequest()), golden(u"agents/optimize"_s));
    EXPECT_EQ(number(lastRequest(), u"temperature"), 0.3);
    EXPECT_EQ(number(lastRequest(), u"num_predict"), -1);
    EXPECT_EQ(noting.timeouts, std::vector<double>{30});
}

TEST_F(AgentTasksOnTheWire, anAgentComesOfEveryWire) {
    for (const ModelProvider provider : oneOfEachWire) {
        use(provider);
        service.enqueue(answers::success(u"```json\n{\"name\":\"诗人\"}\n```"_s));
        const auto outcome = finish(manager.generateAgent(notedClient(), u"写诗"_s));
        ASSERT_TRUE(outcome->value);
        EXPECT_EQ(outcome->value->name, u"诗人"_s) << ModelProviders::id(provider).toStdString();
    }
    EXPECT_EQ(noting.timeouts, (std::vector<double>{30, 45, 30, 30})) << "the chat wire has a floor";
}

TEST_F(AgentTasksOnTheWire, aChatAsksThenGeneratesThenSumsUp) {
    use(ModelProvider::ollama);
    AIChatCreateSheet sheet(notedClient(), runLoop, [](const AgentProfile&) {});
    service.enqueue(answers::success(u"给谁看？"_s));
    say(sheet, u"校对论文"_s);
    service.enqueue(answers::success(u"明白了。"_s));
    service.enqueue(answers::success(u"{\"name\":\"校对\"}"_s));
    say(sheet, u"导师"_s);
    service.enqueue(answers::success(u"好"_s));
    say(sheet, u"再短些"_s);
    const auto requests = service.requests();
    ASSERT_EQ(requests.size(), 4U);
    const QStringList prompts{u"chat_first"_s, u"chat_second"_s, u"chat_generate"_s, u"chat_summary"_s};
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(prompt(requests[i]), golden(u"agents/"_s + prompts[static_cast<qsizetype>(i)]));
        EXPECT_EQ(number(requests[i], u"temperature"), 0.5);
        EXPECT_EQ(number(requests[i], u"num_predict"), i == 2 ? 600 : 180);
    }
    EXPECT_EQ(noting.timeouts, (std::vector<double>{15, 15, 25, 15}));
    EXPECT_EQ(sheet.generatedAgent()->name, u"校对"_s);
}

TEST_F(AgentTasksOnTheWire, aChatGoesOnWhateverTheServiceDoes) {
    use(ModelProvider::ollama);
    AIChatCreateSheet sheet(notedClient(), runLoop, [](const AgentProfile&) {});
    service.enqueue(answers::reset());
    say(sheet, u"一"_s);
    service.enqueue(answers::error(500));
    service.enqueue(answers::garbage());
    say(sheet, u"二"_s);
    EXPECT_EQ(sheet.messages().back().text,
              u"好的，我已经了解你的需求了，我来为你生成这个 Agent，请稍等..."_s);
    EXPECT_EQ(sheet.generatedAgent()->name, u"新 Agent"_s);
}

TEST_F(AgentTasksOnTheWire, thePageSaysWhatWentWrong) {
    use(ModelProvider::openAI);
    AgentStudio studio(manager, notedClient());
    QStringList toasts;
    const auto subscription =
        studio.toasts.subscribe([&](const StudioToast& toast) { toasts << toast.text; });
    service.enqueue(answers::error(401));
    studio.generateForReplace(u"写诗"_s);
    ASSERT_TRUE(runUntil([&] { return !studio.isGenerating(); }));
    service.enqueue(answers::error(429));
    studio.optimize(manager.agents().front().id);
    ASSERT_TRUE(runUntil([&] { return !studio.isOptimizing(); }));
    ASSERT_EQ(toasts.size(), 2);
    EXPECT_TRUE(toasts[0].startsWith(u"生成失败: 模型服务认证失败（401），"_s)) << qUtf8Printable(toasts[0]);
    EXPECT_TRUE(toasts[1].startsWith(u"优化失败: 模型服务请求过于频繁或额度不足（429），"_s));
    EXPECT_EQ(manager.agents().size(), 6U);
}

}  // namespace
}  // namespace veltrin
