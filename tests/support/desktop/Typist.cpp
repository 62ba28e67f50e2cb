#include "support/desktop/Typist.h"

#include "support/desktop/Waiting.h"

#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstring>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>
// Xlib comes last: it defines macros named None, Bool and Status.
#include <X11/Xlib.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>

namespace veltrin {
namespace {

constexpr std::pair<const char*, quint32> modifierNames[] = {
    {"Ctrl", XKB_KEY_Control_L}, {"Control", XKB_KEY_Control_L}, {"Shift", XKB_KEY_Shift_L},
    {"Alt", XKB_KEY_Alt_L},      {"Super", XKB_KEY_Super_L},     {"AltGr", XKB_KEY_ISO_Level3_Shift},
};

void sleepUntil(double moment) {
    const double whole = std::floor(moment);
    const timespec time{static_cast<time_t>(whole), static_cast<long>((moment - whole) * 1e9)};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
    }
}

}  // namespace

/// The connection to the server and its keyboard and mouse. XTEST events of a chosen device are Xlib's to
/// send.
struct Typist::Devices {
    Display* display;
    XDevice* keyboard = nullptr;
    XDevice* mouse = nullptr;

    explicit Devices(const QString& name) : display(XOpenDisplay(name.toLatin1().constData())) {
        if (!display) throw std::runtime_error("the typist found no display");
        // A server that died under the test must not take the test program along, as Xlib would have it.
        XSetIOErrorHandler([](Display*) { return 0; });
        XSetIOErrorExitHandler(
            display, [](Display*, void*) {}, nullptr);
        int count = 0;
        XDeviceInfo* devices = XListInputDevices(display, &count);
        for (int index = 0; index < count; ++index) {
            const XDeviceInfo& device = devices[index];
            // Slaves only, and not the two that stand for XTEST itself.
            if (std::strstr(device.name, "XTEST")) continue;
            if (device.use == IsXExtensionKeyboard && !keyboard) keyboard = XOpenDevice(display, device.id);
            if (device.use == IsXExtensionPointer && !mouse) mouse = XOpenDevice(display, device.id);
        }
        if (devices) XFreeDeviceList(devices);
        if (!keyboard || !mouse) throw std::runtime_error("the server has no keyboard or no mouse");
    }
    Devices(const Devices&) = delete;
    Devices& operator=(const Devices&) = delete;
    ~Devices() {
        XCloseDevice(display, keyboard);
        XCloseDevice(display, mouse);
        XCloseDisplay(display);
    }
};

Typist::Typist(RealDesktop& desktop, Device device)
    : desktop_(desktop), devices_(std::make_unique<Devices>(desktop.display())), device_(device) {
}

Typist::~Typist() {
    releaseAll();
}

Typist::Key Typist::keyFor(quint32 keysym) {
    Display* display = devices_->display;
    int lowest = 0;
    int highest = 0;
    int perKey = 0;
    XDisplayKeycodes(display, &lowest, &highest);
    // Asked anew each time: the layout may have changed since.
    KeySym* table = XGetKeyboardMapping(display, static_cast<KeyCode>(lowest), highest - lowest + 1, &perKey);
    Key found;
    // Columns 0 and 1 are plain and Shift; 2 and 3 the second layout; 4 and 5 AltGr and Shift+AltGr.
    for (const int column : {0, 1, 4, 5}) {
        for (int code = lowest; code <= highest && found.code == 0 && column < perKey; ++code) {
            const KeySym here = table[(code - lowest) * perKey + column];
            if (here == keysym) found = {static_cast<quint8>(code), column < 2 ? column : column - 2};
        }
    }
    XFree(table);
    if (found.code == 0) {
        char name[64] = "?";
        xkb_keysym_get_name(keysym, name, sizeof name);
        throw std::runtime_error(std::string("the keyboard layout has no key for ") + name);
    }
    return found;
}

quint32 Typist::keysymNamed(const QString& name) {
    for (const auto& [modifier, keysym] : modifierNames) {
        if (name.compare(QLatin1String(modifier), Qt::CaseInsensitive) == 0) return keysym;
    }
    const QByteArray latin = name.toLatin1();
    xkb_keysym_t keysym = xkb_keysym_from_name(latin.constData(), XKB_KEYSYM_NO_FLAGS);
    if (keysym == XKB_KEY_NoSymbol && name.size() == 1) keysym = xkb_utf32_to_keysym(name.at(0).unicode());
    if (keysym == XKB_KEY_NoSymbol) throw std::runtime_error("no key is named " + name.toStdString());
    return keysym;
}

void Typist::sendKey(quint8 code, bool down) {
    sleepUntil(next_);
    if (device_ == Device::physical) {
        XTestFakeDeviceKeyEvent(devices_->display, devices_->keyboard, code, down ? True : False, nullptr, 0,
                                0);
    } else {
        XTestFakeKeyEvent(devices_->display, code, down ? True : False, 0);
    }
    // A round trip: whoever asks the server next, on any connection, finds the event done.
    XSync(devices_->display, False);
    if (down) {
        keysHeld_.push_back(code);
    } else {
        std::erase(keysHeld_, code);
    }
}

void Typist::sendButton(int button, bool down) {
    sleepUntil(next_);
    const auto number = static_cast<unsigned>(button);
    if (device_ == Device::physical) {
        XTestFakeDeviceButtonEvent(devices_->display, devices_->mouse, number, down ? True : False, nullptr,
                                   0, 0);
    } else {
        XTestFakeButtonEvent(devices_->display, number, down ? True : False, 0);
    }
    // A round trip: whoever asks the server next, on any connection, finds the event done.
    XSync(devices_->display, False);
    if (down) {
        buttonsHeld_.push_back(button);
    } else {
        std::erase(buttonsHeld_, button);
    }
}

// A call's events happen at moments counted from its begin, so that lateness does not add up.
void Typist::begin() {
    next_ = monotonicSeconds();
}
void Typist::after(double seconds) {
    next_ += seconds;
}

void Typist::pause(double seconds) {
    sleepUntil(monotonicSeconds() + seconds);
}

void Typist::holdLevel(int level, bool down) {
    if (level & 1) sendKey(keyFor(XKB_KEY_Shift_L).code, down);
    if (level & 2) sendKey(keyFor(XKB_KEY_ISO_Level3_Shift).code, down);
}

void Typist::type(const QString& text, double gap) {
    begin();
    for (const char32_t point : text.toUcs4()) {
        quint32 keysym = xkb_utf32_to_keysym(point);
        if (point == U'\n') keysym = XKB_KEY_Return;
        if (point == U'\t') keysym = XKB_KEY_Tab;
        if (point == U'\b') keysym = XKB_KEY_BackSpace;
        const Key key = keyFor(keysym);
        holdLevel(key.level, true);
        sendKey(key.code, true);
        after(gap / 2);
        sendKey(key.code, false);
        holdLevel(key.level, false);
        after(gap / 2);
    }
    sleepUntil(next_);
}

Typist::Moments Typist::tapSpace(int count, double gap, double hold) {
    return tap(QStringLiteral("space"), count, gap, hold);
}

Typist::Moments Typist::tap(const QString& name, int count, double gap, double hold) {
    const Key key = keyFor(keysymNamed(name));
    Moments moments;
    begin();
    for (int done = 0; done < count; ++done) {
        holdLevel(key.level, true);
        sendKey(key.code, true);
        moments.push_back(monotonicSeconds());
        after(hold);
        sendKey(key.code, false);
        holdLevel(key.level, false);
        if (done + 1 < count) after(gap - hold);
    }
    return moments;
}

void Typist::press(const QString& key) {
    begin();
    sendKey(keyFor(keysymNamed(key)).code, true);
}

void Typist::release(const QString& key) {
    begin();
    sendKey(keyFor(keysymNamed(key)).code, false);
}

void Typist::chord(const QString& keys, double hold) {
    QStringList names = keys.split(u'+', Qt::SkipEmptyParts);
    if (keys.endsWith(u'+')) names.append(QStringLiteral("plus"));
    std::vector<quint8> codes;
    for (const QString& name : names) {
        // A shortcut is written with capitals and pressed without Shift unless Shift is named.
        codes.push_back(keyFor(keysymNamed(name.size() == 1 ? name.toLower() : name)).code);
    }
    begin();
    for (const quint8 code : codes) {
        sendKey(code, true);
        after(hold / 4);
    }
    after(hold);
    for (auto code = codes.rbegin(); code != codes.rend(); ++code) {
        sendKey(*code, false);
        after(hold / 4);
    }
}

void Typist::releaseAll() {
    begin();
    for (const quint8 code : std::vector<quint8>(keysHeld_.rbegin(), keysHeld_.rend()))
        sendKey(code, false);
    for (const int button : std::vector<int>(buttonsHeld_))
        sendButton(button, false);
    XSync(devices_->display, False);
}

void Typist::moveMouse(QPoint to) {
    if (device_ == Device::physical) {
        int axes[] = {to.x(), to.y()};
        XTestFakeDeviceMotionEvent(devices_->display, devices_->mouse, False, 0, axes, 2, 0);
    } else {
        XTestFakeMotionEvent(devices_->display, 0, to.x(), to.y(), 0);
    }
    XSync(devices_->display, False);
}

void Typist::pressButton(int button) {
    begin();
    sendButton(button, true);
}

void Typist::releaseButton(int button) {
    begin();
    sendButton(button, false);
}

void Typist::click(QPoint at, int count, int button) {
    moveMouse(at);
    begin();
    for (int done = 0; done < count; ++done) {
        sendButton(button, true);
        after(0.03);
        sendButton(button, false);
        after(0.06);
    }
}

void Typist::drag(QPoint from, QPoint to, double seconds, int steps) {
    moveMouse(from);
    begin();
    sendButton(1, true);
    for (int step = 1; step <= steps; ++step) {
        after(seconds / steps);
        sleepUntil(next_);
        moveMouse(from + (to - from) * step / steps);
    }
    after(0.03);
    sendButton(1, false);
}

void Typist::wheel(int steps) {
    begin();
    for (int done = 0; done < std::abs(steps); ++done) {
        const int button = steps > 0 ? 5 : 4;
        sendButton(button, true);
        sendButton(button, false);
        after(0.02);
    }
}

// On the typist's own connection, behind its own events: keys still on their way count.
int Typist::keysDown() {
    char keys[32];
    XQueryKeymap(devices_->display, keys);
    int down = 0;
    for (const char byte : keys)
        down += std::popcount(static_cast<unsigned char>(byte));
    return down;
}

quint16 Typist::modifiers() {
    XSync(devices_->display, False);
    return desktop_.x().modifiers();
}

void Typist::whileLoopRuns(const std::function<void(Typist&)>& work) {
    std::atomic<bool> ended = false;
    std::exception_ptr thrown;
    std::thread worker([&] {
        try {
            work(*this);
        } catch (...) {
            thrown = std::current_exception();
        }
        ended = true;
    });
    eventually(3600, [&] { return ended.load(); });
    worker.join();
    if (thrown) std::rethrow_exception(thrown);
}

}  // namespace veltrin
