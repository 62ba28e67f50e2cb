#include "System/SoundMotifs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

using Channel = InteractionSoundChannel;
using SoundMotifs::Steps;

/// Everything that a channel plays with a preset.
std::vector<Steps> motifs(Channel channel, PopupSoundPreset preset) {
    return {
        SoundMotifs::popupSteps(channel, preset),         SoundMotifs::completionSteps(channel, preset),
        {{SoundMotifs::cancelSound(channel, preset), 0}}, {{SoundMotifs::smartSelectActionSound(preset), 0}},
        SoundMotifs::thinkingTaps(channel, preset),       SoundMotifs::thinkingWhoosh(channel, preset)};
}

template <typename Check>
void forEveryMotif(const Check& check) {
    for (const Channel channel : allCases<Channel>()) {
        for (const PopupSoundPreset preset : allCases<PopupSoundPreset>()) {
            SCOPED_TRACE(rawValue(channel).toStdString() + ", " + rawValue(preset).toStdString());
            for (const Steps& steps : motifs(channel, preset))
                check(steps);
        }
    }
}

TEST(SoundMotifsTest, everyMotifBeginsAtOnceAndIsShort) {
    forEveryMotif([](const Steps& steps) {
        ASSERT_FALSE(steps.empty());
        EXPECT_EQ(steps.front().delay, 0);
        for (const SynthStep& step : steps) {
            EXPECT_GE(step.sound.duration, 0.018);
            EXPECT_LT(step.delay + step.sound.duration, 1.0);
        }
    });
}

TEST(SoundMotifsTest, everySoundIsHeardAndNoneIsCut) {
    forEveryMotif([](const Steps& steps) {
        for (const SynthStep& step : steps) {
            int peak = 0;
            for (const std::int16_t each : samples(step.sound))
                peak = std::max(peak, std::abs(static_cast<int>(each)));
            EXPECT_GT(peak, 32767 * 0.01);
            EXPECT_LT(peak, 32767 * 0.2) << "a whole chord of them must not clip either";
        }
    });
}

TEST(SoundMotifsTest, noSoundClicksAtItsEnds) {
    forEveryMotif([](const Steps& steps) {
        for (const SynthStep& step : steps) {
            const auto made = samples(step.sound);
            EXPECT_LT(std::abs(static_cast<int>(made.front())), 200);
            EXPECT_LT(std::abs(static_cast<int>(made.back())), 200);
        }
    });
}

TEST(SoundMotifsTest, everyChannelAndPresetHasItsOwn) {
    std::vector<QByteArray> popups;
    std::vector<QByteArray> completions;
    for (const Channel channel : allCases<Channel>()) {
        for (const PopupSoundPreset preset : allCases<PopupSoundPreset>()) {
            popups.push_back(wavData(SoundMotifs::popupSteps(channel, preset).front().sound));
            completions.push_back(wavData(SoundMotifs::completionSteps(channel, preset).back().sound));
        }
    }
    for (auto* all : {&popups, &completions}) {
        std::ranges::sort(*all);
        EXPECT_EQ(std::ranges::adjacent_find(*all), all->end());
    }
}

TEST(SoundMotifsTest, aPopupRisesAndACancelFalls) {
    for (const Channel channel : allCases<Channel>()) {
        for (const PopupSoundPreset preset : allCases<PopupSoundPreset>()) {
            const Steps popup = SoundMotifs::popupSteps(channel, preset);
            EXPECT_LT(popup.front().sound.kind.startFrequency,
                      std::max(popup.back().sound.kind.startFrequency, popup.back().sound.kind.endFrequency));
            const SynthSound cancel = SoundMotifs::cancelSound(channel, preset);
            EXPECT_GT(cancel.kind.startFrequency, cancel.kind.endFrequency);
        }
    }
}

}  // namespace
}  // namespace veltrin
