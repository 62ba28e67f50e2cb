#pragma once

namespace veltrin {

class AppSettings;
class SpaceGestureAppPolicy;

enum class Trigger {
    doubleTap,
    tripleTap,
    optimizeShortcut,
    translationShortcut,
    smartSelectShortcut,
    voiceShortcut,
    dragShortcut,
};

/// Decides at the moment of a trigger whether the settings let it act: the master switch, the trigger's
/// feature switch, and its own blacklist beside the general one. A refusal is one log line.
class TriggerGates {
public:
    TriggerGates(const AppSettings& settings, const SpaceGestureAppPolicy& policy)
        : settings_(settings), policy_(policy) {}

    bool allows(Trigger trigger) const;

private:
    const AppSettings& settings_;
    const SpaceGestureAppPolicy& policy_;
};

}  // namespace veltrin
