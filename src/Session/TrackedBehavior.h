#pragma once

#include "Foundation/Date.h"
#include "Foundation/RawValues.h"
#include "Foundation/Records.h"

#include <QUuid>

#include <tuple>

namespace veltrin {

/// One thing that the user did through the action pipeline.
struct TrackedBehavior {
    enum class BehaviorType {
        commandUsed,
        commandIgnored,
        memoryAction,
        optimizeAction,
        promptDiagnosed,
        promptCategory,
        appSwitch,
    };

    QUuid id;
    BehaviorType type = BehaviorType::commandUsed;
    QString detail;    ///< what was used: a command, an action's title or a slot
    QString context;   ///< the application's name at the time
    QString category;  ///< coarse class
    bool accepted = false;
    Date timestamp;
    friend bool operator==(const TrackedBehavior&, const TrackedBehavior&) = default;
};
template <>
inline constexpr auto rawValuesOf<TrackedBehavior::BehaviorType> =
    std::to_array<const char*>({"commandUsed", "commandIgnored", "memoryAction", "optimizeAction",
                                "promptDiagnosed", "promptCategory", "appSwitch"});
template <>
inline constexpr auto recordFields<TrackedBehavior> = std::tuple{
    required(u"id", &TrackedBehavior::id),
    required(u"type", &TrackedBehavior::type),
    required(u"detail", &TrackedBehavior::detail),
    required(u"context", &TrackedBehavior::context),
    required(u"category", &TrackedBehavior::category),
    required(u"accepted", &TrackedBehavior::accepted),
    required(u"timestamp", &TrackedBehavior::timestamp),
};

}  // namespace veltrin
