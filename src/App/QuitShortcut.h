#pragma once

#include "Foundation/Lifetime.h"
#include "Platform/KeyEventTap.h"

#include <memory>

namespace veltrin {

class ProcessControl;
class RunLoop;

/// Command-Q, with any further modifiers and whatever application is in front, ends this program and does not
/// reach the foreign application. That is required behaviour. A tap of its own, never suspended, from launch
/// to the end.
class QuitShortcut {
public:
    QuitShortcut(KeyEventTaps& taps, RunLoop& runLoop, ProcessControl& process)
        : taps_(taps), runLoop_(runLoop), process_(process) {}

    /// Sets the tap up; without the right to listen there is none, silently.
    void start();
    void stop();
    bool isRunning() const { return tap_ != nullptr; }

private:
    /// True: pass the event on.
    bool handle(const KeyEvent& event);

    KeyEventTaps& taps_;
    RunLoop& runLoop_;
    ProcessControl& process_;
    std::unique_ptr<KeyEventTap> tap_;
    Lifetime lifetime_;
};

}  // namespace veltrin
