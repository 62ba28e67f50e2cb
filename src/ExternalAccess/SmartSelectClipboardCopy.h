#pragma once

#include "ExternalAccess/ClipboardFallbackInterferenceGuard.h"
#include "ExternalAccess/PasteboardLoan.h"
#include "ExternalAccess/Pauses.h"
#include "Platform/KeyPoster.h"
#include "Platform/Workspace.h"

#include <QCoro/QCoroTask>

#include <functional>

namespace veltrin {

/// Reads what is selected in the application in front by a copy key that the user did not press, and gives
/// the user's pasteboard back, all types of it. Main thread, which goes on meanwhile: a third of a second for
/// a good copy, up to three when none comes.
///
/// Nothing is touched when this program itself is in front, when the pasteboard's owner does not answer, or
/// when the user has copied something just now or does so before the key goes out.
class SmartSelectClipboardCopy {
public:
    SmartSelectClipboardCopy(Workspace& workspace, Pasteboard& pasteboard, PasteboardLoan& loan,
                             KeyPoster& keyPoster, RunLoop& runLoop,
                             ClipboardFallbackInterferenceGuard& guard);
    SmartSelectClipboardCopy(const SmartSelectClipboardCopy&) = delete;
    SmartSelectClipboardCopy& operator=(const SmartSelectClipboardCopy&) = delete;
    ~SmartSelectClipboardCopy();

    /// The selected text, untrimmed. `focused` is the element that has the focus, as far as it is known: no
    /// key goes to any other, nor into a password field. One call at a time.
    QCoro::Task<std::optional<QString>> copySelectedTextViaClipboard(AXElementRef focused = {});

    /// Gives back now what is borrowed, and lets the copy come to nothing: for the end of the process, and
    /// for whoever needs the pasteboard as the user left it.
    void giveBackPending();

    /// Told true when the pasteboard stops being the user's, and false when it is again; may be empty.
    std::function<void(bool)> onBorrowed;

    /// True when files or a picture were copied, whatever text came with them.
    static bool pasteboardContainsFileOrImageSelection(const Pasteboard& pasteboard);

private:
    struct Waits;
    /// What the pasteboard gave after a copy key.
    struct Copied {
        std::optional<QString> text;
        bool isAnswered = true;  ///< false: something was copied, but its owner does not give it
        bool isOver = false;     ///< there is nobody left who wants to know, and nothing to touch
    };
    static const Waits& waitsFor(const QString& name, const QString& bundleIdentifier);

    QCoro::Task<Copied> waitForCopiedText(qint64 clearedCount, double timeout, double pollInterval,
                                          quint64 loanNumber);
    bool postCopyKey(const PostTarget& target);
    quint64 borrow(PasteboardSnapshot snapshot);
    bool isBorrowed(quint64 loanNumber) const { return borrowed_ && loanNumber_ == loanNumber; }
    void giveBack();

    Workspace& workspace_;
    Pasteboard& pasteboard_;
    PasteboardLoan& loan_;
    KeyPoster& keyPoster_;
    RunLoop& runLoop_;
    ClipboardFallbackInterferenceGuard& guard_;
    std::optional<PasteboardSnapshot> borrowed_;  ///< the user's, while ours or a copy stands there
    quint64 loanNumber_ = 0;
    Pauses pauses_;
};

}  // namespace veltrin
