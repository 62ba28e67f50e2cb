#pragma once

#include <QByteArray>

#include <cstdint>
#include <span>
#include <vector>

namespace veltrin {

/// A short sound by its description. Pure values; the same description gives the same bytes on every run.
struct SynthSound {
    enum class Shape { tone, chirp, tap, whoosh };

    /// What swings, and how fast. Frequencies in hertz.
    struct Kind {
        Shape shape = Shape::tone;
        double startFrequency = 0;
        double endFrequency = 0;  ///< only of chirps and whooshes

        bool operator==(const Kind&) const = default;
    };
    static constexpr Kind tone(double frequency) { return {Shape::tone, frequency, frequency}; }
    static constexpr Kind tap(double frequency) { return {Shape::tap, frequency, frequency}; }
    static constexpr Kind chirp(double startFrequency, double endFrequency) {
        return {Shape::chirp, startFrequency, endFrequency};
    }
    static constexpr Kind whoosh(double startFrequency, double endFrequency) {
        return {Shape::whoosh, startFrequency, endFrequency};
    }

    Kind kind;
    double duration = 0;  ///< seconds
    double volume = 0;    ///< factor on the wave, which may swing a little beyond 1
    double attack = 0;    ///< seconds; zero begins at full gain
    double release = 0;   ///< seconds; zero ends at full gain

    bool operator==(const SynthSound&) const = default;
};

/// A sound of a sequence, and when it begins.
struct SynthStep {
    SynthSound sound;
    double delay = 0;  ///< seconds after the start of the sequence
};

inline constexpr int synthSampleRate = 44100;

/// At `synthSampleRate`; at least one sample, whatever the duration.
std::vector<std::int16_t> samples(const SynthSound& sound);
/// A canonical RIFF/WAVE file of one channel.
QByteArray makeWavData(std::span<const std::int16_t> samples, int sampleRate);
QByteArray wavData(const SynthSound& sound);

}  // namespace veltrin
