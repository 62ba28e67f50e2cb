#pragma once

#include "Session/TrackedBehavior.h"

#include <QString>

#include <cstdint>
#include <map>
#include <span>
#include <tuple>

namespace veltrin {

/// What the user's behaviour adds up to.
struct UserProfile {
    using Counts = std::map<QString, std::int64_t>;

    Counts topCategories;
    Counts topCommands;
    Counts topApps;
    Counts topPromptCategories;
    Counts preferredActions;
    std::int64_t totalSessions = 0;
    Date lastActive;
    QString dominantWorkflow = QStringLiteral("general");
    QString skillLevel = QStringLiteral("intermediate");
    double learningRate = 0.5;  ///< from 0 to 1
    friend bool operator==(const UserProfile&, const UserProfile&) = default;

    /// Adds the behaviour to the counters.
    void count(const TrackedBehavior& behavior);
    /// Sets `dominantWorkflow` and `skillLevel` from the counters.
    void assess();
    /// Sets `learningRate`: how many of the commands known to `behaviors`, newest first, were used lately.
    void assessLearning(std::span<const TrackedBehavior> behaviors);

    /// The profile as a Chinese sentence for a prompt; empty while it is young.
    QString context() const;
};
template <>
inline constexpr auto recordFields<UserProfile> = std::tuple{
    required(u"topCategories", &UserProfile::topCategories),
    required(u"topCommands", &UserProfile::topCommands),
    required(u"topApps", &UserProfile::topApps),
    required(u"topPromptCategories", &UserProfile::topPromptCategories),
    required(u"preferredActions", &UserProfile::preferredActions),
    required(u"totalSessions", &UserProfile::totalSessions),
    required(u"lastActive", &UserProfile::lastActive),
    required(u"dominantWorkflow", &UserProfile::dominantWorkflow),
    required(u"skillLevel", &UserProfile::skillLevel),
    required(u"learningRate", &UserProfile::learningRate),
};

}  // namespace veltrin
