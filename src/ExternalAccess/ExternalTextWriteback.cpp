#include "ExternalAccess/ExternalTextWriteback.h"

#include "ExternalAccess/AttributeReading.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

#include <utility>

namespace veltrin {

namespace {

/// Seconds the foreign application has to take a paste before the pasteboard is given back.
constexpr double restoreDelay = 0.6;
/// An application has 0.2 s to come to front.
constexpr double activationCheckInterval = 0.01;
constexpr int activationChecks = 20;

/// The range, unless it is only a caret.
std::optional<TextRange> selection(const std::optional<TextRange>& range) {
    return range && range->length >= 1 ? range : std::nullopt;
}

ExternalTextWritebackResult succeeded(WritebackStrategy strategy, const char* message) {
    return {true, strategy, QString::fromUtf8(message), std::nullopt};
}

ExternalTextWritebackResult failed(WritebackFailure failure, const char* message) {
    return {false, WritebackStrategy::none, QString::fromUtf8(message), failure};
}

ExternalTextWritebackResult logged(ExternalTextWritebackResult result) {
    MVPLog::write("Writeback success:", "strategy:", rawValue(result.strategy));
    return result;
}

}  // namespace

ExternalTextWritebackResult ExternalTextWriteback::apply(const QString& text,
                                                         const ExternalTextReadResult& read,
                                                         bool forceReplaceAll) {
    MVPLog::write("Writeback requested:", "replacementLength:", Characters::count(text),
                  "source:", rawValue(read.source), "role:", read.role, "bundle:", read.bundleIdentifier,
                  "forceReplaceAll:", forceReplaceAll);
    if (text.isEmpty()) {
        MVPLog::write("Writeback skipped: empty replacement");
        return failed(WritebackFailure::emptyReplacement, "Empty replacement");
    }
    const bool handedOver =
        read.requiresClipboardWriteback && clipboard_ != nullptr && clipboard_->write(text, read);
    if (handedOver) return logged(succeeded(WritebackStrategy::clipboardPaste, "Applied via paste"));
    if (!read.element) {
        MVPLog::write("Writeback failed: no AX target element");
        return failed(WritebackFailure::noWritableTarget, "No target");
    }
    if (pasteUsingClipboard(text, read, read.selectedRange, forceReplaceAll))
        return logged(succeeded(WritebackStrategy::clipboardPaste, "Applied via paste"));
    if (writeUsingAXValue(text, read.element, read.selectedRange, forceReplaceAll))
        return logged(succeeded(WritebackStrategy::axValue, "Applied"));
    putSelectionBack(read.element);
    MVPLog::write("Writeback failed: all strategies failed");
    return failed(WritebackFailure::writeFailed, "Write failed");
}

ExternalTextWritebackResult ExternalTextWriteback::applyVoiceTranscript(const QString& text,
                                                                        const ExternalTextReadResult& read,
                                                                        bool forceReplaceAll) {
    MVPLog::write("Voice writeback requested:", "transcriptLength:", Characters::count(text),
                  "source:", rawValue(read.source), "forceReplaceAll:", forceReplaceAll);
    if (text.isEmpty()) return failed(WritebackFailure::emptyReplacement, "Empty transcript");
    if (!read.element) {
        if (read.requiresClipboardWriteback && clipboard_ != nullptr && clipboard_->write(text, read))
            return succeeded(WritebackStrategy::clipboardPaste, "Voice applied via paste");
        return failed(WritebackFailure::noWritableTarget, "No target for voice writeback");
    }
    // Straight to the paste, even when the target asked for the clipboard road: meant so.
    if (pasteUsingClipboard(text, read, read.selectedRange, forceReplaceAll))
        return succeeded(WritebackStrategy::clipboardPaste, "Voice applied via paste");
    if (writeUsingAXValue(text, read.element, read.selectedRange, forceReplaceAll))
        return succeeded(WritebackStrategy::axValue, "Voice applied");
    putSelectionBack(read.element);
    return failed(WritebackFailure::writeFailed, "Voice writeback failed");
}

bool ExternalTextWriteback::pasteUsingClipboard(const QString& text, const ExternalTextReadResult& read,
                                                const std::optional<TextRange>& selectedRange,
                                                bool forceReplaceAll) {
    const QString range =
        selectedRange
            ? QStringLiteral("loc:%1 len:%2").arg(selectedRange->location).arg(selectedRange->length)
            : QStringLiteral("nil");
    MVPLog::write("Writeback clipboard paste begin, selectedRange:", range,
                  "forceReplaceAll:", forceReplaceAll);
    if (read.processIdentifier) {
        if (const auto application = workspace_.runningApplication(*read.processIdentifier)) {
            workspace_.activate(*read.processIdentifier, ActivateOptions::ignoringOtherApps);
            MVPLog::write("Writeback clipboard paste activated app:", application->localizedName,
                          "pid:", *read.processIdentifier);
            waitUntilFrontmost(*read.processIdentifier);
        }
    }
    reselection_.reset();
    if (read.element) {
        accessibility_.setAttributeValue(read.element, AXAttribute::focused, AXValue(true));
        bool selected = true;
        if (forceReplaceAll)
            selected = selectAll(read.element);
        else if (const auto passage = selection(selectedRange))
            selected = select(read.element, *passage);
        // A paste beside the passage it was made from would leave the text there twice.
        if (!selected) {
            MVPLog::write("Writeback clipboard paste refused: selection did not take hold");
            return false;
        }
    }

    const auto remembered = loan_.remember();
    if (!remembered) {
        MVPLog::write("Writeback clipboard paste refused: pasteboard owner does not answer");
        return false;
    }
    const bool offered = loan_.offer(text);
    if (offered && postCommandV(text, read)) {
        loan_.giveBackLater(restoreDelay, *remembered, text, QStringLiteral("Writeback"));
        return true;
    }
    // Without a remembered string our text stays, and is what the user is left with: meant so.
    if (remembered->text) loan_.giveBackUnlessNewer(*remembered, text);
    MVPLog::write("Writeback clipboard fallback failed: could not post Cmd+V");
    return false;
}

void ExternalTextWriteback::waitUntilFrontmost(qint32 processIdentifier) {
    // Coming to front takes the desktop a moment, and keys posted before that would be refused.
    for (int i = 0; i < activationChecks; ++i) {
        const auto frontmost = workspace_.frontmostApplication();
        if (frontmost && frontmost->processIdentifier == processIdentifier) return;
        runLoop_.sleepFor(activationCheckInterval);
    }
}

bool ExternalTextWriteback::postCommandV(const QString& text, const ExternalTextReadResult& read) {
    KeyPost chord;
    chord.keyCode = KeyCode::v;
    chord.flags = KeyFlags::command;
    chord.target = {read.processIdentifier, read.targetWindow, read.element};
    chord.textHasLineBreak = Text::hasLineBreak(text);
    const PostResult result = keyPoster_.post(chord);
    if (result)
        MVPLog::write("Writeback clipboard fallback posted Cmd+V");
    else
        MVPLog::write("Writeback Cmd+V refused:", result.refusal);
    return result.posted;
}

bool ExternalTextWriteback::select(const AXElementRef& element, const TextRange& range) {
    const auto former =
        readAttribute<TextRange>(accessibility_, element, AXAttribute::selectedTextRange).value;
    accessibility_.setAttributeValue(element, AXAttribute::selectedTextRange, AXValue(range));
    const bool selected = isSelected(element, range);
    if (selected && former && *former != range) reselection_ = {*former, range};
    return selected;
}

void ExternalTextWriteback::putSelectionBack(const AXElementRef& element) {
    // What stays selected by us would be gone with the user's next key.
    const auto made = std::exchange(reselection_, std::nullopt);
    if (made && isSelected(element, made->ours))
        accessibility_.setAttributeValue(element, AXAttribute::selectedTextRange, AXValue(made->former));
}

bool ExternalTextWriteback::isSelected(const AXElementRef& element, const TextRange& range) {
    return readAttribute<TextRange>(accessibility_, element, AXAttribute::selectedTextRange).value == range;
}

bool ExternalTextWriteback::selectAll(const AXElementRef& element) {
    const auto value = readAttribute<QString>(accessibility_, element, AXAttribute::value).value;
    // A field that cannot be read is pasted into at its caret, although all was to be replaced: meant so.
    if (!value) return true;
    const bool selected = select(element, {0, value->size()});
    MVPLog::write("Writeback selectAll done, length:", value->size());
    return selected || value->isEmpty();
}

bool ExternalTextWriteback::writeUsingAXValue(const QString& text, const AXElementRef& element,
                                              const std::optional<TextRange>& selectedRange,
                                              bool forceReplaceAll) {
    const auto passage = forceReplaceAll ? std::nullopt : selection(selectedRange);
    // Where the passage is not selected (any more), its replacement would land beside it.
    const bool inPlace = !forceReplaceAll && (!passage || isSelected(element, *passage));
    if (inPlace && isSettable(element, AXAttribute::selectedText)) {
        const auto before = readAttribute<QString>(accessibility_, element, AXAttribute::value).value;
        if (replaceSelection(text, element, selectedRange)) return true;
        // A write that was said to fail may have landed all the same, and a second one would spoil it.
        // Applications answer in order: a field that reads as before was not touched.
        if (before && readAttribute<QString>(accessibility_, element, AXAttribute::value).value != before) {
            MVPLog::write("Writeback AXValue refused: the field has changed");
            return false;
        }
    }
    if (!isSettable(element, AXAttribute::value)) return false;
    if (passage) return replacePassage(text, element, *passage);

    // Also where only a caret stood and everything before this failed: the whole field is replaced, meant so.
    const AXError error = accessibility_.setAttributeValue(element, AXAttribute::value, AXValue(text));
    if (error != AXError::success) {
        MVPLog::write("Writeback AXValue whole set failed:", code(error));
        return false;
    }
    setCursor(element, text.size());
    return true;
}

bool ExternalTextWriteback::replaceSelection(const QString& text, const AXElementRef& element,
                                             const std::optional<TextRange>& selectedRange) {
    const AXError error = accessibility_.setAttributeValue(element, AXAttribute::selectedText, AXValue(text));
    if (error != AXError::success) {
        MVPLog::write("Writeback AXSelectedText failed:", code(error), "falling back to AXValue");
        return false;
    }
    const qint64 cursor = (selectedRange ? selectedRange->location : 0) + text.size();
    setCursor(element, cursor);
    MVPLog::write("Writeback AXSelectedText success, cursor:", cursor);
    return true;
}

bool ExternalTextWriteback::replacePassage(const QString& text, const AXElementRef& element,
                                           const TextRange& passage) {
    auto current = readAttribute<QString>(accessibility_, element, AXAttribute::value);
    if (!current.value) {
        MVPLog::write("Writeback AXValue read failed:", code(current.error));
        return false;
    }
    const qint64 length = current.value->size();
    if (passage.location < 0 || passage.location > length || passage.length > length - passage.location) {
        MVPLog::write("Writeback AXValue range out of bounds");
        return false;
    }
    current.value->replace(passage.location, passage.length, text);
    const AXError error =
        accessibility_.setAttributeValue(element, AXAttribute::value, AXValue(*current.value));
    if (error != AXError::success) {
        MVPLog::write("Writeback AXValue set failed:", code(error));
        return false;
    }
    setCursor(element, passage.location + text.size());
    return true;
}

bool ExternalTextWriteback::isSettable(const AXElementRef& element, AXAttribute attribute) {
    const auto settable = accessibility_.isAttributeSettable(element, attribute);
    return settable.ok() && settable.value;
}

void ExternalTextWriteback::setCursor(const AXElementRef& element, qint64 location) {
    const AXError error = accessibility_.setAttributeValue(element, AXAttribute::selectedTextRange,
                                                           AXValue(TextRange{location, 0}));
    MVPLog::write("Writeback cursor set:", "location:", location, "error:", code(error));
}

}  // namespace veltrin
