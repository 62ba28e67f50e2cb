#include "App/TriggerGates.h"

#include "Data/AppSettings.h"
#include "Foundation/MVPLog.h"
#include "Gesture/SpaceGesturePolicy.h"

#include <iterator>

namespace veltrin {
namespace {

struct Rule {
    bool asksMasterSwitch;
    Setting<bool> AppSettings::*featureSwitch;
    Setting<QString> AppSettings::*blacklist;
    const char* refusal;
};

/// In the order of Trigger. A gesture and its shortcut share switch and blacklist, so that switching the
/// double tap off switches the optimise shortcut off as well; only drag asks nothing of the master switch.
/// Meant so.
constexpr Rule rules[] = {
    {true, &AppSettings::doubleSpaceGestureEnabled, &AppSettings::optimizeBlacklistedBundleIDsText,
     "Double Space Triggered but ignored by settings"},
    {true, &AppSettings::tripleSpaceGestureEnabled, &AppSettings::translationBlacklistedBundleIDsText,
     "Triple Space Triggered but ignored by settings"},
    {true, &AppSettings::doubleSpaceGestureEnabled, &AppSettings::optimizeBlacklistedBundleIDsText,
     "Custom optimize shortcut ignored by settings"},
    {true, &AppSettings::tripleSpaceGestureEnabled, &AppSettings::translationBlacklistedBundleIDsText,
     "Custom translation shortcut ignored by settings"},
    {true, &AppSettings::smartSelectEnabled, &AppSettings::smartSelectBlacklistedBundleIDsText,
     "Custom smart select shortcut ignored by settings"},
    {true, &AppSettings::voiceInteractionEnabled, &AppSettings::voiceBlacklistedBundleIDsText,
     "Custom voice shortcut ignored by settings"},
    {false, &AppSettings::dragInteractionEnabled, &AppSettings::dragBlacklistedBundleIDsText,
     "Custom drag shortcut ignored by settings"},
};
static_assert(std::size(rules) == static_cast<std::size_t>(Trigger::dragShortcut) + 1);

}  // namespace

bool TriggerGates::allows(Trigger trigger) const {
    const Rule& rule = rules[static_cast<std::size_t>(trigger)];
    const bool allowed =
        (!rule.asksMasterSwitch || settings_.spaceGesturesEnabled()) && (settings_.*rule.featureSwitch)() &&
        policy_.isFrontmostAppAllowed(AppSettings::parseBundleList((settings_.*rule.blacklist)()));
    if (!allowed) MVPLog::write(rule.refusal);
    return allowed;
}

}  // namespace veltrin
