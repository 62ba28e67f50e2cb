#include "System/InteractionSoundPlayer.h"

#include "System/SoundMotifs.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr double thinkingInterval = 1.18;
/// How long a sound is kept after its end, for what the loudspeaker is behind.
constexpr double afterglow = 0.35;

constexpr double popupInterval = 0.16;
constexpr double cancelInterval = 0.14;
constexpr double completionInterval = 0.16;
constexpr double smartSelectActionInterval = 0.11;
constexpr double previewInterval = 0.12;
constexpr double thinkingTapInterval = 0.72;
// Longer than the timer's own: every second breath is left out.
constexpr double thinkingWhooshInterval = 1.6;

}  // namespace

InteractionSoundPlayer::InteractionSoundPlayer(RunLoop& runLoop, SoundOutput& output, AppSettings& settings)
    : runLoop_(runLoop), output_(output), settings_(settings) {
}

void InteractionSoundPlayer::playPopup(Channel channel) {
    playMotif(channel, u"popup."_s, popupInterval, SoundMotifs::popupSteps);
}

void InteractionSoundPlayer::playCompletion(Channel channel) {
    playMotif(channel, u"complete."_s, completionInterval, SoundMotifs::completionSteps);
}

void InteractionSoundPlayer::playMotif(Channel channel, const QString& key, double minimumInterval,
                                       Motif motif) {
    stopThinkingTimer(channel);
    const int generation = advanceGeneration(channel);
    if (!settings_.popupSoundEnabled() || !canPlay(key + rawValue(channel), minimumInterval)) return;
    playSequence(channel, generation, motif(channel, settings_.popupSoundPreset()));
}

void InteractionSoundPlayer::playCancel(Channel channel) {
    advanceGeneration(channel);
    stopThinkingTimer(channel);
    if (canPlay(u"cancel."_s + rawValue(channel), cancelInterval))
        play(SoundMotifs::cancelSound(channel, settings_.popupSoundPreset()));
}

void InteractionSoundPlayer::playSmartSelectAction() {
    if (canPlay(u"smart.action"_s, smartSelectActionInterval))
        play(SoundMotifs::smartSelectActionSound(settings_.popupSoundPreset()));
}

void InteractionSoundPlayer::preview(PopupSoundPreset preset) {
    if (!canPlay(u"preview."_s + rawValue(preset), previewInterval)) return;
    const Channel channel = Channel::optimize;
    playSequence(channel, generations_[channel], SoundMotifs::popupSteps(channel, preset));
}

void InteractionSoundPlayer::startThinking(Channel channel) {
    if (!settings_.popupSoundEnabled()) return;
    const int generation = advanceGeneration(channel);
    playThinkingTick(channel, generation);
    thinkingTimers_[channel] = runLoop_.every(
        thinkingInterval, [this, channel, generation] { playThinkingTick(channel, generation); });
}

void InteractionSoundPlayer::playThinkingTick(Channel channel, int generation) {
    if (!isOf(channel, generation)) return;
    if (channel == Channel::optimize || channel == Channel::translate) {
        playTapTriplet(channel, generation);
    } else {
        playWhoosh(channel, generation);
    }
}

void InteractionSoundPlayer::playTapTriplet(Channel channel, int generation) {
    if (canPlay(u"thinking.tap."_s + rawValue(channel), thinkingTapInterval))
        playSequence(channel, generation, SoundMotifs::thinkingTaps(channel, settings_.popupSoundPreset()));
}

void InteractionSoundPlayer::playWhoosh(Channel channel, int generation) {
    if (canPlay(u"thinking.whoosh."_s + rawValue(channel), thinkingWhooshInterval))
        playSequence(channel, generation, SoundMotifs::thinkingWhoosh(channel, settings_.popupSoundPreset()));
}

void InteractionSoundPlayer::stopThinkingTimer(Channel channel) {
    thinkingTimers_.erase(channel);
}

int InteractionSoundPlayer::advanceGeneration(Channel channel) {
    return ++generations_[channel];
}

bool InteractionSoundPlayer::isOf(Channel channel, int generation) const {
    const auto found = generations_.find(channel);
    return (found == generations_.end() ? 0 : found->second) == generation;
}

bool InteractionSoundPlayer::canPlay(const QString& key, double minimumInterval) {
    const double now = runLoop_.now();
    const auto last = lastSoundPlayedAt_.constFind(key);
    if (last != lastSoundPlayedAt_.cend() && now - *last < minimumInterval) return false;
    lastSoundPlayedAt_[key] = now;
    return true;
}

void InteractionSoundPlayer::playSequence(Channel channel, int generation, const Steps& steps) {
    for (const SynthStep& step : steps) {
        if (step.delay <= 0) {
            play(step.sound);
            continue;
        }
        runLoop_.afterDetached(step.delay, lifetime_.bind([this, channel, generation, sound = step.sound] {
            if (isOf(channel, generation)) play(sound);
        }));
    }
}

void InteractionSoundPlayer::play(const SynthSound& sound) {
    if (!settings_.popupSoundEnabled()) return;
    std::unique_ptr<PlayingSound> playing = output_.play(wavData(sound));
    if (!playing) return;
    const auto place = activeSounds_.insert(activeSounds_.end(), std::move(playing));
    runLoop_.afterDetached(sound.duration + afterglow,
                           lifetime_.bind([this, place] { activeSounds_.erase(place); }));
}

}  // namespace veltrin
