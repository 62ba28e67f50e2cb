#include "ExternalAccess/SmartSelectContentReader.h"
#include "Gesture/SpaceGesturePolicy.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/LogCapture.h"
#include "support/fake/TaskRunner.h"
#include "unit/ExternalAccess/ScriptedAccessibility.h"

#include <gtest/gtest.h>

#include <limits>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using test::ScriptedElement;
using Element = std::shared_ptr<const ScriptedElement>;
using Elements = std::vector<AXElementRef>;
using Reason = SmartSelectTriggerReason;

constexpr QPointF mouse{300, 200};

/// Posts as the desktop does, which knows nothing of elements that a test made up.
class ElementBlindPoster final : public KeyPoster {
public:
    explicit ElementBlindPoster(KeyPoster& poster) : poster_(poster) {}
    PostResult post(const KeyPost& chord) override {
        element = chord.target.element;
        KeyPost blind = chord;
        blind.target.element.reset();
        return poster_.post(blind);
    }
    AXElementRef element;

private:
    KeyPoster& poster_;
};

/// An application of which accessibility says word for word what the test wrote down, on a simulated desktop
/// that takes the copy keys.
class SmartSelectContentReaderTest : public testing::Test {
protected:
    SmartSelectContentReaderTest() {
        desktop.focus(field);
        desktop.pasteboard.put(u"user's"_s);
        desktop.advance(5);
        field.select(0, 4);
    }
    ~SmartSelectContentReaderTest() override { SpaceGestureAppPolicy::bypassSelfBlacklist = false; }

    Element element() { return std::make_shared<ScriptedElement>(app.pid); }
    void give(const Element& parent, AXAttribute list, Elements elements) {
        parent->answer(list, std::move(elements));
    }
    /// An element in which something is selected.
    Element selecting(const QString& text) {
        Element found = element();
        found->answer(AXAttribute::selectedText, text);
        return found;
    }
    Element focusOn(Element focused) {
        application().answer(AXAttribute::focusedUIElement, AXElementRef(focused));
        return focused;
    }
    const ScriptedElement& application() { return *accessibility.application; }
    /// Lets a chain of children end in `last`, which stands at that depth.
    Element chain(int depth, const Element& last) {
        Element top = last;
        for (int i = 0; i < depth; ++i) {
            Element parent = element();
            give(parent, AXAttribute::children, {top});
            top = parent;
        }
        return top;
    }

    std::optional<SmartSelectedContent> read(Reason reason = Reason::drag) {
        const auto outcome = follow(reader.readSelectedContent(reason, mouse));
        for (int i = 0; i < 100 && !outcome->finished(); ++i)
            desktop.advance(0.1);
        EXPECT_TRUE(outcome->finished());
        return outcome->value.value_or(std::nullopt);
    }
    QString source() {
        const auto content = read();
        return content ? content->source : QString();
    }
    QString text() {
        const auto content = read();
        return content ? content->text : QString();
    }
    int copies() const { return app.pressesOf(KeyCode::c); }

    LogCapture log;
    FakeDesktop desktop;
    FakeApplication& app = desktop.launch(u"Reader"_s, u"org.example.Reader"_s);
    FakeTextField& field = app.addField(u"copy of a text"_s);
    test::ScriptedAccessibility accessibility;
    PasteboardLoan loan{desktop.pasteboard, desktop.runLoop};
    ClipboardFallbackInterferenceGuard guard{desktop.runLoop};
    ElementBlindPoster poster{desktop.keyPoster};
    SmartSelectClipboardCopy clipboardCopy{
        desktop.workspace, desktop.pasteboard, loan, poster, desktop.runLoop, guard};
    SmartSelectContentReader reader{accessibility, desktop.workspace, clipboardCopy};
};

TEST_F(SmartSelectContentReaderTest, theFocusedElementsSelectionComesFirst) {
    const Element focused = focusOn(selecting(u" chosen "_s));
    focused->answer(AXAttribute::selectedTextRange, TextRange{2, 8});
    focused->answer(AXAttribute::boundsForRange, QRectF(40, 60, 100, 20));
    give(focused, AXAttribute::children, {selecting(u"deeper"_s)});
    const auto content = read();
    ASSERT_TRUE(content);
    EXPECT_EQ(*content, (SmartSelectedContent{u" chosen "_s, QPointF(140, 60), u"AXFocusedSelectedText"_s,
                                              u"Reader"_s, u"org.example.Reader"_s}));
    EXPECT_TRUE(log.has(u"SmartSelect read begin: app: Reader bundle: org.example.Reader"_s));
    EXPECT_TRUE(log.has(u"SmartSelect AX read success: source: AXFocusedSelectedText length: 8"_s));
    EXPECT_EQ(copies(), 0);
}

TEST_F(SmartSelectContentReaderTest, aBlankSelectionIsASelectionHere) {
    focusOn(selecting(u"  \n"_s));
    EXPECT_EQ(text(), u"  \n");
    EXPECT_EQ(copies(), 0);
}

TEST_F(SmartSelectContentReaderTest, aRangeOfTheValueStandsInForTheSelectedText) {
    const Element focused = focusOn(selecting(QString()));
    focused->answer(AXAttribute::value, u"ab\U0001F600cd"_s);
    focused->answer(AXAttribute::selectedTextRange, TextRange{1, 4});
    EXPECT_EQ(text(), u"b\U0001F600c");
    EXPECT_EQ(source(), u"AXFocusedRange");
    focused->answer(AXAttribute::selectedTextRange, TextRange{2, 4});
    EXPECT_EQ(text(), u"\U0001F600cd") << "up to the very end";
}

TEST_F(SmartSelectContentReaderTest, aRangeThatDoesNotFitTheValueIsNone) {
    const Element focused = focusOn(element());
    focused->answer(AXAttribute::value, u"abc"_s);
    const auto longest = std::numeric_limits<qint64>::max();
    for (const TextRange range : {TextRange{1, 3}, TextRange{0, 0}, TextRange{-1, 2}, TextRange{0, longest},
                                  TextRange{longest, longest}, TextRange{4, 1}}) {
        focused->answer(AXAttribute::selectedTextRange, range);
        EXPECT_EQ(source(), QString()) << range.location << '+' << range.length;
    }
    focused->answer(AXAttribute::value, QString(u""_s));
    focused->answer(AXAttribute::selectedTextRange, TextRange{0, 1});
    EXPECT_EQ(source(), QString());
}

TEST_F(SmartSelectContentReaderTest, answersOfOtherTypesAreNothing) {
    const Element focused = focusOn(element());
    focused->answer(AXAttribute::selectedText, true);
    focused->answer(AXAttribute::selectedTextRange, u"1 to 2"_s);
    focused->answer(AXAttribute::value, TextRange{1, 1});
    focused->answer(AXAttribute::children, u"many"_s);
    application().answer(AXAttribute::windows, true);
    application().answer(AXAttribute::focusedWindow, QPointF(1, 2));
    EXPECT_EQ(source(), QString());
}

TEST_F(SmartSelectContentReaderTest, anAnchorNeedsARectangleWithARealSize) {
    const Element focused = focusOn(selecting(u"words"_s));
    EXPECT_FALSE(read()->anchorPoint) << "without a range";
    focused->answer(AXAttribute::selectedTextRange, TextRange{0, 5});
    EXPECT_FALSE(read()->anchorPoint) << "without bounds";
    const double infinite = std::numeric_limits<double>::infinity();
    for (const QRectF& bounds :
         {QRectF(1, 2, 0, 9), QRectF(1, 2, 9, 0), QRectF(1, 2, -9, 9), QRectF(1, 2, infinite, 9),
          QRectF(1, 2, 9, std::numeric_limits<double>::quiet_NaN())}) {
        focused->answer(AXAttribute::boundsForRange, bounds);
        EXPECT_FALSE(read()->anchorPoint);
    }
    focused->answer(AXAttribute::boundsForRange, QRectF(-50, -2, 0.5, 0.5));
    EXPECT_EQ(read()->anchorPoint, QPointF(-49.5, -2));
    focused->answer(AXAttribute::selectedTextRange, TextRange{0, 0});
    EXPECT_FALSE(read()->anchorPoint) << "of a caret";
}

TEST_F(SmartSelectContentReaderTest, theTreeBelowTheFocusIsSearchedSevenLevelsDeep) {
    focusOn(chain(6, selecting(u"deep"_s)));
    EXPECT_EQ(text(), u"deep");
    EXPECT_EQ(source(), u"AXTreeSelectedText");
    focusOn(chain(7, selecting(u"too deep"_s)));
    EXPECT_EQ(source(), QString());
}

TEST_F(SmartSelectContentReaderTest, aRangeInTheTreeSaysWhereItWasFound) {
    const Element found = element();
    found->answer(AXAttribute::value, u"some words"_s);
    found->answer(AXAttribute::selectedTextRange, TextRange{5, 5});
    found->answer(AXAttribute::boundsForRange, QRectF(10, 20, 30, 40));
    focusOn(chain(2, found));
    const auto content = read();
    ASSERT_TRUE(content);
    EXPECT_EQ(content->text, u"words");
    EXPECT_EQ(content->source, u"AXTreeRange");
    EXPECT_EQ(content->anchorPoint, QPointF(40, 20));
}

TEST_F(SmartSelectContentReaderTest, theListsAreSearchedInTheirOrderAndDepthFirst) {
    const Element focused = focusOn(element());
    give(focused, AXAttribute::selectedChildren, {selecting(u"third"_s)});
    EXPECT_EQ(text(), u"third");
    give(focused, AXAttribute::contents, {selecting(u"second"_s)});
    EXPECT_EQ(text(), u"second");
    give(focused, AXAttribute::children, {chain(3, selecting(u"first"_s)), selecting(u"sibling"_s)});
    EXPECT_EQ(text(), u"first");
}

TEST_F(SmartSelectContentReaderTest, of120ChildrenTheLastIsSeenAndTheNextIsNot) {
    Elements children;
    for (int i = 0; i < 119; ++i)
        children.push_back(element());
    children.push_back(selecting(u"the 120th"_s));
    give(focusOn(element()), AXAttribute::children, children);
    EXPECT_EQ(text(), u"the 120th");
    children.insert(children.begin(), element());
    give(focusOn(element()), AXAttribute::children, children);
    EXPECT_EQ(source(), QString());
}

TEST_F(SmartSelectContentReaderTest, aTreeThatNeverEndsIsLeft) {
    const Element endless = element();
    give(endless, AXAttribute::children, Elements(1000, endless));
    focusOn(endless);
    EXPECT_EQ(source(), QString());
    give(endless, AXAttribute::children, Elements());
}

TEST_F(SmartSelectContentReaderTest, withoutAFocusTheWindowsAreSearchedTheFocusedOneFirst) {
    application().fail(AXAttribute::focusedUIElement, AXError::cannotComplete);
    give(accessibility.application, AXAttribute::windows, {selecting(u"other"_s)});
    EXPECT_EQ(text(), u"other");
    EXPECT_TRUE(log.has(u"SmartSelect AX focused unavailable: -25204"_s));
    application().answer(AXAttribute::focusedWindow, AXElementRef(chain(6, selecting(u"window"_s))));
    EXPECT_EQ(text(), u"window");
    EXPECT_EQ(source(), u"AXTreeSelectedText");
    application().answer(AXAttribute::focusedUIElement, u"no element"_s);
    EXPECT_EQ(text(), u"window");
    EXPECT_TRUE(log.has(u"SmartSelect AX focused unavailable: 0"_s));
}

TEST_F(SmartSelectContentReaderTest, ofTheWindowsEightAreSearched) {
    Elements windows(7);
    for (AXElementRef& window : windows)
        window = element();
    windows.push_back(selecting(u"eighth"_s));
    give(accessibility.application, AXAttribute::windows, windows);
    EXPECT_EQ(text(), u"eighth");
    windows.insert(windows.begin(), element());
    give(accessibility.application, AXAttribute::windows, windows);
    EXPECT_EQ(source(), QString());
}

TEST_F(SmartSelectContentReaderTest, aFocusedElementWithoutASelectionLeavesTheWholeWindow) {
    const Element focused = focusOn(element());
    application().answer(AXAttribute::focusedWindow, AXElementRef(chain(1, selecting(u"elsewhere"_s))));
    EXPECT_EQ(text(), u"elsewhere");
    give(focused, AXAttribute::children, {selecting(u"nearer"_s)});
    EXPECT_EQ(text(), u"nearer");
}

TEST_F(SmartSelectContentReaderTest, nothingInFrontIsNothing) {
    desktop.workspace.bringToFront(nullptr);
    EXPECT_FALSE(read());
    EXPECT_FALSE(log.hasStartingWith(u"SmartSelect"_s));
}

TEST_F(SmartSelectContentReaderTest, anApplicationWithoutNamesIsUnknown) {
    app.name.reset();
    app.bundleIdentifier.reset();
    focusOn(selecting(u"words"_s));
    const auto content = read();
    ASSERT_TRUE(content);
    EXPECT_EQ(content->appName, u"unknown");
    EXPECT_EQ(content->bundleIdentifier, u"unknown");
}

TEST_F(SmartSelectContentReaderTest, ourOwnWindowIsReadDuringThePracticeOnlyAndNeverCopiedFrom) {
    desktop.workspace.bringToFront(&desktop.workspace.program());
    focusOn(selecting(u"practice"_s));
    EXPECT_FALSE(read());
    EXPECT_FALSE(log.hasStartingWith(u"SmartSelect"_s)) << "without a word";

    SpaceGestureAppPolicy::bypassSelfBlacklist = true;
    EXPECT_EQ(text(), u"practice");
    const Element focused = focusOn(element());
    focused->answer(AXAttribute::role, u"AXTextArea"_s);
    EXPECT_FALSE(read());
    EXPECT_TRUE(log.has(u"SmartSelect AX unavailable; trying clipboard fallback"_s));
    EXPECT_EQ(desktop.keyPoster.records.size(), 0U);
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

// MARK: Whether a copy key may be pressed

TEST_F(SmartSelectContentReaderTest, aFocusedTextElementIsCopiedFrom) {
    for (const auto& [role, subrole] :
         std::initializer_list<std::pair<QString, QString>>{{u"AXTextArea"_s, {}},
                                                            {u"AXTextField"_s, {}},
                                                            {u"AXStaticText"_s, {}},
                                                            {u"AXWebArea"_s, {}},
                                                            {u"AXDocument"_s, {}},
                                                            {u"AXGroup"_s, u"AXWebArea"_s},
                                                            {u"AXGroup"_s, u"AXRichTextThing"_s},
                                                            {u"AXGroup"_s, u"AXDocumentArticle"_s}}) {
        const Element focused = focusOn(element());
        focused->answer(AXAttribute::role, role);
        if (!subrole.isEmpty()) focused->answer(AXAttribute::subrole, subrole);
        const auto content = read();
        ASSERT_TRUE(content) << qPrintable(role) << ' ' << qPrintable(subrole);
        EXPECT_EQ(*content, (SmartSelectedContent{u"copy"_s, mouse, u"clipboardSelection"_s, u"Reader"_s,
                                                  u"org.example.Reader"_s}));
        EXPECT_EQ(poster.element, focused) << "no key goes to any other";
        desktop.advance(2);
    }
    EXPECT_TRUE(log.has(u"SmartSelect clipboard read success: length: 4"_s));
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectContentReaderTest, aPlainApplicationWithoutAFocusedTextElementIsNot) {
    const Element focused = focusOn(element());
    focused->answer(AXAttribute::role, u"AXTextAreas"_s);
    focused->answer(AXAttribute::subrole, u"AXOther"_s);
    EXPECT_FALSE(read());
    EXPECT_TRUE(
        log.has(u"SmartSelect clipboard fallback blocked role: axtextareas subrole: axother reason: drag"_s));
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback skipped: app: Reader bundle: org.example.Reader"_s));
    application().fail(AXAttribute::focusedUIElement, AXError::noValue);
    EXPECT_FALSE(read(Reason::multiClick));
    EXPECT_TRUE(
        log.has(u"SmartSelect clipboard fallback blocked: focused element unavailable reason: "
                u"multiClick app: Reader bundle: org.example.Reader"_s));
    EXPECT_EQ(desktop.keyPoster.records.size(), 0U);
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

TEST_F(SmartSelectContentReaderTest, aBrowserWithoutAReadableFocusIsCopiedFrom) {
    app.name = u"Chromium"_s;
    application().fail(AXAttribute::focusedUIElement, AXError::cannotComplete);
    EXPECT_EQ(text(), u"copy");
    EXPECT_TRUE(
        log.has(u"SmartSelect clipboard fallback allowed without focused element reason: drag app: "
                u"Chromium bundle: org.example.Reader"_s));
    EXPECT_EQ(copies(), 1);
}

TEST_F(SmartSelectContentReaderTest, aFileManagerIsNeverCopiedFromWhateverHasTheFocus) {
    for (const QString& identifier :
         {u"com.apple.Finder"_s, u"org.gnome.Nautilus"_s, u"com.adobe.LightroomClassic"_s}) {
        app.bundleIdentifier = identifier;
        focusOn(element())->answer(AXAttribute::role, u"AXTextField"_s);
        EXPECT_FALSE(read());
    }
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback blocked non-text app: Reader com.apple.Finder"_s));
    EXPECT_EQ(desktop.keyPoster.records.size(), 0U);
}

TEST_F(SmartSelectContentReaderTest, withoutTrustNothingIsReadAndNoKeyIsPressed) {
    accessibility.trusted = false;
    app.name = u"Chromium"_s;
    focusOn(selecting(u"words"_s));
    EXPECT_FALSE(read());
    EXPECT_TRUE(log.has(u"SmartSelect clipboard fallback blocked: AX not trusted"_s));
    EXPECT_EQ(desktop.keyPoster.records.size(), 0U);
}

TEST_F(SmartSelectContentReaderTest, aPasswordIsNeitherReadNorCopied) {
    app.name = u"Chromium"_s;
    const Element focused = focusOn(element());
    focused->answer(AXAttribute::role, u"AXSecureTextField"_s);
    focused->answer(AXAttribute::subrole, u"AXSecureTextField"_s);
    // The bullets, as browsers have them below the field and in the page around it.
    const Element bullets = selecting(u"••••"_s);
    give(focused, AXAttribute::children, {bullets});
    application().answer(AXAttribute::focusedWindow, AXElementRef(selecting(u"name ••••"_s)));
    EXPECT_FALSE(read());
    EXPECT_EQ(desktop.keyPoster.records.size(), 0U);
    EXPECT_EQ(desktop.log.count("pasteboard cleared"), 0);
}

TEST_F(SmartSelectContentReaderTest, aCopyThatComesToNothingIsSaid) {
    focusOn(element())->answer(AXAttribute::role, u"AXTextArea"_s);
    field.placeCaret(0);
    EXPECT_FALSE(read());
    EXPECT_TRUE(log.has(u"SmartSelect clipboard read failed or empty"_s));
    EXPECT_EQ(desktop.pasteboard.peek(), u"user's");
}

}  // namespace
}  // namespace veltrin
