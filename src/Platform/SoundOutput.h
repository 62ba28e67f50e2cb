#pragma once

#include <QByteArray>

#include <memory>

namespace veltrin {

/// A sound under way. Falls silent when destroyed.
class PlayingSound {
public:
    PlayingSound() = default;
    PlayingSound(const PlayingSound&) = delete;
    PlayingSound& operator=(const PlayingSound&) = delete;
    virtual ~PlayingSound() = default;
};

/// The user's loudspeaker. Main thread; never waits for it.
class SoundOutput {
public:
    SoundOutput() = default;
    SoundOutput(const SoundOutput&) = delete;
    SoundOutput& operator=(const SoundOutput&) = delete;
    virtual ~SoundOutput() = default;

    /// Begins to play a WAV file (PCM, 16 bits) from memory, beside whatever else is playing. Null when the
    /// bytes are no such file or nothing here can make a sound.
    virtual std::unique_ptr<PlayingSound> play(const QByteArray& wavFile) = 0;
};

}  // namespace veltrin
