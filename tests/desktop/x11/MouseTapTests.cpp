#include "Platform/Linux/QtRunLoop.h"
#include "Platform/Linux/X11/X11MouseEventTaps.h"
#include "Platform/Linux/X11/X11Settings.h"
#include "support/desktop/DesktopTest.h"

#include <QtEndian>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;
using Type = MouseEventType;

void append(QByteArray& bytes, quint32 value, int size) {
    const quint32 little = qToLittleEndian(value);
    bytes.append(reinterpret_cast<const char*>(&little), size);
}

/// Settings as a settings daemon publishes them: strings and colours beside the integers.
QByteArray settingsWith(const QMap<QByteArray, qint32>& integers) {
    QByteArray bytes(8, '\0');
    append(bytes, static_cast<quint32>(integers.size()) + 2, 4);
    const auto head = [&bytes](char kind, const QByteArray& name) {
        bytes.append(kind).append('\0');
        append(bytes, static_cast<quint32>(name.size()), 2);
        bytes.append(name).append((4 - name.size() % 4) % 4, '\0');
        append(bytes, 7, 4);
    };
    head(1, "Net/ThemeName");
    append(bytes, 7, 4);
    bytes.append("Adwaita").append('\0');
    head(2, "Net/Colour");
    bytes.append(8, 'c');
    for (auto setting = integers.begin(); setting != integers.end(); ++setting) {
        head(0, setting.key());
        append(bytes, static_cast<quint32>(setting.value()), 4);
    }
    return bytes;
}

/// A settings daemon.
class SettingsDaemon {
public:
    SettingsDaemon(XDesktop& x, const QByteArray& settings) : x_(x) {
        auto* xcb = x_.connection();
        window_ = xcb_generate_id(xcb);
        xcb_create_window(xcb, 0, window_, x_.root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0,
                          nullptr);
        publish(settings);
        xcb_set_selection_owner(xcb, window_, x_.atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
        x_.sync();
    }
    ~SettingsDaemon() {
        xcb_destroy_window(x_.connection(), window_);
        x_.sync();
    }
    SettingsDaemon(const SettingsDaemon&) = delete;
    SettingsDaemon& operator=(const SettingsDaemon&) = delete;

    void publish(const QByteArray& settings) {
        const xcb_atom_t name = x_.atom("_XSETTINGS_SETTINGS");
        xcb_change_property(x_.connection(), XCB_PROP_MODE_REPLACE, window_, name, name, 8,
                            static_cast<uint32_t>(settings.size()), settings.constData());
        x_.sync();
    }

private:
    XDesktop& x_;
    xcb_window_t window_ = 0;
};

/// A tap that writes down what it is told.
class MouseTapTest : public DesktopTest {
protected:
    void SetUp() override {
        DesktopTest::SetUp();
        daemon_.emplace(x(), patient());
        start();
    }
    void TearDown() override {
        tap.reset();
        daemon_.reset();
        DesktopTest::TearDown();
    }
    /// Whatever the machine's speed, clicks at one place belong together.
    static QByteArray patient() {
        return settingsWith({{"Net/DoubleClickTime", 5000}, {"Net/DoubleClickDistance", 5}});
    }
    void start() {
        tap = taps.create([this](const MouseEvent& event) { events.push_back(event); });
        ASSERT_TRUE(tap);
        tap->setEnabled(true);
    }
    bool waitForUps(int count) {
        return eventually(5, [&] { return this->count(Type::leftMouseUp) >= count; });
    }
    int count(Type type) const {
        return static_cast<int>(std::count_if(events.begin(), events.end(),
                                              [type](const auto& event) { return event.type == type; }));
    }
    /// The click states of the releases.
    std::vector<int> clicks() const {
        std::vector<int> states;
        for (const MouseEvent& event : events) {
            if (event.type == Type::leftMouseUp) states.push_back(event.clickState);
        }
        return states;
    }

    QtRunLoop loop;
    X11MouseEventTaps taps{loop, desktop().display().toLatin1()};
    std::unique_ptr<MouseEventTap> tap;
    std::vector<MouseEvent> events;
    std::optional<SettingsDaemon> daemon_;
};

TEST_F(MouseTapTest, tellsPressDragAndReleaseWithTheirPlaces) {
    typist().drag({200, 300}, {320, 260});
    ASSERT_TRUE(waitForUps(1));
    const double height = x().screen().height_in_pixels;
    const MouseEvent down = events.front();
    EXPECT_EQ(down.type, Type::leftMouseDown);
    EXPECT_EQ(down.location, QPointF(200, 300));
    EXPECT_EQ(down.mouseLocation, QPointF(200, height - 300));
    EXPECT_EQ(down.clickState, 1);
    const MouseEvent up = events.back();
    EXPECT_EQ(up.type, Type::leftMouseUp);
    EXPECT_EQ(up.location, QPointF(320, 260));
    EXPECT_EQ(up.mouseLocation, QPointF(320, height - 260));
    EXPECT_EQ(up.clickState, 1);
    EXPECT_GT(count(Type::leftMouseDragged), 1);
    EXPECT_EQ(events.size(), static_cast<std::size_t>(count(Type::leftMouseDragged)) + 2);
    EXPECT_EQ(up.dragPasteboardChangeCount, down.dragPasteboardChangeCount);
}

TEST_F(MouseTapTest, countsClicksAsTheDesktopDoes) {
    typist().click({200, 300}, 3);
    ASSERT_TRUE(waitForUps(3));
    EXPECT_EQ(clicks(), (std::vector{1, 2, 3}));
    typist().click({206, 300});
    ASSERT_TRUE(waitForUps(4));
    EXPECT_EQ(clicks().back(), 1) << "too far away";
    typist().click({211, 305});
    ASSERT_TRUE(waitForUps(5));
    EXPECT_EQ(clicks().back(), 2) << "just near enough";
    typist().click({211, 305}, 1, 3);
    typist().click({211, 305});
    ASSERT_TRUE(waitForUps(6));
    EXPECT_EQ(clicks().back(), 1) << "another button in between";

    daemon_->publish(settingsWith({{"Net/DoubleClickTime", 1}, {"Net/DoubleClickDistance", 5}}));
    typist().click({211, 305}, 2);
    ASSERT_TRUE(waitForUps(8));
    EXPECT_EQ(clicks().back(), 1) << "too late";
}

TEST_F(MouseTapTest, aFastHandIsToldWholeAndInOrder) {
    constexpr int clicks = 200;
    typist().moveMouse({200, 300});
    typist().whileLoopRuns([](Typist& hand) {
        for (int i = 0; i < clicks; ++i) {
            hand.pressButton();
            hand.releaseButton();
        }
    });
    ASSERT_TRUE(waitForUps(clicks));
    for (std::size_t i = 0; i < events.size(); ++i)
        ASSERT_EQ(events[i].type, i % 2 == 0 ? Type::leftMouseDown : Type::leftMouseUp) << i;
    EXPECT_EQ(events.back().clickState, clicks);
}

TEST_F(MouseTapTest, otherButtonsTheWheelAndFreeMotionAreNobodysBusiness) {
    typist().click({200, 300}, 2, 3);
    typist().click({200, 300}, 1, 2);
    // The server's own mouse has no wheel.
    Typist(desktop(), Typist::Device::xtest).wheel(3);
    typist().moveMouse({500, 500});
    typist().pressButton(3);
    typist().moveMouse({100, 100});
    typist().releaseButton(3);
    typist().click({200, 300});
    ASSERT_TRUE(waitForUps(1));
    EXPECT_EQ(events.size(), 2U);
}

TEST_F(MouseTapTest, whereTheHandGoesAfterAClickIsNoDrag) {
    typist().moveMouse({200, 300});
    typist().pressButton();
    typist().releaseButton();
    typist().moveMouse({900, 700});
    ASSERT_TRUE(waitForUps(1));
    EXPECT_EQ(events.front().location, events.back().location);
    EXPECT_EQ(count(Type::leftMouseDragged), 0);
}

TEST_F(MouseTapTest, seesThroughGrabsOfOthers) {
    auto* xcb = x().connection();
    const XReply<xcb_grab_pointer_reply_t> grabbed(xcb_grab_pointer_reply(
        xcb,
        xcb_grab_pointer(xcb, 0, x().root(), XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC,
                         XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME),
        nullptr));
    ASSERT_TRUE(grabbed && grabbed->status == XCB_GRAB_STATUS_SUCCESS);
    typist().drag({200, 300}, {300, 300});
    xcb_ungrab_pointer(xcb, XCB_CURRENT_TIME);
    x().sync();
    ASSERT_TRUE(waitForUps(1));
    EXPECT_EQ(events.back().location, QPointF(300, 300));
}

TEST_F(MouseTapTest, aDragOfSomethingChangesTheCountAndNothingElseDoes) {
    ClipboardProbe dragged(desktop(), "XdndSelection");
    typist().drag({200, 300}, {300, 300});
    clipboard().ownText(u"copied"_s);
    ASSERT_TRUE(waitForUps(1));
    const qint64 before = events.back().dragPasteboardChangeCount;
    EXPECT_EQ(events.front().dragPasteboardChangeCount, before);

    for (int i = 1; i <= 2; ++i) {
        typist().moveMouse({200, 300});
        typist().pressButton();
        // The same owner again counts as well: it drags something else.
        dragged.ownText(u"a file"_s);
        typist().moveMouse({300, 300});
        typist().releaseButton();
        ASSERT_TRUE(waitForUps(1 + i));
        EXPECT_EQ(events.back().dragPasteboardChangeCount, before + i);
    }
    typist().click({600, 600});
    ASSERT_TRUE(waitForUps(4));
    EXPECT_EQ(events[events.size() - 2].dragPasteboardChangeCount, before + 2);
    EXPECT_EQ(events.back().dragPasteboardChangeCount, before + 2);
}

TEST_F(MouseTapTest, aLeftHandedUsersLeftButtonIsTheOtherOne) {
    auto* xcb = x().connection();
    const XReply<xcb_get_pointer_mapping_reply_t> usual(
        xcb_get_pointer_mapping_reply(xcb, xcb_get_pointer_mapping(xcb), nullptr));
    ASSERT_TRUE(usual);
    const auto length = static_cast<std::size_t>(xcb_get_pointer_mapping_map_length(usual.get()));
    const std::vector<quint8> former(xcb_get_pointer_mapping_map(usual.get()),
                                     xcb_get_pointer_mapping_map(usual.get()) + length);
    std::vector<quint8> turned = former;
    std::swap(turned[0], turned[2]);
    const auto set = [&](const std::vector<quint8>& map) {
        const XReply<xcb_set_pointer_mapping_reply_t> reply(xcb_set_pointer_mapping_reply(
            xcb, xcb_set_pointer_mapping(xcb, static_cast<uint8_t>(map.size()), map.data()), nullptr));
        x().sync();
    };
    set(turned);
    typist().click({200, 300}, 1, 1);
    typist().click({400, 300}, 1, 3);
    const bool isTold = waitForUps(1);
    set(former);
    ASSERT_TRUE(isTold);
    EXPECT_EQ(events.size(), 2U);
    EXPECT_EQ(events.back().location, QPointF(400, 300));
    typist().click({200, 300}, 1, 1);
    EXPECT_TRUE(waitForUps(2));
}

TEST_F(MouseTapTest, offOrSilentItTellsNothing) {
    tap->setEnabled(false);
    typist().click({200, 300});
    tap->setEnabled(true);
    typist().click({300, 300});
    ASSERT_TRUE(waitForUps(1));
    EXPECT_EQ(events.size(), 2U);
    taps.setSilent(true);
    typist().click({400, 300});
    runEventLoopFor(0.1);
    taps.setSilent(false);
    typist().click({500, 300});
    ASSERT_TRUE(waitForUps(2));
    EXPECT_EQ(events.size(), 4U);
    EXPECT_EQ(events.back().location, QPointF(500, 300));
}

TEST_F(MouseTapTest, endsWithWhatIsStillOnItsWay) {
    typist().click({200, 300}, 2);
    tap.reset();
    runEventLoopFor(0.1);
    EXPECT_TRUE(events.empty());
}

TEST(MouseTapsTest, aLostServerTurnsTheTapOff) {
    RealDesktop own;
    QtRunLoop loop;
    X11MouseEventTaps taps(loop, own.display().toLatin1());
    std::vector<MouseEvent> events;
    std::unique_ptr<MouseEventTap> tap;
    tap = taps.create([&](const MouseEvent& event) {
        events.push_back(event);
        tap->setEnabled(true);
    });
    ASSERT_TRUE(tap);
    tap->setEnabled(true);
    own.killServer();
    ASSERT_TRUE(eventually(5, [&] { return !events.empty(); }));
    EXPECT_EQ(events.front().type, Type::tapDisabledByTimeout);
    runEventLoopFor(0.5);
    EXPECT_EQ(events.size(), 1U) << "without a server it stays silent";
}

TEST(MouseTapsTest, withoutAServerThereIsNoTap) {
    QtRunLoop loop;
    X11MouseEventTaps taps(loop, ":4711");
    EXPECT_FALSE(taps.create([](const MouseEvent&) {}));
}

TEST(MouseSettingsTest, integersAreFoundAmongOtherSettings) {
    const QByteArray settings = settingsWith({{"Net/DoubleClickTime", 250}, {"Xft/DPI", -1}});
    EXPECT_EQ(xsettingsInteger(settings, "Net/DoubleClickTime"), 250);
    EXPECT_EQ(xsettingsInteger(settings, "Xft/DPI"), -1);
    EXPECT_EQ(xsettingsInteger(settings, "Net/ThemeName"), std::nullopt);
    EXPECT_EQ(xsettingsInteger(settings, "Net/DoubleClick"), std::nullopt);
    const QByteArray big = QByteArray::fromHex("01000000000000000000000100000001410000000000000000000102");
    EXPECT_EQ(xsettingsInteger(big, "A"), 0x102);
}

TEST(MouseSettingsTest, brokenSettingsAreNone) {
    const QByteArray whole = settingsWith({{"Net/DoubleClickTime", 250}});
    for (qsizetype length = 0; length < whole.size(); ++length)
        EXPECT_EQ(xsettingsInteger(whole.left(length), "Net/DoubleClickTime"), std::nullopt) << length;
    for (qsizetype at = 0; at < whole.size(); ++at) {
        QByteArray broken = whole;
        broken[at] = '\xFF';
        xsettingsInteger(broken, "Net/DoubleClickTime");
        xsettingsInteger(broken, "Nowhere");
    }
}

TEST_F(MouseTapTest, nonsenseSettingsCountAsTheUsualOnes) {
    const auto connection = X11Connection::open(desktop().display().toLatin1());
    for (const QByteArray& settings :
         {QByteArray("garbage"), QByteArray(),
          settingsWith({{"Net/DoubleClickTime", -5}, {"Net/DoubleClickDistance", -1}}),
          settingsWith({{"Net/DoubleClickTime", 1'000'000}, {"Net/DoubleClickDistance", 1'000'000}})}) {
        daemon_->publish(settings);
        const DoubleClick limits = doubleClickOf(*connection);
        EXPECT_EQ(limits.milliseconds, 400);
        EXPECT_EQ(limits.pixels, 5);
    }
    daemon_->publish(settingsWith({{"Net/DoubleClickTime", 250}, {"Net/DoubleClickDistance", 0}}));
    EXPECT_EQ(doubleClickOf(*connection).milliseconds, 250);
    EXPECT_EQ(doubleClickOf(*connection).pixels, 0);
    daemon_.reset();
    EXPECT_EQ(doubleClickOf(*connection).milliseconds, 400);
}

TEST(ClickCounterTest, theServersTimeMayWrapAround) {
    ClickCounter clicks;
    const DoubleClick limits;
    EXPECT_EQ(clicks.press(0xFFFFFFF0U, {1, 1}, limits), 1);
    EXPECT_EQ(clicks.press(100, {1, 1}, limits), 2);
    EXPECT_EQ(clicks.press(499, {1, 1}, limits), 3);
    EXPECT_EQ(clicks.press(899, {1, 1}, limits), 1) << "400 is too late";
}

}  // namespace
}  // namespace veltrin
