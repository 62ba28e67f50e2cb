#include "ExternalAccess/ClipboardFallbackInterferenceGuard.h"

namespace veltrin {

bool ClipboardFallbackInterferencePolicy::shouldSkipFallback(
    double now, std::optional<double> lastUserCopyKeyDownAt,
    std::optional<qint64> pasteboardChangeCountAtKeyDown, qint64 currentPasteboardChangeCount,
    double cooldown) {
    if (!lastUserCopyKeyDownAt || !pasteboardChangeCountAtKeyDown) return false;
    return now - *lastUserCopyKeyDownAt <= cooldown &&
           currentPasteboardChangeCount != *pasteboardChangeCountAtKeyDown;
}

void ClipboardFallbackInterferenceGuard::recordPotentialUserCopyKeyDown(qint64 changeCount) {
    const double now = runLoop_.now();
    const std::lock_guard guard(lock_);
    if (ignoreSyntheticCopyUntil_ && *ignoreSyntheticCopyUntil_ >= now) return;
    lastUserCopyKeyDownAt_ = now;
    pasteboardChangeCountAtKeyDown_ = changeCount;
}

void ClipboardFallbackInterferenceGuard::ignoreSyntheticCopy(double seconds) {
    const double until = runLoop_.now() + seconds;
    const std::lock_guard guard(lock_);
    ignoreSyntheticCopyUntil_ = until;
}

bool ClipboardFallbackInterferenceGuard::shouldSkipFallback(qint64 currentPasteboardChangeCount,
                                                            double cooldown) const {
    const double now = runLoop_.now();
    const std::lock_guard guard(lock_);
    return ClipboardFallbackInterferencePolicy::shouldSkipFallback(
        now, lastUserCopyKeyDownAt_, pasteboardChangeCountAtKeyDown_, currentPasteboardChangeCount, cooldown);
}

}  // namespace veltrin
