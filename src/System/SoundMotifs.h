#pragma once

#include "Data/SettingsEnumerations.h"
#include "ExternalAccess/InteractionSoundChannel.h"
#include "System/SynthSound.h"

namespace veltrin {

/// The motifs of the interactions. What is played stands per channel, how it sounds per preset.
namespace SoundMotifs {
using Steps = std::vector<SynthStep>;

/// A surface opens: the motif rises and stays open.
Steps popupSteps(InteractionSoundChannel channel, PopupSoundPreset preset);
/// A result is there: the motif comes to rest.
Steps completionSteps(InteractionSoundChannel channel, PopupSoundPreset preset);
/// Given up or failed: one falling sound.
SynthSound cancelSound(InteractionSoundChannel channel, PopupSoundPreset preset);
/// A button of the selection's popup.
SynthSound smartSelectActionSound(PopupSoundPreset preset);
/// The model is at work: three light taps, or a breath of air.
Steps thinkingTaps(InteractionSoundChannel channel, PopupSoundPreset preset);
Steps thinkingWhoosh(InteractionSoundChannel channel, PopupSoundPreset preset);
}  // namespace SoundMotifs

}  // namespace veltrin
