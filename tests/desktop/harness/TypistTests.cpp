#include "support/desktop/DesktopTest.h"

#include <QTimer>

#include <xcb/xinput.h>

#include <memory>
#include <thread>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class TypistTest : public DesktopTest {};

/// Raw key events as an XInput client sees them.
struct RawKeys {
    explicit RawKeys(RealDesktop& desktop) : x(desktop.display()) {
        const XReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
            x.connection(), xcb_input_xi_query_version(x.connection(), 2, 2), nullptr));
        struct {
            xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
            uint32_t mask = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
        } selected;
        xcb_input_xi_select_events(x.connection(), x.root(), 1, &selected.head);
        x.sync();
    }

    struct Event {
        bool isPress;
        uint16_t source;
        xcb_timestamp_t time;
    };
    std::vector<Event> take() {
        x.sync();
        std::vector<Event> events;
        while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(x.connection())}) {
            // A switch between keyboards tells every client of its mapping.
            if ((event->response_type & 0x7F) != XCB_GE_GENERIC) continue;
            const auto& raw = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(*event);
            events.push_back({raw.event_type == XCB_INPUT_RAW_KEY_PRESS, raw.sourceid, raw.time});
        }
        return events;
    }

    XDesktop x;
};

TEST_F(TypistTest, thePhysicalKeyboardIsAnotherDeviceThanXtest) {
    RawKeys keys(desktop());
    typist().tap(u"a"_s);
    const auto physical = keys.take();
    Typist remote(desktop(), Typist::Device::xtest);
    remote.tap(u"a"_s);
    const auto posted = keys.take();
    ASSERT_EQ(physical.size(), 2U);
    ASSERT_EQ(posted.size(), 2U);
    EXPECT_NE(physical[0].source, posted[0].source);
}

TEST_F(TypistTest, tapsKeepTheirPace) {
    RawKeys keys(desktop());
    const auto moments = typist().tapSpace(3, 0.15, 0.04);
    ASSERT_EQ(moments.size(), 3U);
    const auto events = keys.take();
    ASSERT_EQ(events.size(), 6U);
    // A busy machine makes a tap late, never early, and lateness does not add up.
    constexpr double late = 0.2;
    for (std::size_t tap = 0; tap < 3; ++tap) {
        const double due = 0.15 * static_cast<double>(tap);
        const double pressed = moments[tap] - moments[0];
        EXPECT_GT(pressed, due - late);
        EXPECT_LT(pressed, due + late);
        const auto& press = events[2 * tap];
        EXPECT_TRUE(press.isPress);
        EXPECT_FALSE(events[2 * tap + 1].isPress);
        EXPECT_NEAR((events[2 * tap + 1].time - press.time) * 1e-3, 0.04, late);
        // The server's time stamps are the clock of the moments, which tell when a press really happened.
        EXPECT_NEAR(press.time * 1e-3, moments[tap], late);
    }
}

TEST_F(TypistTest, releasesWhatItHoldsAtItsEnd) {
    {
        Typist careless(desktop());
        careless.press(u"Ctrl"_s);
        careless.press(u"a"_s);
        careless.pressButton();
        EXPECT_EQ(careless.keysDown(), 2);
        EXPECT_EQ(careless.modifiers(), XCB_MOD_MASK_CONTROL);
    }
    EXPECT_EQ(x().keysDown(), 0);
    EXPECT_EQ(x().buttonsDown(), 0);
}

TEST_F(TypistTest, aChordGoesDownAndUpWhole) {
    Program program = Program::mousepad(desktop(), u"some text"_s);
    const ProbedField field = atspi().waitForField(program);
    typist().chord(u"Ctrl+A"_s);
    EXPECT_TRUE(waitUntil(2, [&] { return atspi().read(field).selectedText() == u"some text"_s; }));
    EXPECT_EQ(typist().keysDown(), 0);
    EXPECT_EQ(typist().modifiers(), 0);
}

TEST_F(TypistTest, theMouseClicksSelectsAndDrags) {
    Program program = Program::qtEditor(desktop(), {u"--text"_s, u"hello brave world"_s});
    const ProbedField field = atspi().waitForField(program);
    const QRect word = atspi().rangeExtents(field, 6, 11);
    typist().click(word.center(), 2);
    EXPECT_EQ(x().pointer(), word.center());
    EXPECT_TRUE(waitUntil(2, [&] { return atspi().read(field).selectedText() == u"brave"_s; }));
    const QRect all = atspi().rangeExtents(field, 0, 17);
    // A press inside the selection would drag its text.
    typist().click({all.right() + 40, all.center().y()});
    typist().drag({all.left() + 1, all.center().y()}, {all.right() + 20, all.center().y()});
    EXPECT_TRUE(waitUntil(2, [&] { return atspi().read(field).selectedText() == u"hello brave world"_s; }));
}

TEST_F(TypistTest, whileItTypesOnAThreadTheEventLoopRuns) {
    int turns = 0;
    QTimer ticks;
    QObject::connect(&ticks, &QTimer::timeout, [&turns] { ++turns; });
    ticks.start(10);
    bool typedElsewhere = false;
    const auto main = std::this_thread::get_id();
    typist().whileLoopRuns([&](Typist& self) {
        typedElsewhere = std::this_thread::get_id() != main;
        self.tapSpace(2, 0.1);
    });
    EXPECT_TRUE(typedElsewhere);
    EXPECT_GT(turns, 3);
    EXPECT_THROW(typist().whileLoopRuns([](Typist& self) { self.press(u"NoSuchKey"_s); }),
                 std::runtime_error);
}

TEST(TypistOnOtherLayouts, findsItsKeysWhereTheLayoutHasThem) {
    RealDesktop desktop;
    desktop.setKeyboardLayout(u"de"_s);
    AtSpiProbe probe(desktop);
    Program program = Program::mousepad(desktop);
    const ProbedField field = probe.waitForField(program);
    Typist typist(desktop);
    typist.type(u"Zyäß{@}"_s);
    EXPECT_EQ(probe.waitForText(field, u"Zyäß{@}"_s), u"Zyäß{@}"_s);
    expectNothingHeld(desktop);
}

}  // namespace
}  // namespace veltrin
