#include "Session/UserProfile.h"

#include <QSet>
#include <QStringList>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace veltrin {
namespace {

using Type = TrackedBehavior::BehaviorType;
using Counts = UserProfile::Counts;

constexpr std::int64_t youngSessions = 4;
constexpr std::size_t shownKeys = 3;
constexpr std::size_t lately = 20;

struct SkillStep {
    std::size_t commands;
    std::int64_t actions;
    const char16_t* level;
};
/// Highest first. A level needs both the breadth of commands and the use of actions.
constexpr SkillStep skillSteps[] = {{9, 31, u"advanced"}, {4, 11, u"intermediate"}, {0, 0, u"beginner"}};

QString skillLevelFor(std::size_t commands, std::int64_t actions) {
    const auto* const step =
        std::find_if(std::begin(skillSteps), std::end(skillSteps),
                     [&](const auto& each) { return commands >= each.commands && actions >= each.actions; });
    return QString::fromUtf16(step->level);
}

std::int64_t sum(const Counts& counts) {
    return std::accumulate(counts.begin(), counts.end(), std::int64_t{0},
                           [](std::int64_t total, const auto& each) { return total + each.second; });
}

/// The greatest counts, greatest first, at most `shownKeys`.
std::vector<std::pair<QString, std::int64_t>> greatest(const Counts& counts) {
    std::vector<std::pair<QString, std::int64_t>> sorted(counts.begin(), counts.end());
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    if (sorted.size() > shownKeys) sorted.erase(sorted.begin() + shownKeys, sorted.end());
    return sorted;
}

QSet<QString> commands(std::span<const TrackedBehavior> behaviors) {
    QSet<QString> details;
    for (const TrackedBehavior& each : behaviors) {
        if (each.type == Type::commandUsed) details.insert(each.detail);
    }
    return details;
}

}  // namespace

void UserProfile::count(const TrackedBehavior& behavior) {
    switch (behavior.type) {
        case Type::commandUsed:
            ++topCommands[behavior.detail];
            ++topCategories[behavior.category];
            break;
        case Type::commandIgnored:
            break;
        case Type::memoryAction:
            ++preferredActions[behavior.detail];
            break;
        case Type::optimizeAction:
            ++preferredActions[QStringLiteral("optimize:") + behavior.detail];
            break;
        case Type::promptDiagnosed:
            ++topPromptCategories[behavior.category];
            break;
        case Type::promptCategory:
            ++topPromptCategories[behavior.detail];
            break;
        case Type::appSwitch:
            ++topApps[behavior.detail];
            break;
    }
}

void UserProfile::assess() {
    Counts merged = topCategories;
    for (const auto& [key, times] : topPromptCategories)
        merged[key] += times;
    const auto most = std::max_element(merged.begin(), merged.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    if (most != merged.end()) dominantWorkflow = most->first;
    skillLevel = skillLevelFor(topCommands.size(), sum(preferredActions));
}

void UserProfile::assessLearning(std::span<const TrackedBehavior> behaviors) {
    const auto known = commands(behaviors).size();
    if (known == 0) return;
    const auto recent = commands(behaviors.first(std::min(lately, behaviors.size()))).size();
    learningRate = static_cast<double>(recent) / static_cast<double>(known);
}

QString UserProfile::context() const {
    if (totalSessions < youngSessions) return {};
    QStringList parts;
    const auto add = [&parts](const QString& title, const Counts& counts, bool withCount) {
        QStringList words;
        for (const auto& [key, times] : greatest(counts))
            words.append(withCount ? key + u'(' + QString::number(times) + QStringLiteral("次)") : key);
        if (!words.isEmpty()) parts.append(title + words.join(u'、'));
    };
    add(QStringLiteral("用户最常使用的命令类型："), topCategories, true);
    add(QStringLiteral("用户常用命令："), topCommands, false);
    if (dominantWorkflow != u"general") parts.append(QStringLiteral("用户主要工作流：") + dominantWorkflow);
    parts.append(QStringLiteral("技能水平：") + skillLevel);
    return parts.join(u'；') + u'。';
}

}  // namespace veltrin
