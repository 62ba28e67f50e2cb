#pragma once

#include "Platform/KeyEventTap.h"
#include "Platform/RunLoop.h"

#include <QByteArray>

#include <chrono>
#include <memory>

namespace veltrin {

/// Key event taps of an X11 session. All taps share one listening thread, which runs from the first tap on.
/// Keys are offered to the newest tap first, and to older ones only when it did not swallow them. Main
/// thread.
class X11KeyEventTaps final : public KeyEventTaps {
public:
    /// How long a key that may be claimed waits for the answer.
    static constexpr std::chrono::milliseconds usualAnswerLimit{50};

    /// `display` empty means $DISPLAY. `runLoop` outlives this object; the taps need not.
    explicit X11KeyEventTaps(RunLoop& runLoop, QByteArray display = {},
                             std::chrono::milliseconds answerLimit = usualAnswerLimit);
    ~X11KeyEventTaps() override;

    std::unique_ptr<KeyEventTap> create(KeyEventMask mask, KeyEventTap::Handler handler) override;
    bool preflightListenEventAccess() const override;
    /// X11 asks nobody; the same as the preflight.
    bool requestListenEventAccess() override;

    /// Waits (at most `limit`) until the user has let go of a swallowed key, then frees the keyboard by
    /// force. To be called before synthetic keys are posted, which would otherwise come back here.
    void letGo(std::chrono::milliseconds limit);

    /// Silent, no tap is told or may claim anything, whatever its own state: while the session is locked.
    void setSilent(bool silent);

private:
    class Switchboard;
    class Tap;

    std::shared_ptr<Switchboard> switchboard_;
};

}  // namespace veltrin
