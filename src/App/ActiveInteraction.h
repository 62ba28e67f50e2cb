#pragma once

#include "Platform/KeyCodes.h"

#include <functional>

namespace veltrin {

class OptimizeInteraction;

/// Decides whom an unmodified key, or Escape, belongs to while something waits for it: the drop overlay goes
/// before dictation, and dictation before the choice. Entered inside the tap's callback, on the main thread.
class ActiveInteraction {
public:
    /// The overlay that offers to take a file; without it none is ever showing.
    struct DropOverlay {
        std::function<bool()> isShowing;
        std::function<void()> dismiss;
    };
    /// Dictation; without it none is ever under way.
    struct Voice {
        std::function<bool()> isIdle;
        std::function<bool()> isRecording;
        std::function<void(const char* reason)> cancelVoiceInteraction;
        std::function<void()> stopRecording;
    };

    explicit ActiveInteraction(OptimizeInteraction& choice) : choice_(choice) {}

    /// True swallows the key.
    bool handleActiveInteractionKeyDown(qint64 keyCode, bool isAutoRepeat);
    /// The release of a space or of Escape that ended a dictation does not reach the application either.
    bool handleKeyUp(qint64 keyCode) const;

    DropOverlay dropOverlay;
    Voice voice;

private:
    bool isDropShowing() const { return dropOverlay.isShowing && dropOverlay.isShowing(); }
    bool isVoiceActive() const { return voice.isIdle && !voice.isIdle(); }

    OptimizeInteraction& choice_;
};

}  // namespace veltrin
