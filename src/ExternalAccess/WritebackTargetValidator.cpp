#include "ExternalAccess/WritebackTargetValidator.h"

#include "ExternalAccess/AttributeReading.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

namespace veltrin {

namespace {

/// What an instruction around a selection is made of, in order.
constexpr const char16_t* instructionWords[] = {
    u"帮我", u"请", u"翻译", u"优化", u"改写",   u"润色",      u"修改",     u"把",      u"将",
    u"用",   u"以", u"按照", u"根据", u"please", u"translate", u"optimize", u"rewrite", u"refine",
};

}  // namespace

bool WritebackTargetValidator::shouldCopyResultInsteadOfWriteback(const WritebackTargetSnapshot& snapshot) {
    using Source = ExternalTextReadResult::Source;
    if (!snapshot.processIdentifier) {
        MVPLog::write("Writeback target changed: no original process id");
        return true;
    }
    const qint32 pid = *snapshot.processIdentifier;
    const auto frontmost = workspace_.frontmostApplication();
    if (!frontmost) {
        MVPLog::write("Writeback target changed: no frontmost app");
        return true;
    }
    if (frontmost->processIdentifier != pid) {
        MVPLog::write("Writeback target changed: frontmost app mismatch", "originalPid:", pid,
                      "currentPid:", frontmost->processIdentifier,
                      "currentBundle:", frontmost->bundleIdentifier.value_or(QStringLiteral("unknown")));
        return true;
    }

    bool windowMismatch = false;
    if (const auto& original = snapshot.focusedWindowTitle) {
        const auto current = WritebackTargetSnapshot::currentFocusedWindowTitle(accessibility_, pid);
        windowMismatch = current && *current != *original;
        if (windowMismatch)
            MVPLog::write("Writeback target changed: focused window title mismatch", "original:", *original,
                          "current:", *current);
    }

    // A mismatch has already settled the answer; the rest still runs for its log lines.
    bool focused = false;
    bool writable = false;
    if (snapshot.element) {
        focused = isOriginalTextElementStillFocused(snapshot.element, pid);
        writable = isTextElementWritable(snapshot.element);
        if (!focused)
            MVPLog::write("Writeback target focus changed but original element is still checked:",
                          "writable:", writable, snapshot.debugDescription());
    }
    bool selectionMismatch = false;
    if (snapshot.source == Source::selectedText && snapshot.element) {
        const QString current =
            WritebackTargetSnapshot::signature(currentSelectedText(snapshot.element).value_or(QString()));
        selectionMismatch = current != snapshot.textSignature;
        if (selectionMismatch)
            MVPLog::write("Writeback target changed: selected text signature mismatch",
                          "original:", snapshot.textSignature, "current:", current);
    }

    // Without an element nothing but the clipboard road can take the text.
    const bool reachable = snapshot.element ? focused || writable : snapshot.requiresClipboardWriteback;
    if (reachable && !windowMismatch && !selectionMismatch) return false;
    MVPLog::write("Writeback target trust downgraded to copy:", snapshot.debugDescription());
    return true;
}

bool WritebackTargetValidator::isOriginalTextElementStillFocused(const AXElementRef& element,
                                                                 qint32 processIdentifier) {
    if (!accessibility_.isProcessTrusted()) return true;
    const auto focused = readAttribute<AXElementRef>(
        accessibility_, accessibility_.applicationElement(processIdentifier), AXAttribute::focusedUIElement);
    return element && focused.value && (*focused.value)->isEqual(*element);
}

bool WritebackTargetValidator::isTextElementWritable(const AXElementRef& element) {
    if (!element) return false;
    for (const AXAttribute attribute : {AXAttribute::selectedText, AXAttribute::value}) {
        const auto settable = accessibility_.isAttributeSettable(element, attribute);
        if (settable.ok() && settable.value) return true;
    }
    return false;
}

std::optional<QString> WritebackTargetValidator::currentSelectedText(const AXElementRef& element) {
    auto reading = readAttribute<QString>(accessibility_, element, AXAttribute::selectedText);
    if (reading.failed())
        MVPLog::write("Writeback validation selected text unavailable:", code(reading.error));
    return std::move(reading.value);
}

bool WritebackTargetValidator::shouldForceReplaceAll(const ExternalGestureAIAction& action,
                                                     const ExternalTextReadResult& read) {
    return shouldForceReplaceAll(
        action.isTranslate() ? settings_.translationReplaceMode() : settings_.optimizeReplaceMode(), read);
}

bool WritebackTargetValidator::shouldForceReplaceAll(TextReplaceMode mode,
                                                     const ExternalTextReadResult& read) {
    switch (mode) {
        case TextReplaceMode::current:
            return false;
        case TextReplaceMode::replaceAll:
            return true;
        case TextReplaceMode::smart:
            return smartShouldReplaceAll(read);
    }
    return false;
}

bool WritebackTargetValidator::smartShouldReplaceAll(const ExternalTextReadResult& read) {
    if (!read.element || !read.selectedRange || read.selectedRange->length < 1) return false;
    const auto value = readAttribute<QString>(accessibility_, read.element, AXAttribute::value).value;
    if (!value || value->isEmpty()) return false;
    const TextRange range = *read.selectedRange;
    if (static_cast<double>(range.length) / static_cast<double>(value->size()) > 0.75) return true;
    const qint64 location = std::max<qint64>(range.location, 0);
    const QString rest = value->left(location) + value->mid(std::min(location + range.length, value->size()));
    return !Text::containsAny(rest, instructionWords, Qt::CaseInsensitive);
}

}  // namespace veltrin
