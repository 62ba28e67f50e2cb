#include "desktop/atspi/AtSpiFixture.h"
#include "support/Slowdown.h"

#include <functional>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s;
const QString sample = u"ab 中文 "_s + family + u" end e\u0301"_s;

/// One editor of each toolkit, with a field that takes a line of text.
struct Editor {
    const char* name;
    std::function<Program(RealDesktop&, const QString&)> start;
    QString role;
    bool hasRangeRectangles = true;
};

std::ostream& operator<<(std::ostream& out, const Editor& editor) {
    return out << editor.name;
}

Program qtField(RealDesktop& desktop, const QString& field, const QString& text) {
    return Program::qtEditor(desktop, {u"--"_s + field, text, u"--focus"_s, field});
}

const Editor editors[] = {
    {"mousepad", &Program::mousepad, u"AXTextArea"_s},
    {"gedit", &Program::gedit, u"AXTextArea"_s},
    {"zenity", &Program::zenityEntry, u"AXTextField"_s},
    {"gnomeTextEditor", &Program::gnomeTextEditor, u"AXTextArea"_s, false},
    {"qtTextEdit",
     [](RealDesktop& desktop, const QString& text) { return qtField(desktop, u"text"_s, text); },
     u"AXTextArea"_s},
    {"qtLineEdit",
     [](RealDesktop& desktop, const QString& text) { return qtField(desktop, u"line"_s, text); },
     u"AXTextField"_s},
};

class EveryEditor : public AtSpiTest, public testing::WithParamInterface<Editor> {
protected:
    Program start(const QString& text) { return GetParam().start(desktop(), text); }
};

INSTANTIATE_TEST_SUITE_P(AtSpi, EveryEditor, testing::ValuesIn(editors),
                         [](const auto& editor) { return std::string(editor.param.name); });

TEST_P(EveryEditor, readsTextCaretAndSelectionInUtf16) {
    const Program program = start(sample);
    const auto element = waitForFocus(program);
    EXPECT_EQ(get<QString>(element, AXAttribute::role), GetParam().role);
    EXPECT_EQ(value(element), sample);
    EXPECT_EQ(element->processIdentifier(), program.pid());

    ASSERT_EQ(select(element, 3, 0), AXError::success);
    EXPECT_EQ(selectedText(element), QString());
    EXPECT_EQ(selectedRange(element), (TextRange{3, 0}));

    // The user's own selection, made from behind: everything from the end of the family to the line's end.
    Typist typist(desktop());
    const qint64 behindFamily = sample.indexOf(family) + family.size();
    ASSERT_EQ(select(element, behindFamily, 0), AXError::success);
    typist.chord(u"Shift+End"_s);
    const QString rest = sample.mid(behindFamily);
    EXPECT_TRUE(waitUntil(5, [&] { return selectedText(element) == rest; }));
    EXPECT_EQ(selectedRange(element), (TextRange{behindFamily, rest.size()}));
}

TEST_P(EveryEditor, givesSeveralAttributesInOneAnswer) {
    const Program program = start(sample);
    const auto element = waitForFocus(program);
    const qint64 at = sample.indexOf(family);
    ASSERT_EQ(select(element, at, family.size()), AXError::success);
    const std::vector<AXAttribute> attributes{
        AXAttribute::role,         AXAttribute::subrole,       AXAttribute::selectedTextRange,
        AXAttribute::selectedText, AXAttribute::value,         AXAttribute::title,
        AXAttribute::description,  AXAttribute::focused,       AXAttribute::windows,
        AXAttribute::position,     AXAttribute::boundsForRange};
    const auto together = accessibility().copyAttributeValues(element, attributes);
    ASSERT_EQ(together.size(), attributes.size());
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        const auto alone = read(element, attributes[i]);
        EXPECT_EQ(together[i].error, alone.error) << i;
        EXPECT_TRUE(together[i].value == alone.value) << i;
    }
    EXPECT_TRUE(together[2].value == AXValue(TextRange{at, family.size()}));
    EXPECT_TRUE(together[3].value == AXValue(family));
    EXPECT_TRUE(together[4].value == AXValue(sample));
}

TEST_P(EveryEditor, setsSelectionsAroundEmojiAndChinese) {
    const Program program = start(sample);
    const auto element = waitForFocus(program);
    const TextRange ranges[] = {
        {0, 2},  {3, 2}, {sample.indexOf(family), family.size()}, {6, 2}, {0, sample.size()}, {5, 0},
        {4, 10}, {1, 1}};
    for (const TextRange& range : ranges) {
        EXPECT_EQ(select(element, range.location, range.length), AXError::success) << range.location;
        EXPECT_EQ(selectedRange(element), range) << range.location;
        EXPECT_EQ(selectedText(element), sample.mid(range.location, range.length));
    }
    EXPECT_EQ(select(element, 1000, 1000), AXError::success) << "beyond the end is the end";
    EXPECT_EQ(selectedRange(element), (TextRange{sample.size(), 0}));
}

TEST_P(EveryEditor, replacesTheSelection) {
    const Program program = start(sample);
    const auto element = waitForFocus(program);
    ASSERT_EQ(select(element, sample.indexOf(family), family.size()), AXError::success);
    EXPECT_EQ(set(element, AXAttribute::selectedText, u"新 \U0001F600"_s), AXError::success);
    const QString expected = QString(sample).replace(family, u"新 \U0001F600"_s);
    EXPECT_EQ(value(element), expected);

    ASSERT_EQ(select(element, 2, 0), AXError::success);
    EXPECT_EQ(set(element, AXAttribute::selectedText, u"\U0001F600x"_s), AXError::success) << "at the caret";
    EXPECT_EQ(value(element), QString(expected).insert(2, u"\U0001F600x"_s));

    ASSERT_EQ(select(element, 0, 2), AXError::success);
    EXPECT_EQ(set(element, AXAttribute::selectedText, QString()), AXError::success) << "only deletes";
    EXPECT_EQ(value(element), u"\U0001F600x"_s + expected.mid(2));
}

TEST_P(EveryEditor, setsTheWholeValue) {
    const Program program = start(sample);
    const auto element = waitForFocus(program);
    EXPECT_EQ(set(element, AXAttribute::value, u"neu "_s + family), AXError::success);
    EXPECT_EQ(value(element), u"neu "_s + family);
    EXPECT_EQ(set(element, AXAttribute::value, QString()), AXError::success);
    EXPECT_EQ(value(element), QString());
    EXPECT_EQ(selectedText(element), QString());
    EXPECT_EQ(selectedRange(element), (TextRange{0, 0}));
    EXPECT_EQ(set(element, AXAttribute::value, u"again"_s), AXError::success);
    EXPECT_EQ(value(element), u"again"_s);
}

TEST_P(EveryEditor, isWritable) {
    const Program program = start(sample);
    const auto element = waitForFocus(program);
    for (const auto attribute :
         {AXAttribute::value, AXAttribute::selectedText, AXAttribute::selectedTextRange}) {
        const auto settable = accessibility().isAttributeSettable(element, attribute);
        EXPECT_TRUE(settable.ok() && settable.value) << static_cast<int>(attribute);
    }
    EXPECT_FALSE(accessibility().isAttributeSettable(element, AXAttribute::role).value);
    const ElementState state = accessibility().inspect(element);
    EXPECT_TRUE(state.isAnswered && state.isFocused && state.isEditable);
    EXPECT_FALSE(state.isPassword || state.isTerminal);
    EXPECT_TRUE(accessibility().inspectFocused(program.pid()).isEditable);
}

TEST_P(EveryEditor, placesTheFieldAndItsTextInsideTheWindow) {
    const Program program = start(sample);
    const auto element = waitForFocus(program);
    const QRectF window = desktop().x().geometry(program.window());
    const QRectF field(get<QPointF>(element, AXAttribute::position), get<QSizeF>(element, AXAttribute::size));
    EXPECT_GT(field.width(), 50);
    EXPECT_GT(field.height(), 10);
    EXPECT_TRUE(window.adjusted(-1, -1, 1, 1).contains(field));

    const auto bounds = accessibility().copyParameterizedAttributeValue(element, AXAttribute::boundsForRange,
                                                                        AXValue(TextRange{0, 2}));
    if (!GetParam().hasRangeRectangles) {
        EXPECT_EQ(bounds.error, AXError::failure);
        return;
    }
    ASSERT_TRUE(bounds.ok());
    const QRectF text = std::get<QRectF>(bounds.value);
    EXPECT_TRUE(field.adjusted(-8, -8, 8, 8).contains(text));
    EXPECT_GT(text.width(), 4);
    EXPECT_LT(text.width(), 60);
    const auto later = accessibility().copyParameterizedAttributeValue(element, AXAttribute::boundsForRange,
                                                                       AXValue(TextRange{3, 2}));
    ASSERT_TRUE(later.ok());
    EXPECT_GT(std::get<QRectF>(later.value).left(), text.left());
}

TEST_P(EveryEditor, isReadQuickly) {
    const Program program = start(sample);
    const auto first = waitForFocus(program);
    ASSERT_TRUE(first);
    const Taken whole = timed(101, [&] {
        const auto element = focused(program);
        ASSERT_TRUE(element);
        for (const auto attribute : {AXAttribute::role, AXAttribute::selectedTextRange,
                                     AXAttribute::selectedText, AXAttribute::value}) {
            EXPECT_TRUE(read(element, attribute).ok());
        }
    });
    const Taken one = timed(101, [&] { read(first, AXAttribute::role); });
    std::printf("%s: a read %.2f ms, one attribute %.2f ms\n", GetParam().name, whole.median, one.median);
    RecordProperty("readMicroseconds", static_cast<int>(whole.median * 1000));
    RecordProperty("attributeMicroseconds", static_cast<int>(one.median * 1000));
    EXPECT_LT(whole.undisturbed, 10 * patience);
    EXPECT_LT(one.undisturbed, 1 * patience);
}

using AtSpiText = AtSpiTest;

TEST_F(AtSpiText, givesNothingOfAPasswordField) {
    const Program editor =
        Program::qtEditor(desktop(), {u"--password"_s, u"geheim"_s, u"--focus"_s, u"password"_s});
    const Program dialog = Program::zenityPassword(desktop());
    Typist(desktop()).type(u"secret"_s);
    for (const Program* program : {&editor, &dialog}) {
        const auto element = waitForFocus(*program);
        EXPECT_EQ(get<QString>(element, AXAttribute::role), u"AXSecureTextField"_s);
        EXPECT_EQ(get<QString>(element, AXAttribute::subrole), u"AXSecureTextField"_s);
        EXPECT_EQ(read(element, AXAttribute::value).error, AXError::noValue);
        EXPECT_EQ(read(element, AXAttribute::selectedText).error, AXError::noValue);
        EXPECT_EQ(read(element, AXAttribute::selectedTextRange).error, AXError::noValue);
        EXPECT_EQ(accessibility()
                      .copyParameterizedAttributeValue(element, AXAttribute::boundsForRange,
                                                       AXValue(TextRange{0, 1}))
                      .error,
                  AXError::noValue);
        for (const auto attribute :
             {AXAttribute::value, AXAttribute::selectedText, AXAttribute::selectedTextRange}) {
            const auto settable = accessibility().isAttributeSettable(element, attribute);
            EXPECT_TRUE(settable.ok());
            EXPECT_FALSE(settable.value);
        }
        EXPECT_NE(set(element, AXAttribute::value, u"x"_s), AXError::success);
        EXPECT_NE(set(element, AXAttribute::selectedText, u"x"_s), AXError::success);
        EXPECT_NE(select(element, 0, 1), AXError::success);
        EXPECT_TRUE(accessibility().inspect(element).isPassword);
    }
}

TEST_F(AtSpiText, doesNotWriteIntoAReadOnlyField) {
    const Program program = Program::qtEditor(desktop(), {u"--text"_s, u"fixed"_s, u"--read-only"_s});
    const auto element = waitForFocus(program);
    EXPECT_EQ(value(element), u"fixed"_s);
    EXPECT_FALSE(accessibility().isAttributeSettable(element, AXAttribute::value).value);
    EXPECT_EQ(set(element, AXAttribute::value, u"x"_s), AXError::attributeUnsupported);
    EXPECT_EQ(set(element, AXAttribute::selectedText, u"x"_s), AXError::attributeUnsupported);
    EXPECT_EQ(value(element), u"fixed"_s);
    EXPECT_EQ(select(element, 1, 2), AXError::success) << "but its text can be selected";
    EXPECT_FALSE(accessibility().inspect(element).isEditable);
}

TEST_F(AtSpiText, saysThatAWriteFailedWhenTheFieldChangesWhatIsWritten) {
    const Program program = Program::qtEditor(desktop(), {u"--line"_s, u"one"_s, u"--focus"_s, u"line"_s});
    const auto element = waitForFocus(program);
    // Half a pair can't travel; what arrives is a replacement character.
    EXPECT_EQ(set(element, AXAttribute::value, QString(QChar(0xD83D))), AXError::cannotComplete);
}

TEST_F(AtSpiText, refusesValuesOfTheWrongKind) {
    const Program program = Program::zenityEntry(desktop(), u"text"_s);
    const auto element = waitForFocus(program);
    EXPECT_EQ(set(element, AXAttribute::value, true), AXError::illegalArgument);
    EXPECT_EQ(set(element, AXAttribute::selectedTextRange, u"x"_s), AXError::illegalArgument);
    EXPECT_EQ(set(nullptr, AXAttribute::value, u"x"_s), AXError::illegalArgument);
    EXPECT_EQ(read(nullptr, AXAttribute::value).error, AXError::illegalArgument);
    EXPECT_EQ(read(element, AXAttribute::windows).error, AXError::attributeUnsupported);
    EXPECT_EQ(read(accessibility().applicationElement(program.pid()), AXAttribute::value).error,
              AXError::attributeUnsupported);
    EXPECT_EQ(value(element), u"text"_s);
}

TEST_F(AtSpiText, knowsAWindowByItsTitleAndFrame) {
    const Program program =
        Program::qtEditor(desktop(), {u"--title"_s, u"标题 \U0001F600"_s, u"--windows"_s, u"2"_s});
    waitForFocus(program);
    const auto application = accessibility().applicationElement(program.pid());
    ASSERT_TRUE(waitUntil(10, [&] { return program.windows().size() == 2; }));
    ASSERT_TRUE(desktop().x().activate(program.window()));
    const auto window = get<AXElementRef>(application, AXAttribute::focusedWindow);
    EXPECT_EQ(get<QString>(window, AXAttribute::role), u"AXWindow"_s);
    EXPECT_EQ(get<QString>(window, AXAttribute::title), desktop().x().title(program.window()));
    const QRectF frame(get<QPointF>(window, AXAttribute::position), get<QSizeF>(window, AXAttribute::size));
    EXPECT_TRUE(frame.contains(QRectF(desktop().x().geometry(program.window()))));

    const auto all = get<std::vector<AXElementRef>>(application, AXAttribute::windows);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_TRUE(all.front()->isEqual(*window)) << "the topmost first";
    EXPECT_FALSE(all.back()->isEqual(*window));
    EXPECT_TRUE(get<AXElementRef>(application, AXAttribute::focusedWindow)->isEqual(*window));
}

}  // namespace
}  // namespace veltrin
