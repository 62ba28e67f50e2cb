#include "support/desktop/DesktopTest.h"
#include "support/desktop/ReceivedKeys.h"

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

class ReceivedKeysTest : public DesktopTest {
protected:
    /// The window manager says that a window is active before it has the focus.
    bool hasFocus(const Program& program) {
        return waitUntil(10, [&] {
            const XReply<xcb_get_input_focus_reply_t> focus(
                xcb_get_input_focus_reply(x().connection(), xcb_get_input_focus(x().connection()), nullptr));
            return focus && keys.clientOf(focus->focus) == keys.clientOf(program.window());
        });
    }
    /// What is pressed meanwhile, all of it in the window's own client.
    QStringList pressedIn(const Program& program, Typist& hand) {
        EXPECT_TRUE(hasFocus(program));
        keys.take();
        hand.chord(u"Ctrl+Shift+C"_s);
        hand.type(u"a"_s);
        QStringList names;
        for (const ReceivedKeys::Press& press : keys.take()) {
            EXPECT_EQ(keys.clientOf(press.window), keys.clientOf(program.window()));
            names << press.key;
        }
        return names;
    }

    ReceivedKeys keys{desktop()};
};

TEST_F(ReceivedKeysTest, tellsWhatEveryToolkitIsGivenWhoeverPressesIt) {
    const QStringList expected{u"Control_L"_s, u"Shift_L"_s, u"c"_s, u"a"_s};
    Typist remote(desktop(), Typist::Device::xtest);
    using Start = Program (*)(RealDesktop&);
    for (const Start start : {Start([](RealDesktop& on) { return Program::mousepad(on); }),
                              Start([](RealDesktop& on) { return Program::gnomeTextEditor(on); }),
                              Start([](RealDesktop& on) { return Program::qtEditor(on); })}) {
        const Program program = start(desktop());
        SCOPED_TRACE(x().title(program.window()).toStdString());
        EXPECT_EQ(pressedIn(program, typist()), expected);
        EXPECT_EQ(pressedIn(program, remote), expected);
    }
    EXPECT_TRUE(keys.take().isEmpty());
}

TEST_F(ReceivedKeysTest, followsTheFocus) {
    const Program first = Program::qtEditor(desktop());
    const Program second = Program::mousepad(desktop());
    ASSERT_TRUE(x().activate(first.window()) && hasFocus(first));
    keys.take();
    typist().type(u"a"_s);
    ASSERT_TRUE(x().activate(second.window()) && hasFocus(second));
    typist().type(u"b"_s);
    const auto presses = keys.take();
    ASSERT_EQ(presses.size(), 2);
    EXPECT_EQ(presses[0].key, u"a");
    EXPECT_EQ(keys.clientOf(presses[0].window), keys.clientOf(first.window()));
    EXPECT_EQ(presses[1].key, u"b");
    EXPECT_EQ(keys.clientOf(presses[1].window), keys.clientOf(second.window()));
}

}  // namespace
}  // namespace veltrin
