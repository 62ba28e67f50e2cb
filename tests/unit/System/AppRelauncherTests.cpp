#include "System/AppRelauncher.h"
#include "support/fake/FakeDesktop.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class AppRelauncherTest : public testing::Test {
protected:
    FakeDesktop desktop;
    AppRelauncher relauncher{desktop.processControl, desktop.runLoop, desktop.workspace};
};

TEST_F(AppRelauncherTest, theExecutableIsStartedAgainFromADetachedShell) {
    desktop.workspace.executable = QStringLiteral("/opt/veltrin/bin/veltrin");
    relauncher.relaunchCurrentAppAndTerminate();
    ASSERT_EQ(desktop.processControl.launches.size(), 1u);
    EXPECT_EQ(desktop.processControl.launches[0].program, QStringLiteral("/bin/sh"));
    EXPECT_EQ(desktop.processControl.launches[0].arguments,
              (QStringList{QStringLiteral("-c"), QStringLiteral("sleep 0.80; '/opt/veltrin/bin/veltrin'")}));
    EXPECT_EQ(
        desktop.processControl.systemLines,
        QStringList{QStringLiteral("[Veltrin] Scheduling relaunch: sleep 0.80; '/opt/veltrin/bin/veltrin'")});
}

TEST_F(AppRelauncherTest, windowsCloseAtOnceTheEndComesOnTheNextTurnAndTheForceAfterASecond) {
    relauncher.relaunchCurrentAppAndTerminate();
    EXPECT_EQ(desktop.processControl.windowClosings, 1);
    EXPECT_EQ(desktop.processControl.terminations, 0);
    desktop.runLoop.runDue();
    EXPECT_EQ(desktop.processControl.terminations, 1);
    desktop.advance(0.99);
    EXPECT_FALSE(desktop.processControl.exitStatus);
    desktop.advance(0.02);
    EXPECT_EQ(desktop.processControl.exitStatus, 0);
    EXPECT_EQ(desktop.processControl.systemLines.last(),
              QStringLiteral("[Veltrin] Force exit fallback triggered"));
}

TEST_F(AppRelauncherTest, aStartThatCannotBeScheduledEndsTheProgramAllTheSame) {
    desktop.processControl.launchFailure = QStringLiteral("no shell");
    relauncher.relaunchCurrentAppAndTerminate();
    desktop.advance(2);
    EXPECT_TRUE(desktop.processControl.systemLines.contains(
        QStringLiteral("[Veltrin] Failed to schedule relaunch: no shell")));
    EXPECT_EQ(desktop.processControl.windowClosings, 1);
    EXPECT_EQ(desktop.processControl.terminations, 1);
    EXPECT_EQ(desktop.processControl.exitStatus, 0);
}

TEST_F(AppRelauncherTest, aQuoteInThePathStaysAPartOfThePath) {
    EXPECT_EQ(AppRelauncher::relaunchShellCommand(QStringLiteral("/opt"),
                                                  QStringLiteral("/opt/it's here/veltrin"), 0.8),
              QStringLiteral("sleep 0.80; '/opt/it'\"'\"'s here/veltrin'"));
}

TEST_F(AppRelauncherTest, aBundleOrNothingElseToStartGoesThroughTheOpener) {
    const QString executable = QStringLiteral("/Applications/Veltrin.app/Contents/MacOS/Veltrin");
    EXPECT_EQ(AppRelauncher::relaunchShellCommand(QStringLiteral("/Applications/Jo's Veltrin.app"),
                                                  executable, 1.5),
              QStringLiteral("sleep 1.50; /usr/bin/open -n '/Applications/Jo'\"'\"'s Veltrin.app'"));
    EXPECT_EQ(AppRelauncher::relaunchShellCommand(QStringLiteral("/opt/veltrin"), std::nullopt, 0),
              QStringLiteral("sleep 0.00; /usr/bin/open -n '/opt/veltrin'"));
    EXPECT_EQ(AppRelauncher::relaunchShellCommand(QStringLiteral("/opt/app"),
                                                  QStringLiteral("/opt/app/veltrin"), 0.8),
              QStringLiteral("sleep 0.80; '/opt/app/veltrin'"));
}

}  // namespace
}  // namespace veltrin
