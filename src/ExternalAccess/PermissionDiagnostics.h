#pragma once

#include "Platform/Accessibility.h"
#include "Platform/KeyEventTap.h"
#include "Platform/Workspace.h"

namespace veltrin {

/// Reports in the log what the desktop lets this process do.
class PermissionDiagnostics {
public:
    PermissionDiagnostics(const Workspace& workspace, Accessibility& accessibility, const KeyEventTaps& taps)
        : workspace_(workspace), accessibility_(accessibility), taps_(taps) {}

    void logAll() const;
    void promptAccessibilityIfNeeded();
    static void printEventTapFailureHint();

private:
    const Workspace& workspace_;
    Accessibility& accessibility_;
    const KeyEventTaps& taps_;
};

}  // namespace veltrin
