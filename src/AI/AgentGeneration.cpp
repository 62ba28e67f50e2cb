#include "AI/AgentGeneration.h"

#include "AI/AIJSONExtractor.h"
#include "Foundation/Resource.h"
#include "Foundation/Text.h"
#include "Platform/RunLoop.h"

namespace veltrin {
namespace {

constexpr double temperature = 0.3;
constexpr double timeout = 30;
/// The tag of an agent that a model has made.
const QString generatedTag = QStringLiteral("AI生成");

}  // namespace

QString AgentGeneration::stringIn(const Json& object, QStringView key, const QString& fallback) {
    const Json* value = object.find(key);
    return value == nullptr ? fallback : value->toString().value_or(fallback);
}

QStringList AgentGeneration::stringsIn(const Json& object, QStringView key) {
    const Json* value = object.find(key);
    const Json::Array* array = value == nullptr ? nullptr : value->array();
    if (array == nullptr) return {};
    QStringList strings;
    for (const Json& element : *array) {
        const auto text = element.toString();
        if (!text) return {};
        strings << *text;
    }
    return strings;
}

QString AgentGeneration::generationPrompt(const QString& description) {
    static const QString form = Resource::text(QStringLiteral("agents/generate.txt"));
    return Text::filled(form, {{QStringLiteral("description"), description}});
}

AgentProfile AgentGeneration::generated(const QString& answer, const QString& description, Date now) {
    AgentProfile agent = AgentProfile::made(now);
    agent.icon = defaultIcon;
    agent.colorHex = defaultColorHex;
    agent.systemPrompt = answer;
    if (const auto object = AIJSONExtractor::object(answer)) {
        agent.name = stringIn(*object, u"name", QStringLiteral("AI Agent"));
        agent.systemPrompt = stringIn(*object, u"systemPrompt", answer);
        agent.icon = stringIn(*object, u"icon", defaultIcon);
        agent.colorHex = stringIn(*object, u"colorHex", defaultColorHex);
        agent.description = stringIn(*object, u"description");
        agent.skills = stringsIn(*object, u"skills");
        agent.outputStyle = stringIn(*object, u"outputStyle");
        agent.category = stringIn(*object, u"category", agent.category);
    } else {
        agent.name = QStringLiteral("自定义 Agent");
        agent.description = description;
    }
    agent.tags = agent.skills + QStringList{generatedTag};
    return agent;
}

QCoro::Task<AgentProfile> AgentGeneration::generate(OllamaClient client, RunLoop* runLoop,
                                                    QString description) {
    auto task = client.generate(generationPrompt(description), temperature, std::nullopt, timeout);
    const QString answer = co_await task;
    co_return generated(answer, description, Date{runLoop->wallNow()});
}

QString AgentGeneration::optimizationPrompt(const AgentProfile& agent) {
    static const QString form = Resource::text(QStringLiteral("agents/optimize.txt"));
    return Text::filled(
        form, {{QStringLiteral("name"), agent.name}, {QStringLiteral("prompt"), agent.systemPrompt}});
}

AgentProfile AgentGeneration::optimized(const AgentProfile& agent, const QString& answer, Date now) {
    // The answer's suggestions and score are asked for and not used: asking makes the prompt better.
    const auto object = AIJSONExtractor::object(answer);
    const Json* member = object ? object->find(u"systemPrompt") : nullptr;
    const auto prompt = member == nullptr ? std::nullopt : member->toString();
    if (!prompt) return agent;
    AgentProfile improved = agent;
    improved.systemPrompt = *prompt;
    improved.updatedAt = now;
    return improved;
}

QCoro::Task<AgentProfile> AgentGeneration::optimize(OllamaClient client, RunLoop* runLoop,
                                                    AgentProfile agent) {
    auto task = client.generate(optimizationPrompt(agent), temperature, std::nullopt, timeout);
    const QString answer = co_await task;
    co_return optimized(agent, answer, Date{runLoop->wallNow()});
}

}  // namespace veltrin
