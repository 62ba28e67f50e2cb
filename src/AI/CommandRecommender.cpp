#include "AI/CommandRecommender.h"

#include "Foundation/Characters.h"
#include "Foundation/Resource.h"
#include "Foundation/Text.h"

namespace veltrin::CommandRecommender {
namespace {

constexpr std::size_t mostRecommendations = 5;
constexpr qsizetype rawCharacters = 500;

/// The commands that can be recommended and what is asked of the answer: the same in every prompt.
const QString& fixedPart() {
    static const QString text = Resource::text(QStringLiteral("commands/catalogue.txt")) +
                                QStringLiteral("\n\n") +
                                Resource::text(QStringLiteral("commands/requirements.txt"));
    return text;
}

/// The answer without the fence it may begin with. Words beside the fence stay: such an answer does not read.
QString withoutFence(const QString& answer) {
    QString text = Text::trimmed(answer);
    if (!text.startsWith(QStringLiteral("```"))) return text;
    text.remove(QStringLiteral("```json"));
    text.remove(QStringLiteral("```"));
    return Text::trimmed(text);
}

/// The row for an answer that does not read; it is counted as used like any other row: meant so.
CommandRecommendation raw(const QString& answer) {
    return {QStringLiteral("—"), QStringLiteral("raw"), Characters::prefix(answer, rawCharacters),
            QStringLiteral("medium")};
}

}  // namespace

QString buildPrompt(const QString& context, const QString& appName) {
    return QStringLiteral(
               "你是一个命令行工具和开发技能的推荐引擎。用户正在使用终端或 IDE 工作，你需要根据他当前输入/"
               "选中的文本上下文，推荐最相关的命令或技能。\n\n## 当前环境\n- 活跃应用：") +
           appName + QStringLiteral("\n- 用户上下文（光标附近的文字）：\n---\n") +
           (Text::isBlank(context) ? QStringLiteral("(空 — 用户在空白输入区)") : context) +
           QStringLiteral("\n---\n\n## 可推荐列表\n\n") + fixedPart();
}

std::vector<CommandRecommendation> parse(const QString& answer) {
    auto recommendations = readRecords<CommandRecommendation>(withoutFence(answer).toUtf8());
    if (!recommendations) return {raw(answer)};
    if (recommendations->size() > mostRecommendations) recommendations->resize(mostRecommendations);
    return *std::move(recommendations);
}

}  // namespace veltrin::CommandRecommender
