#pragma once

#include "Foundation/Records.h"

namespace veltrin {

/// A command that fits what the user is doing, as a model names it.
struct CommandRecommendation {
    QString command;
    QString category;  ///< "slash-command", "skill", "workflow", "tool" or "figma"; anything else is possible
    QString explanation;  ///< one sentence
    QString confidence;   ///< "high" or "medium"; anything else is possible
    friend bool operator==(const CommandRecommendation&, const CommandRecommendation&) = default;
};
template <>
inline constexpr auto recordFields<CommandRecommendation> =
    std::tuple{required(u"command", &CommandRecommendation::command),
               required(u"category", &CommandRecommendation::category),
               required(u"explanation", &CommandRecommendation::explanation),
               required(u"confidence", &CommandRecommendation::confidence)};

}  // namespace veltrin
