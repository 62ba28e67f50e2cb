#include "ExternalAccess/PermissionDiagnostics.h"
#include "ScriptedAccessibility.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

class NoTaps final : public KeyEventTaps {
public:
    std::unique_ptr<KeyEventTap> create(KeyEventMask, KeyEventTap::Handler) override { return nullptr; }
    bool preflightListenEventAccess() const override { return access; }
    bool requestListenEventAccess() override { return access; }

    bool access = false;
};

TEST(PermissionDiagnostics, logsTheRightsAsABlock) {
    test::ScriptedWorkspace workspace;
    test::ScriptedAccessibility accessibility;
    NoTaps taps;
    const PermissionDiagnostics diagnostics(workspace, accessibility, taps);
    LogCapture log;
    diagnostics.logAll();
    EXPECT_EQ(log.lines(), (QStringList{
                               QStringLiteral("── Permission Diagnostics ──"),
                               QStringLiteral("Bundle identifier: com.veltrin.app"),
                               QStringLiteral("Executable path: /usr/bin/veltrin"),
                               QStringLiteral("AXIsProcessTrusted: true"),
                               QStringLiteral("CGPreflightListenEventAccess: false"),
                               QStringLiteral("(Input Monitoring API available)"),
                               QStringLiteral("────────────────────────────"),
                           }));
    workspace.path.reset();
    taps.access = true;
    diagnostics.logAll();
    EXPECT_TRUE(log.has(QStringLiteral("Executable path: nil")));
    EXPECT_TRUE(log.has(QStringLiteral("CGPreflightListenEventAccess: true")));
}

TEST(PermissionDiagnostics, asksForAccessibilityAndLogsTheAnswer) {
    test::ScriptedWorkspace workspace;
    test::ScriptedAccessibility accessibility;
    accessibility.trusted = false;
    const NoTaps taps;
    LogCapture log;
    PermissionDiagnostics(workspace, accessibility, taps).promptAccessibilityIfNeeded();
    EXPECT_EQ(accessibility.prompts, 1);
    EXPECT_EQ(log.lines(), QStringList(QStringLiteral("AX positioning permission prompt result: false")));
}

TEST(PermissionDiagnostics, explainsATapThatCouldNotBeMade) {
    LogCapture log;
    PermissionDiagnostics::printEventTapFailureHint();
    EXPECT_EQ(
        log.lines(),
        (QStringList{
            QStringLiteral("Event tap could not be created."),
            QStringLiteral("This MVP does not check AXIsProcessTrusted before starting keyboard monitoring."),
            QStringLiteral(
                "If key events do not arrive, enable Input Monitoring for this app in System Settings."),
        }));
}

}  // namespace
}  // namespace veltrin
