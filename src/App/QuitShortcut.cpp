#include "App/QuitShortcut.h"

#include "Platform/ProcessControl.h"
#include "Platform/RunLoop.h"

namespace veltrin {

void QuitShortcut::start() {
    if (tap_) return;
    tap_ = taps_.create(KeyEventMask::keyDown, [this](const KeyEvent& event) { return handle(event); });
    if (!tap_) return;
    if (!tap_->addToRunLoop()) {
        tap_.reset();
        return;
    }
    tap_->setClaimable({ClaimableKey{KeyCode::q, KeyFlags::command, true}});
    tap_->setEnabled(true);
}

void QuitShortcut::stop() {
    if (!tap_) return;
    tap_->setEnabled(false);
    tap_->removeFromRunLoop();
    tap_.reset();
}

bool QuitShortcut::handle(const KeyEvent& event) {
    // Unlike the gesture tap this one is not switched on again when the desktop switched it off: meant so.
    if (event.type != KeyEventType::keyDown || event.keyCode != KeyCode::q ||
        (event.flags & KeyFlags::command) == 0)
        return true;
    runLoop_.post(lifetime_.bind([this] { process_.terminate(); }));
    return false;
}

}  // namespace veltrin
