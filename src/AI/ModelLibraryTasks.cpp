#include "AI/ModelTasks.h"
#include "AI/OllamaError.h"
#include "AI/TaskAnswers.h"
#include "Data/StoredPrompt.h"
#include "Foundation/Characters.h"
#include "Foundation/Text.h"
#include "Platform/RunLoop.h"

#include <utility>

namespace veltrin {
namespace {

using Parts = std::shared_ptr<const ModelTasks::Parts>;

constexpr qsizetype taggedCharacters = 300;

QString searchPrompt(const QString& query, const std::vector<StoredPrompt>& prompts) {
    QStringList lines;
    lines.reserve(static_cast<qsizetype>(prompts.size()));
    for (const StoredPrompt& prompt : prompts) {
        lines << u'[' + QString::number(lines.size()) + QStringLiteral("] 标题：") + prompt.title +
                     QStringLiteral("\n标签：") + prompt.tags.join(QStringLiteral(", "));
    }
    return QStringLiteral(
               "You are a semantic search engine. Given a user query and a list of prompt assets, return the "
               "indices of the 3-5 most relevant matches.\n\nUser query: ") +
           query + QStringLiteral("\n\nAvailable prompts:\n") + lines.join(QStringLiteral("\n\n")) +
           QStringLiteral("\n\nReturn ONLY a JSON array of matching indices, e.g. [0, 3, 7]. No other text.");
}

QString generationPrompt(const QString& description) {
    return QStringLiteral(
               "You are a prompt engineering expert. Create a structured prompt based on this user request: "
               "\"") +
           description +
           QStringLiteral(
               "\"\n\nReturn ONLY a JSON object (no markdown, no extra text):\n"
               "{\"title\":\"提示词标题\",\"content\":\"完整的提示词内容\","
               "\"categoryTag\":\"writing|painting|code|chat|video|business\","
               "\"tags\":[\"标签1\",\"标签2\"]}");
}

QString improvementPrompt(const QString& content, const QString& instructions) {
    const QString direction =
        Text::isBlank(instructions) ? QString() : QStringLiteral("\n优化方向：") + instructions;
    return QStringLiteral(
               "You are a prompt optimization expert. Improve the following prompt based on the instructions."
               "\nKeep the original intent and purpose. Make the prompt more specific, structured, and "
               "effective.\nReturn ONLY the optimized prompt text. No other text.") +
           content + direction;
}

QString taggingPrompt(const StoredPrompt& prompt) {
    return QStringLiteral(
               "Analyze this prompt title and content. Suggest 2-4 relevant tags in Chinese.\n"
               "Return ONLY a JSON array, e.g. [\"写作\",\"产品\",\"营销\"]. No other text.\n\nTitle: ") +
           prompt.title + QStringLiteral("\nContent: ") +
           Characters::prefix(prompt.content, taggedCharacters);
}

QCoro::Task<std::vector<QUuid>> searching(Parts parts, QString query, std::vector<StoredPrompt> prompts) {
    std::vector<QUuid> ids;
    if (prompts.empty()) co_return ids;
    auto task = parts->client.generate(searchPrompt(query, prompts), 0, 80, 15);
    const QString answer = co_await task;
    for (const std::size_t index : TaskAnswers::indices(answer, prompts.size()))
        ids.push_back(prompts[index].id);
    co_return ids;
}

QCoro::Task<StoredPrompt> generating(Parts parts, QString description) {
    auto task = parts->client.generate(generationPrompt(description), 0.6, 800, 25);
    const QString answer = co_await task;
    auto prompt = TaskAnswers::prompt(answer, Date{parts->runLoop.wallNow()});
    if (!prompt) throw OllamaError::invalidResponse();
    co_return *std::move(prompt);
}

QCoro::Task<StoredPrompt> improving(Parts parts, StoredPrompt prompt, QString instructions) {
    auto task = parts->client.generate(improvementPrompt(prompt.content, instructions), 0.4, 600, 25);
    const QString answer = co_await task;
    const QString content = Text::trimmed(answer);
    // An empty answer is no better prompt, and would take the user's text away.
    if (content.isEmpty()) throw OllamaError::invalidResponse();
    prompt.content = content;
    prompt.updatedAt = Date{parts->runLoop.wallNow()};
    co_return prompt;
}

QCoro::Task<QStringList> tagging(Parts parts, StoredPrompt prompt) {
    auto task = parts->client.generate(taggingPrompt(prompt), 0.2, 120, 15);
    const QString answer = co_await task;
    co_return TaskAnswers::tags(answer);
}

}  // namespace

QCoro::Task<std::vector<QUuid>> ModelTasks::semanticSearch(QString query,
                                                           std::vector<StoredPrompt> prompts) const {
    return searching(parts_, std::move(query), std::move(prompts));
}

QCoro::Task<StoredPrompt> ModelTasks::generatePrompt(QString description) const {
    return generating(parts_, std::move(description));
}

QCoro::Task<StoredPrompt> ModelTasks::improvePrompt(StoredPrompt prompt, QString instructions) const {
    return improving(parts_, std::move(prompt), std::move(instructions));
}

QCoro::Task<QStringList> ModelTasks::suggestTags(StoredPrompt prompt) const {
    return tagging(parts_, std::move(prompt));
}

}  // namespace veltrin
