#include "desktop/panels/PanelWatch.h"
#include "support/desktop/DesktopTest.h"
#include "support/desktop/PanelHost.h"

#include <xcb/shape.h>

#include <memory>

namespace veltrin {
namespace {

constexpr int shadowRoom = 24;
constexpr QSize choiceSize{310, 248};
/// The choice below an anchor of 2 by 20 at (600, 400) from the bottom left of a screen 800 high.
const QByteArray anchor = "600 400 2 20";
constexpr QRect choicePlace{446, 410, 310, 248};

bool isTopmost(XDesktop& x, xcb_window_t window) {
    const auto all = x.rootChildren();
    return !all.isEmpty() && all.last() == window;
}

class Overlays : public DesktopTest {
protected:
    void SetUp() override {
        DesktopTest::SetUp();
        host_ = std::make_unique<PanelHost>(desktop());
    }
    void TearDown() override {
        host_.reset();
        DesktopTest::TearDown();
    }
    PanelHost& host() { return *host_; }

    std::unique_ptr<PanelHost> host_;
};

// MARK: Places

TEST_F(Overlays, theChoiceStandsBelowItsAnchor) {
    host().ask("choice " + anchor);
    EXPECT_EQ(host().place(), choicePlace);
}

TEST_F(Overlays, theChoiceStaysOnTheScreenAndThenCoversItsAnchor) {
    host().ask("choice 600 20 2 20");
    EXPECT_EQ(host().place(), QRect(QPoint(446, 800 - 12 - 248), choiceSize));
    host().ask("choice 1279 400 2 20");
    EXPECT_EQ(host().place(), QRect(QPoint(1280 - 12 - 310, 410), choiceSize));
}

TEST_F(Overlays, withoutAnAnchorTheyStandAboveThePointer) {
    typist().moveMouse({640, 500});
    host().ask("choice");
    EXPECT_EQ(host().place(), QRect(QPoint(640 - 155, 500 - 24 - 248), choiceSize));
    host().ask("pill");
    EXPECT_EQ(host().place(), QRect(640 - 36, 500 - 24 - 40, 72, 40));
}

TEST_F(Overlays, thePillStandsInTheMiddleOfItsAnchorAndTheMessageInTheMiddleOfTheScreen) {
    host().ask("pill 500 300 100 50");
    EXPECT_EQ(host().place(), QRect(550 - 36, 800 - 325 - 20, 72, 40));
    host().ask("dismissOverlay");
    EXPECT_TRUE(waitUntil(5, [&] { return host().windows().isEmpty(); }));
    host().ask("text Veltrin Ready");
    EXPECT_EQ(host().place(), QRect(490, 358, 300, 84));
}

TEST_F(Overlays, anAnchorThatMovesTakesTheChoiceAlongAtOnce) {
    host().ask("choice " + anchor);
    const xcb_window_t window = host().windows().value(0);
    host().ask("move 500 600 2 20");
    EXPECT_TRUE(host().waitForPlace(QRect(QPoint(501 - 155, 800 - 342 - 248), choiceSize)));
    EXPECT_EQ(host().windows(), QList{window});
}

TEST_F(Overlays, anAnchorOffEveryScreenBringsTheChoiceToTheMainOne) {
    host().ask("choice 9000 9000 2 20");
    EXPECT_EQ(host().place(), QRect(QPoint(1280 - 12 - 310, 12), choiceSize));
    host().ask("choice -9000 -9000 2 20");
    EXPECT_EQ(host().place(), QRect(QPoint(12, 800 - 12 - 248), choiceSize));
}

TEST_F(Overlays, aMessageAndAChoiceStandSideBySide) {
    host().ask("text 一");
    host().ask("choice " + anchor);
    EXPECT_EQ(host().windows().size(), 2);
    host().ask("text 二");
    EXPECT_EQ(host().windows().size(), 2);
}

// MARK: Focus and mouse

TEST_F(Overlays, theForeignWindowKeepsTheFocusThroughout) {
    Program editor = Program::qtEditor(desktop());
    FocusWatch focus(desktop(), editor.window());
    host().ask("choice " + anchor);
    EXPECT_EQ(x().activeWindow(), editor.window());
    typist().click(choicePlace.topLeft() + QPoint(100, 60));
    EXPECT_TRUE(waitUntil(5, [&] { return host().ask("selected") == "1"; }));
    host().ask("failure 优化失败");
    host().ask("pill " + anchor);
    host().ask("dismissOverlay");
    host().ask("dismiss");
    EXPECT_TRUE(waitUntil(5, [&] { return host().windows().isEmpty(); }));
    EXPECT_EQ(focus.losses(), 0);
    EXPECT_EQ(x().activeWindow(), editor.window());
    const ProbedField field = atspi().waitForField(editor);
    typist().type(QStringLiteral("still here"));
    EXPECT_EQ(atspi().waitForText(field, QStringLiteral("still here")), QStringLiteral("still here"));
}

TEST_F(Overlays, everyRowOfTheChoiceCanBeClicked) {
    host().ask("choice " + anchor);
    for (const QPoint& place : {QPoint(60, 55), QPoint(60, 85), QPoint(60, 115), QPoint(60, 145),
                                QPoint(60, 195), QPoint(230, 195), QPoint(60, 222), QPoint(230, 222)}) {
        typist().click(choicePlace.topLeft() + place);
    }
    EXPECT_TRUE(waitUntil(5, [&] { return host().ask("selected").size() == 8; }));
    EXPECT_EQ(host().ask("selected"), "12341234");
}

TEST_F(Overlays, clicksGoThroughWhatOnlyTells) {
    Program below = Program::qtEditor(desktop(), {QStringLiteral("--title"), QStringLiteral("below")});
    x().moveResize(below.window(), QRect(400, 250, 480, 320));
    Program active = Program::qtEditor(desktop(), {QStringLiteral("--title"), QStringLiteral("active")});
    x().moveResize(active.window(), QRect(0, 0, 300, 200));
    host().ask("text Veltrin Ready");
    ASSERT_EQ(x().activeWindow(), active.window());
    typist().click({640, 400});
    EXPECT_TRUE(waitUntil(5, [&] { return x().activeWindow() == below.window(); }));
}

// MARK: Above everything

TEST_F(Overlays, laterWindowsOpenBelow) {
    host().ask("choice " + anchor);
    const xcb_window_t panel = host().windows().value(0);
    Program editor = Program::qtEditor(desktop());
    x().moveResize(editor.window(), choicePlace.adjusted(-50, -50, 50, 50));
    EXPECT_TRUE(waitUntil(5, [&] { return isTopmost(x(), panel); }));
}

TEST_F(Overlays, everyDesktopShowsThem) {
    host().ask("choice " + anchor);
    const xcb_window_t panel = host().windows().value(0);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = x().root();
    event.type = x().atom("_NET_CURRENT_DESKTOP");
    const auto switchTo = [&](quint32 number) {
        event.data.data32[0] = number;
        xcb_send_event(x().connection(), 0, x().root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&event));
        return waitUntil(5, [&] { return x().cardinal(x().root(), "_NET_CURRENT_DESKTOP") == number; });
    };
    ASSERT_TRUE(switchTo(1));
    EXPECT_TRUE(x().isViewable(panel));
    EXPECT_EQ(x().geometry(panel), choicePlace);
    ASSERT_TRUE(switchTo(0));
}

// MARK: Without a compositor

TEST_F(Overlays, withoutACompositorThePanelIsCutToItsCard) {
    Program editor = Program::qtEditor(desktop());
    x().moveResize(editor.window(), QRect(0, 0, 1280, 800));
    const QPoint corner = choicePlace.topLeft() + QPoint(1, 1);
    const QPoint edge = choicePlace.topLeft() + QPoint(100, 3);
    ASSERT_TRUE(waitUntil(10, [&] { return x().pixel(corner) == QColor(Qt::white); }));
    host().ask("dark");
    host().ask("choice " + anchor);
    EXPECT_EQ(host().place(), choicePlace);
    EXPECT_TRUE(waitUntil(5, [&] { return x().pixel(edge) == QColor(QStringLiteral("#161618")); }));
    EXPECT_EQ(x().pixel(corner), QColor(Qt::white)) << "the corner belongs to what is below";
    host().ask("light");
    EXPECT_TRUE(waitUntil(5, [&] { return x().pixel(edge) == QColor(Qt::white); }));
}

// MARK: No growth

/// Ten thousand take a minute; VELTRIN_PANEL_TOGGLES asks for them, or for any other number.
int togglesWanted() {
    bool isNumber = false;
    const int wanted = qEnvironmentVariableIntValue("VELTRIN_PANEL_TOGGLES", &isNumber);
    return isNumber && wanted > 0 ? wanted : 1000;
}

TEST_F(Overlays, panelsWithoutNumberHoldNoMoreThanAFew) {
    host().ask("prepare");
    host().ask("toggle 100", 120);
    const xcb_window_t window = [&] {
        host().ask("choice " + anchor);
        return host().windows().value(0);
    }();
    const quint32 resources = resourcesOf(x(), window);
    const qint64 memory = host().ask("memory").toLongLong();
    ASSERT_GT(resources, 0U);
    EXPECT_LE(host().ask("toggle " + QByteArray::number(togglesWanted()), 1800).toInt(), 7);
    host().ask("choice " + anchor);
    EXPECT_EQ(resourcesOf(x(), window), resources);
    EXPECT_LT(host().ask("memory").toLongLong() - memory, 4096) << "KiB";
}

// MARK: Desktops of other kinds

TEST(OverlaysWithoutWindowManager, standAboveLaterWindowsAndKeepTheFocusAway) {
    DesktopOptions options;
    options.windowManager = false;
    options.accessibility = false;
    RealDesktop desktop(options);
    Program first = Program::qtEditor(desktop);
    FocusWatch focus(desktop, first.window());
    PanelHost host(desktop);
    host.ask("choice " + anchor);
    const xcb_window_t panel = host.windows().value(0);
    EXPECT_EQ(host.place(), choicePlace);
    EXPECT_EQ(desktop.x().activeWindow(), first.window());
    EXPECT_EQ(focus.losses(), 0);
    Program second = Program::qtEditor(desktop);
    EXPECT_TRUE(waitUntil(5, [&] { return isTopmost(desktop.x(), panel); }));
}

class ComposedDesktop : public testing::Test {
protected:
    ComposedDesktop() : desktop_(options()), host_(desktop_) { startCompositor(); }

    static DesktopOptions options() {
        DesktopOptions options;
        options.accessibility = false;
        return options;
    }
    void startCompositor() {
        compositor_ = std::make_unique<Program>(
            desktop_,
            QStringList{QStringLiteral("picom"), QStringLiteral("--backend"), QStringLiteral("xrender"),
                        QStringLiteral("--config"), QStringLiteral("/dev/null")});
        ASSERT_TRUE(waitUntil(15, [&] { return hasCompositor(); }));
    }
    bool hasCompositor() {
        auto& x = desktop_.x();
        const XReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
            x.connection(), xcb_get_selection_owner(x.connection(), x.atom("_NET_WM_CM_S0")), nullptr));
        return owner && owner->owner != XCB_WINDOW_NONE;
    }
    /// Whether the window's opacity says that it stands wholly there.
    bool isOpaque(xcb_window_t window) {
        const auto opacity = desktop_.x().cardinal(window, "_NET_WM_WINDOW_OPACITY");
        return !opacity || *opacity >= 0xFF000000U;
    }

    RealDesktop desktop_;
    PanelHost host_;
    std::unique_ptr<Program> compositor_;
};

constexpr QRect grown(const QRect& card) {
    return card.adjusted(-shadowRoom, -shadowRoom, shadowRoom, shadowRoom);
}

TEST_F(ComposedDesktop, theCardStandsAtItsPlaceWithItsShadowAround) {
    host_.ask("choice " + anchor);
    EXPECT_EQ(host_.place(), grown(choicePlace));
    const xcb_window_t window = host_.windows().value(0);
    EXPECT_TRUE(waitUntil(5, [&] { return isOpaque(window); }));
    host_.ask("move 500 600 2 20");
    EXPECT_TRUE(host_.waitForPlace(grown(QRect(QPoint(501 - 155, 210), choiceSize))));
}

TEST_F(ComposedDesktop, itFadesInAndOut) {
    host_.ask("choice " + anchor);
    const xcb_window_t window = host_.windows().value(0);
    EXPECT_TRUE(waitUntil(5, [&] { return isOpaque(window); }));
    host_.ask("dismissOverlay");
    EXPECT_TRUE(waitUntil(5, [&] { return host_.windows().isEmpty(); }));
    EXPECT_FALSE(isOpaque(window)) << "it left faded";
    host_.ask("choice " + anchor);
    EXPECT_TRUE(waitUntil(5, [&] { return isOpaque(window); })) << "and comes back whole";
}

TEST_F(ComposedDesktop, lessMotionMeansNoFade) {
    host_.ask("still");
    host_.ask("choice " + anchor);
    EXPECT_TRUE(isOpaque(host_.windows().value(0)));
    host_.ask("dismissOverlay");
    EXPECT_TRUE(waitUntil(5, [&] { return host_.windows().isEmpty(); }));
}

TEST_F(ComposedDesktop, clicksBesideTheCardGoThrough) {
    auto& x = desktop_.x();
    host_.ask("choice " + anchor);
    const XReply<xcb_shape_get_rectangles_reply_t> input(xcb_shape_get_rectangles_reply(
        x.connection(),
        xcb_shape_get_rectangles(x.connection(), host_.windows().value(0), XCB_SHAPE_SK_INPUT), nullptr));
    ASSERT_TRUE(input);
    ASSERT_EQ(xcb_shape_get_rectangles_rectangles_length(input.get()), 1);
    const auto& card = *xcb_shape_get_rectangles_rectangles(input.get());
    EXPECT_EQ(QRect(card.x, card.y, card.width, card.height),
              QRect(QPoint(shadowRoom, shadowRoom), choiceSize));
}

TEST_F(ComposedDesktop, cornersAreNotBlack) {
    Program editor = Program::qtEditor(desktop_);
    desktop_.x().moveResize(editor.window(), QRect(0, 0, 1280, 800));
    host_.ask("choice " + anchor);
    const xcb_window_t window = host_.windows().value(0);
    ASSERT_TRUE(waitUntil(5, [&] { return isOpaque(window); }));
    EXPECT_TRUE(waitUntil(5, [&] { return desktop_.x().pixel(choicePlace.center()).lightness() > 200; }));
    for (const QPoint& corner : {choicePlace.topLeft(), choicePlace.topRight(), choicePlace.bottomLeft()})
        EXPECT_GT(desktop_.x().pixel(corner).lightness(), 120);
}

TEST_F(ComposedDesktop, aCompositorThatEndsLeavesAWholePanelAtTheNextShowing) {
    host_.ask("choice " + anchor);
    EXPECT_EQ(host_.place(), grown(choicePlace));
    compositor_.reset();
    ASSERT_TRUE(waitUntil(5, [&] { return !hasCompositor(); }));
    host_.ask("choice " + anchor);
    EXPECT_TRUE(host_.waitForPlace(choicePlace));
    startCompositor();
    host_.ask("choice " + anchor);
    EXPECT_TRUE(host_.waitForPlace(grown(choicePlace)));
}

// MARK: Several screens

class TwoScreens : public testing::Test {
protected:
    static DesktopOptions options() {
        DesktopOptions options;
        options.accessibility = false;
        options.monitors = {QRect(0, 0, 1280, 800), QRect(1280, 0, 1024, 768)};
        return options;
    }
    void unplugSecond() {
        const ChildProcess tool(
            {{QStringLiteral("xrandr"), QStringLiteral("--delmonitor"), QStringLiteral("SCREEN-1")},
             desktop_.environment(),
             desktop_.file(QStringLiteral("xrandr.log"))});
        ASSERT_TRUE(waitUntil(10, [&] { return host_.ask("screens") == "1"; }));
    }

    RealDesktop desktop_{options()};
    PanelHost host_{desktop_};
};

TEST_F(TwoScreens, theChoiceStaysOnItsAnchorsScreenAndTheMessageOnTheMainOne) {
    host_.ask("choice 1290 400 2 20");
    EXPECT_EQ(host_.place(), QRect(QPoint(1280 + 12, 410), choiceSize));
    host_.ask("dismissOverlay");
    EXPECT_TRUE(waitUntil(5, [&] { return host_.windows().isEmpty(); }));
    host_.ask("text Veltrin Ready");
    EXPECT_EQ(host_.place(), QRect(490, 358, 300, 84));
}

TEST_F(TwoScreens, aScreenThatGoesGivesItsPanelToAnother) {
    host_.ask("choice 1700 400 2 20");
    ASSERT_EQ(host_.place(), QRect(QPoint(1701 - 155, 410), choiceSize));
    unplugSecond();
    EXPECT_TRUE(host_.waitForPlace(QRect(QPoint(1280 - 12 - 310, 410), choiceSize))) << host_.place().x();
    // And it still works there.
    host_.ask("move 640 400 2 20");
    EXPECT_TRUE(host_.waitForPlace(QRect(QPoint(641 - 155, 410), choiceSize)));
    host_.ask("choice 1700 400 2 20");
    EXPECT_TRUE(host_.waitForPlace(QRect(QPoint(1280 - 12 - 310, 410), choiceSize)));
}

}  // namespace
}  // namespace veltrin
