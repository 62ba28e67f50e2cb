#include "Session/UserBehaviorTracker.h"

#include "Platform/RunLoop.h"

#include <utility>

namespace veltrin {
namespace {

/// Meant: what is written like this is not understood by the next start, which overwrites it as it is.
constexpr JSONStoreOptions mismatchedDates{
    .written = DateStrategy::iso8601, .read = DateStrategy::referenceDate, .keepsUnreadable = false};

}  // namespace

UserBehaviorTracker::UserBehaviorTracker(const QString& directory, const RunLoop& runLoop)
    : runLoop_(runLoop),
      behaviorsFile_(directory, QStringLiteral("user_behaviors.json"), mismatchedDates),
      profileFile_(directory, QStringLiteral("user_profile.json"), mismatchedDates),
      recentBehaviors_(behaviorsFile_.load()) {
    rebuildProfile();
}

void UserBehaviorTracker::record(TrackedBehavior::BehaviorType type, const QString& detail,
                                 const QString& context, const QString& category, bool accepted) {
    const TrackedBehavior behavior{QUuid::createUuid(), type, detail, context, category, accepted, now()};
    recentBehaviors_.insert(recentBehaviors_.begin(), behavior);
    if (recentBehaviors_.size() > maxBehaviors) recentBehaviors_.resize(maxBehaviors);
    behaviorsFile_.persist(recentBehaviors_);
    updateProfile(behavior);
    changed.notify();
}

void UserBehaviorTracker::updateProfile(const TrackedBehavior& behavior) {
    ++profile_.totalSessions;
    profile_.lastActive = now();
    profile_.count(behavior);
    profile_.assess();
    profile_.assessLearning(recentBehaviors_);
    profileFile_.persist({profile_});
}

/// Everything in a profile follows from the behaviours but `learningRate`, which starts anew; so there is
/// nothing to be read from the profile's own file.
void UserBehaviorTracker::rebuildProfile() {
    UserProfile rebuilt;
    for (const TrackedBehavior& each : recentBehaviors_)
        rebuilt.count(each);
    rebuilt.totalSessions = static_cast<std::int64_t>(recentBehaviors_.size());
    rebuilt.lastActive = recentBehaviors_.empty() ? now() : recentBehaviors_.front().timestamp;
    rebuilt.assess();
    profile_ = std::move(rebuilt);
}

Date UserBehaviorTracker::now() const {
    return {runLoop_.wallNow()};
}

}  // namespace veltrin
