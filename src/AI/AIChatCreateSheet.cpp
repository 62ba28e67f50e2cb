#include "AI/AIChatCreateSheet.h"

#include "AI/AgentGeneration.h"
#include "Foundation/Json.h"
#include "Foundation/Resource.h"
#include "Foundation/Text.h"
#include "Platform/RunLoop.h"

namespace veltrin {
namespace {

constexpr double temperature = 0.5;
constexpr int replyLimit = 180;
constexpr double replyTimeout = 15;
constexpr int agentLimit = 600;
constexpr double agentTimeout = 25;

/// From this message of the user on, an agent is made as soon as there is none.
constexpr int generatingRound = 2;
/// From this one on, the model sums up instead of asking.
constexpr int summaryRound = 3;

const QString greeting = QStringLiteral(
    "你好！我是你的 Agent 创建助手，我会通过几个问题来深入了解你的需求，然后为你量身定做一个 AI 智能体。\n\n"
    "首先请告诉我：你想让这个 Agent 做什么？比如「帮我校对润色学术论文」「帮我生成小红书种草文案」"
    "「帮我审查代码」等等。");
const QString askingInstruction = QStringLiteral(
    "\n\n你是 Agent 创建助手。根据当前对话，提出1-2个有针对性的追问。需要了解：使用场景、风格偏好、输出格式、"
    "特殊约束。中文，不超过3句话。");
const QString summaryInstruction = QStringLiteral(
    "\n\n你是 Agent 创建助手。请总结你对用户需求的理解，然后说「我来为你生成这个 "
    "Agent」。中文，不超过4句话。");
const QString replyWithoutModel =
    QStringLiteral("好的，我已经了解你的需求了，我来为你生成这个 Agent，请稍等...");
const QString tuningRequest = QStringLiteral("请帮我优化调整一下");

QString generatingInstruction() {
    static const QString instruction =
        QStringLiteral("\n\n") + Resource::text(QStringLiteral("agents/chat_generate.txt"));
    return instruction;
}

std::optional<Json> objectIn(const QString& answer) {
    const qsizetype first = answer.indexOf(u'{');
    const qsizetype last = answer.lastIndexOf(u'}');
    if (first < 0 || last < first) return std::nullopt;
    auto json = Json::tryParse(answer.mid(first, last - first + 1).toUtf8());
    if (!json || !json->isObject()) return std::nullopt;
    return json;
}

}  // namespace

AIChatCreateSheet::AIChatCreateSheet(OllamaClient client, RunLoop& runLoop,
                                     std::function<void(const AgentProfile&)> created)
    : client_(client), runLoop_(runLoop), created_(std::move(created)) {
    messages_.push_back({false, greeting});
}

void AIChatCreateSheet::sendMessage() {
    if (isThinking_ || Text::isBlank(userInput)) return;
    send(std::exchange(userInput, {}));
}

void AIChatCreateSheet::send(const QString& text) {
    ++round_;
    isThinking_ = true;
    const Lifetime::Token token = lifetime_.token();
    append(true, text);
    if (token.alive()) answering(this);
}

void AIChatCreateSheet::confirmCreate() {
    if (!generatedAgent_ || isThinking_) return;
    // Whoever is told may close the sheet.
    const AgentProfile agent = *generatedAgent_;
    const auto created = created_;
    created(agent);
}

void AIChatCreateSheet::continueTuning() {
    if (isThinking_) return;
    generatedAgent_.reset();
    send(tuningRequest);
}

QCoro::Task<void> AIChatCreateSheet::answering(AIChatCreateSheet* sheet) {
    const Lifetime::Token token = sheet->lifetime_.token();
    auto replyTask = asking(sheet->client_, sheet->nextPrompt(), replyLimit, replyTimeout);
    const std::optional<QString> reply = co_await replyTask;
    if (!token.alive()) co_return;
    // An agent can come before the model has summed up, which is a round later: meant so.
    const bool generates = sheet->round_ >= generatingRound && !sheet->generatedAgent_;
    sheet->isThinking_ = generates;
    sheet->append(false, reply.value_or(replyWithoutModel));
    if (!generates || !token.alive()) co_return;
    auto agentTask =
        asking(sheet->client_, sheet->history() + generatingInstruction(), agentLimit, agentTimeout);
    const std::optional<QString> answer = co_await agentTask;
    if (!token.alive()) co_return;
    sheet->generatedAgent_ = answer ? agentOf(*answer, sheet->now()) : fallbackAgent(sheet->now());
    sheet->isThinking_ = false;
    sheet->changed.notify();
}

/// The model's answer; none on any failure.
QCoro::Task<std::optional<QString>> AIChatCreateSheet::asking(OllamaClient client, QString prompt, int limit,
                                                              double timeout) {
    std::optional<QString> answer;
    try {
        auto task = client.generate(std::move(prompt), temperature, limit, timeout);
        answer = co_await task;
    } catch (const std::exception&) {
        answer.reset();  // the chat goes on without the model
    }
    co_return answer;
}

QString AIChatCreateSheet::history() const {
    QString history = QStringLiteral("对话历史：");
    for (const ChatMessage& message : messages_)
        history += (message.isUser ? QStringLiteral("\n用户：") : QStringLiteral("\nAI：")) + message.text;
    return history;
}

QString AIChatCreateSheet::nextPrompt() const {
    return history() + (round_ >= summaryRound ? summaryInstruction : askingInstruction);
}

void AIChatCreateSheet::append(bool isUser, const QString& text) {
    messages_.push_back({isUser, text});
    changed.notify();
}

Date AIChatCreateSheet::now() const {
    return Date{runLoop_.wallNow()};
}

AgentProfile AIChatCreateSheet::agentOf(const QString& answer, Date now) {
    AgentProfile agent = fallbackAgent(now);
    const auto object = objectIn(answer);
    if (!object) return agent;
    using AgentGeneration::stringIn;
    agent.name = stringIn(*object, u"name", agent.name);
    agent.description = stringIn(*object, u"description");
    agent.systemPrompt = stringIn(*object, u"systemPrompt", agent.systemPrompt);
    agent.icon = stringIn(*object, u"icon", agent.icon);
    agent.colorHex = stringIn(*object, u"colorHex", agent.colorHex);
    agent.skills = AgentGeneration::stringsIn(*object, u"skills");
    agent.outputStyle = stringIn(*object, u"outputStyle");
    return agent;
}

AgentProfile AIChatCreateSheet::fallbackAgent(Date now) {
    AgentProfile agent = AgentProfile::made(now);
    agent.name = QStringLiteral("新 Agent");
    agent.systemPrompt = QStringLiteral("你是一个专业的 AI 助手。");
    agent.icon = AgentGeneration::defaultIcon;
    agent.colorHex = AgentGeneration::defaultColorHex;
    agent.outputStyle = QStringLiteral("清晰专业");
    return agent;
}

}  // namespace veltrin
