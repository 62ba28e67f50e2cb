#pragma once

#include "Gesture/SpaceGestureEngine.h"
#include "support/fake/FakeDesktop.h"
#include "support/fake/FakeKeyCodes.h"
#include "support/fake/LogCapture.h"

#include <gtest/gtest.h>

namespace veltrin {

/// An engine on a desktop with one editor in front, and the typist at its keyboard.
class GestureTest : public testing::Test {
protected:
    LogCapture log;
    FakeDesktop desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
    FakeTextField& field = editor.addField();
    int hints = 0;
    std::vector<qint64> copyHints;
    SpaceGestureEngine engine{desktop.runLoop,     desktop.keyEventTaps,
                              desktop.preferences, desktop.pasteboard,
                              [this] { ++hints; }, [this](qint64 count) { copyHints.push_back(count); }};
    int doubles = 0;
    int triples = 0;
    double doubleAt = 0;
    double tripleAt = 0;
    std::vector<CustomShortcutAction> shortcuts;

    void SetUp() override {
        desktop.focus(field);
        engine.onDouble = [this] {
            ++doubles;
            doubleAt = desktop.now();
        };
        engine.onTriple = [this] {
            ++triples;
            tripleAt = desktop.now();
        };
        engine.onCustomShortcut = [this](CustomShortcutAction action) { shortcuts.push_back(action); };
        ASSERT_TRUE(engine.start());
    }

    void press(qint64 keyCode, quint64 flags = 0) { desktop.keyboard.press(keyCode, flags); }
    void release(qint64 keyCode, quint64 flags = 0) { desktop.keyboard.release(keyCode, flags); }
    FakeKeyEventTaps::Record& tap() { return *desktop.keyEventTaps.taps.back(); }
    bool logged(const QString& line) const { return log.lines().contains(line); }
    bool loggedStart(const QString& start) const {
        for (const QString& line : log.lines()) {
            if (line.startsWith(start)) return true;
        }
        return false;
    }
    void verbose() { desktop.preferences.set(PreferenceKeys::gestureVerboseLogging, true); }
};

}  // namespace veltrin
