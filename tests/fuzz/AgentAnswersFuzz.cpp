#include "AI/AIChatCreateSheet.h"
#include "AI/AgentGeneration.h"
#include "AI/SkillsSheet.h"
#include "Foundation/Characters.h"
#include "Foundation/Text.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

namespace {

constexpr Date now{1795255200};

void checkPrompts(const QString& text) {
    const QString prompt = AgentGeneration::generationPrompt(text);
    fuzz::check(prompt.contains(QStringLiteral("用户描述：") + text + QStringLiteral("\n\n请返回 JSON：")),
                "the description stands in the prompt as it is");
    AgentProfile agent;
    agent.name = text;
    agent.systemPrompt = text;
    fuzz::check(AgentGeneration::optimizationPrompt(agent).contains(
                    QStringLiteral("名称：") + text + QStringLiteral("\n当前系统提示词：\n") + text + u'\n'),
                "and so do the name and the prompt");
}

void checkAnswers(const QString& answer) {
    const AgentProfile agent = AgentGeneration::generated(answer, QStringLiteral("写诗"), now);
    fuzz::check(agent.tags.endsWith(QStringLiteral("AI生成")), "a generated agent is tagged");
    fuzz::check(!agent.isBuiltin && !agent.isActive && agent.version == 1 && !agent.id.isNull(),
                "an answer makes an ordinary agent");
    const AgentProfile improved = AgentGeneration::optimized(agent, answer, now);
    fuzz::check(improved.id == agent.id && improved.name == agent.name,
                "an improvement changes the prompt only");
    const AgentProfile chatted = AIChatCreateSheet::agentOf(answer, now);
    fuzz::check(!chatted.isBuiltin && chatted.category == QStringLiteral("general"), "and so does a chat");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes = fuzz::bytes(data, size);
    const QString text = QString::fromUtf8(bytes);
    checkPrompts(text);
    checkAnswers(text);
    if (const auto skill = SkillsSheet::skill(QStringLiteral("a.md"), bytes, {})) {
        fuzz::check(Characters::count(skill->description) <= 80, "a skill's description is short");
        fuzz::check(!Text::isBlank(skill->description), "and there");
    }
    return 0;
}
