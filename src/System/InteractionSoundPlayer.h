#pragma once

#include "Data/AppSettings.h"
#include "ExternalAccess/InteractionSoundChannel.h"
#include "Foundation/Lifetime.h"
#include "Platform/RunLoop.h"
#include "Platform/SoundOutput.h"
#include "System/SynthSound.h"

#include <QHash>

#include <list>
#include <map>
#include <vector>

namespace veltrin {

/// All sounds of the program, synthesised at the moment they play. A channel's generation goes up whenever
/// its interaction moves on, which silences what was still to come of it. Main thread; never waits.
class InteractionSoundPlayer {
public:
    using Channel = InteractionSoundChannel;

    InteractionSoundPlayer(RunLoop& runLoop, SoundOutput& output, AppSettings& settings);
    InteractionSoundPlayer(const InteractionSoundPlayer&) = delete;
    InteractionSoundPlayer& operator=(const InteractionSoundPlayer&) = delete;

    void playPopup(Channel channel);
    void playCancel(Channel channel);
    void playCompletion(Channel channel);
    /// Sounds now and every 1.18 s, until the channel moves on.
    void startThinking(Channel channel);
    void stopThinkingTimer(Channel channel);
    /// The channel's new generation; the first is 1.
    int advanceGeneration(Channel channel);
    void playSmartSelectAction();
    /// A preset as the settings let it be heard.
    void preview(PopupSoundPreset preset);

private:
    using Steps = std::vector<SynthStep>;
    using Motif = Steps (*)(Channel, PopupSoundPreset);

    /// False when the same was played less than the interval (seconds) ago.
    bool canPlay(const QString& key, double minimumInterval);
    void playMotif(Channel channel, const QString& key, double minimumInterval, Motif motif);
    void playThinkingTick(Channel channel, int generation);
    void playTapTriplet(Channel channel, int generation);
    void playWhoosh(Channel channel, int generation);
    /// What has a delay is played only if the channel has not moved on by then.
    void playSequence(Channel channel, int generation, const Steps& steps);
    void play(const SynthSound& sound);
    bool isOf(Channel channel, int generation) const;

    RunLoop& runLoop_;
    SoundOutput& output_;
    AppSettings& settings_;
    std::map<Channel, Timer> thinkingTimers_;
    QHash<QString, double> lastSoundPlayedAt_;  // seconds of the run loop's clock
    std::map<Channel, int> generations_;
    std::list<std::unique_ptr<PlayingSound>> activeSounds_;
    Lifetime lifetime_;
};

}  // namespace veltrin
