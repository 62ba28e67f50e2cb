// How long after the call a sound is heard, and what making it costs. With --check it fails beyond the
// limits.
#include "Platform/Linux/Pulse/PulseSoundOutput.h"
#include "System/SynthSound.h"
#include "support/desktop/Waiting.h"
#include "support/sound/SoundServer.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string_view>

namespace veltrin {
namespace {

constexpr int rounds = 50;
constexpr double heardLimit = 0.010;  // seconds, median
constexpr double madeLimit = 0.005;   // seconds of processor time for 1 s of sound

/// Seconds of processor time for a second of the dearest sound.
double timeToMake() {
    const SynthSound whoosh{SynthSound::whoosh(292, 520), 1, 0.3, 0.1, 0.1};
    std::size_t made = 0;
    const std::clock_t start = std::clock();
    for (int i = 0; i < rounds; ++i)
        made += static_cast<std::size_t>(wavData(whoosh).size());
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    return made > 0 ? seconds / rounds : 0;
}

void pause(double seconds) {
    waitUntil(seconds, [] { return false; });
}

/// Seconds from the call to a recorder's hearing it, which includes the recorder's own delay.
double timeToHear(PulseSoundOutput& output, const SoundServer::Listener& listener, const QByteArray& sound) {
    const std::size_t before = listener.heard().size();
    const auto isSounding = [&] {
        return std::ranges::any_of(listener.heard(before), [](std::int16_t each) { return each != 0; });
    };
    const double start = monotonicSeconds();
    const auto playing = output.play(sound);
    const bool isHeard = waitUntil(1, isSounding);
    const double seconds = monotonicSeconds() - start;
    pause(0.15);  // until it is silent again
    return isHeard ? seconds : 1;
}

int run(bool isChecking) {
    const double made = timeToMake();
    std::printf("one second of sound made in %.2f ms\n", made * 1000);
    SoundServer server;
    server.start();
    const SoundServer::Listener listener(server);
    PulseSoundOutput output;
    pause(0.2);  // until it is connected
    const QByteArray sound = wavData({SynthSound::tone(720), 0.03, 0.5, 0, 0});
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i)
        times.push_back(timeToHear(output, listener, sound));
    std::ranges::sort(times);
    const double median = times[rounds / 2];
    std::printf("heard %.1f ms after the call (median of %d), at most %.1f ms\n", median * 1000, rounds,
                times.back() * 1000);
    return isChecking && (made > madeLimit || median > heardLimit) ? 1 : 0;
}

}  // namespace
}  // namespace veltrin

int main(int argc, char** argv) {
    return veltrin::run(argc > 1 && std::string_view(argv[1]) == "--check");
}
