// Fields of web pages that must be left alone.
#include "desktop/matrix/FieldMatrix.h"
#include "support/Slowdown.h"
#include "support/desktop/Waiting.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

const QString usersClipboard = u"the user's own"_s;

class GuardedField : public testing::TestWithParam<const char*> {
protected:
    MatrixWorld& world() { return MatrixWorld::shared(); }
    FieldApplication& browser() { return world().application(QString::fromLatin1(GetParam())); }

    /// Gives the field text and focus, and returns its element when the browser has told of it.
    AXElementRef focusOn(const QString& field, const QString& text) {
        EXPECT_TRUE(world().x().activate(browser().window(), 5 * patience));
        // Out of whatever has the focus, so that there is news of the one that gets it.
        browser().field(u"textarea"_s).set({u"before"_s, 0, 0});
        browser().field(field).set({text, 0, text.size()});
        AXElementRef element;
        waitUntil(5 * patience, [&] {
            element = focusedElement(world().text.accessibility, browser().process());
            if (!element) return false;
            const ElementState state = world().text.accessibility.inspect(element);
            const bool isPassword = field == u"password";
            return state.isFocused && state.isPassword == isPassword && (isPassword || !state.isEditable);
        });
        return element;
    }

    void expectWritingRefused(const QString& field, const ExternalTextReadResult& read) {
        const FieldState before = browser().field(field).state();
        world().clipboard.ownText(usersClipboard);
        for (const bool replaceAll : {false, true}) {
            EXPECT_FALSE(world().text.writeback.apply(u"new"_s, read, replaceAll).success);
            EXPECT_FALSE(world().text.directWriteback.apply(u"new"_s, read, replaceAll).success);
        }
        EXPECT_EQ(browser().field(field).state(), before);
        EXPECT_EQ(world().clipboard.text(), usersClipboard);
        EXPECT_EQ(world().x().keysDown(), 0);
    }
};

// One after the other: each is started once.
INSTANTIATE_TEST_SUITE_P(Chromium, GuardedField, testing::Values("chromium"));
INSTANTIATE_TEST_SUITE_P(Firefox, GuardedField, testing::Values("firefox"));

TEST_P(GuardedField, aPasswordIsReadByNoRoad) {
    const AXElementRef element = focusOn(u"password"_s, u"geheim"_s);
    ASSERT_TRUE(element);
    AtSpiAccessibility& accessibility = world().text.accessibility;
    ASSERT_TRUE(accessibility.inspect(element).isPassword);
    for (const auto attribute :
         {AXAttribute::value, AXAttribute::selectedText, AXAttribute::selectedTextRange}) {
        EXPECT_EQ(accessibility.copyAttributeValue(element, attribute).error, AXError::noValue);
        EXPECT_FALSE(accessibility.isAttributeSettable(element, attribute).value);
    }
    EXPECT_FALSE(world().text.reader.characterBeforeCursor());
    ExternalTextReadResult read = world().text.reader.readFocusedText();
    EXPECT_EQ(read.source, ExternalTextReadResult::Source::none);
    EXPECT_EQ(read.text, QString());
    EXPECT_EQ(read.fullText, QString());

    read.element = element;
    expectWritingRefused(u"password"_s, read);
    PostTarget target{read.processIdentifier, read.targetWindow, element};
    for (const qint64 key : {KeyCode::c, KeyCode::v, KeyCode::a})
        EXPECT_FALSE(world().text.poster.post({key, KeyFlags::command, target, false}).posted);
}

TEST_P(GuardedField, aReadOnlyFieldIsReadAndNotPastedInto) {
    const AXElementRef element = focusOn(u"readonly"_s, u"fixed text"_s);
    ASSERT_TRUE(element);
    EXPECT_FALSE(world().text.accessibility.inspect(element).isEditable);
    ExternalTextReadResult read;
    EXPECT_TRUE(waitUntil(3 * patience, [&] {
        read = world().text.reader.readFocusedText();
        return read.text == u"fixed text";
    }));
    expectWritingRefused(u"readonly"_s, read);
}

}  // namespace
}  // namespace veltrin
