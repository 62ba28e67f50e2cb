#include "support/fake/FakeMouse.h"

#include <algorithm>
#include <cmath>

namespace veltrin {
namespace {

constexpr double doubleClickSeconds = 0.4;
constexpr double doubleClickDistance = 5;

class FakeMouseEventTap final : public MouseEventTap {
public:
    explicit FakeMouseEventTap(std::shared_ptr<FakeMouseEventTaps::Record> record)
        : record_(std::move(record)) {}
    ~FakeMouseEventTap() override { record_->exists = false; }
    FakeMouseEventTap(const FakeMouseEventTap&) = delete;
    FakeMouseEventTap& operator=(const FakeMouseEventTap&) = delete;

    void setEnabled(bool enabled) override {
        record_->enabled = enabled;
        record_->enableCalls += enabled ? 1 : 0;
    }

private:
    std::shared_ptr<FakeMouseEventTaps::Record> record_;
};

}  // namespace

std::unique_ptr<MouseEventTap> FakeMouseEventTaps::create(MouseEventTap::Handler handler) {
    if (!granted) return nullptr;
    auto record = std::make_shared<Record>();
    record->handler = std::move(handler);
    taps.push_back(record);
    return std::make_unique<FakeMouseEventTap>(record);
}

void FakeMouseEventTaps::tell(const std::shared_ptr<Record>& tap, const MouseEvent& event) {
    loop_.post([tap, event] {
        const auto handler = tap->handler;
        if (tap->exists) handler(event);
    });
}

void FakeMouseEventTaps::send(const MouseEvent& event) {
    for (const auto& tap : taps) {
        if (tap->exists && tap->enabled) tell(tap, event);
    }
}

void FakeMouseEventTaps::disable(MouseEventType reason) {
    for (const auto& tap : taps) {
        if (!tap->exists || !tap->enabled) continue;
        tap->enabled = false;
        MouseEvent event;
        event.type = reason;
        tell(tap, event);
    }
}

int FakeMouseEventTaps::running() const {
    return static_cast<int>(
        std::count_if(taps.begin(), taps.end(), [](const auto& tap) { return tap->exists && tap->enabled; }));
}

void FakeMouse::send(MouseEventType type) {
    MouseEvent event;
    event.type = type;
    event.location = place_;
    event.mouseLocation = screens_.mouse;
    event.clickState = type == MouseEventType::leftMouseDragged ? 0 : clickState_;
    event.dragPasteboardChangeCount = dragPasteboardChangeCount;
    taps_.send(event);
}

void FakeMouse::moveTo(QPointF place) {
    place_ = place;
    const double height = screens_.list.empty() ? 0 : screens_.list.front().frame.height();
    screens_.mouse = {place.x(), height - place.y()};
    if (isDown_) send(MouseEventType::leftMouseDragged);
}

void FakeMouse::press() {
    const bool isNear = std::abs(place_.x() - lastPress_.x()) <= doubleClickDistance &&
                        std::abs(place_.y() - lastPress_.y()) <= doubleClickDistance;
    const bool isSoon = lastPressAt_ >= 0 && loop_.now() - lastPressAt_ < doubleClickSeconds;
    clickState_ = isNear && isSoon ? clickState_ + 1 : 1;
    lastPress_ = place_;
    lastPressAt_ = loop_.now();
    isDown_ = true;
    send(MouseEventType::leftMouseDown);
}

void FakeMouse::release() {
    isDown_ = false;
    send(MouseEventType::leftMouseUp);
}

void FakeMouse::click(QPointF at, int count) {
    moveTo(at);
    for (int done = 0; done < count; ++done) {
        if (done > 0) loop_.advance(clickGap);
        press();
        loop_.advance(pressSeconds);
        release();
    }
    loop_.runDue();
}

void FakeMouse::drag(const std::vector<QPointF>& places) {
    moveTo(places.front());
    press();
    for (const QPointF& place : places) {
        loop_.advance(pressSeconds);
        moveTo(place);
    }
    loop_.advance(pressSeconds);
    release();
    loop_.runDue();
}

void FakeMouse::dragSomething(const std::vector<QPointF>& places) {
    moveTo(places.front());
    press();
    ++dragPasteboardChangeCount;
    for (const QPointF& place : places) {
        loop_.advance(pressSeconds);
        moveTo(place);
    }
    release();
    loop_.runDue();
}

}  // namespace veltrin
