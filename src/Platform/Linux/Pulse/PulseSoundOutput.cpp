#include "Platform/Linux/Pulse/PulseSoundOutput.h"

#include "Platform/Linux/Pulse/PulseServer.h"
#include "Platform/Linux/Pulse/PulseStream.h"
#include "Platform/Linux/Pulse/WavFile.h"

namespace veltrin {

PulseSoundOutput::PulseSoundOutput() : server_(std::make_unique<PulseServer>()) {
}

PulseSoundOutput::~PulseSoundOutput() = default;

std::unique_ptr<PlayingSound> PulseSoundOutput::play(const QByteArray& wavFile) {
    const auto file = readWav(wavFile);
    if (!file) return nullptr;
    const pa_sample_spec format{
        .format = PA_SAMPLE_S16LE, .rate = file->sampleRate, .channels = file->channels};
    const PulseServer::Lock lock(*server_);
    if (!server_->connect()) return nullptr;
    auto stream = std::make_unique<PulseStream>(*server_, format, file->samples.toByteArray());
    server_->begin(*stream);
    return stream;
}

}  // namespace veltrin
