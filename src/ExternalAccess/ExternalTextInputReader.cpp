#include "ExternalAccess/ExternalTextInputReader.h"

#include "ExternalAccess/AttributeReading.h"
#include "Foundation/Characters.h"
#include "Foundation/MVPLog.h"
#include "Foundation/Text.h"

namespace veltrin {

namespace {

/// The text on one line; not trimmed, since the log is to show what was read.
QString logPreview(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    for (QChar& c : text) {
        if (c == u'\n' || c == u'\r' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator) c = u' ';
    }
    return Text::elided(text, 80);
}

bool startsWithWhitespace(const QString& character) {
    return !character.isEmpty() && character.front().isSpace();
}

/// What is logged when a string could not be read.
struct Obstacles {
    const char* error;
    const char* wrongType;
};
constexpr Obstacles noSelection{"AX selected text unavailable: error",
                                "AX selected text unavailable: non-string value"};
constexpr Obstacles noValueText{"AX value text unavailable: error",
                                "AX value text unavailable: non-string value"};

std::optional<QString> stringIn(AXResult<AXValue> result, const Obstacles& obstacles) {
    auto reading = attributeReading<QString>(std::move(result));
    if (reading.failed())
        MVPLog::write(obstacles.error, code(reading.error));
    else if (!reading.value)
        MVPLog::write(obstacles.wrongType);
    return std::move(reading.value);
}

std::optional<TextRange> rangeIn(AXResult<AXValue> result) {
    const auto reading = attributeReading<TextRange>(std::move(result));
    if (reading.failed())
        MVPLog::write("AX read selected range unavailable: error", code(reading.error));
    else if (!reading.value)
        MVPLog::write("AX read selected range unavailable: could not decode CFRange");
    else
        MVPLog::write("AX read selected range:", "location:", reading.value->location,
                      "length:", reading.value->length);
    return reading.value;
}

}  // namespace

template <typename... Items>
void ExternalTextInputReader::verbose(const Items&... items) const {
    if (isVerbose(preferences_)) MVPLog::write(items...);
}

ExternalTextReadResult ExternalTextInputReader::readFocusedText() {
    MVPLog::write("AX text read begin");
    if (!accessibility_.isProcessTrusted()) {
        // No clipboard road here either: without this right synthetic keys would not work.
        MVPLog::write("AX text read unavailable: AXIsProcessTrusted false");
        return emptyResult(QStringLiteral("AX not trusted"));
    }
    const auto frontmost = workspace_.frontmostApplication();
    if (!frontmost) {
        MVPLog::write("AX text read unavailable: no frontmost app");
        return emptyResult(QStringLiteral("no frontmost app"));
    }

    ExternalTextReadResult result;
    result.frontmostAppName = frontmost->localizedName.value_or(QStringLiteral("unknown"));
    result.bundleIdentifier = frontmost->bundleIdentifier.value_or(QStringLiteral("nil"));
    result.processIdentifier = frontmost->processIdentifier;
    result.isSelf = frontmost->bundleIdentifier == workspace_.mainBundleIdentifier();
    result.targetWindow = frontmost->window;
    MVPLog::write("AX text read frontmost app:", result.frontmostAppName,
                  "pid:", frontmost->processIdentifier, "bundle:", result.bundleIdentifier,
                  "isSelf:", result.isSelf);
    if (result.isSelf)
        MVPLog::write("AX text read note: frontmost app is Veltrin; this is not an external text target");

    const auto focused = focusedElement(frontmost->processIdentifier);
    if (!focused.value) {
        MVPLog::write("AX text read unavailable: focused element error", code(focused.error));
        return readByClipboard(result);
    }
    const AXElementRef element = *focused.value;
    // In one question, so that text and selection belong together and a long text comes once.
    auto read = accessibility_.copyAttributeValues(
        element, {AXAttribute::role, AXAttribute::subrole, AXAttribute::selectedTextRange,
                  AXAttribute::selectedText, AXAttribute::value});
    result.role = attributeReading<QString>(std::move(read[0])).value.value_or(QStringLiteral("unknown"));
    const auto subrole = attributeReading<QString>(std::move(read[1])).value;
    result.selectedRange = rangeIn(std::move(read[2]));
    MVPLog::write("AX text read focused element:", "role:", result.role, "subrole:", subrole);
    result.element = element;

    // A selection of white space only is a selection; an empty string is none.
    if (const auto selection = stringIn(std::move(read[3]), noSelection);
        selection && !selection->isEmpty()) {
        const auto value = stringIn(std::move(read[4]), noValueText);
        result.source = ExternalTextReadResult::Source::selectedText;
        result.text = *selection;
        result.selectedText = selection;
        result.fullText = value && !value->isEmpty() ? *value : *selection;
        result.textContext = ExternalTextContext::build(result.fullText, selection, result.selectedRange,
                                                        ExternalTextContext::standardBudget);
        log(result);
        return result;
    }
    MVPLog::write("AX text read selected text unavailable or empty");
    if (const auto value = stringIn(std::move(read[4]), noValueText); value && !value->isEmpty()) {
        result.source = ExternalTextReadResult::Source::value;
        result.text = *value;
        result.fullText = *value;
        result.textContext = ExternalTextContext::build(*value, std::nullopt, result.selectedRange,
                                                        ExternalTextContext::standardBudget);
        log(result);
        return result;
    }
    MVPLog::write("AX text read value unavailable or empty");
    return readByClipboard(result);
}

ExternalTextReadResult ExternalTextInputReader::readByClipboard(const ExternalTextReadResult& application) {
    ExternalTextReadResult result;
    if (clipboard_ != nullptr) {
        const PostTarget target{application.processIdentifier, application.targetWindow, application.element};
        result =
            clipboard_->readFocusedText(application.frontmostAppName, application.bundleIdentifier, target);
    } else {
        result.frontmostAppName = application.frontmostAppName;
        result.bundleIdentifier = application.bundleIdentifier;
        result.processIdentifier = application.processIdentifier;
        result.role = QStringLiteral("clipboardFallback");
        result.isSelf = application.isSelf;
    }
    result.targetWindow = application.targetWindow;
    log(result);
    return result;
}

ExternalTextReadResult ExternalTextInputReader::emptyResult(const QString& reason) {
    MVPLog::write("AX text read result: source none length 0 reason:", reason);
    return {};
}

std::optional<QString> ExternalTextInputReader::characterBeforeCursor() {
    const auto frontmost =
        accessibility_.isProcessTrusted() ? workspace_.frontmostApplication() : std::nullopt;
    if (!frontmost) {
        verbose("Cursor context unavailable: no AX trust or frontmost app");
        return std::nullopt;
    }
    const auto focused = focusedElement(frontmost->processIdentifier);
    if (!focused.value) {
        verbose("Cursor context unavailable: focused element error", code(focused.error));
        return std::nullopt;
    }
    // This stands on the path of a key, so it reads without the log lines of an ordinary read.
    auto read = accessibility_.copyAttributeValues(*focused.value,
                                                   {AXAttribute::value, AXAttribute::selectedTextRange});
    const auto value = attributeReading<QString>(std::move(read[0])).value;
    if (!value || value->isEmpty()) {
        verbose("Cursor context unavailable: no AX value");
        return std::nullopt;
    }
    const auto range = attributeReading<TextRange>(std::move(read[1])).value;
    if (!range || range->location < 1) {
        verbose("Cursor context unavailable: no cursor range before text");
        return std::nullopt;
    }
    if (range->location > value->size()) {
        verbose("Cursor context unavailable: cursor out of bounds");
        return std::nullopt;
    }
    const QString character = Characters::containing(*value, range->location - 1);
    auto previous = character.isEmpty() ? std::nullopt : std::optional<QString>(character);
    verbose("Cursor context previous character:", previous, "isWhitespace:", startsWithWhitespace(character));
    return previous;
}

AttributeReading<AXElementRef> ExternalTextInputReader::focusedElement(qint32 processIdentifier) {
    return readAttribute<AXElementRef>(accessibility_, accessibility_.applicationElement(processIdentifier),
                                       AXAttribute::focusedUIElement);
}

void ExternalTextInputReader::log(const ExternalTextReadResult& result) {
    MVPLog::write("AX text read result:", "source:", rawValue(result.source),
                  "length:", Characters::count(result.text), "app:", result.frontmostAppName,
                  "bundle:", result.bundleIdentifier, "role:", result.role,
                  "preview:", logPreview(result.text));
}

}  // namespace veltrin
