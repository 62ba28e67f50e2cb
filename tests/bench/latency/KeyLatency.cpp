// Measures the time from a key's injection to its arrival in an application, without the tap and with it, in
// turns, so that a busy machine troubles both alike. Prints medians and ratios; ends with 1 when an ordinary
// key under the tap takes more than 1.3 times as long. An open choice and the first key after a rest are
// shown without a limit. Other programs that watch keys are measured too where
// they are installed, alone and without a limit, for comparison.
#include "Platform/Linux/QtRunLoop.h"
#include "Platform/Linux/X11/X11Connection.h"
#include "Platform/Linux/X11/X11KeyEventTaps.h"
#include "Platform/Linux/X11/X11Keymap.h"
#include "support/desktop/ChildProcess.h"
#include "support/desktop/RealDesktop.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QStringList>

#include <poll.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace veltrin;
using Clock = std::chrono::steady_clock;

constexpr int turns = 100;
constexpr int keysPerTurn = 8;
/// Between two keys: those of a quick typist, as several come between two looks of a listener that gathers
/// them.
constexpr std::chrono::milliseconds pause{12};
/// A rest in which a listener stops gathering, and how often it is taken.
constexpr std::chrono::milliseconds rest{1'200};
constexpr int rests = 15;
constexpr double allowedRatio = 1.3;

/// An application and a typist in one: injects a key and waits for it to arrive. The keys come from the
/// server's own keyboard device, as real ones do.
class Keyboard {
public:
    explicit Keyboard(const QByteArray& display)
        : typist_(X11Connection::open(display)), application_(X11Connection::open(display)) {
        openDevice();
        auto* xcb = application_->xcb();
        const xcb_window_t window = xcb_generate_id(xcb);
        const std::uint32_t values[] = {1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE};
        xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window, application_->root(), 0, 0, 100, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, application_->screen().root_visual,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        xcb_map_window(xcb, window);
        application_->roundTrip();
        xcb_set_input_focus(xcb, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
        application_->roundTrip();
    }

    /// Microseconds from the injection of the press to its arrival; the release is waited for too.
    double tap(std::uint8_t key) {
        std::this_thread::sleep_for(pause);
        const auto begin = Clock::now();
        send(XCB_KEY_PRESS, key);
        waitFor(XCB_KEY_PRESS);
        const double took = std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
        send(XCB_KEY_RELEASE, key);
        waitFor(XCB_KEY_RELEASE);
        return took;
    }

private:
    void openDevice() {
        auto* xcb = typist_->xcb();
        const X11Reply<xcb_input_xi_query_device_reply_t> devices(xcb_input_xi_query_device_reply(
            xcb, xcb_input_xi_query_device(xcb, XCB_INPUT_DEVICE_ALL), nullptr));
        for (auto each = xcb_input_xi_query_device_infos_iterator(devices.get()); each.rem > 0;
             xcb_input_xi_device_info_next(&each)) {
            const std::string name(xcb_input_xi_device_info_name(each.data),
                                   static_cast<std::size_t>(xcb_input_xi_device_info_name_length(each.data)));
            if (each.data->type != XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD ||
                name.find("XTEST") != std::string::npos) {
                continue;
            }
            device_ = static_cast<std::uint8_t>(each.data->deviceid);
        }
        const X11Reply<xcb_input_open_device_reply_t> opened(
            xcb_input_open_device_reply(xcb, xcb_input_open_device(xcb, device_), nullptr));
        if (!opened) {
            std::fprintf(stderr, "the server has no keyboard device\n");
            std::exit(2);
        }
        firstEvent_ = xcb_get_extension_data(xcb, &xcb_input_id)->first_event;
    }
    void send(std::uint8_t type, std::uint8_t key) {
        // The device's events are numbered from the extension's first: 1 is its press, 2 its release.
        const auto kind = static_cast<std::uint8_t>(firstEvent_ + (type == XCB_KEY_PRESS ? 1 : 2));
        xcb_test_fake_input(typist_->xcb(), kind, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, device_);
        typist_->flush();
    }
    void waitFor(std::uint8_t type) {
        const bool came = application_->waitForEvent(
            std::chrono::seconds(2),
            [&](const xcb_generic_event_t& event) { return (event.response_type & 0x7F) == type; });
        if (!came) {
            std::fprintf(stderr, "a key did not arrive\n");
            std::exit(2);
        }
    }

    std::unique_ptr<X11Connection> typist_;
    std::unique_ptr<X11Connection> application_;
    std::uint8_t device_ = 0;
    std::uint8_t firstEvent_ = 0;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// The times of one turn's keys. The first is not counted: it pays for the change from what was before.
void takeTurn(Keyboard& keyboard, std::uint8_t key, std::vector<double>& times) {
    keyboard.tap(key);
    for (int i = 0; i < keysPerTurn; ++i)
        times.push_back(keyboard.tap(key));
}

/// Another program that watches keys, measured in turns with nothing.
void measureOther(RealDesktop& desktop, Keyboard& keyboard, std::uint8_t key, const QStringList& command) {
    if (QStandardPaths::findExecutable(command.first()).isEmpty()) return;
    std::vector<double> without;
    std::vector<double> with;
    for (int turn = 0; turn < turns / 5; ++turn) {
        takeTurn(keyboard, key, without);
        const ChildProcess other({.command = command,
                                  .environment = desktop.environment(),
                                  .outputFile = desktop.file(QStringLiteral("other.log"))});
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
        takeTurn(keyboard, key, with);
    }
    std::printf("  %-44s %6.0f us  %.2f\n", qPrintable(command.join(u' ')), median(with),
                median(with) / median(without));
}

/// Runs `work` on another thread while this thread's event loop runs.
void whileLoopRuns(const std::function<void()>& work) {
    std::atomic<bool> done{false};
    std::thread hands([&] {
        work();
        done = true;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [] {}, Qt::QueuedConnection);
    });
    while (!done)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    hands.join();
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    DesktopOptions options;
    options.windowManager = false;
    options.accessibility = false;
    RealDesktop desktop(options);
    const QByteArray display = desktop.display().toLatin1();
    Keyboard keyboard(display);
    const auto connection = X11Connection::open(display);
    const auto keymap = X11Keymap::load(*connection);
    const auto key = [&](qint64 code) { return keymap->keys(code, 0).at(0); };

    QtRunLoop loop;
    X11KeyEventTaps taps(loop, display);
    auto tap = taps.create(KeyEventMask::keyDownAndKeyUp, [](const KeyEvent&) { return true; });
    if (!tap) return 2;
    tap->addToRunLoop();
    const std::vector<ClaimableKey> shortcuts = {{KeyCode::space, KeyFlags::option, false}};
    std::vector<ClaimableKey> panel = shortcuts;
    for (const qint64 code : {36, 48, 49, 51, 123, 124, 125, 126})
        panel.push_back({code, 0, false});
    panel.push_back({KeyCode::escape, 0, true});

    struct Mode {
        const char* name;
        bool on;
        const std::vector<ClaimableKey>* claimable;
        qint64 key;
        std::vector<double> times;
    };
    Mode modes[] = {{"no tap", false, &shortcuts, KeyCode::c, {}},
                    {"tap, ordinary key", true, &shortcuts, KeyCode::c, {}},
                    {"tap, panel open, ordinary key", true, &panel, KeyCode::c, {}},
                    {"tap, a key that may be claimed, passed on", true, &panel, KeyCode::space, {}}};
    for (int turn = 0; turn < turns; ++turn) {
        for (auto& mode : modes) {
            tap->setClaimable(*mode.claimable);
            tap->setEnabled(mode.on);
            whileLoopRuns([&] { takeTurn(keyboard, key(mode.key), mode.times); });
        }
    }
    // What the first key after a rest costs: that one wakes the listener.
    std::vector<double> firstWithout;
    std::vector<double> firstWith;
    for (int i = 0; i < rests; ++i) {
        for (const bool on : {false, true}) {
            tap->setClaimable(shortcuts);
            tap->setEnabled(on);
            whileLoopRuns([&] {
                std::this_thread::sleep_for(rest);
                (on ? firstWith : firstWithout).push_back(keyboard.tap(key(KeyCode::c)));
            });
        }
    }
    const double base = median(modes[0].times);
    std::printf("key latency, median of %d in turns\n", turns * keysPerTurn);
    for (const auto& mode : modes) {
        std::printf("  %-44s %6.0f us  %.2f\n", mode.name, median(mode.times), median(mode.times) / base);
    }
    std::printf("  %-44s %6.0f us  %.2f\n", "tap, the first key after a rest", median(firstWith),
                median(firstWith) / median(firstWithout));
    tap->setEnabled(false);
    measureOther(desktop, keyboard, key(KeyCode::c),
                 {QStringLiteral("xinput"), QStringLiteral("test-xi2"), QStringLiteral("--root")});
    measureOther(desktop, keyboard, key(KeyCode::c),
                 {QStringLiteral("xbindkeys"), QStringLiteral("-n"), QStringLiteral("-f"),
                  QStringLiteral("/dev/null")});
    const double ratio = median(modes[1].times) / base;
    return ratio <= allowedRatio ? 0 : 1;
}
