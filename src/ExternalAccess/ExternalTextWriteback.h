#pragma once

#include "ExternalAccess/ClipboardTextAccess.h"
#include "ExternalAccess/ExternalTextReadResult.h"
#include "ExternalAccess/PasteboardLoan.h"
#include "Platform/KeyPoster.h"
#include "Platform/RunLoop.h"
#include "Platform/Workspace.h"

namespace veltrin {

/// By which way a text was handed over.
enum class WritebackStrategy { axValue, clipboardPaste, none };
template <>
inline constexpr auto rawValuesOf<WritebackStrategy> =
    std::to_array<const char*>({"axValue", "clipboardPaste", "none"});

/// `clipboardWriteFailed` and `attributeNotSettable` belong to the vocabulary; nothing sets them today.
enum class WritebackFailure {
    emptyReplacement,
    noWritableTarget,
    clipboardWriteFailed,
    attributeNotSettable,
    writeFailed,
};
template <>
inline constexpr auto rawValuesOf<WritebackFailure> = std::to_array<const char*>(
    {"emptyReplacement", "noWritableTarget", "clipboardWriteFailed", "attributeNotSettable", "writeFailed"});

struct ExternalTextWritebackResult {
    bool success = false;  ///< the text was handed over; for a paste: its keys were posted
    WritebackStrategy strategy = WritebackStrategy::none;
    QString message;  ///< for the log
    std::optional<WritebackFailure> failure;
    friend bool operator==(const ExternalTextWritebackResult&, const ExternalTextWritebackResult&) = default;
};

/// Puts a finished text back into the foreign field that a read describes: by a paste first, since that works
/// nearly everywhere and keeps the field's undo history, else by accessibility. Whether it should be written
/// at all was decided before. Main thread, synchronous; the caller suspends the event tap. Failures are
/// values.
class ExternalTextWriteback {
public:
    /// Without `clipboard`, writes that need the clipboard road fail.
    ExternalTextWriteback(Accessibility& accessibility, Workspace& workspace, PasteboardLoan& loan,
                          KeyPoster& keyPoster, RunLoop& runLoop, ClipboardTextAccess* clipboard = nullptr)
        : accessibility_(accessibility),
          workspace_(workspace),
          loan_(loan),
          keyPoster_(keyPoster),
          runLoop_(runLoop),
          clipboard_(clipboard) {}
    ExternalTextWriteback(const ExternalTextWriteback&) = delete;
    ExternalTextWriteback& operator=(const ExternalTextWriteback&) = delete;

    /// For the result of an action.
    ExternalTextWritebackResult apply(const QString& text, const ExternalTextReadResult& read,
                                      bool forceReplaceAll);
    /// For dictation.
    ExternalTextWritebackResult applyVoiceTranscript(const QString& text, const ExternalTextReadResult& read,
                                                     bool forceReplaceAll);

private:
    /// A selection of ours in place of the user's.
    struct Reselection {
        TextRange former;
        TextRange ours;
    };

    bool pasteUsingClipboard(const QString& text, const ExternalTextReadResult& read,
                             const std::optional<TextRange>& selectedRange, bool forceReplaceAll);
    bool writeUsingAXValue(const QString& text, const AXElementRef& element,
                           const std::optional<TextRange>& selectedRange, bool forceReplaceAll);
    bool replaceSelection(const QString& text, const AXElementRef& element,
                          const std::optional<TextRange>& selectedRange);
    bool replacePassage(const QString& text, const AXElementRef& element, const TextRange& passage);
    bool isSettable(const AXElementRef& element, AXAttribute attribute);
    /// False when the field could be read and was not selected whole.
    bool selectAll(const AXElementRef& element);
    /// True when the range reads back as selected, whatever the setting said.
    bool select(const AXElementRef& element, const TextRange& range);
    bool isSelected(const AXElementRef& element, const TextRange& range);
    /// After a write that came to nothing: gives the field the selection that the user had.
    void putSelectionBack(const AXElementRef& element);
    void setCursor(const AXElementRef& element, qint64 location);
    void waitUntilFrontmost(qint32 processIdentifier);
    bool postCommandV(const QString& text, const ExternalTextReadResult& read);

    Accessibility& accessibility_;
    Workspace& workspace_;
    PasteboardLoan& loan_;
    KeyPoster& keyPoster_;
    RunLoop& runLoop_;
    ClipboardTextAccess* clipboard_;
    std::optional<Reselection> reselection_;  ///< of the write under way
};

}  // namespace veltrin
