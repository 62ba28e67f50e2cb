#pragma once

#include "ExternalAccess/ClipboardFallbackInterferenceGuard.h"
#include "ExternalAccess/ClipboardTextAccess.h"
#include "ExternalAccess/PasteboardLoan.h"
#include "Platform/KeyPoster.h"
#include "Platform/Workspace.h"

namespace veltrin {

/// Reads a field by selecting all and copying, and writes it by selecting all and pasting, with the user's
/// pasteboard given back on every path as far as its plain string goes. Main thread, blocking: half a second
/// for a good read, some four seconds when no copy ever comes.
///
/// Nothing is touched when the pasteboard's owner does not answer, when the user has copied something just
/// now, or when this program itself is in front.
class ExternalTextClipboardFallback final : public ClipboardTextAccess {
public:
    ExternalTextClipboardFallback(Workspace& workspace, Pasteboard& pasteboard, PasteboardLoan& loan,
                                  KeyPoster& keyPoster, RunLoop& runLoop,
                                  ClipboardFallbackInterferenceGuard& guard)
        : workspace_(workspace),
          pasteboard_(pasteboard),
          loan_(loan),
          keyPoster_(keyPoster),
          runLoop_(runLoop),
          guard_(guard) {}
    ExternalTextClipboardFallback(const ExternalTextClipboardFallback&) = delete;
    ExternalTextClipboardFallback& operator=(const ExternalTextClipboardFallback&) = delete;

    /// Leaves the field wholly selected.
    ExternalTextReadResult readFocusedText(const QString& appName, const QString& bundleIdentifier,
                                           const PostTarget& target) override;
    bool write(const QString& text, const ExternalTextReadResult& read) override;

private:
    /// The waits that differ between applications, in seconds.
    struct Waits;
    static const Waits& waitsFor(const QString& appName);

    ExternalTextReadResult result(const QString& appName, const QString& bundleIdentifier,
                                  const PostTarget& target) const;
    /// Brings a process that still runs to front and gives it a moment.
    void activate(std::optional<qint32> processIdentifier, const QString& appName, const Waits& waits);
    bool postKeyCombo(quint64 flags, qint64 keyCode, const PostTarget& target, bool textHasLineBreak = false);
    std::optional<QString> copySelection(qint64 emptyCount, const std::optional<QString>& previous,
                                         const PostTarget& target, const Waits& waits);
    /// What was copied since the pasteboard stood at `emptyCount`.
    PasteboardString waitForClipboardString(qint64 emptyCount, const std::optional<QString>& previous);
    PasteboardString copiedString(qint64 emptyCount) const;

    Workspace& workspace_;
    Pasteboard& pasteboard_;
    PasteboardLoan& loan_;
    KeyPoster& keyPoster_;
    RunLoop& runLoop_;
    ClipboardFallbackInterferenceGuard& guard_;
};

}  // namespace veltrin
