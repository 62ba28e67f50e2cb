#include "Platform/Linux/Pulse/PulseSoundOutput.h"
#include "Platform/Linux/Pulse/WavFile.h"
#include "System/SoundMotifs.h"
#include "support/desktop/Waiting.h"
#include "support/fake/LogCapture.h"
#include "support/sound/SoundServer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace veltrin {
namespace {

constexpr double patience = 20;

using Samples = std::vector<std::int16_t>;

SynthSound tone(double frequency, double duration) {
    return {SynthSound::tone(frequency), duration, 0.3, 0.003, 0.003};
}

/// Without the silence around them; a sound begins and ends with silence of its own.
Samples trimmed(const Samples& samples) {
    const auto isHeard = [](std::int16_t each) { return each != 0; };
    const auto first = std::ranges::find_if(samples, isHeard);
    const auto last = std::find_if(samples.rbegin(), samples.rend(), isHeard);
    return first == samples.end() ? Samples() : Samples(first, last.base());
}

bool contains(const Samples& heard, const Samples& wanted) {
    return !std::ranges::search(heard, trimmed(wanted)).empty();
}

class PulseSoundOutputTest : public testing::Test {
protected:
    /// Plays it until it is heard whole: before the connection stands a sound may come too late to be played,
    /// and a busy machine's recorder has gaps.
    static bool playUntilHeard(PulseSoundOutput& output, const SoundServer::Listener& listener,
                               const SynthSound& sound) {
        const Samples wanted = samples(sound);
        return waitUntil(patience, [&] {
            const auto playing = output.play(wavData(sound));
            return waitUntil(sound.duration + 0.5, [&] { return contains(listener.heard(), wanted); });
        });
    }
    static void playFirst(PulseSoundOutput& output, const SoundServer::Listener& listener) {
        ASSERT_TRUE(playUntilHeard(output, listener, tone(500, 0.05)));
    }
    qsizetype timesSaidToBeSilent() const {
        return std::ranges::count_if(log.lines(), [](const QString& line) {
            return line.startsWith(QStringLiteral("Sound output unavailable:"));
        });
    }

    LogCapture log;
    SoundServer server;
};

TEST_F(PulseSoundOutputTest, aSoundIsHeardBitForBit) {
    server.start();
    const SoundServer::Listener listener(server);
    PulseSoundOutput output;
    playFirst(output, listener);
    for (const PopupSoundPreset preset : allCases<PopupSoundPreset>()) {
        const SynthSound cancel = SoundMotifs::cancelSound(InteractionSoundChannel::optimize, preset);
        EXPECT_TRUE(playUntilHeard(output, listener, cancel)) << qPrintable(rawValue(preset));
    }
}

TEST_F(PulseSoundOutputTest, soundsOverlap) {
    server.start();
    const SoundServer::Listener listener(server);
    PulseSoundOutput output;
    playFirst(output, listener);
    const auto low = output.play(wavData(tone(300, 3)));
    ASSERT_TRUE(waitUntil(patience, [&] { return server.streams() == 1; }));
    const auto high = output.play(wavData(tone(900, 3)));
    EXPECT_TRUE(waitUntil(patience, [&] { return server.streams() == 2; }));
    EXPECT_TRUE(waitUntil(patience, [&] { return server.streams() == 0; })) << "each ends by itself";
}

TEST_F(PulseSoundOutputTest, aSoundFallsSilentWithItsObject) {
    server.start();
    const SoundServer::Listener listener(server);
    PulseSoundOutput output;
    playFirst(output, listener);
    auto playing = output.play(wavData(tone(300, 60)));
    ASSERT_TRUE(waitUntil(patience, [&] { return server.streams() == 1; }));
    playing.reset();
    EXPECT_TRUE(waitUntil(patience, [&] { return server.streams() == 0; }));
}

TEST_F(PulseSoundOutputTest, withoutAServerItIsSilentAndSaysSoOnce) {
    PulseSoundOutput output;
    for (int i = 0; i < 50; ++i)
        output.play(wavData(tone(440, 0.05)));
    ASSERT_TRUE(waitUntil(patience, [&] { return timesSaidToBeSilent() > 0; }));
    EXPECT_EQ(timesSaidToBeSilent(), 1);
}

TEST_F(PulseSoundOutputTest, aServerThatComesLaterIsFound) {
    PulseSoundOutput output;
    output.play(wavData(tone(440, 0.05)));
    server.start();
    const SoundServer::Listener listener(server);
    playFirst(output, listener);
}

TEST_F(PulseSoundOutputTest, aServerThatDiesIsLeftAndItsSuccessorFound) {
    server.start();
    PulseSoundOutput output;
    {
        const SoundServer::Listener listener(server);
        playFirst(output, listener);
    }
    const auto cut = output.play(wavData(tone(300, 60)));
    ASSERT_TRUE(waitUntil(patience, [&] { return server.streams() == 1; }));
    server.kill();
    ASSERT_TRUE(waitUntil(patience, [&] { return timesSaidToBeSilent() == 1; }));
    const auto lost = output.play(wavData(tone(300, 0.05)));
    server.start();
    const SoundServer::Listener listener(server);
    playFirst(output, listener);
}

TEST_F(PulseSoundOutputTest, aServerThatHangsHoldsNobodyUp) {
    server.start();
    const SoundServer::Listener listener(server);
    PulseSoundOutput output;
    playFirst(output, listener);
    server.stop();
    const double start = monotonicSeconds();
    std::vector<std::unique_ptr<PlayingSound>> sounds;
    for (int i = 0; i < 100; ++i)
        sounds.push_back(output.play(wavData(tone(300, 0.1))));
    sounds.clear();
    EXPECT_LT(monotonicSeconds() - start, 5.0) << "nobody waited for an answer that will not come";
    server.resume();
    playFirst(output, listener);
}

TEST_F(PulseSoundOutputTest, whatIsNoWaveFileIsNotPlayed) {
    server.start();
    PulseSoundOutput output;
    EXPECT_EQ(output.play("no sound"), nullptr);
    EXPECT_EQ(output.play({}), nullptr);
    EXPECT_EQ(output.play(wavData(tone(300, 0.1)).first(30)), nullptr);
}

TEST(WavFileTest, whatIsWrittenIsRead) {
    const SynthSound sound = tone(440, 0.1);
    const QByteArray file = wavData(sound);
    const auto read = readWav(file);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->sampleRate, 44100U);
    EXPECT_EQ(read->channels, 1);
    EXPECT_EQ(read->samples, QByteArrayView(file).sliced(44));
}

TEST(WavFileTest, otherChunksArePassedOver) {
    const QByteArray file = wavData(tone(440, 0.01));
    const QByteArray withList =
        file.first(12) + QByteArray::fromHex("4c4953540300000061626300") + file.sliced(12);
    const auto read = readWav(withList);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->samples.size(), 882);
}

TEST(WavFileTest, hostileFilesAreRefused) {
    const QByteArray file = wavData(tone(440, 0.01));
    const auto with = [&](qsizetype at, const char* hex) {
        QByteArray changed = file;
        const QByteArray bytes = QByteArray::fromHex(hex);
        changed.replace(at, bytes.size(), bytes);
        return changed;
    };
    EXPECT_FALSE(readWav(with(20, "0300"))) << "floating point";
    EXPECT_FALSE(readWav(with(22, "0000"))) << "no channel";
    EXPECT_FALSE(readWav(with(22, "ffff"))) << "65,535 channels";
    EXPECT_FALSE(readWav(with(24, "00000000"))) << "no rate";
    EXPECT_FALSE(readWav(with(34, "0800"))) << "8 bits";
    EXPECT_FALSE(readWav(with(16, "ffffffff"))) << "a chunk larger than the file";
    EXPECT_EQ(readWav(with(40, "ffffffff"))->samples.size(), 882) << "the data end with the file";
    for (qsizetype size = 0; size < 44; ++size)
        EXPECT_FALSE(readWav(QByteArrayView(file).first(size))) << size;
}

}  // namespace
}  // namespace veltrin
