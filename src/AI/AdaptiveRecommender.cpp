#include "AI/AdaptiveRecommender.h"

#include "AI/CommandRecommender.h"
#include "Session/UserBehaviorTracker.h"

#include <algorithm>
#include <span>
#include <utility>

namespace veltrin::AdaptiveRecommender {
namespace {

using Words = std::span<const char16_t* const>;

constexpr double temperature = 0.1;
constexpr int primaryLimit = 600;
constexpr int retryLimit = 900;

constexpr const char16_t* codeCategories[] = {u"tool", u"workflow", u"slash-command"};
constexpr const char16_t* writingCategories[] = {u"skill", u"workflow"};
constexpr const char16_t* chatCategories[] = {u"skill", u"slash-command"};
constexpr const char16_t* businessCategories[] = {u"workflow", u"tool"};
constexpr const char16_t* paintingCategories[] = {u"tool", u"figma"};

struct WorkflowBonus {
    const char16_t* workflow;
    Words categories;
};
const WorkflowBonus workflowBonuses[] = {
    {u"code", codeCategories},         {u"writing", writingCategories},   {u"chat", chatCategories},
    {u"business", businessCategories}, {u"painting", paintingCategories},
};

double workflowBonus(const QString& workflow, const QString& category) {
    for (const WorkflowBonus& each : workflowBonuses) {
        if (workflow != QStringView(each.workflow)) continue;
        const bool listed = std::any_of(each.categories.begin(), each.categories.end(),
                                        [&](const char16_t* word) { return category == QStringView(word); });
        return listed ? 0.5 : 0;
    }
    return 0;
}

double countBonus(const UserProfile::Counts& counts, const QString& key, double each, double most) {
    const auto found = counts.find(key);
    return found == counts.end() ? 0 : std::min(most, each * static_cast<double>(found->second));
}

QString withProfile(const QString& context, const QString& profile) {
    if (profile.isEmpty()) return context;
    return QStringLiteral("用户上下文：\n") + context +
           QStringLiteral("\n\n用户历史行为画像（仅供参考，用于更精准推荐）：\n") + profile;
}

}  // namespace

double score(const CommandRecommendation& recommendation, const UserProfile& profile) {
    return (recommendation.confidence == u"high" ? 2.0 : 1.0) +
           countBonus(profile.topCommands, recommendation.command, 0.3, 1.5) +
           countBonus(profile.topCategories, recommendation.category, 0.2, 1.0) +
           workflowBonus(profile.dominantWorkflow, recommendation.category);
}

QCoro::Task<std::vector<CommandRecommendation>> recommend(QString context, QString appName,
                                                          OllamaClient client,
                                                          const UserBehaviorTracker& tracker) {
    const QString told = withProfile(context, tracker.profileContext());
    auto task = client.generateNonEmpty(CommandRecommender::buildPrompt(told, appName), temperature,
                                        primaryLimit, retryLimit);
    const QString answer = co_await task;
    auto recommendations = CommandRecommender::parse(answer);
    // What the user did while the model was thinking counts already.
    const UserProfile& profile = tracker.profile();
    if (profile.topCommands.empty()) co_return recommendations;
    std::stable_sort(
        recommendations.begin(), recommendations.end(),
        [&profile](const auto& a, const auto& b) { return score(a, profile) > score(b, profile); });
    co_return recommendations;
}

}  // namespace veltrin::AdaptiveRecommender
