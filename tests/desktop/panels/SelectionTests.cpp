#include "desktop/panels/PanelWatch.h"
#include "support/Slowdown.h"
#include "support/desktop/DesktopTest.h"
#include "support/desktop/PanelHost.h"

#include <cstdio>
#include <memory>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr int screenHeight = 800;
constexpr QSize iconSize{58, 58};
constexpr QSize popupSize{300, 244};
/// The icon below a point at (600, 500) from the bottom left, and the popup below that.
const QByteArray point = "600 500 ";
constexpr QRect iconPlace{571, screenHeight - 488, 58, 58};
constexpr QRect popupPlace{450, screenHeight - 178 - 244, 300, 244};
// Where the popup's parts are, from its upper left corner.
constexpr QPoint closeButton{276, 24};
constexpr QPoint saveButton{55, 216};
constexpr QPoint replyButton{150, 216};
constexpr QPoint organizeButton{245, 216};
constexpr QPoint retryButton{60, 170};
constexpr QPoint copyButton{150, 170};
constexpr QPoint header{180, 40};

QRect placeOf(const QByteArray& frame) {
    const QList<QByteArray> numbers = frame.split(' ');
    if (numbers.size() != 4) return {};
    const QSize size(numbers[2].toInt(), numbers[3].toInt());
    return {QPoint(numbers[0].toInt(), screenHeight - numbers[1].toInt() - size.height()), size};
}

class Selections : public DesktopTest {
protected:
    void SetUp() override {
        DesktopTest::SetUp();
        host_ = std::make_unique<PanelHost>(desktop());
    }
    void TearDown() override {
        host_.reset();
        DesktopTest::TearDown();
    }

    void showIcon(const QByteArray& text = "王欣：明天可以吗？|李然：可以。") {
        host_->ask("icon " + point + text);
    }
    /// Clicks the icon, wherever it is, and waits for the popup.
    void open() {
        typist().click(placeOf(host_->ask("iconFrame")).center());
        ASSERT_TRUE(waitUntil(5, [&] { return !host_->ask("popupFrame").isEmpty(); }));
        ASSERT_TRUE(waitUntil(5, [&] { return host_->windows().size() == 1; }));
    }
    void press(QPoint part) { typist().click(placeOf(host_->ask("popupFrame")).topLeft() + part); }
    QString shown(int part) const { return QString::fromUtf8(host_->ask("shown")).section(u'|', part, part); }
    bool waitForTitle(const QString& title) {
        return waitUntil(5, [&] { return shown(0) == title; });
    }

    std::unique_ptr<PanelHost> host_;
};

// MARK: The icon and the popup

TEST_F(Selections, theIconStandsBelowItsPointAndAClickOpensThePopup) {
    showIcon();
    EXPECT_EQ(host_->place(), iconPlace);
    EXPECT_EQ(placeOf(host_->ask("iconFrame")), iconPlace);
    open();
    EXPECT_EQ(host_->place(), popupPlace);
    EXPECT_EQ(host_->ask("iconFrame"), "");
    EXPECT_EQ(placeOf(host_->ask("popupFrame")), popupPlace);
    EXPECT_EQ(shown(1), u"对话 · 16 字"_s);
    EXPECT_TRUE(waitUntil(5, [&] { return shown(2) == u"对话识别"_s; }));
}

TEST_F(Selections, theIconIsRound) {
    Program editor = Program::qtEditor(desktop());
    x().moveResize(editor.window(), QRect(0, 0, 1280, screenHeight));
    const QPoint corner = iconPlace.topLeft() + QPoint(5, 5);
    ASSERT_TRUE(waitUntil(10, [&] { return x().pixel(corner) == QColor(Qt::white); }));
    host_->ask("dark");
    showIcon();
    const QPoint edge = iconPlace.topLeft() + QPoint(29, 1);
    EXPECT_TRUE(waitUntil(5, [&] { return x().pixel(edge).lightness() < 100; }));
    EXPECT_EQ(x().pixel(corner), QColor(Qt::white)) << "the corner belongs to what is below";
}

TEST_F(Selections, anUntouchedIconLeaves) {
    showIcon();
    EXPECT_TRUE(waitUntil(10, [&] { return host_->windows().isEmpty(); }));
    EXPECT_EQ(host_->ask("iconFrame"), "");
}

TEST_F(Selections, theForeignWindowKeepsTheFocusThroughout) {
    Program editor = Program::qtEditor(desktop());
    FocusWatch focus(desktop(), editor.window());
    host_->ask("model 好的");
    showIcon();
    open();
    press(replyButton);
    EXPECT_TRUE(waitForTitle(u"思考结果"_s));
    press(header);
    press(closeButton);
    EXPECT_TRUE(waitUntil(5, [&] { return host_->windows().isEmpty(); }));
    EXPECT_EQ(focus.losses(), 0);
    EXPECT_EQ(x().activeWindow(), editor.window());
    const ProbedField field = atspi().waitForField(editor);
    typist().type(u"still here"_s);
    EXPECT_EQ(atspi().waitForText(field, u"still here"_s), u"still here"_s);
}

TEST_F(Selections, theClosingButtonCloses) {
    showIcon();
    open();
    press(closeButton);
    EXPECT_TRUE(waitUntil(5, [&] { return host_->windows().isEmpty(); }));
    EXPECT_EQ(host_->ask("popupFrame"), "");
}

TEST_F(Selections, theApplicationBelowMayExitWithThePopupOpen) {
    {
        Program editor = Program::qtEditor(desktop());
        showIcon();
        open();
    }
    host_->ask("model 好的");
    press(organizeButton);
    EXPECT_TRUE(waitForTitle(u"思考结果"_s));
    EXPECT_EQ(host_->ask("clipboard"), "好的");
}

// MARK: What the buttons do

TEST_F(Selections, savingAcknowledgesAndLeaves) {
    showIcon("值得留下的一句");
    open();
    press(saveButton);
    EXPECT_TRUE(waitUntil(5, [&] { return host_->windows().isEmpty(); }));
    EXPECT_EQ(host_->ask("saved"), "值得留下的一句");
}

TEST_F(Selections, aReplyIsThoughtAboutAndCopied) {
    showIcon();
    open();
    host_->ask("hold");
    host_->ask("model 可以的，明天见。");
    press(replyButton);
    ASSERT_TRUE(waitForTitle(u"思考中"_s));
    press(replyButton);
    host_->ask("release");
    ASSERT_TRUE(waitForTitle(u"思考结果"_s));
    EXPECT_EQ(shown(1), u"已复制"_s);
    EXPECT_EQ(clipboard().text(), u"可以的，明天见。"_s);
}

TEST_F(Selections, aFailureCanBeTriedAgainOrItsTextCopied) {
    showIcon("原文");
    open();
    host_->ask("model");
    press(replyButton);
    ASSERT_TRUE(waitUntil(5, [&] { return shown(1) == u"需要处理"_s; }));
    press(copyButton);
    EXPECT_TRUE(waitUntil(5, [&] { return host_->ask("clipboard") == "原文"; }));
    host_->ask("model 第二次");
    press(retryButton);
    EXPECT_TRUE(waitForTitle(u"思考结果"_s));
    EXPECT_EQ(host_->ask("clipboard"), "第二次");
}

TEST_F(Selections, theThinkingStateCostsLittle) {
    showIcon();
    open();
    host_->ask("hold");
    host_->ask("model 好");
    press(replyButton);
    ASSERT_TRUE(waitForTitle(u"思考中"_s));
    // The last motion of its opening is over.
    typist().pause(0.5);
    const double start = monotonicSeconds();
    const long before = host_->ask("cpu").toLong();
    typist().pause(3);
    const double cost = static_cast<double>(host_->ask("cpu").toLong() - before) / 1000;
    const double share = cost / (monotonicSeconds() - start);
    std::printf("thinking takes %.1f %% of a core\n", 100 * share);
    EXPECT_LT(share, slowdown == 1 ? 0.05 : 1) << "of a core";
    host_->ask("release");
}

// MARK: Dragging

TEST_F(Selections, theMouseDragsThePopup) {
    showIcon();
    open();
    typist().drag(popupPlace.topLeft() + header, popupPlace.topLeft() + header + QPoint(120, -60));
    const QRect moved = popupPlace.translated(120, -60);
    EXPECT_TRUE(host_->waitForPlace(moved));
    EXPECT_EQ(placeOf(host_->ask("popupFrame")), moved);
    press(closeButton);
    EXPECT_TRUE(waitUntil(5, [&] { return host_->windows().isEmpty(); })) << "its parts came along";
}

TEST_F(Selections, aButtonThatThePopupIsDraggedByIsNotPressed) {
    showIcon("原文");
    open();
    typist().drag(popupPlace.topLeft() + saveButton, popupPlace.topLeft() + saveButton + QPoint(-80, 30));
    ASSERT_TRUE(host_->waitForPlace(popupPlace.translated(-80, 30)));
    typist().drag(popupPlace.topLeft() + closeButton + QPoint(-80, 30), popupPlace.topLeft() + closeButton);
    ASSERT_TRUE(host_->waitForPlace(popupPlace));
    EXPECT_EQ(shown(0), u"已选中"_s);
    EXPECT_NE(host_->ask("saved"), "原文");
    press(saveButton);
    EXPECT_TRUE(waitUntil(5, [&] { return host_->ask("saved") == "原文"; })) << "a click is one again";
}

// MARK: Edges

TEST_F(Selections, everyEdgeOfTheScreenKeepsThemWhole) {
    const QRect screen(0, 0, 1280, screenHeight);
    struct Row {
        const char* point;
        QPoint icon, popup;
    };
    const Row rows[] = {
        {"640 2", {611, 800 - 58}, {490, 800 - 244}},
        {"2 400", {0, 800 - 330 - 58}, {0, 800 - 78 - 244}},
        {"1279 400", {1280 - 58, 800 - 330 - 58}, {1280 - 300, 800 - 78 - 244}},
        {"640 799", {611, 800 - 729 - 58}, {490, 800 - 477 - 244}},
    };
    for (const Row& row : rows) {
        host_->ask(QByteArray("icon ") + row.point + " 边");
        EXPECT_EQ(host_->place(), QRect(row.icon, iconSize)) << row.point;
        EXPECT_TRUE(screen.contains(host_->place()));
        open();
        EXPECT_EQ(host_->place(), QRect(row.popup, popupSize)) << row.point;
        host_->ask("dismissPopup");
        EXPECT_TRUE(waitUntil(5, [&] { return host_->windows().isEmpty(); }));
    }
}

// MARK: No growth

TEST_F(Selections, roundsWithoutNumberHoldNoMoreThanAFew) {
    host_->ask("prepare");
    host_->ask("rounds 60", 120);
    const auto popupWindow = [&] {
        showIcon();
        open();
        return host_->windows().value(0);
    };
    const quint32 resources = resourcesOf(x(), popupWindow());
    const qint64 memory = host_->ask("memory").toLongLong();
    ASSERT_GT(resources, 0U);
    EXPECT_LE(host_->ask("rounds 200", 300).toInt(), 8);
    EXPECT_EQ(resourcesOf(x(), popupWindow()), resources);
    EXPECT_LT(host_->ask("memory").toLongLong() - memory, 4096) << "KiB";
}

}  // namespace
}  // namespace veltrin
