#pragma once

#include "AI/CommandRecommendation.h"
#include "AI/OllamaClient.h"

#include <vector>

namespace veltrin {

class UserBehaviorTracker;
struct UserProfile;

/// Asks a model which command fits, tells it what the user is known for, and ranks its answer by the same
/// knowledge.
namespace AdaptiveRecommender {
/// At most five recommendations, ranked. Throws what OllamaClient throws; an answer that cannot be read is
/// one recommendation that holds it. Main thread; the tracker outlives the task.
QCoro::Task<std::vector<CommandRecommendation>> recommend(QString context, QString appName,
                                                          OllamaClient client,
                                                          const UserBehaviorTracker& tracker);

/// How well a recommendation fits the user: from 1 to 5.
double score(const CommandRecommendation& recommendation, const UserProfile& profile);
}  // namespace AdaptiveRecommender

}  // namespace veltrin
