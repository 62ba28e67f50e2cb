#pragma once

#include "ExternalAccess/InteractionSoundChannel.h"

#include <functional>

namespace veltrin {

/// The sounds of the interactions. Each may be absent: then its moment is silent. They return at once.
struct InteractionSounds {
    std::function<void(InteractionSoundChannel)> playPopup;
    std::function<void(InteractionSoundChannel)> playCancel;
    std::function<void(InteractionSoundChannel)> playCompletion;
    std::function<void(InteractionSoundChannel)> startThinking;
};

}  // namespace veltrin
