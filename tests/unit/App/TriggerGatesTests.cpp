#include "App/TriggerGates.h"
#include "Data/AppSettings.h"
#include "Gesture/SpaceGesturePolicy.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

struct Row {
    const char* name;
    Trigger trigger;
    bool asksMasterSwitch;
    Setting<bool> AppSettings::*featureSwitch;
    Setting<QString> AppSettings::*blacklist;
    const char* refusal;
};

const Row rows[] = {
    {"doubleTap", Trigger::doubleTap, true, &AppSettings::doubleSpaceGestureEnabled,
     &AppSettings::optimizeBlacklistedBundleIDsText, "Double Space Triggered but ignored by settings"},
    {"tripleTap", Trigger::tripleTap, true, &AppSettings::tripleSpaceGestureEnabled,
     &AppSettings::translationBlacklistedBundleIDsText, "Triple Space Triggered but ignored by settings"},
    {"optimize", Trigger::optimizeShortcut, true, &AppSettings::doubleSpaceGestureEnabled,
     &AppSettings::optimizeBlacklistedBundleIDsText, "Custom optimize shortcut ignored by settings"},
    {"translation", Trigger::translationShortcut, true, &AppSettings::tripleSpaceGestureEnabled,
     &AppSettings::translationBlacklistedBundleIDsText, "Custom translation shortcut ignored by settings"},
    {"smartSelect", Trigger::smartSelectShortcut, true, &AppSettings::smartSelectEnabled,
     &AppSettings::smartSelectBlacklistedBundleIDsText, "Custom smart select shortcut ignored by settings"},
    {"voice", Trigger::voiceShortcut, true, &AppSettings::voiceInteractionEnabled,
     &AppSettings::voiceBlacklistedBundleIDsText, "Custom voice shortcut ignored by settings"},
    {"drag", Trigger::dragShortcut, false, &AppSettings::dragInteractionEnabled,
     &AppSettings::dragBlacklistedBundleIDsText, "Custom drag shortcut ignored by settings"},
};

class TriggerGatesTest : public testing::TestWithParam<Row> {
protected:
    TriggerGatesTest() { desktop.workspace.bringToFront(&editor); }

    bool allowed() { return gates.allows(GetParam().trigger); }
    Setting<QString>& blacklist() { return settings.*GetParam().blacklist; }
    QStringList refusal() const { return {QString::fromUtf8(GetParam().refusal)}; }

    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
    NotificationCenter notifications;
    AppSettings settings{desktop.preferences, notifications, desktop.environment};
    SpaceGestureAppPolicy policy{desktop.workspace, settings};
    TriggerGates gates{settings, policy};
    LogCapture log;
};

TEST_P(TriggerGatesTest, isOpenByDefaultAndSaysNothing) {
    EXPECT_TRUE(allowed());
    EXPECT_EQ(log.lines(), QStringList());
}

TEST_P(TriggerGatesTest, asksTheMasterSwitchUnlessItIsDrag) {
    settings.spaceGesturesEnabled.set(false);
    EXPECT_EQ(allowed(), !GetParam().asksMasterSwitch);
    EXPECT_EQ(log.lines(), GetParam().asksMasterSwitch ? refusal() : QStringList());
}

TEST_P(TriggerGatesTest, asksItsOwnFeatureSwitch) {
    (settings.*GetParam().featureSwitch).set(false);
    EXPECT_FALSE(allowed());
    EXPECT_EQ(log.lines(), refusal());
}

TEST_P(TriggerGatesTest, asksNoOtherFeatureSwitch) {
    for (const auto each : {&AppSettings::doubleSpaceGestureEnabled, &AppSettings::tripleSpaceGestureEnabled,
                            &AppSettings::smartSelectEnabled, &AppSettings::voiceInteractionEnabled,
                            &AppSettings::dragInteractionEnabled})
        (settings.*each).set(each == GetParam().featureSwitch);
    EXPECT_TRUE(allowed());
}

TEST_P(TriggerGatesTest, asksItsOwnBlacklist) {
    blacklist().set(QStringLiteral("org.example.Other, org.example.Editor"));
    EXPECT_FALSE(allowed());
    EXPECT_EQ(log.lines(), refusal());
    blacklist().set(QStringLiteral("org.example.Other\norg.example.editor"));
    EXPECT_TRUE(allowed());
}

TEST_P(TriggerGatesTest, asksNoOtherBlacklist) {
    for (const auto each :
         {&AppSettings::optimizeBlacklistedBundleIDsText, &AppSettings::translationBlacklistedBundleIDsText,
          &AppSettings::smartSelectBlacklistedBundleIDsText, &AppSettings::voiceBlacklistedBundleIDsText,
          &AppSettings::dragBlacklistedBundleIDsText}) {
        if (each != GetParam().blacklist) (settings.*each).set(QStringLiteral("org.example.Editor"));
    }
    EXPECT_TRUE(allowed());
}

TEST_P(TriggerGatesTest, theGeneralBlacklistCountsForAll) {
    settings.gestureBlacklistedBundleIDsText.set(QStringLiteral("org.example.Editor"));
    EXPECT_FALSE(allowed());
    EXPECT_EQ(log.lines(), refusal());
}

INSTANTIATE_TEST_SUITE_P(EachTrigger, TriggerGatesTest, testing::ValuesIn(rows),
                         [](const testing::TestParamInfo<Row>& row) { return row.param.name; });

}  // namespace
}  // namespace veltrin
