#include "System/SynthSound.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace veltrin {
namespace {

constexpr double turn = 2 * std::numbers::pi;

/// Rises from 0 to 1 with no edge at either end.
double smoothed(double p) {
    return p * p * (3 - 2 * p);
}

double envelope(const SynthSound& sound, double time) {
    double gain = 1;
    if (sound.attack > 0) gain = std::min(gain, time / sound.attack);
    if (sound.release > 0) gain = std::min(gain, std::max(0.0, (sound.duration - time) / sound.release));
    return smoothed(gain);
}

/// White noise that is the same on every run.
class Noise {
public:
    /// The next of the row, from -1 to below 1.
    double next() {
        word_ = word_ * 0x5851f42d4c957f2d + 0x14057b7ef767814f;
        return static_cast<double>((word_ >> 33) & 0xffff) * 3.0517578125e-5 - 1;
    }

private:
    std::uint64_t word_ = 0xc0ffee;
};

/// The swinging itself, sample after sample.
class Wave {
public:
    explicit Wave(const SynthSound::Kind& kind) : kind_(kind) {}

    /// `time` in seconds; `progress` from 0 to 1 over the sound.
    double next(double time, double progress) {
        const double angle = turn * kind_.startFrequency * time;
        switch (kind_.shape) {
            case SynthSound::Shape::tone:
                return std::sin(angle) + 0.18 * std::sin(2.01 * angle);
            case SynthSound::Shape::tap:
                return std::sin(angle) + 0.28 * std::sin(1.52 * angle);
            case SynthSound::Shape::chirp:
                glide(progress);
                return std::sin(phase_) + 0.2 * std::sin(2.01 * phase_) + 0.06 * std::sin(3.02 * phase_);
            case SynthSound::Shape::whoosh:
                glide(progress);
                return 0.32 * noise_.next() + 0.68 * std::sin(phase_);
        }
        return 0;
    }

private:
    void glide(double progress) {
        const double share = smoothed(std::clamp(progress, 0.0, 1.0));
        const double frequency = kind_.startFrequency + (kind_.endFrequency - kind_.startFrequency) * share;
        phase_ += turn * frequency / synthSampleRate;
    }

    SynthSound::Kind kind_;
    double phase_ = 0;
    Noise noise_;
};

template <typename Number>
void append(QByteArray& bytes, Number number) {
    const Number little = qToLittleEndian(number);
    bytes.append(reinterpret_cast<const char*>(&little), sizeof little);
}

}  // namespace

std::vector<std::int16_t> samples(const SynthSound& sound) {
    const auto count = static_cast<std::size_t>(std::max(1.0, std::floor(sound.duration * synthSampleRate)));
    std::vector<std::int16_t> samples(count);
    Wave wave(sound.kind);
    for (std::size_t i = 0; i < count; ++i) {
        const auto index = static_cast<double>(i);
        const double time = index / synthSampleRate;
        const double progress = count > 2 ? index / static_cast<double>(count - 1) : index;
        const double value = envelope(sound, time) * sound.volume * wave.next(time, progress);
        samples[i] = static_cast<std::int16_t>(std::clamp(value, -1.0, 1.0) * 32767);
    }
    return samples;
}

QByteArray makeWavData(std::span<const std::int16_t> samples, int sampleRate) {
    constexpr std::uint16_t bytesPerSample = 2;
    const auto dataSize = static_cast<std::uint32_t>(samples.size() * bytesPerSample);
    QByteArray file;
    file.reserve(qsizetype{44} + dataSize);
    file.append("RIFF");
    append<std::uint32_t>(file, 36 + dataSize);
    file.append("WAVEfmt ");
    append<std::uint32_t>(file, 16);
    append<std::uint16_t>(file, 1);  // PCM
    append<std::uint16_t>(file, 1);  // one channel
    append(file, static_cast<std::uint32_t>(sampleRate));
    append(file, static_cast<std::uint32_t>(sampleRate) * bytesPerSample);
    append<std::uint16_t>(file, bytesPerSample);
    append<std::uint16_t>(file, 8 * bytesPerSample);
    file.append("data");
    append(file, dataSize);
    for (const std::int16_t sample : samples)
        append(file, sample);
    return file;
}

QByteArray wavData(const SynthSound& sound) {
    return makeWavData(samples(sound), synthSampleRate);
}

}  // namespace veltrin
