#pragma once

#include "Platform/SoundOutput.h"

namespace veltrin {

class PulseServer;

/// Sounds by way of a PulseAudio server (or PipeWire in its place): one lasting connection on a thread of its
/// own, one stream a sound. Without a server it is silent and says so in the log once; a server that comes
/// later is found by the next sound. What it plays must not outlive it.
class PulseSoundOutput final : public SoundOutput {
public:
    PulseSoundOutput();
    ~PulseSoundOutput() override;

    std::unique_ptr<PlayingSound> play(const QByteArray& wavFile) override;

private:
    std::unique_ptr<PulseServer> server_;
};

}  // namespace veltrin
