#pragma once

#include "Gesture/SpaceGesturePolicy.h"
#include "support/fake/LogCapture.h"
#include "support/fake/RecordingSurface.h"
#include "support/fake/SimulatedVeltrin.h"

#include <gtest/gtest.h>

namespace veltrin {

/// The whole program, with a surface that keeps what it is asked for, beside an editor in which words are
/// selected.
class SmartSelectTriggerTest : public testing::Test {
protected:
    static constexpr double dragDelay = 0.5;
    static constexpr double multiClickDelay = 0.25;
    static constexpr double step = 0.01;

    SmartSelectTriggerTest() {
        desktop.focus(field);
        desktop.pasteboard.put(QStringLiteral("user's"));
        field.select(0, 5);
        veltrin.smartSelectSurface = &surface;
    }
    ~SmartSelectTriggerTest() override { SpaceGestureAppPolicy::bypassSelfBlacklist = false; }

    void launch() {
        veltrin.launch();
        desktop.advance(10);
    }
    void dragAcross() { desktop.mouse.drag({{200, 300}, {260, 300}, {320, 304}}); }
    /// Beyond a double click of an earlier step.
    void doubleClick(QPointF at = {700, 400}) { desktop.mouse.click(at, 2); }
    void wait(double seconds = dragDelay + step) { desktop.advance(seconds); }
    int count(const QString& line) const { return static_cast<int>(log.lines().count(line)); }
    /// The looks at the selection that were taken.
    int reads() const {
        return count(QStringLiteral("SmartSelect read begin: app: Editor bundle: org.example.Editor"));
    }
    SmartSelectTrigger& trigger() { return veltrin.delegate().smartSelectTrigger(); }

    LogCapture log;
    RecordingSurface surface;
    SimulatedVeltrin veltrin;
    FakeDesktop& desktop = veltrin.desktop;
    FakeApplication& editor = desktop.launch(QStringLiteral("Editor"), QStringLiteral("org.example.Editor"));
    FakeTextField& field = editor.addField(QStringLiteral("Hallo Welt"));
};

}  // namespace veltrin
