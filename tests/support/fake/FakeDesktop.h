#pragma once

#include "Platform/Desktop.h"
#include "support/fake/FakeAccessibility.h"
#include "support/fake/FakeFloatingPanels.h"
#include "support/fake/FakeHttpClient.h"
#include "support/fake/FakeKeyPoster.h"
#include "support/fake/FakeMouse.h"
#include "support/fake/FakePreferences.h"
#include "support/fake/FakeProcessControl.h"
#include "support/fake/FakeScreens.h"
#include "support/fake/FakeSoundOutput.h"
#include "support/fake/FakeSystemEnvironment.h"

namespace veltrin {

/// A whole desktop in memory, deterministic to the last key: applications with windows and text fields, the
/// focus, a pasteboard with owners, the user's hands on a keyboard, accessibility that can be refused, hang
/// or lie, and one virtual clock. It stands behind every port, so that the real core runs on it whole.
///
/// The clock stands still until the test moves it: by `advance`, or by what the user does with `keyboard`, or
/// because the program blocks (`sleepFor`, a hung application, a pasteboard owner that does not answer).
/// While the program is blocked the world goes on: a posted Ctrl+V arrives, an application comes back, the
/// user types. The program's own timers wait.
///
/// How keys, pasteboard and accessibility behave in detail stands at their parts. What they share:
/// - A key of the user takes effect in the application in front, at once unless it hangs. A posted key takes
///   `postedKeyLatency`, and no key overtakes an earlier one. A hung application works its keys off when it
///   comes back.
/// - A paste gives what was on offer when its key was made, when it was ours; else what is on offer now.
/// - A field keeps an undo history, as the user would have it.
///
///     FakeDesktop desktop;
///     auto& editor = desktop.launch(u"Editor"_s, u"org.example.Editor"_s);
///     auto& field = editor.addField(u"hello"_s);
///     desktop.focus(field);
///     desktop.keyboard.tapSpaces(2);
///     desktop.advance(0.3);
///
/// The parts are public and meant to be changed by a test; lists of what happened keep the latest entries
/// only, so that a simulation may go on for long.
class FakeDesktop {
public:
    FakeDesktop();
    ~FakeDesktop();
    FakeDesktop(const FakeDesktop&) = delete;
    FakeDesktop& operator=(const FakeDesktop&) = delete;

    /// All ports, for the program under test.
    Desktop desktop();

    void advance(double seconds) { runLoop.advance(seconds); }
    double now() const { return runLoop.now(); }
    /// Lets the world do something later, also while the program is blocked then.
    void later(double seconds, std::function<void()> action) { runLoop.inWorld(seconds, std::move(action)); }

    FakeApplication& launch(const QString& name, const std::optional<QString>& bundleIdentifier) {
        return workspace.launch(name, bundleIdentifier);
    }
    /// The user clicks into a field.
    void focus(FakeTextField& field) { workspace.focus(field); }
    FakeTextField* focusedField() const {
        const FakeApplication* front = workspace.front();
        return front ? front->focusedField() : nullptr;
    }
    /// Drops the records of what is over: panels that are closed, taps that are gone, lists of events.
    void forgetRecords();

    FakeRunLoop runLoop;
    FakeEventLog log;
    FakePasteboard pasteboard{runLoop, log};
    FakeWorkspace workspace{runLoop, pasteboard, log};
    FakeKeyEventTaps keyEventTaps{runLoop};
    FakeKeyboard keyboard{runLoop, keyEventTaps, workspace};
    FakeAccessibility accessibility{runLoop, workspace, log};
    FakeKeyPoster keyPoster{runLoop, workspace, keyboard, accessibility, log};
    FakeScreens screens;
    FakeMouseEventTaps mouseEventTaps{runLoop};
    FakeMouse mouse{runLoop, mouseEventTaps, screens};
    FakePreferences preferences;
    FakeHttpClient httpClient;
    FakeFloatingPanels floatingPanels{runLoop, log};
    FakeProcessControl processControl{runLoop, log};
    FakeSystemEnvironment environment;
    FakeSoundOutput soundOutput{runLoop};
};

}  // namespace veltrin
