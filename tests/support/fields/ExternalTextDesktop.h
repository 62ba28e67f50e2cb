#pragma once

#include "ExternalAccess/ExternalTextClipboardFallback.h"
#include "ExternalAccess/ExternalTextInputLocator.h"
#include "ExternalAccess/ExternalTextInputReader.h"
#include "ExternalAccess/ExternalTextWriteback.h"
#include "Platform/Linux/AtSpi/AtSpiAccessibility.h"
#include "Platform/Linux/DesktopEntries.h"
#include "Platform/Linux/FieldInspector.h"
#include "Platform/Linux/FilePreferences.h"
#include "Platform/Linux/QtRunLoop.h"
#include "Platform/Linux/X11/X11KeyPoster.h"
#include "Platform/Linux/X11/X11Pasteboard.h"
#include "Platform/Linux/X11/X11Screens.h"
#include "Platform/Linux/X11/X11Workspace.h"
#include "Platform/Linux/X11TopLevelWindows.h"
#include "support/desktop/RealDesktop.h"

#include <functional>

namespace veltrin {

/// The program's own reading, locating and writing over its own adapters, in the test's process, on a test
/// desktop.
class ExternalTextDesktop {
public:
    explicit ExternalTextDesktop(RealDesktop& desktop);

    QtRunLoop runLoop;
    std::unique_ptr<X11Connection> connection;
    X11Windows windows;
    DesktopEntries entries;
    X11Workspace workspace;
    X11Screens screens;
    X11Pasteboard pasteboard;
    X11TopLevelWindows topLevelWindows;
    AtSpiAccessibility accessibility;

private:
    /// Posts nothing, so that writing goes its second way.
    class RefusingPoster final : public KeyPoster {
    public:
        PostResult post(const KeyPost&) override { return {false, QStringLiteral("refused by the test")}; }
    };
    FieldInspector inspector_;

public:
    std::function<void()> atPaste;  ///< just before a paste key goes out; may be empty
    X11KeyPoster poster;
    RefusingPoster refusingPoster;
    FilePreferences preferences;
    PasteboardLoan loan;
    ClipboardFallbackInterferenceGuard guard;
    ExternalTextClipboardFallback fallback;
    /// By accessibility alone: what it cannot read, reads as empty at once.
    ExternalTextInputReader reader;
    /// As in the program, by copying where accessibility gives nothing.
    ExternalTextInputReader wholeReader;
    ExternalTextInputLocator locator;
    /// As in the program.
    ExternalTextWriteback writeback;
    /// Without the paste.
    ExternalTextWriteback directWriteback;
};

}  // namespace veltrin
