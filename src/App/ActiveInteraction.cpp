#include "App/ActiveInteraction.h"

#include "App/OptimizeInteraction.h"
#include "Foundation/MVPLog.h"

namespace veltrin {

bool ActiveInteraction::handleActiveInteractionKeyDown(qint64 keyCode, bool isAutoRepeat) {
    if (keyCode == KeyCode::escape) {
        if (isDropShowing()) {
            MVPLog::write("Global drop overlay dismissed by Escape");
            dropOverlay.dismiss();
            return true;
        }
        if (isVoiceActive()) {
            voice.cancelVoiceInteraction("escape");
            return true;
        }
    }
    if (keyCode == KeyCode::space && !isAutoRepeat && isVoiceActive()) {
        // In every other state of a dictation the space does nothing, but no field gets it.
        if (voice.isRecording()) {
            MVPLog::write("Voice finish:", "space pressed");
            voice.stopRecording();
        }
        return true;
    }
    return choice_.handleKeyDown(keyCode);
}

bool ActiveInteraction::handleKeyUp(qint64 keyCode) const {
    return (keyCode == KeyCode::space || keyCode == KeyCode::escape) && isVoiceActive();
}

}  // namespace veltrin
