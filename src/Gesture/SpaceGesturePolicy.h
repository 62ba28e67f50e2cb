#pragma once

#include "Data/AppSettings.h"
#include "Platform/Workspace.h"

#include <QSet>

namespace veltrin {

/// Whether three taps of the space bar are a gesture. All times are seconds of the key events' own clock.
struct TripleSpaceSafetyGate {
    double firstSpaceDownAt = 0;
    double secondSpaceDownAt = 0;
    double thirdSpaceDownAt = 0;
    std::optional<double> lastKeyInputBeforeFirstSpaceAt;
    bool isKeyRepeat = false;
    bool frontmostAppAllowed = true;
    /// Decides nothing, and that is meant: whatever stands before the cursor, timing alone decides.
    std::optional<QString> characterBeforeCursor;
    double maximumFirstToSecondInterval = 0;
    double maximumFirstToThirdInterval = 0;
    double maximumSecondToThirdInterval = 0;
    double minimumIdleBeforeFirstSpace = 0;

    /// The intervals must be strictly below their limits; an idle time equal to its minimum passes.
    bool allowsTripleSpace() const;
};

/// Seconds from one event to another, to the nanosecond that events are stamped with: a gap that is exactly a
/// limit must compare as equal to it, whatever the clock reads.
double secondsBetween(double from, double to);

/// In which applications gestures work at all.
class SpaceGestureAppPolicy {
public:
    SpaceGestureAppPolicy(const Workspace& workspace, const AppSettings& settings)
        : workspace_(workspace), settings_(settings) {}

    /// Set while the user practises gestures in this program's own window.
    static inline bool bypassSelfBlacklist = false;
    /// Empty, and meant so: every application is allowed until the user says otherwise.
    static const QSet<QString>& defaultBlacklistedBundleIDs();

    /// False when the application in front is on the user's general list or on the given one; exact
    /// comparison.
    bool isFrontmostAppAllowed(const QStringList& additionalBlacklistedBundleIDs) const;

private:
    const Workspace& workspace_;
    const AppSettings& settings_;
};

}  // namespace veltrin
