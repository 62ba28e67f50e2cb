#pragma once

#include "Platform/MouseEventTap.h"
#include "support/fake/FakeRunLoop.h"
#include "support/fake/FakeScreens.h"

#include <memory>
#include <vector>

namespace veltrin {

/// The taps of the simulated mouse. An event is told on the next turn of the loop, in the order of the
/// events; what happens while a tap is off is never told to it.
class FakeMouseEventTaps final : public MouseEventTaps {
public:
    explicit FakeMouseEventTaps(FakeRunLoop& loop) : loop_(loop) {}

    std::unique_ptr<MouseEventTap> create(MouseEventTap::Handler handler) override;
    void send(const MouseEvent& event);
    /// The desktop turns every tap off and says so.
    void disable(MouseEventType reason);

    struct Record {
        MouseEventTap::Handler handler;
        bool exists = true;
        bool enabled = false;
        int enableCalls = 0;
    };
    /// Every tap ever made, oldest first.
    std::vector<std::shared_ptr<Record>> taps;
    /// Those that listen.
    int running() const;

    bool granted = true;  ///< whether taps can be made

private:
    void tell(const std::shared_ptr<Record>& tap, const MouseEvent& event);
    FakeRunLoop& loop_;
};

/// The user's hand on the mouse. Places are pixels with the origin at the top left; the pointer of the
/// screens follows. Clicks count by 0.4 s and 5 pixels, as the desktop has it. `press`, `moveTo` and
/// `release` take no time; the others let the clock run on while they work.
class FakeMouse {
public:
    FakeMouse(FakeRunLoop& loop, FakeMouseEventTaps& taps, FakeScreens& screens)
        : loop_(loop), taps_(taps), screens_(screens) {}

    void moveTo(QPointF place);
    void press();
    void release();
    void click(QPointF at, int count = 1);
    /// Presses at the first place, moves from one to the next, and releases at the last.
    void drag(const std::vector<QPointF>& places);
    /// The same with something that is dragged, as a file is.
    void dragSomething(const std::vector<QPointF>& places);

    qint64 dragPasteboardChangeCount = 1;
    double pressSeconds = 0.03;  ///< from press to release, and from one place of a drag to the next
    double clickGap = 0.06;      ///< from release to the next press

private:
    void send(MouseEventType type);

    FakeRunLoop& loop_;
    FakeMouseEventTaps& taps_;
    FakeScreens& screens_;
    QPointF place_;
    QPointF lastPress_;
    double lastPressAt_ = -1;
    int clickState_ = 0;
    bool isDown_ = false;
};

}  // namespace veltrin
