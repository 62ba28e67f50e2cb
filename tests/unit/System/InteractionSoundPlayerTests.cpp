#include "System/InteractionSoundPlayer.h"
#include "System/SoundMotifs.h"
#include "support/fake/FakeDesktop.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Channel = InteractionSoundChannel;

class InteractionSoundPlayerTest : public testing::Test {
protected:
    /// When each sound since the last call began, in seconds after `start`.
    std::vector<double> begun() {
        std::vector<double> times;
        for (const auto& each : desktop.soundOutput.played)
            times.push_back(std::round((each.time - start) * 1000) / 1000);
        desktop.soundOutput.played.clear();
        return times;
    }
    void expectPlayed(const SoundMotifs::Steps& steps) {
        ASSERT_EQ(desktop.soundOutput.played.size(), steps.size());
        for (std::size_t i = 0; i < steps.size(); ++i) {
            EXPECT_EQ(desktop.soundOutput.played[i].file, wavData(steps[i].sound)) << i;
            EXPECT_NEAR(desktop.soundOutput.played[i].time - start, steps[i].delay, 1e-9) << i;
        }
    }

    FakeDesktop desktop;
    NotificationCenter notifications;
    AppSettings settings{desktop.preferences, notifications, desktop.environment};
    std::optional<InteractionSoundPlayer> player{std::in_place, desktop.runLoop, desktop.soundOutput,
                                                 settings};
    double start = desktop.now();
};

TEST_F(InteractionSoundPlayerTest, aPopupPlaysTheChannelsMotifInTheChosenPreset) {
    settings.popupSoundPreset.set(PopupSoundPreset::glass);
    player->playPopup(Channel::optimize);
    desktop.advance(1);
    expectPlayed(SoundMotifs::popupSteps(Channel::optimize, PopupSoundPreset::glass));
}

TEST_F(InteractionSoundPlayerTest, aCompletionPlaysItsMotifAndEndsTheThinking) {
    player->startThinking(Channel::translate);
    desktop.advance(0.05);
    desktop.soundOutput.played.clear();
    start = desktop.now();
    player->playCompletion(Channel::translate);
    desktop.advance(5);
    expectPlayed(SoundMotifs::completionSteps(Channel::translate, PopupSoundPreset::classic));
}

TEST_F(InteractionSoundPlayerTest, twoPopupsWithinADebounceGiveOneSound) {
    player->playPopup(Channel::voice);
    const std::size_t one = desktop.soundOutput.played.size();
    desktop.advance(0.15);
    player->playPopup(Channel::voice);
    EXPECT_EQ(desktop.soundOutput.played.size(), one);
    player->playPopup(Channel::smartSelect);
    EXPECT_EQ(desktop.soundOutput.played.size(), one + 1) << "each channel has a debounce of its own";
    desktop.advance(0.17);
    desktop.soundOutput.played.clear();
    player->playPopup(Channel::voice);
    EXPECT_EQ(desktop.soundOutput.played.size(), 1U);
}

TEST_F(InteractionSoundPlayerTest, theDebouncesAreAsLongAsTold) {
    const auto soundsAfter = [this](double pause, const std::function<void()>& play) {
        desktop.advance(10);
        play();
        desktop.advance(pause);
        desktop.soundOutput.played.clear();
        play();
        return !desktop.soundOutput.played.empty();
    };
    const auto expectInterval = [&](double interval, const std::function<void()>& play) {
        EXPECT_FALSE(soundsAfter(interval - 0.001, play)) << interval;
        EXPECT_TRUE(soundsAfter(interval + 0.001, play)) << interval;
    };
    // By their last sound only: what is still to come of the first falls silent.
    expectInterval(0.14, [this] { player->playCancel(Channel::drag); });
    expectInterval(0.16, [this] { player->playCompletion(Channel::drag); });
    expectInterval(0.11, [this] { player->playSmartSelectAction(); });
    expectInterval(0.12, [this] { player->preview(PopupSoundPreset::soft); });
    expectInterval(0.72, [this] { player->startThinking(Channel::optimize); });
    expectInterval(1.6, [this] {
        player->startThinking(Channel::voice);
        player->stopThinkingTimer(Channel::voice);
    });
}

TEST_F(InteractionSoundPlayerTest, thinkingTapsWithEveryTickAndBreathesWithEverySecond) {
    player->startThinking(Channel::optimize);
    desktop.advance(2.5);
    EXPECT_EQ(begun(), (std::vector<double>{0, 0.12, 0.24, 1.18, 1.3, 1.42, 2.36, 2.48}));
    player->playCancel(Channel::optimize);
    desktop.advance(2);

    desktop.soundOutput.played.clear();
    start = desktop.now();
    player->startThinking(Channel::voice);
    desktop.advance(5);
    // A breath lasts longer than a tick, so that every second tick stays silent: meant.
    EXPECT_EQ(begun(), (std::vector<double>{0, 0.46, 2.36, 2.82, 4.72}));
}

TEST_F(InteractionSoundPlayerTest, aCancelSilencesTheTicksAndWhatWasStillToCome) {
    player->startThinking(Channel::drag);
    desktop.advance(0.2);
    EXPECT_EQ(begun(), std::vector<double>{0});
    player->playCancel(Channel::drag);
    EXPECT_EQ(begun(), std::vector<double>{0.2});
    desktop.advance(10);
    EXPECT_TRUE(desktop.soundOutput.played.empty()) << "the breath of 0.46 s, and every later tick";
}

TEST_F(InteractionSoundPlayerTest, anotherChannelGoesOn) {
    player->startThinking(Channel::translate);
    player->playCancel(Channel::optimize);
    desktop.soundOutput.played.clear();
    desktop.advance(1.2);
    EXPECT_FALSE(desktop.soundOutput.played.empty());
}

TEST_F(InteractionSoundPlayerTest, withSoundsOffNothingPlaysAndGenerationsStillAdvance) {
    settings.popupSoundEnabled.set(false);
    player->playPopup(Channel::optimize);
    player->playCompletion(Channel::optimize);
    player->playCancel(Channel::optimize);
    player->startThinking(Channel::optimize);
    player->playSmartSelectAction();
    player->preview(PopupSoundPreset::crisp);
    desktop.advance(5);
    EXPECT_TRUE(desktop.soundOutput.played.empty());
    EXPECT_EQ(player->advanceGeneration(Channel::optimize), 4) << "thinking did not even begin";
}

TEST_F(InteractionSoundPlayerTest, soundsSwitchedOffInTheMiddleOfAMotifEndIt) {
    player->playPopup(Channel::optimize);
    settings.popupSoundEnabled.set(false);
    desktop.advance(1);
    EXPECT_EQ(desktop.soundOutput.played.size(), 1U);
}

TEST_F(InteractionSoundPlayerTest, generationsCountFromOneForEachChannel) {
    EXPECT_EQ(player->advanceGeneration(Channel::drag), 1);
    EXPECT_EQ(player->advanceGeneration(Channel::drag), 2);
    EXPECT_EQ(player->advanceGeneration(Channel::voice), 1);
}

TEST_F(InteractionSoundPlayerTest, aPreviewPlaysItsPresetWhateverIsChosen) {
    settings.popupSoundPreset.set(PopupSoundPreset::classic);
    player->preview(PopupSoundPreset::crisp);
    desktop.advance(1);
    expectPlayed(SoundMotifs::popupSteps(Channel::optimize, PopupSoundPreset::crisp));
}

TEST_F(InteractionSoundPlayerTest, aSoundIsKeptUntilItWasHeard) {
    player->playCancel(Channel::optimize);
    const double length = SoundMotifs::cancelSound(Channel::optimize, PopupSoundPreset::classic).duration;
    desktop.advance(length + 0.34);
    EXPECT_EQ(*desktop.soundOutput.sounding, 1);
    desktop.advance(0.02);
    EXPECT_EQ(*desktop.soundOutput.sounding, 0);
}

TEST_F(InteractionSoundPlayerTest, withoutALoudspeakerNothingHappens) {
    desktop.soundOutput.hasServer = false;
    player->playPopup(Channel::optimize);
    player->startThinking(Channel::voice);
    desktop.advance(3);
    EXPECT_EQ(*desktop.soundOutput.sounding, 0);
}

TEST_F(InteractionSoundPlayerTest, nothingSoundsOnceItIsGone) {
    player->playPopup(Channel::optimize);
    player->startThinking(Channel::voice);
    desktop.soundOutput.played.clear();
    player.reset();
    EXPECT_EQ(*desktop.soundOutput.sounding, 0);
    desktop.advance(3);
    EXPECT_TRUE(desktop.soundOutput.played.empty());
}

}  // namespace
}  // namespace veltrin
