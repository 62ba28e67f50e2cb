#pragma once

#include "Data/JSONStore.h"
#include "Foundation/Observers.h"
#include "Session/TrackedBehavior.h"
#include "Session/UserProfile.h"

#include <cstddef>
#include <vector>

namespace veltrin {

class RunLoop;

/// What the user did through the action pipeline, newest first, and the profile that it adds up to. Nothing
/// of it leaves the machine but `profileContext`, inside a prompt. Main thread.
///
/// It forgets at every start: its files are written with dates as text and read with dates as numbers. That
/// is meant.
class UserBehaviorTracker {
public:
    static constexpr std::size_t maxBehaviors = 1000;

    /// Reads "user_behaviors.json" in `directory` and writes nothing. The profile goes to
    /// "user_profile.json".
    UserBehaviorTracker(const QString& directory, const RunLoop& runLoop);
    UserBehaviorTracker(const UserBehaviorTracker&) = delete;
    UserBehaviorTracker& operator=(const UserBehaviorTracker&) = delete;

    const UserProfile& profile() const { return profile_; }
    const std::vector<TrackedBehavior>& recentBehaviors() const { return recentBehaviors_; }

    /// Adds a behaviour, brings the profile up to date and writes both files; a failure to write is dropped.
    void record(TrackedBehavior::BehaviorType type, const QString& detail, const QString& context,
                const QString& category, bool accepted);

    /// The profile as a Chinese sentence for a prompt; empty while there are fewer than four behaviours.
    QString profileContext() const { return profile_.context(); }

    /// After every `record`.
    Observers<> changed;

private:
    void updateProfile(const TrackedBehavior& behavior);
    void rebuildProfile();
    Date now() const;

    const RunLoop& runLoop_;
    JSONStore<TrackedBehavior> behaviorsFile_;
    JSONStore<UserProfile> profileFile_;
    std::vector<TrackedBehavior> recentBehaviors_;
    UserProfile profile_;
};

}  // namespace veltrin
