#pragma once

#include "ExternalAccess/AttributeReading.h"
#include "ExternalAccess/ClipboardTextAccess.h"
#include "ExternalAccess/ExternalTextReadResult.h"
#include "Platform/Preferences.h"
#include "Platform/Workspace.h"

namespace veltrin {

/// What text the user is working on, in whatever application has the focus. Main thread, synchronous; a slow
/// application blocks for the length of its accessibility replies, so the caller suspends the event tap.
class ExternalTextInputReader {
public:
    /// Without `clipboard`, a field that accessibility cannot read reads as empty.
    ExternalTextInputReader(Accessibility& accessibility, Workspace& workspace,
                            const Preferences& preferences, ClipboardTextAccess* clipboard = nullptr)
        : accessibility_(accessibility),
          workspace_(workspace),
          preferences_(preferences),
          clipboard_(clipboard) {}

    /// Never fails: what cannot be read is a result without text.
    ExternalTextReadResult readFocusedText();

    /// The whole character (grapheme cluster) that ends at the caret; none when that cannot be told.
    std::optional<QString> characterBeforeCursor();

private:
    AttributeReading<AXElementRef> focusedElement(qint32 processIdentifier);
    ExternalTextReadResult readByClipboard(const ExternalTextReadResult& application);
    ExternalTextReadResult emptyResult(const QString& reason);
    static void log(const ExternalTextReadResult& result);
    template <typename... Items>
    void verbose(const Items&... items) const;

    Accessibility& accessibility_;
    Workspace& workspace_;
    const Preferences& preferences_;
    ClipboardTextAccess* clipboard_;
};

}  // namespace veltrin
