#pragma once

#include "support/fake/FakeKeyEventTaps.h"
#include "support/fake/FakeWorkspace.h"

#include <set>

namespace veltrin {

/// The user's hands on the keyboard. A key goes through the taps and then to the application in front.
///
/// `press`, `release` and `repeat` take no time and may be used from an action of the world; the others let
/// the clock run on while they work, as a real hand does.
class FakeKeyboard {
public:
    FakeKeyboard(FakeRunLoop& loop, FakeKeyEventTaps& taps, FakeWorkspace& workspace)
        : loop_(loop), taps_(taps), workspace_(workspace) {}

    /// Types a text character by character. What stands on no key comes as one key without a code, as from an
    /// input method.
    void type(const QString& text);
    /// Presses and releases a key with modifiers held around it.
    void chord(qint64 keyCode, quint64 flags = 0);
    void copy() { chord(KeyCode::c, KeyFlags::command); }
    void paste() { chord(KeyCode::v, KeyFlags::command); }
    /// A tap of the space bar; returns at its release.
    void tapSpace(double holdSeconds = 0.05);
    /// Taps of the space bar whose presses are `interval` seconds apart; returns at the last release.
    void tapSpaces(int taps, double interval = 0.15, double holdSeconds = 0.05);
    /// Holds a key with the auto-repeats that a keyboard makes.
    void hold(qint64 keyCode, double seconds, quint64 flags = 0);

    void press(qint64 keyCode, quint64 flags = 0) { send(KeyEventType::keyDown, keyCode, flags, false, {}); }
    void repeat(qint64 keyCode, quint64 flags = 0) { send(KeyEventType::keyDown, keyCode, flags, true, {}); }
    void release(qint64 keyCode, quint64 flags = 0) { send(KeyEventType::keyUp, keyCode, flags, false, {}); }

    /// Modifiers that the user keeps holding; they go along with every key.
    quint64 heldModifiers = 0;
    double keyHold = 0.03;      ///< seconds a typed key stays down
    double keyGap = 0.09;       ///< seconds from a typed key's release to the next press
    double repeatDelay = 0.66;  ///< seconds until a held key repeats
    double repeatInterval = 0.04;
    /// Keys that are down now.
    std::set<qint64> down;

private:
    void send(KeyEventType type, qint64 keyCode, quint64 flags, bool isAutoRepeat, const QString& text);
    void stroke(qint64 keyCode, quint64 flags, const QString& text);

    FakeRunLoop& loop_;
    FakeKeyEventTaps& taps_;
    FakeWorkspace& workspace_;
};

}  // namespace veltrin
