#pragma once

#include "Platform/MouseEventTap.h"
#include "Platform/RunLoop.h"

#include <QByteArray>

#include <memory>

namespace veltrin {

/// Mouse event taps of an X11 session, each with a listener of its own while it is enabled. A tap whose
/// connection was lost says that it was disabled. Main thread.
class X11MouseEventTaps final : public MouseEventTaps {
public:
    /// `display` empty means $DISPLAY. `runLoop` outlives this object; the taps need not.
    explicit X11MouseEventTaps(RunLoop& runLoop, QByteArray display = {});

    std::unique_ptr<MouseEventTap> create(MouseEventTap::Handler handler) override;
    /// Silent, no tap is told anything: while the session is locked.
    void setSilent(bool silent) { *isSilent_ = silent; }

private:
    class Tap;

    RunLoop& runLoop_;
    QByteArray display_;
    std::shared_ptr<bool> isSilent_ = std::make_shared<bool>(false);
};

}  // namespace veltrin
