#pragma once

#include "Foundation/RawValues.h"

namespace veltrin {

/// Which interaction a sound belongs to.
enum class InteractionSoundChannel { optimize, translate, voice, smartSelect, drag };
template <>
inline constexpr auto rawValuesOf<InteractionSoundChannel> =
    std::to_array<const char*>({"optimize", "translate", "voice", "smartSelect", "drag"});

}  // namespace veltrin
