#pragma once

#include "App/SmartSelectTrigger.h"
#include "Data/AppSettings.h"
#include "ExternalAccess/SmartSelectContentReader.h"
#include "Gesture/SpaceGesturePolicy.h"
#include "Platform/Linux/X11/X11MouseEventTaps.h"
#include "support/desktop/Typist.h"
#include "support/fake/FakeSystemEnvironment.h"
#include "support/fake/RecordingSurface.h"
#include "support/fields/FieldApplications.h"

namespace veltrin {

/// The watch over selections over its own adapters, in the test's process, with a surface that keeps what it
/// is asked for.
class SelectionDesktop {
public:
    explicit SelectionDesktop(RealDesktop& desktop);

    /// Where a stretch of the focused field stands on the screen. Throws std::runtime_error when it has no
    /// place in time.
    QRect placeOf(const FieldApplication& application, qint64 location, qint64 length);

    /// Counts the keys that really go out.
    class CountingPoster final : public KeyPoster {
    public:
        explicit CountingPoster(KeyPoster& poster) : poster_(poster) {}
        PostResult post(const KeyPost& chord) override {
            const PostResult result = poster_.post(chord);
            posted += result ? 1 : 0;
            return result;
        }
        int posted = 0;

    private:
        KeyPoster& poster_;
    };

    ExternalTextDesktop text;
    NotificationCenter notifications;
    FakeSystemEnvironment environment;
    AppSettings settings;
    SpaceGestureAppPolicy policy;
    X11MouseEventTaps taps;
    CountingPoster poster;
    SmartSelectClipboardCopy copy;
    SmartSelectContentReader reader;
    RecordingSurface surface;
    SmartSelectTrigger trigger;
};

/// Presses at the first place, goes to the others in steps that a busy machine sees (so many seconds for
/// each), and releases. The test's event loop runs meanwhile. When the button was released, on the clock of
/// `monotonicSeconds`.
double dragThrough(Typist& typist, const QList<QPoint>& places, double stepSeconds = 0.02);

/// How many elements a tree has.
int sizeOf(const AXTree& tree);

}  // namespace veltrin
