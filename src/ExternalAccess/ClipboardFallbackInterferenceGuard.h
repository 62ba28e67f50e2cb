#pragma once

#include "Platform/RunLoop.h"

#include <QtGlobal>

#include <mutex>
#include <optional>

namespace veltrin {

/// Whether what lies on the pasteboard is a copy that the user has just made, which a guarded copy must not
/// trample on. Times are seconds on RunLoop::now()'s clock.
struct ClipboardFallbackInterferencePolicy {
    ClipboardFallbackInterferencePolicy() = delete;

    /// True when a copy key was pressed at most `cooldown` ago and the pasteboard has changed since. A copy
    /// key that changed nothing does not count.
    static bool shouldSkipFallback(double now, std::optional<double> lastUserCopyKeyDownAt,
                                   std::optional<qint64> pasteboardChangeCountAtKeyDown,
                                   qint64 currentPasteboardChangeCount, double cooldown);
};

/// Remembers the user's last copy key for the whole run: it is never cleared, its time just runs out. There
/// is one for the process, told of keys by the tap and asked by every guarded copy. Its lock is held for the
/// field accesses only.
class ClipboardFallbackInterferenceGuard {
public:
    explicit ClipboardFallbackInterferenceGuard(const RunLoop& runLoop) : runLoop_(runLoop) {}

    /// A copy key went down, at which the pasteboard stood at `changeCount`. Nothing is recorded while a copy
    /// key of our own may be under way.
    void recordPotentialUserCopyKeyDown(qint64 changeCount);
    /// Copy keys of the next `seconds` are ours.
    void ignoreSyntheticCopy(double seconds);
    bool shouldSkipFallback(qint64 currentPasteboardChangeCount, double cooldown) const;

private:
    const RunLoop& runLoop_;
    mutable std::mutex lock_;  ///< guards what follows
    std::optional<double> lastUserCopyKeyDownAt_;
    std::optional<qint64> pasteboardChangeCountAtKeyDown_;
    std::optional<double> ignoreSyntheticCopyUntil_;
};

}  // namespace veltrin
