#include "ExternalAccess/PermissionDiagnostics.h"

#include "Foundation/MVPLog.h"

namespace veltrin {

void PermissionDiagnostics::logAll() const {
    MVPLog::write("── Permission Diagnostics ──");
    MVPLog::write("Bundle identifier:", workspace_.mainBundleIdentifier());
    MVPLog::write("Executable path:", workspace_.executablePath());
    MVPLog::write("AXIsProcessTrusted:", accessibility_.isProcessTrusted());
    MVPLog::write("CGPreflightListenEventAccess:", taps_.preflightListenEventAccess());
    MVPLog::write("(Input Monitoring API available)");
    MVPLog::write("────────────────────────────");
}

void PermissionDiagnostics::promptAccessibilityIfNeeded() {
    MVPLog::write("AX positioning permission prompt result:", accessibility_.promptForTrust());
}

void PermissionDiagnostics::printEventTapFailureHint() {
    MVPLog::write("Event tap could not be created.");
    MVPLog::write("This MVP does not check AXIsProcessTrusted before starting keyboard monitoring.");
    MVPLog::write("If key events do not arrive, enable Input Monitoring for this app in System Settings.");
}

}  // namespace veltrin
