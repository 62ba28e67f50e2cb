#pragma once

#include "support/desktop/RealDesktop.h"

#include <QPoint>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace veltrin {

/// A person at the keyboard and the mouse. By default the events come from the server's own keyboard and
/// mouse devices, as real ones do, and so differ from what any program posts by XTEST; a second kind posts by
/// XTEST, as remote-control tools do.
///
/// Every call runs in the calling thread until the last event is in the server's queue, at exact moments,
/// without an event loop. A test whose own process has to react meanwhile wraps the calls in `whileLoopRuns`.
/// All times are seconds; all moments are on the clock of `monotonicSeconds`. Keys still down at the end of
/// its life are released.
///
/// Throws std::runtime_error for what the current keyboard layout has no key for.
class Typist {
public:
    enum class Device { physical, xtest };

    explicit Typist(RealDesktop& desktop, Device device = Device::physical);
    ~Typist();
    Typist(const Typist&) = delete;
    Typist& operator=(const Typist&) = delete;

    /// Types text, Shift and AltGr included; '\n' is Return, '\t' Tab, '\b' Backspace. `gap` is the time from
    /// one press to the next, half of which the key is held.
    void type(const QString& text, double gap = 0.012);

    /// When each tap was really pressed. A busy machine may be late by tens of milliseconds; a test of a
    /// limit in time judges by these, not by what it asked for.
    using Moments = std::vector<double>;
    /// Taps the space bar. `gap` runs from press to press, `hold` from press to release.
    Moments tapSpace(int count, double gap, double hold = 0.03);
    Moments tap(const QString& key, int count = 1, double gap = 0.1, double hold = 0.03);

    /// Keys are named as X names keysyms ("a", "space", "Return", "Escape", "Left", "Control_L", "F5"), or
    /// "Ctrl", "Shift", "Alt", "Super", "AltGr".
    void press(const QString& key);
    void release(const QString& key);
    /// "Ctrl+Shift+A": the modifiers down in this order, the key pressed for `hold`, everything up again.
    void chord(const QString& keys, double hold = 0.02);
    /// Releases what this typist holds down, mouse buttons included.
    void releaseAll();

    void moveMouse(QPoint to);
    void pressButton(int button = 1);
    void releaseButton(int button = 1);
    void click(QPoint at, int count = 1, int button = 1);
    /// Presses at `from`, moves in `steps` over `seconds`, releases at `to`.
    void drag(QPoint from, QPoint to, double seconds = 0.2, int steps = 20);
    /// Positive is down.
    void wheel(int steps);

    void pause(double seconds);

    /// Number of keys the server holds for down, whoever pressed them.
    int keysDown();
    /// Modifiers and locks in effect (XCB_MOD_MASK_…).
    quint16 modifiers();

    /// Runs `work` on a thread of its own while this thread's Qt event loop runs, and returns when it has
    /// ended. What it throws comes out here.
    void whileLoopRuns(const std::function<void(Typist&)>& work);

private:
    struct Devices;
    struct Key {
        quint8 code = 0;
        int level = 0;
    };

    RealDesktop& desktop_;
    std::unique_ptr<Devices> devices_;
    Device device_;
    std::vector<quint8> keysHeld_;
    std::vector<int> buttonsHeld_;
    double next_ = 0;  ///< when the event that is due next happens

    Key keyFor(quint32 keysym);
    quint32 keysymNamed(const QString& name);
    void sendKey(quint8 code, bool down);
    void sendButton(int button, bool down);
    void begin();
    void after(double seconds);
    void holdLevel(int level, bool down);
};

}  // namespace veltrin
