#include "Gesture/SpaceGesturePolicy.h"
#include "support/fake/FakeDesktop.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class SpaceGestureAppPolicyTest : public testing::Test {
protected:
    FakeDesktop desktop;
    NotificationCenter notifications;
    AppSettings settings{desktop.preferences, notifications, desktop.environment};
    SpaceGestureAppPolicy policy{desktop.workspace, settings};
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));

    void SetUp() override { desktop.workspace.bringToFront(&editor); }
    void TearDown() override { SpaceGestureAppPolicy::bypassSelfBlacklist = false; }
};

TEST_F(SpaceGestureAppPolicyTest, everyApplicationIsAllowedUntilTheUserSaysOtherwise) {
    EXPECT_TRUE(policy.isFrontmostAppAllowed({}));
    EXPECT_TRUE(SpaceGestureAppPolicy::defaultBlacklistedBundleIDs().isEmpty());
}

TEST_F(SpaceGestureAppPolicyTest, withNothingInFrontOrNoIdentifierEverythingIsAllowed) {
    settings.gestureBlacklistedBundleIDsText.set(QStringLiteral("nil,unknown"));
    desktop.workspace.bringToFront(nullptr);
    EXPECT_TRUE(policy.isFrontmostAppAllowed({}));
    desktop.workspace.bringToFront(&desktop.launch(QStringLiteral("nil"), std::nullopt));
    EXPECT_TRUE(policy.isFrontmostAppAllowed({QStringLiteral("nil")}));
}

TEST_F(SpaceGestureAppPolicyTest, bothListsForbidExactly) {
    settings.gestureBlacklistedBundleIDsText.set(QStringLiteral(" a.b ,\n org.example.Editor\n"));
    EXPECT_FALSE(policy.isFrontmostAppAllowed({}));
    settings.gestureBlacklistedBundleIDsText.set(QStringLiteral("org.example.editor"));
    EXPECT_TRUE(policy.isFrontmostAppAllowed({}));
    EXPECT_FALSE(policy.isFrontmostAppAllowed({QStringLiteral("org.example.Editor")}));
}

TEST_F(SpaceGestureAppPolicyTest, practiceLetsTheProgramItselfPastItsList) {
    settings.gestureBlacklistedBundleIDsText.set(QStringLiteral("com.veltrin.app"));
    desktop.workspace.bringToFront(&desktop.workspace.program());
    EXPECT_FALSE(policy.isFrontmostAppAllowed({}));
    SpaceGestureAppPolicy::bypassSelfBlacklist = true;
    EXPECT_TRUE(policy.isFrontmostAppAllowed({QStringLiteral("com.veltrin.app")}));
    desktop.workspace.bringToFront(&editor);
    EXPECT_FALSE(policy.isFrontmostAppAllowed({QStringLiteral("org.example.Editor")}));
}

}  // namespace
}  // namespace veltrin
