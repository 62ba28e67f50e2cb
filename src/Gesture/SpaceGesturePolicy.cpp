#include "Gesture/SpaceGesturePolicy.h"

#include <cmath>

namespace veltrin {

double secondsBetween(double from, double to) {
    return std::round((to - from) * 1e6) / 1e6;
}

bool TripleSpaceSafetyGate::allowsTripleSpace() const {
    const bool quick = secondsBetween(firstSpaceDownAt, secondSpaceDownAt) < maximumFirstToSecondInterval &&
                       secondsBetween(firstSpaceDownAt, thirdSpaceDownAt) < maximumFirstToThirdInterval &&
                       secondsBetween(secondSpaceDownAt, thirdSpaceDownAt) < maximumSecondToThirdInterval;
    if (!quick || isKeyRepeat || !frontmostAppAllowed) return false;
    return !lastKeyInputBeforeFirstSpaceAt ||
           secondsBetween(*lastKeyInputBeforeFirstSpaceAt, firstSpaceDownAt) >= minimumIdleBeforeFirstSpace;
}

const QSet<QString>& SpaceGestureAppPolicy::defaultBlacklistedBundleIDs() {
    static const QSet<QString> none;
    return none;
}

bool SpaceGestureAppPolicy::isFrontmostAppAllowed(const QStringList& additionalBlacklistedBundleIDs) const {
    const auto frontmost = workspace_.frontmostApplication();
    if (!frontmost || !frontmost->bundleIdentifier) return true;
    const QString& identifier = *frontmost->bundleIdentifier;
    if (bypassSelfBlacklist && identifier == u"com.veltrin.app") return true;
    return !AppSettings::parseBundleList(settings_.gestureBlacklistedBundleIDsText()).contains(identifier) &&
           !defaultBlacklistedBundleIDs().contains(identifier) &&
           !additionalBlacklistedBundleIDs.contains(identifier);
}

}  // namespace veltrin
