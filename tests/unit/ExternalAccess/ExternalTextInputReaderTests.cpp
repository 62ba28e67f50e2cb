#include "ExternalAccess/ExternalTextInputReader.h"
#include "ScriptedAccessibility.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

using Source = ExternalTextReadResult::Source;
using test::ScriptedElement;

class FakeClipboardTextAccess final : public ClipboardTextAccess {
public:
    ExternalTextReadResult readFocusedText(const QString& appName, const QString& bundleIdentifier,
                                           const PostTarget& target) override {
        ExternalTextReadResult result = answer;
        result.frontmostAppName = appName;
        result.bundleIdentifier = bundleIdentifier;
        result.processIdentifier = target.processIdentifier;
        askedFor = target;
        result.role = QStringLiteral("clipboardFallback");
        result.requiresClipboardWriteback = true;
        return result;
    }
    bool write(const QString&, const ExternalTextReadResult&) override { return false; }

    ExternalTextReadResult answer;
    std::optional<PostTarget> askedFor;
};

class ReaderTest : public testing::Test {
protected:
    ReaderTest() {
        ax.application->answer(AXAttribute::focusedUIElement, AXElementRef(field));
        field->answer(AXAttribute::role, QStringLiteral("AXTextArea"));
    }
    void fill(const QString& value, TextRange range) {
        field->answer(AXAttribute::value, value);
        field->answer(AXAttribute::selectedTextRange, range);
        field->answer(AXAttribute::selectedText, value.mid(range.location, range.length));
    }
    ExternalTextReadResult read(ClipboardTextAccess* clipboard = nullptr) {
        ExternalTextInputReader reader(ax, workspace, preferences, clipboard);
        return reader.readFocusedText();
    }
    std::optional<QString> characterBeforeCursor() {
        return ExternalTextInputReader(ax, workspace, preferences).characterBeforeCursor();
    }

    test::ScriptedAccessibility ax;
    test::ScriptedWorkspace workspace;
    FakePreferences preferences;
    std::shared_ptr<ScriptedElement> field = std::make_shared<ScriptedElement>(42);
};

void expectEmpty(const ExternalTextReadResult& result) {
    EXPECT_EQ(result.source, Source::none);
    EXPECT_EQ(result.text, QString());
    EXPECT_EQ(result.frontmostAppName, QStringLiteral("unknown"));
    EXPECT_EQ(result.bundleIdentifier, QStringLiteral("unknown"));
    EXPECT_FALSE(result.processIdentifier);
    EXPECT_EQ(result.role, QStringLiteral("unknown"));
    EXPECT_FALSE(result.isSelf);
    EXPECT_FALSE(result.element);
    EXPECT_FALSE(result.selectedRange);
    EXPECT_FALSE(result.requiresClipboardWriteback);
    EXPECT_FALSE(result.selectedText);
    EXPECT_EQ(result.fullText, QString());
    EXPECT_EQ(result.textContext, ExternalTextContext());
}

TEST_F(ReaderTest, aSelectionIsReadWithItsFieldAndItsSurroundings) {
    fill(QStringLiteral("one two three"), {4, 3});
    LogCapture log;
    const auto result = read();
    EXPECT_EQ(result.source, Source::selectedText);
    EXPECT_EQ(result.text, QStringLiteral("two"));
    EXPECT_EQ(result.selectedText, QStringLiteral("two"));
    EXPECT_EQ(result.fullText, QStringLiteral("one two three"));
    EXPECT_EQ(result.selectedRange, (TextRange{4, 3}));
    EXPECT_EQ(result.frontmostAppName, QStringLiteral("Editor"));
    EXPECT_EQ(result.bundleIdentifier, QStringLiteral("org.editor"));
    EXPECT_EQ(result.processIdentifier, 42);
    EXPECT_EQ(result.role, QStringLiteral("AXTextArea"));
    EXPECT_FALSE(result.isSelf);
    EXPECT_EQ(result.element, field);
    EXPECT_FALSE(result.requiresClipboardWriteback);
    EXPECT_EQ(result.targetWindow, 7U);
    EXPECT_EQ(result.textContext.contextBefore, QStringLiteral("one"));
    EXPECT_EQ(result.textContext.contextAfter, QStringLiteral("three"));
    EXPECT_EQ(
        log.lines(),
        (QStringList{
            QStringLiteral("AX text read begin"),
            QStringLiteral("AX text read frontmost app: Editor pid: 42 bundle: org.editor isSelf: false"),
            QStringLiteral("AX read selected range: location: 4 length: 3"),
            QStringLiteral("AX text read focused element: role: AXTextArea subrole: nil"),
            QStringLiteral("AX text read result: source: selectedText length: 3 app: Editor bundle: "
                           "org.editor role: AXTextArea preview: two"),
        }));
}

TEST_F(ReaderTest, withoutASelectionTheWholeFieldIsTheInputAndTheCaretIsKept) {
    const QString text = QStringLiteral("line one\nline two  ");
    fill(text, {18, 0});
    LogCapture log;
    const auto result = read();
    EXPECT_EQ(result.source, Source::value);
    EXPECT_EQ(result.text, text);  // the spaces of the trigger are part of the field and stay
    EXPECT_EQ(result.fullText, text);
    EXPECT_FALSE(result.selectedText);
    EXPECT_EQ(result.selectedRange, (TextRange{18, 0}));
    EXPECT_TRUE(result.textContext.contextBefore.isEmpty());
    EXPECT_TRUE(result.textContext.contextAfter.isEmpty());
    EXPECT_FALSE(result.textContext.promptBlock().contains(QStringLiteral("上下文")));
    EXPECT_TRUE(log.has(QStringLiteral("AX text read selected text unavailable or empty")));
    EXPECT_TRUE(
        log.has(QStringLiteral("AX text read result: source: value length: 19 app: Editor bundle: "
                               "org.editor role: AXTextArea preview: line one line two  ")));
}

TEST_F(ReaderTest, aSelectionInAFieldWithoutAReadableValueIsItsOwnFullText) {
    field->answer(AXAttribute::selectedText, QStringLiteral("hello"));
    field->answer(AXAttribute::selectedTextRange, TextRange{100, 5});
    field->fail(AXAttribute::value, AXError::cannotComplete);
    LogCapture log;
    const auto result = read();
    EXPECT_EQ(result.source, Source::selectedText);
    EXPECT_EQ(result.fullText, QStringLiteral("hello"));
    EXPECT_EQ(result.textContext.contextBefore, QStringLiteral("hello"));  // clamped to the selection itself
    EXPECT_EQ(result.textContext.contextAfter, QString());
    EXPECT_TRUE(log.has(QStringLiteral("AX value text unavailable: error -25204")));
}

TEST_F(ReaderTest, aSelectionOfBlanksIsASelectionWithoutText) {
    fill(QStringLiteral("a  b"), {1, 2});
    const auto result = read();
    EXPECT_EQ(result.source, Source::selectedText);
    EXPECT_FALSE(result.hasText());
}

TEST_F(ReaderTest, withoutTheRightToReadThereIsNoClipboardRoadEither) {
    ax.trusted = false;
    FakeClipboardTextAccess clipboard;
    clipboard.answer.text = QStringLiteral("never");
    LogCapture log;
    expectEmpty(read(&clipboard));
    EXPECT_EQ(log.lines(),
              (QStringList{
                  QStringLiteral("AX text read begin"),
                  QStringLiteral("AX text read unavailable: AXIsProcessTrusted false"),
                  QStringLiteral("AX text read result: source none length 0 reason: AX not trusted"),
              }));
}

TEST_F(ReaderTest, withoutAFrontmostApplicationThereIsNothing) {
    workspace.frontmost.reset();
    LogCapture log;
    expectEmpty(read());
    EXPECT_TRUE(log.has(QStringLiteral("AX text read unavailable: no frontmost app")));
    EXPECT_TRUE(
        log.has(QStringLiteral("AX text read result: source none length 0 reason: no frontmost app")));
}

TEST_F(ReaderTest, ourOwnFieldIsReadAndMarked) {
    workspace.frontmost =
        RunningApplication{42, QStringLiteral("Veltrin"), QStringLiteral("com.veltrin.app"), 7};
    fill(QStringLiteral("own"), {3, 0});
    LogCapture log;
    const auto result = read();
    EXPECT_TRUE(result.isSelf);
    EXPECT_EQ(result.text, QStringLiteral("own"));
    EXPECT_TRUE(log.has(
        QStringLiteral("AX text read note: frontmost app is Veltrin; this is not an external text target")));
}

TEST_F(ReaderTest, aMissingNameAndIdentifierBecomeWords) {
    workspace.frontmost = RunningApplication{42, std::nullopt, std::nullopt, 7};
    field->attributes.erase(AXAttribute::role);
    fill(QStringLiteral("x"), {1, 0});
    LogCapture log;
    const auto result = read();
    EXPECT_EQ(result.frontmostAppName, QStringLiteral("unknown"));
    EXPECT_EQ(result.bundleIdentifier, QStringLiteral("nil"));
    EXPECT_EQ(result.role, QStringLiteral("unknown"));
    EXPECT_FALSE(result.isSelf);
    EXPECT_TRUE(
        log.has(QStringLiteral("AX text read frontmost app: unknown pid: 42 bundle: nil isSelf: false")));
}

TEST_F(ReaderTest, whatAccessibilityCannotReadGoesByTheClipboard) {
    FakeClipboardTextAccess clipboard;
    clipboard.answer.source = Source::value;
    clipboard.answer.text = QStringLiteral("copied");
    const auto expectCopied = [&](const char* line) {
        LogCapture log;
        const auto result = read(&clipboard);
        EXPECT_EQ(result.text, QStringLiteral("copied"));
        EXPECT_EQ(result.frontmostAppName, QStringLiteral("Editor"));
        EXPECT_EQ(result.processIdentifier, 42);
        EXPECT_EQ(result.targetWindow, 7U);
        EXPECT_TRUE(result.requiresClipboardWriteback);
        EXPECT_FALSE(result.element);
        EXPECT_TRUE(log.has(QString::fromUtf8(line))) << line;
        EXPECT_TRUE(
            log.lines().last().startsWith(QStringLiteral("AX text read result: source: value length: 6")));
    };
    fill(QString(), {0, 0});
    expectCopied("AX text read value unavailable or empty");
    ax.application->fail(AXAttribute::focusedUIElement, AXError::noValue);
    expectCopied("AX text read unavailable: focused element error -25212");
    ax.application->answer(AXAttribute::focusedUIElement, QStringLiteral("no element"));
    expectCopied("AX text read unavailable: focused element error 0");
    ax.application->answer(AXAttribute::focusedUIElement, AXElementRef());
    expectCopied("AX text read unavailable: focused element error 0");
}

TEST_F(ReaderTest, withoutAClipboardRoadTheReadIsEmptyAndNamesItsApplication) {
    ax.application->fail(AXAttribute::focusedUIElement, AXError::noValue);
    LogCapture log;
    const auto result = read();
    EXPECT_EQ(result.source, Source::none);
    EXPECT_FALSE(result.hasText());
    EXPECT_EQ(result.frontmostAppName, QStringLiteral("Editor"));
    EXPECT_EQ(result.bundleIdentifier, QStringLiteral("org.editor"));
    EXPECT_EQ(result.processIdentifier, 42);
    EXPECT_EQ(result.role, QStringLiteral("clipboardFallback"));
    EXPECT_FALSE(result.requiresClipboardWriteback);
    EXPECT_TRUE(log.lines().last().startsWith(QStringLiteral("AX text read result: source: none length: 0")));
}

TEST_F(ReaderTest, valuesOfAnotherFormAreUnavailable) {
    field->answer(AXAttribute::selectedText, true);
    field->answer(AXAttribute::value, TextRange{1, 2});
    field->answer(AXAttribute::selectedTextRange, QStringLiteral("0-3"));
    LogCapture log;
    EXPECT_EQ(read().source, Source::none);
    EXPECT_TRUE(log.has(QStringLiteral("AX selected text unavailable: non-string value")));
    EXPECT_TRUE(log.has(QStringLiteral("AX value text unavailable: non-string value")));
    EXPECT_TRUE(log.has(QStringLiteral("AX read selected range unavailable: could not decode CFRange")));
}

TEST_F(ReaderTest, refusalsAreLoggedWithTheirCodes) {
    field->fail(AXAttribute::selectedText, AXError::attributeUnsupported);
    field->fail(AXAttribute::value, AXError::failure);
    field->fail(AXAttribute::selectedTextRange, AXError::noValue);
    LogCapture log;
    EXPECT_EQ(read().source, Source::none);
    EXPECT_TRUE(log.has(QStringLiteral("AX selected text unavailable: error -25205")));
    EXPECT_TRUE(log.has(QStringLiteral("AX value text unavailable: error -25200")));
    EXPECT_TRUE(log.has(QStringLiteral("AX read selected range unavailable: error -25212")));
}

TEST_F(ReaderTest, theLoggedPreviewIsEightyCharactersOnOneLine) {
    fill(QStringLiteral("a\nb") + QString(77, u'x'), {0, 0});
    {
        LogCapture log;
        read();
        EXPECT_TRUE(log.lines().last().endsWith(QStringLiteral("preview: a b") + QString(77, u'x')));
    }
    fill(QStringLiteral("a\nb") + QString(78, u'x'), {0, 0});
    LogCapture log;
    read();
    EXPECT_TRUE(log.lines().last().endsWith(QStringLiteral("preview: a b") + QString(77, u'x') +
                                            QStringLiteral("...")));
}

TEST_F(ReaderTest, theCharacterBeforeTheCaretIsAWholeOne) {
    const QString family = QStringLiteral("👨‍👩‍👧‍👦");
    fill(QStringLiteral("a") + family, {1 + family.size(), 0});
    EXPECT_EQ(characterBeforeCursor(), family);
    fill(QStringLiteral("ab"), {1, 0});
    EXPECT_EQ(characterBeforeCursor(), QStringLiteral("a"));
}

TEST_F(ReaderTest, nothingStandsBeforeACaretThatCannotBeTold) {
    preferences.values[PreferenceKeys::gestureVerboseLogging] = true;
    const auto expectNone = [&](const char* line) {
        LogCapture log;
        EXPECT_FALSE(characterBeforeCursor());
        EXPECT_EQ(log.lines(), QStringList(QString::fromUtf8(line)));
    };
    fill(QStringLiteral("ab"), {0, 0});
    expectNone("Cursor context unavailable: no cursor range before text");
    fill(QStringLiteral("ab"), {0, 2});
    expectNone("Cursor context unavailable: no cursor range before text");
    field->fail(AXAttribute::selectedTextRange, AXError::noValue);
    expectNone("Cursor context unavailable: no cursor range before text");
    field->answer(AXAttribute::selectedTextRange, TextRange{3, 0});
    expectNone("Cursor context unavailable: cursor out of bounds");
    field->answer(AXAttribute::value, QString());
    expectNone("Cursor context unavailable: no AX value");
    field->fail(AXAttribute::value, AXError::failure);
    expectNone("Cursor context unavailable: no AX value");
    ax.application->fail(AXAttribute::focusedUIElement, AXError::cannotComplete);
    expectNone("Cursor context unavailable: focused element error -25204");
    workspace.frontmost.reset();
    expectNone("Cursor context unavailable: no AX trust or frontmost app");
    workspace.frontmost = RunningApplication{42, {}, {}, 0};
    ax.trusted = false;
    expectNone("Cursor context unavailable: no AX trust or frontmost app");
}

TEST_F(ReaderTest, theCharacterBeforeTheCaretIsLoggedOnlyWhenAskedFor) {
    fill(QStringLiteral("a "), {2, 0});
    {
        LogCapture log;
        EXPECT_EQ(characterBeforeCursor(), QStringLiteral(" "));
        EXPECT_TRUE(log.lines().isEmpty());
    }
    preferences.values[PreferenceKeys::gestureVerboseLogging] = true;
    LogCapture log;
    characterBeforeCursor();
    field->answer(AXAttribute::selectedTextRange, TextRange{1, 0});
    characterBeforeCursor();
    EXPECT_EQ(log.lines(),
              (QStringList{QStringLiteral("Cursor context previous character:   isWhitespace: true"),
                           QStringLiteral("Cursor context previous character: a isWhitespace: false")}));
}

}  // namespace
}  // namespace veltrin
