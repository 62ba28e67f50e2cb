#include "System/SynthSound.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace veltrin {
namespace {

constexpr int full = 32767;

SynthSound sound(const SynthSound::Kind& kind, double duration, double volume = 1) {
    SynthSound sound;
    sound.kind = kind;
    sound.duration = duration;
    sound.volume = volume;
    return sound;
}

double at(std::size_t sample) {
    return static_cast<double>(sample) / synthSampleRate;
}

int loudest(const std::vector<std::int16_t>& samples) {
    int peak = 0;
    for (const std::int16_t each : samples)
        peak = std::max(peak, std::abs(static_cast<int>(each)));
    return peak;
}

TEST(SynthSoundTest, aToneIsASineWithAFaintNeighbourOfItsOctave) {
    const auto made = samples(sound(SynthSound::tone(440), 0.1, 0.5));
    ASSERT_EQ(made.size(), 4410U);
    for (const std::size_t i : {0U, 1U, 17U, 1000U, 4409U}) {
        const double angle = 2 * std::numbers::pi * 440 * at(i);
        const double wave = std::sin(angle) + 0.18 * std::sin(2.01 * angle);
        EXPECT_EQ(made[i], static_cast<int>(0.5 * wave * full)) << i;
    }
}

TEST(SynthSoundTest, aTapHasThePartialOfABell) {
    const auto made = samples(sound(SynthSound::tap(880), 0.05, 0.5));
    for (const std::size_t i : {1U, 100U, 2204U}) {
        const double angle = 2 * std::numbers::pi * 880 * at(i);
        EXPECT_EQ(made[i], static_cast<int>(0.5 * (std::sin(angle) + 0.28 * std::sin(1.52 * angle)) * full))
            << i;
    }
}

TEST(SynthSoundTest, aChirpGlidesSmoothlyFromOnePitchToTheOther) {
    const auto made = samples(sound(SynthSound::chirp(200, 400), 1, 0.5));
    // Crossings of zero, upwards, within a tenth of a second: the pitch there.
    const auto pitch = [&](std::size_t from) {
        int crossings = 0;
        for (std::size_t i = from; i < from + 4410; ++i)
            crossings += made[i] < 0 && made[i + 1] >= 0 ? 1 : 0;
        return crossings * 10;
    };
    EXPECT_NEAR(pitch(0), 200, 11);
    EXPECT_NEAR(pitch(19845), 300, 11);
    EXPECT_NEAR(pitch(39600), 400, 11);
}

TEST(SynthSoundTest, aWhooshIsAThirdNoise) {
    const auto made = samples(sound(SynthSound::whoosh(300, 300), 0.01));
    std::uint64_t word = 0xc0ffee;
    double phase = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        word = word * 0x5851f42d4c957f2d + 0x14057b7ef767814f;
        phase += 2 * std::numbers::pi * 300 / 44100;
        const double noise = static_cast<double>((word >> 33) & 0xffff) / 32768 - 1;
        EXPECT_EQ(made[i], static_cast<int>((0.32 * noise + 0.68 * std::sin(phase)) * full)) << i;
    }
}

TEST(SynthSoundTest, theNoiseIsTheSameOnEveryRun) {
    const auto first = samples(sound(SynthSound::whoosh(292, 520), 0.2));
    EXPECT_EQ(first, samples(sound(SynthSound::whoosh(292, 520), 0.2)));
    EXPECT_GT(loudest(first), full / 2);
}

TEST(SynthSoundTest, attackAndReleaseAreSmoothed) {
    SynthSound swelling = sound(SynthSound::tone(1000), 0.4, 1);
    swelling.attack = 0.1;
    swelling.release = 0.1;
    const SynthSound plain = sound(SynthSound::tone(1000), 0.4, 1);
    const auto soft = samples(swelling);
    const auto hard = samples(plain);
    EXPECT_EQ(soft[0], 0);
    const std::size_t quarterIn = 1103;
    const double gain = 0.25 * 0.25 * (3 - 0.5);
    EXPECT_NEAR(soft[quarterIn], hard[quarterIn] * gain, full * 0.002);
    EXPECT_EQ(soft[8820], hard[8820]) << "in the middle the gain is full";
    EXPECT_NEAR(soft[hard.size() - quarterIn], hard[hard.size() - quarterIn] * gain, full * 0.002);
}

TEST(SynthSoundTest, aZeroAttackOrReleaseGivesFullGainAtThatEnd) {
    const auto made = samples(sound(SynthSound::tone(11025), 0.01, 0.5));
    EXPECT_GT(std::abs(made[1]), full * 0.4);
    EXPECT_GT(std::abs(made[439]), full * 0.4);
}

TEST(SynthSoundTest, whatSwingsBeyondFullScaleIsCutThere) {
    EXPECT_EQ(loudest(samples(sound(SynthSound::tap(440), 0.1, 4))), full);
}

TEST(SynthSoundTest, theShortestSoundIsOneSample) {
    EXPECT_EQ(samples(sound(SynthSound::tone(440), 0)).size(), 1U);
    EXPECT_EQ(samples(sound(SynthSound::chirp(440, 880), -1)).size(), 1U);
    EXPECT_EQ(samples(sound(SynthSound::chirp(440, 880), 2.5 / synthSampleRate)).size(), 2U);
}

TEST(SynthSoundTest, theFileIsACanonicalWaveFile) {
    const std::vector<std::int16_t> some = {1, -2, 0x1234};
    const QByteArray file = makeWavData(some, 44100);
    EXPECT_EQ(file.toHex(),
              "524946462a00000057415645"
              "666d7420100000000100010044ac000088580100"
              "02001000"
              "6461746106000000"
              "0100feff3412");
    const SynthSound tone = sound(SynthSound::tone(440), 0.1);
    EXPECT_EQ(wavData(tone), makeWavData(samples(tone), 44100));
    EXPECT_EQ(wavData(tone).size(), 44 + 2 * 4410);
}

}  // namespace
}  // namespace veltrin
