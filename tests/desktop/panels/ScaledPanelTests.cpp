#include "support/desktop/PanelHost.h"
#include "support/desktop/Program.h"
#include "support/desktop/RealDesktop.h"
#include "support/desktop/Typist.h"
#include "support/desktop/Waiting.h"

#include <gtest/gtest.h>

namespace veltrin {
namespace {

constexpr int shadowRoom = 48;
/// Below an anchor of 2 by 20 at (600, 900) from the bottom left of a screen 1200 high.
const QByteArray anchor = "600 900 2 20";
constexpr QRect choicePlace{291, 310, 620, 496};

/// Desktops that show everything twice as large. A caret's place counts in the display's own pixels there,
/// and so do the places of panels.
class ScaledPanels : public testing::TestWithParam<const char*> {
protected:
    ScaledPanels() {
        if (byFontSize()) {
            const QByteArray resources = "Xft.dpi:\t192\n";
            xcb_change_property(x().connection(), XCB_PROP_MODE_REPLACE, x().root(),
                                XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 8,
                                static_cast<quint32>(resources.size()), resources.constData());
            x().sync();
        }
        host_.emplace(desktop_, byFontSize()
                                    ? Environment{}
                                    : Environment{{QStringLiteral("QT_SCALE_FACTOR"), QStringLiteral("2")}});
    }
    static bool byFontSize() { return std::string(GetParam()) == "fonts"; }
    static DesktopOptions options() {
        DesktopOptions options;
        options.accessibility = false;
        options.monitors = {QRect(0, 0, 1600, 1200), QRect(1600, 0, 1600, 1200)};
        return options;
    }
    XDesktop& x() { return desktop_.x(); }
    PanelHost& host() { return *host_; }
    /// The toolkit counts in points of two pixels each.
    static bool isAt(const QRect& place, const QRect& wanted) {
        return place.size() == wanted.size() && (place.topLeft() - wanted.topLeft()).manhattanLength() <= 2;
    }
    testing::AssertionResult standsAt(const QRect& wanted) {
        QRect last;
        if (waitUntil(5, [&] { return isAt(last = host().place(), wanted); }))
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << last.x() << "," << last.y() << " " << last.width() << "x" << last.height();
    }

    RealDesktop desktop_{options()};
    std::optional<PanelHost> host_;
};

TEST_P(ScaledPanels, theChoiceStandsBelowItsAnchorAndFollowsIt) {
    host().ask("choice " + anchor);
    EXPECT_TRUE(standsAt(choicePlace));
    host().ask("move 700 1000 2 20");
    EXPECT_TRUE(standsAt(choicePlace.translated(100, -100)));
}

TEST_P(ScaledPanels, theyStayOnTheScreenOfTheirAnchor) {
    host().ask("choice 1590 100 2 20");
    EXPECT_TRUE(standsAt(QRect(1600 - 12 - 620, 1200 - 12 - 496, 620, 496)));
    host().ask("choice 1610 900 2 20");
    EXPECT_TRUE(standsAt(QRect(1600 + 12, 310, 620, 496)));
}

TEST_P(ScaledPanels, pillAndMessageStandInTheirMiddles) {
    host().ask("pill 500 700 100 50");
    EXPECT_TRUE(standsAt(QRect(550 - 72, 1200 - 725 - 40, 144, 80)));
    host().ask("dismissOverlay");
    EXPECT_TRUE(waitUntil(5, [&] { return host().windows().isEmpty(); }));
    host().ask("text Veltrin Ready");
    EXPECT_TRUE(standsAt(QRect(500, 516, 600, 168)));
}

TEST_P(ScaledPanels, withoutAnAnchorTheChoiceStandsAboveThePointer) {
    Typist typist(desktop_);
    typist.moveMouse({800, 900});
    host().ask("choice");
    EXPECT_TRUE(standsAt(QRect(800 - 310, 900 - 24 - 496, 620, 496)));
}

TEST_P(ScaledPanels, aRowIsClickedWhereItIsSeen) {
    host().ask("choice " + anchor);
    ASSERT_TRUE(standsAt(choicePlace));
    Typist typist(desktop_);
    typist.click(choicePlace.topLeft() + 2 * QPoint(60, 85));
    EXPECT_TRUE(waitUntil(5, [&] { return host().ask("selected") == "2"; }));
}

/// A picture made for half the size has no step of brightness within a point; sharp letters have many.
TEST_P(ScaledPanels, lettersAreDrawnInTheDisplaysOwnPixels) {
    host().ask("still");
    host().ask("light");
    host().ask("choice " + anchor);
    ASSERT_TRUE(standsAt(choicePlace));
    const auto steps = [&] {
        const QImage picture = x().image(host().place());
        int found = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int left = 0; left + 1 < picture.width(); left += 2) {
                const int difference = qGray(picture.pixel(left, y)) - qGray(picture.pixel(left + 1, y));
                found += std::abs(difference) > 80 ? 1 : 0;
            }
        }
        return found;
    };
    EXPECT_TRUE(waitUntil(5, [&] { return steps() > 200; })) << steps();
    if (const QString folder = qEnvironmentVariable("VELTRIN_SCREENSHOTS"); !folder.isEmpty())
        x().screenshot(folder + QStringLiteral("/scaled-%1.png").arg(QString::fromLatin1(GetParam())));
}

TEST_P(ScaledPanels, underACompositorTheShadowGrowsAlong) {
    Program compositor(desktop_,
                       {QStringLiteral("picom"), QStringLiteral("--backend"), QStringLiteral("xrender"),
                        QStringLiteral("--config"), QStringLiteral("/dev/null")});
    ASSERT_TRUE(waitUntil(15, [&] {
        const XReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
            x().connection(), xcb_get_selection_owner(x().connection(), x().atom("_NET_WM_CM_S0")), nullptr));
        return owner && owner->owner != XCB_WINDOW_NONE;
    }));
    host().ask("choice " + anchor);
    EXPECT_TRUE(standsAt(choicePlace.adjusted(-shadowRoom, -shadowRoom, shadowRoom, shadowRoom)));
}

INSTANTIATE_TEST_SUITE_P(Ways, ScaledPanels, testing::Values("toolkit", "fonts"),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace
}  // namespace veltrin
