#include "desktop/app/FocusWatch.h"
#include "desktop/road/RoadTest.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

using namespace ServiceBehaviours;

constexpr QSize choiceSize(310, 248);

/// The choice of the program itself over real applications.
class Choice : public RoadTest {
protected:
    static inline const QString better = QStringLiteral("Better words, in order.");
    static inline const QString requested =
        QStringLiteral("UI showOptimizeChoicePanel requested: 优化提示词 anchor: ");

    void SetUp() override {
        RoadTest::SetUp();
        serve(success(better));
    }

    /// The choice's window, on the screen from its top left; null when there is none.
    QRect choice() {
        for (const QRect& panel : panels()) {
            if (panel.size() == choiceSize) return panel;
        }
        return {};
    }
    bool waitForChoice() {
        return waitUntil(5, [&] { return !choice().isNull(); });
    }
    bool waitForNoChoice() {
        return waitUntil(5, [&] { return choice().isNull(); });
    }
    void tapOptimize() {
        typist().pause(0.6);
        typist().tapSpace(2, 0.13);
        ASSERT_TRUE(waitForChoice()) << qPrintable(log());
        ASSERT_TRUE(waitUntil(5, [&] { return isDrawn(choice()); }));
    }
    /// Something stands where its title stands. Until then the program may be too busy for a key.
    bool isDrawn(const QRect& panel) {
        const QImage title = x().image(QRect(panel.x() + 12, panel.y() + 12, 120, 24));
        for (int at = 0; at < title.width() * title.height(); ++at) {
            if (title.pixel(at % title.width(), at / title.width()) != title.pixel(0, 0)) return true;
        }
        return false;
    }
    /// Presses a key of the choice until it closes. A key that the program on a slow machine does not answer
    /// in time is typed instead, and taken back here.
    void press(const QString& key) {
        for (int attempt = 0; attempt < 3; ++attempt) {
            typist().chord(key);
            if (waitUntil(2, [&] { return choice().isNull(); })) return;
            if (key != u"Escape") typist().chord(QStringLiteral("BackSpace"));
        }
        ADD_FAILURE() << qPrintable(key) << " does not close the choice";
    }
    /// The anchor of the latest choice as the program logs it: from the bottom left.
    QRectF loggedAnchor() const {
        static const QRegularExpression line(
            QStringLiteral("UI showOptimizeChoicePanel requested: 优化提示词 anchor: "
                           "\\(([-\\d.]+), ([-\\d.]+), ([-\\d.]+), ([-\\d.]+)\\)"));
        QRectF found;
        auto matches = line.globalMatch(log());
        while (matches.hasNext()) {
            const auto match = matches.next();
            found = QRectF(match.captured(1).toDouble(), match.captured(2).toDouble(),
                           match.captured(3).toDouble(), match.captured(4).toDouble());
        }
        return found;
    }
    /// Where the choice belongs below a rectangle of the screen, kept inside it by its margin.
    QPoint placeBelow(const QRectF& rect) {
        const QSize screen(x().screen().width_in_pixels, x().screen().height_in_pixels);
        const double left = rect.center().x() - choiceSize.width() / 2.0;
        const double top = rect.bottom() + 10;
        return {
            static_cast<int>(std::lround(std::clamp(left, 12.0, screen.width() - choiceSize.width() - 12.0))),
            static_cast<int>(
                std::lround(std::clamp(top, 12.0, screen.height() - choiceSize.height() - 12.0)))};
    }
    static bool isNear(QPoint a, QPoint b, int distance = 2) {
        return std::abs(a.x() - b.x()) <= distance && std::abs(a.y() - b.y()) <= distance;
    }
    /// The caret behind the last character that was typed.
    QRect caretOf(const ProbedField& field) {
        const qsizetype caret = atspi().read(field).caret;
        const QRect before = atspi().rangeExtents(field, caret - 1, caret);
        return QRect(before.right() + 1, before.y(), 2, before.height());
    }
    /// Waits for the read, the model and the write, with the clipboard given back.
    void expectWritten(const ProbedField& field, const QString& text) {
        EXPECT_EQ(atspi().waitForText(field, text, 10), text) << qPrintable(log());
    }
};

TEST_F(Choice, everyKeyOfItChoosesItsActionAndNeverReachesTheEditor) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    FocusWatch focus(desktop(), editor.window());
    const std::vector<std::pair<const char*, const char*>> keys{
        {"1", "slot: 1 title: 提示词优化"},     {"Return", "slot: 1 title: 提示词优化"},
        {"space", "slot: 1 title: 提示词优化"}, {"2", "slot: 2 title: 添加表情"},
        {"3", "slot: 3 title: 更专业"},         {"4", "slot: 4 title: 更简洁"}};
    std::size_t runs = 0;
    for (const auto& [key, chosen] : keys) {
        SCOPED_TRACE(key);
        atspi().setText(field, QString());
        const QString typed = QStringLiteral("words %1").arg(++runs);
        typeSentence(typed);
        tapOptimize();
        EXPECT_EQ(atspi().text(field), typed + QStringLiteral("  "));
        const int before = logCount(QString::fromUtf8(chosen));
        press(QString::fromUtf8(key));
        EXPECT_TRUE(waitForNoChoice());
        EXPECT_TRUE(waitUntil(2, [&] { return logCount(QString::fromUtf8(chosen)) == before + 1; }));
        expectWritten(field, better);
        ASSERT_EQ(generations().size(), runs);
        EXPECT_TRUE(generations().back().prompt().contains(typed + QStringLiteral("  \n")));
    }
    EXPECT_EQ(focus.losses(), QStringList());
    EXPECT_EQ(x().keysDown(), 0);
    EXPECT_TRUE(waitUntil(5, [&] { return panels().isEmpty(); }));
}

TEST_F(Choice, itStandsBelowTheCaretAndFollowsTheTypingAndTheWindow) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    x().moveResize(editor.window(), QRect(300, 60, 640, 300));
    const ProbedField field = atspi().waitForField(editor);
    FocusWatch focus(desktop(), editor.window());
    typeSentence(QStringLiteral("a sentence that brings the caret away from the left"));
    tapOptimize();

    const QRectF anchor = loggedAnchor();
    const double height = x().screen().height_in_pixels;
    const QRectF onScreen(anchor.x(), height - anchor.bottom(), anchor.width(), anchor.height());
    EXPECT_EQ(choice().topLeft(), placeBelow(onScreen)) << qPrintable(log());
    const QRect caret = caretOf(field);
    EXPECT_TRUE(isNear(choice().topLeft(), placeBelow(QRectF(caret)), 12))
        << choice().x() << "," << choice().y() << " for the caret at " << caret.x() << "," << caret.y();

    const QPoint before = choice().topLeft();
    typist().type(QStringLiteral("words"));
    EXPECT_TRUE(atspi().waitForTextContaining(field, QStringLiteral("  words")).contains(u"  words"));
    EXPECT_TRUE(waitUntil(2, [&] { return choice().x() > before.x() + 15; }));
    EXPECT_EQ(choice().y(), before.y());

    const QPoint beside = choice().topLeft();
    x().moveResize(editor.window(), QRect(340, 120, 640, 300));
    EXPECT_TRUE(waitUntil(2, [&] { return isNear(choice().topLeft(), beside + QPoint(40, 60)); }))
        << choice().x() << "," << choice().y();
    EXPECT_EQ(focus.losses(), QStringList());
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
}

TEST_F(Choice, escapeClosesItAndLettersAndChordsPass) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    FocusWatch focus(desktop(), editor.window());
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    typist().type(QStringLiteral("a5"));
    EXPECT_EQ(atspi().waitForText(field, QStringLiteral("words  a5")), QStringLiteral("words  a5"));
    EXPECT_FALSE(choice().isNull());
    typist().chord(QStringLiteral("Ctrl+z"));
    EXPECT_TRUE(waitUntil(3, [&] { return atspi().text(field).size() < 9; }));
    EXPECT_FALSE(choice().isNull());
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
    EXPECT_TRUE(log().contains(u"Optimize panel dismissed by Escape"));
    EXPECT_TRUE(generations().empty());
    // Its keys are the editor's again.
    const QString left = atspi().text(field);
    typist().type(QStringLiteral("1/ 2\n3"));
    EXPECT_EQ(atspi().waitForText(field, left + QStringLiteral("1/ 2\n3")), left + QStringLiteral("1/ 2\n3"));
    EXPECT_EQ(focus.losses(), QStringList());
}

TEST_F(Choice, theSlashKeyAsksForCommands) {
    startProgram();
    serve(success(QStringLiteral(
        R"([{"command":"/review","category":"slash-command","explanation":"ready","confidence":"high"}])")));
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("git push"));
    tapOptimize();
    press(QStringLiteral("slash"));
    expectWritten(field, QStringLiteral("★ /review — ready"));
}

TEST_F(Choice, aRowIsChosenByTheMouseAndTheEditorKeepsTheFocus) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    FocusWatch focus(desktop(), editor.window());
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    typist().pause(0.3);
    const QRect panel = choice();
    for (int y = panel.top() + 40; y < panel.bottom() - 10 && !choice().isNull(); y += 10) {
        typist().click(QPoint(panel.center().x(), y));
        typist().pause(0.05);
        if (log().contains(u"Memory action selected:")) break;
    }
    EXPECT_TRUE(waitForNoChoice());
    expectWritten(field, better);
    EXPECT_EQ(focus.losses(), QStringList());
}

TEST_F(Choice, theApplicationClosedUnderItLeavesItToEscape) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    atspi().waitForField(editor);
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    editor.kill();
    typist().pause(0.5);
    EXPECT_FALSE(choice().isNull());
    press(QStringLiteral("1"));
    EXPECT_TRUE(waitForNoChoice());
    EXPECT_TRUE(waitForLog(QStringLiteral("UI showFailureCard requested: 没有读到可处理的文本"), 10))
        << qPrintable(log());
    EXPECT_TRUE(generations().empty());
    EXPECT_TRUE(waitUntil(5, [&] { return panels().isEmpty(); }));
}

TEST_F(Choice, anApplicationThatHangsUnderItCostsNoKey) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    editor.stop();
    typist().pause(1);
    EXPECT_FALSE(choice().isNull());
    press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitForNoChoice());
    editor.resume();
    EXPECT_EQ(atspi().waitForText(field, QStringLiteral("words  ")), QStringLiteral("words  "));
}

TEST_F(Choice, chromiumGetsItsWordsAndKeepsTheFocus) {
    startProgram();
    Program browser(desktop(),
                    {QStringLiteral("chromium"), QStringLiteral("--no-sandbox"),
                     QStringLiteral("--user-data-dir=") + desktop().file(QStringLiteral("chromium")),
                     QStringLiteral("--no-first-run"), QStringLiteral("--no-default-browser-check"),
                     QStringLiteral("--disable-gpu"), QStringLiteral("--disable-background-networking"),
                     QStringLiteral("--disable-component-update"), QStringLiteral("--disable-sync"),
                     QStringLiteral("--disable-dev-shm-usage"), QStringLiteral("--password-store=basic"),
                     QStringLiteral("--window-size=700,500"), QStringLiteral("--window-position=40,40"),
                     QStringLiteral("--force-renderer-accessibility"),
                     QStringLiteral("--app=data:text/html,<textarea autofocus rows=8 cols=60></textarea>")});
    browser.waitForWindow(30, QStringLiteral("chromium"));
    typist().pause(1);
    // The field answers once the browser has built its tree.
    const QString words = QStringLiteral("good morning");
    typeSentence(words);
    FocusWatch focus(desktop(), browser.window());
    tapOptimize();
    press(QStringLiteral("1"));
    ASSERT_TRUE(waitForGeneration(1, 15)) << qPrintable(log());
    EXPECT_TRUE(generations().front().prompt().contains(words + QStringLiteral("  \n")))
        << qPrintable(generations().front().prompt());
    EXPECT_TRUE(waitForLog(QStringLiteral("ActionPipeline writeback:"), 15)) << qPrintable(log());
    EXPECT_TRUE(log().contains(u"success: true")) << qPrintable(log());
    EXPECT_EQ(focus.losses(), QStringList());
    clipboard().disown();
    typist().pause(1);
    typist().chord(QStringLiteral("Ctrl+a"));
    typist().chord(QStringLiteral("Ctrl+c"));
    EXPECT_TRUE(waitUntil(5, [&] { return clipboard().text() == better; }))
        << qPrintable(clipboard().text().value_or(QString()));
}

TEST_F(Choice, aTerminalIsReadAndItsKeysAreKeptFromItsProgram) {
    startProgram();
    const QString received = desktop().file(QStringLiteral("received"));
    Program terminal(desktop(),
                     {QStringLiteral("lxterminal"), QStringLiteral("--no-remote"), QStringLiteral("-e"),
                      QStringLiteral("sh -c 'stty -icanon; cat -u > ") + received + QStringLiteral("'")});
    terminal.waitForWindow(20, QStringLiteral("lxterminal"));
    typist().pause(0.5);
    typeSentence(QStringLiteral("fix the build"));
    FocusWatch focus(desktop(), terminal.window());
    tapOptimize();
    press(QStringLiteral("2"));
    ASSERT_TRUE(waitForGeneration(1, 15)) << qPrintable(log());
    EXPECT_TRUE(generations().front().prompt().contains(u"fix the build"));
    EXPECT_TRUE(waitForNoChoice());
    EXPECT_EQ(focus.losses(), QStringList());
    QFile file(received);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    EXPECT_TRUE(bytes.startsWith("fix the build  ")) << bytes.constData();
    EXPECT_FALSE(bytes.contains('2')) << bytes.constData();
}

TEST_F(Choice, withoutAWindowManagerItOpensAndChoosesToo) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("words"));
    desktop().stopWindowManager();
    ASSERT_TRUE(x().activate(editor.window()));
    tapOptimize();
    press(QStringLiteral("1"));
    expectWritten(field, better);
    desktop().startWindowManager();
}

// MARK: What the user is told

struct Failing {
    const char* name;
    ServiceBehaviour behaviour;
    const char* card;
};

TEST_F(Choice, everyFailureOfTheModelGetsItsCardAndLeavesTheText) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    clipboard().ownText(QStringLiteral("mine"));
    typeSentence(QStringLiteral("words"));
    const QString text = QStringLiteral("words  ");
    const std::vector<Failing> rows{
        {"a status", error(500), "优化失败 请重试或切换模型"},
        {"another shape", plain(200, R"({"unexpected":true})"), "优化失败 请重试或切换模型"},
        {"no text", empty(), "优化失败 请重试或切换模型"},
        {"instructions", leaking(), "优化失败 请重试或切换模型"},
        {"a reset", reset(), "优化失败 请重试或切换模型"},
    };
    for (const Failing& row : rows) {
        SCOPED_TRACE(row.name);
        atspi().setText(field, QStringLiteral("words"));
        atspi().setCaret(field, 5);
        serve(row.behaviour);
        tapOptimize();
        const QString card = QStringLiteral("UI showFailureCard requested: ") + QString::fromUtf8(row.card);
        const int before = logCount(card);
        press(QStringLiteral("1"));
        EXPECT_TRUE(waitUntil(15, [&] { return logCount(card) == before + 1; })) << qPrintable(log());
        EXPECT_TRUE(waitUntil(2, [&] { return panels().contains(QRect(490, 358, 300, 84)); }));
        EXPECT_TRUE(waitUntil(5, [&] { return panels().isEmpty(); }));
        EXPECT_EQ(atspi().text(field), text);
        EXPECT_EQ(clipboard().text(), QStringLiteral("mine"));
        EXPECT_EQ(x().activeWindow(), editor.window());
    }
}

TEST_F(Choice, aResultWithoutItsTargetIsCopiedAndSaid) {
    startProgram();
    serve(slow(1.5, success(better)));
    Program other = Program::qtEditor(desktop(), {QStringLiteral("--text"), QStringLiteral("other")});
    atspi().waitForField(other, QStringLiteral("Text"));
    Program editor = Program::mousepad(desktop());
    const ProbedField field = atspi().waitForField(editor);
    typeSentence(QStringLiteral("words"));
    tapOptimize();
    press(QStringLiteral("1"));
    ASSERT_TRUE(waitForGeneration());
    ASSERT_TRUE(x().activate(other.window()));
    EXPECT_TRUE(waitForLog(QStringLiteral("UI showPanel requested: 已复制 优化后的内容：") + better, 15))
        << qPrintable(log());
    EXPECT_EQ(clipboard().text(), better);
    EXPECT_EQ(atspi().text(field), QStringLiteral("words  "));
}

TEST_F(Choice, anEmptyFieldGetsItsCard) {
    startProgram();
    Program editor = Program::mousepad(desktop());
    atspi().waitForField(editor);
    tapOptimize();
    press(QStringLiteral("1"));
    EXPECT_TRUE(waitForLog(
        QStringLiteral("UI showFailureCard requested: 没有读到可处理的文本 请先选中或点进文本框"), 10))
        << qPrintable(log());
    EXPECT_TRUE(generations().empty());
}

// MARK: Screens

/// A desktop of its own with screens of its own.
class ChoiceOnScreens : public testing::Test {
protected:
    void begin(const QList<QRect>& monitors, const QRect& window) {
        DesktopOptions options;
        options.monitors = monitors;
        desktop_.emplace(options);
        service_.setDefault(success(QStringLiteral("Better.")));
        const QString folder = desktop_->configHome() + QStringLiteral("/Veltrin");
        QDir().mkpath(folder);
        QFile file(folder + QStringLiteral("/preferences.json"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(Json(Json::Object{{QStringLiteral("ollama_endpoint"), service_.url()}}).serialized());
        file.close();
        program_.emplace(*desktop_,
                         QStringList{QStringLiteral(VELTRIN_BINARY_DIR "/bin/veltrin"),
                                     QStringLiteral("--log-file"), desktop_->file(QStringLiteral("v.log"))});
        ASSERT_TRUE(waitUntil(20, [&] {
            return program_->output().contains("SpaceGestureEngine started successfully");
        })) << program_->output().constData();
        editor_.emplace(Program::mousepad(*desktop_));
        desktop_->x().moveResize(editor_->window(), window);
        AtSpiProbe atspi(*desktop_);
        atspi.waitForField(*editor_);
        Typist typist(*desktop_);
        typist.type(QStringLiteral("words"));
        typist.pause(0.7);
        typist.tapSpace(2, 0.13);
    }
    QRect panel(QSize size) {
        QRect found;
        waitUntil(5, [&] {
            for (const xcb_window_t window : desktop_->x().rootChildren()) {
                const QRect geometry = desktop_->x().geometry(window);
                if (geometry.size() == size && desktop_->x().processOf(window) == program_->pid())
                    found = geometry;
            }
            return !found.isNull();
        });
        return found;
    }
    std::optional<RealDesktop> desktop_;
    ModelService service_;
    std::optional<Program> program_;
    std::optional<Program> editor_;
};

TEST_F(ChoiceOnScreens, theChoiceStaysOnTheScreenOfItsAnchor) {
    begin({QRect(0, 0, 1000, 700), QRect(1000, 0, 800, 600)}, QRect(1010, 60, 500, 300));
    const QRect choice = panel(choiceSize);
    ASSERT_FALSE(choice.isNull()) << program_->output().constData();
    EXPECT_TRUE(QRect(1000, 0, 800, 600).adjusted(12, 12, -12, -12).contains(choice))
        << choice.x() << "," << choice.y();
    Typist(*desktop_).chord(QStringLiteral("Escape"));
}

TEST_F(ChoiceOnScreens, atTheBottomOfAScreenItKeepsItsMargin) {
    begin({QRect(0, 0, 1000, 600), QRect(1000, 0, 800, 600)}, QRect(300, 450, 500, 120));
    const QRect choice = panel(choiceSize);
    ASSERT_FALSE(choice.isNull()) << program_->output().constData();
    EXPECT_EQ(choice.bottom() + 1, 600 - 12);
    Typist(*desktop_).chord(QStringLiteral("Escape"));
}

}  // namespace
}  // namespace veltrin
