#include "desktop/road/RoadTest.h"
#include "support/fields/FieldApplications.h"

#include <QFile>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr QSize iconSize{58, 58};
constexpr QSize popupSize{300, 244};
// Where the popup's parts are, from its upper left corner.
constexpr QPoint saveButton{55, 216};
constexpr QPoint replyButton{150, 216};

/// The whole way of a selection: the mouse, the icon, its popup, and what the popup's buttons leave behind.
class SelectionRoad : public RoadTest {
protected:
    void SetUp() override {
        RoadTest::SetUp();
        startProgram();
        EXPECT_TRUE(waitForLog(u"SmartSelect mouse event tap created"_s, 10)) << qPrintable(log());
        // The message of the start stands in the middle of the screen.
        EXPECT_TRUE(waitUntil(20, [this] { return panels().isEmpty(); }));
    }

    QRect panelOf(QSize size) {
        for (const QRect& panel : panels()) {
            if (panel.size() == size) return panel;
        }
        return {};
    }
    QRect waitForPanel(QSize size) {
        QRect found;
        EXPECT_TRUE(waitUntil(10, [&] { return !(found = panelOf(size)).isNull(); })) << qPrintable(log());
        return found;
    }
    /// Double clicks a place and opens the popup by its icon, which leaves after three seconds.
    QRect openPopup(QPoint word) {
        typist().click(word, 2);
        const QRect icon = waitForPanel(iconSize);
        typist().click(icon.center());
        return waitForPanel(popupSize);
    }
    /// The newest prompt of the library as it stands on the disk.
    QString savedPrompt() {
        QFile file(desktop().dataHome() + u"/Veltrin/prompts.json"_s);
        if (!file.open(QIODevice::ReadOnly)) return {};
        const auto prompts = Json::tryParse(file.readAll());
        const Json::Array* all = prompts ? prompts->array() : nullptr;
        const Json* content = all == nullptr || all->empty() ? nullptr : all->front().find(u"content");
        return content == nullptr ? QString() : content->toString().value_or(QString());
    }
    bool waitForClipboard(const QString& text) {
        return waitUntil(10, [&] { return clipboard().text() == text; });
    }
};

TEST_F(SelectionRoad, aWordOfAPageIsRepliedTo) {
    QFile page(desktop().file(u"words.html"_s));
    ASSERT_TRUE(page.open(QIODevice::WriteOnly));
    page.write(
        "<!DOCTYPE html><meta charset=utf-8><title>Words</title>"
        "<body style='background:#ccffcc;padding:40px;font:32px sans-serif'>" +
        QByteArray("wording ").repeated(300));
    page.close();
    Program browser(desktop(), chromiumCommand(desktop(), u"file://"_s + page.fileName()));
    const QRect window = x().geometry(browser.waitForWindow(60, u"chromium"_s));
    const QPoint margin(window.left() + 12, window.center().y());
    ASSERT_TRUE(waitUntil(60, [&] { return x().pixel(margin) == QColor(0xcc, 0xff, 0xcc); }));
    // Between two lines nothing is selected, and a browser that has just come up may be slow to tell.
    QRect popup;
    for (int row = 0; row < 12 && popup.isNull(); ++row) {
        typist().click(window.center() + QPoint(7 * row, 11 * row), 2);
        QRect icon;
        if (!waitUntil(4, [&] { return !(icon = panelOf(iconSize)).isNull(); })) continue;
        typist().click(icon.center());
        waitUntil(4, [&] { return !(popup = panelOf(popupSize)).isNull(); });
    }
    ASSERT_FALSE(popup.isNull()) << qPrintable(log());
    typist().click(popup.topLeft() + replyButton);
    ASSERT_TRUE(waitForGeneration(1, 20)) << qPrintable(log());
    EXPECT_TRUE(generations().back().prompt().contains(u"wording"));
    EXPECT_TRUE(waitForClipboard(answer));
}

class SelectionRoadInMousepad : public SelectionRoad {
protected:
    void SetUp() override {
        SelectionRoad::SetUp();
        editor = std::make_unique<Program>(Program::mousepad(desktop(), text));
        x().moveResize(editor->window(), QRect(120, 80, 640, 320));
        field = fieldInFront(*editor);
        EXPECT_TRUE(waitUntil(10, [this] { return word().top() > 80 && word().left() > 120; }));
    }
    void TearDown() override {
        editor.reset();
        SelectionRoad::TearDown();
    }
    QRect word() { return atspi().rangeExtents(field, 6, 11); }

    const QString text = u"alpha bravo charlie delta"_s;
    std::unique_ptr<Program> editor;
    ProbedField field;
};

TEST_F(SelectionRoadInMousepad, aReplyEndsOnTheClipboardAndNowhereElse) {
    const QRect popup = openPopup(word().center());
    EXPECT_TRUE(log().contains(u"SmartSelect show: reason: multiClick"));
    typist().click(popup.topLeft() + replyButton);
    ASSERT_TRUE(waitForGeneration());
    EXPECT_TRUE(generations().back().prompt().contains(u"动作：reply"));
    EXPECT_TRUE(generations().back().prompt().contains(u"\"\"\"\nbravo\n\"\"\""));
    EXPECT_TRUE(waitForClipboard(answer));
    EXPECT_EQ(atspi().text(field), text);
    EXPECT_EQ(atspi().read(field).selectedText(), u"bravo"_s) << "and so is the selection";
    EXPECT_EQ(x().activeWindow(), editor->window());
    EXPECT_EQ(panelOf(popupSize), popup) << "the result stays";
    typist().click({900, 600});
    EXPECT_TRUE(waitUntil(5, [this] { return panels().isEmpty(); })) << "until a click outside";
}

TEST_F(SelectionRoadInMousepad, savingLandsAtTheHeadOfTheLibrary) {
    clipboard().ownText(u"mine"_s);
    const QRect popup = openPopup(word().center());
    typist().click(popup.topLeft() + saveButton);
    EXPECT_TRUE(waitUntil(5, [this] { return savedPrompt() == u"bravo"; })) << qPrintable(savedPrompt());
    EXPECT_TRUE(waitUntil(5, [this] { return panels().isEmpty(); }));
    EXPECT_EQ(clipboard().text(), u"mine"_s);
}

/// Accessibility tells the selection's place from the top of the screen, and the icon takes that as a height
/// above its bottom: meant so. With VELTRIN_PICTURE it is drawn there.
TEST_F(SelectionRoadInMousepad, theIconStandsWhereAccessibilitysPointIsCountedFromBelow) {
    const QRect selected = word();
    typist().click(selected.center(), 2);
    const QRect icon = waitForPanel(iconSize);
    const int height = x().screen().height_in_pixels;
    const QPoint expected(selected.right() + 1 - 29, height - (selected.top() - 12));
    EXPECT_LE((icon.topLeft() - expected).manhattanLength(), 8)
        << icon.x() << "," << icon.y() << " for the word at " << selected.x() << "," << selected.y();
    const QString picture = qEnvironmentVariable("VELTRIN_PICTURE");
    if (!picture.isEmpty()) {
        typist().pause(0.4);
        EXPECT_TRUE(x().screenshot(picture));
    }
}

TEST_F(SelectionRoadInMousepad, theEditorMayExitWithThePopupOpen) {
    const QRect popup = openPopup(word().center());
    editor->kill();
    typist().click(popup.topLeft() + replyButton);
    EXPECT_TRUE(waitForClipboard(answer));
    EXPECT_EQ(panelOf(popupSize), popup);
}

TEST_F(SelectionRoadInMousepad, theProgramEndsWithThePopupOpen) {
    serve(ServiceBehaviours::silent());
    const QRect popup = openPopup(word().center());
    typist().click(popup.topLeft() + replyButton);
    ASSERT_TRUE(waitForGeneration());
    program().terminate();
    EXPECT_TRUE(program().waitForExit(10));
    EXPECT_GE(program().exitStatus().value_or(-1), 0) << "ended by a signal";
}

}  // namespace
}  // namespace veltrin
