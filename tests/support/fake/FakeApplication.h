#pragma once

#include "Platform/KeyEventTap.h"
#include "support/fake/FakeEventLog.h"
#include "support/fake/FakePasteboard.h"
#include "support/fake/FakeRunLoop.h"
#include "support/fake/FakeTextField.h"

#include <deque>
#include <memory>

namespace veltrin {

/// A key on its way into an application.
struct FakeKeyStroke {
    KeyEvent event;
    QString text;                 ///< what it types; empty for a key that types nothing
    bool posted = false;          ///< made by a program, not by the user's hand
    qint64 pasteboardChange = 0;  ///< the pasteboard's change count when the application was sent it
};

class FakeWindow {
public:
    FakeWindow(quint64 windowId, QString name) : id(windowId), title(std::move(name)) {}

    /// A new field of this window; the window's first one gets its focus.
    FakeTextField& addField(const QString& text = {});
    FakeTextField* field(quint64 fieldId) const;

    const quint64 id;
    QString title;
    QRectF frame{80, 60, 800, 600};  ///< origin at the top left of the desktop
    bool open = true;
    std::vector<std::unique_ptr<FakeTextField>> fields;
    FakeTextField* focusedField = nullptr;  ///< none when something without text has the focus
};

/// A foreign program: windows, fields, an input queue of its own that it works off in order, and the keys
/// every program knows: select all, copy, cut, paste, undo. Hung, it lets the keys wait; dead, it loses them.
class FakeApplication {
public:
    enum class State { running, hung, dead };

    FakeApplication(FakeRunLoop& loop, FakePasteboard& pasteboard, FakeEventLog& log, qint32 process);

    const qint32 pid;
    std::optional<QString> name;
    std::optional<QString> bundleIdentifier;
    std::optional<QString> icon;
    bool terminal = false;
    /// False for a program that gives accessibility nothing: every question about it fails with
    /// `accessibilityError`.
    bool accessible = true;
    AXError accessibilityError = AXError::cannotComplete;
    FakeAXFaults readFaults;          ///< of questions to the application itself
    double postedKeyLatency = 0.004;  ///< seconds from a posted key to its effect
    double physicalKeyLatency = 0;    ///< the same for a key of the user; 0 is at once
    std::vector<std::unique_ptr<FakeWindow>> windows;
    FakeWindow* activeWindow = nullptr;
    /// The latest keys that reached the program, oldest first.
    std::deque<FakeKeyStroke> received;
    std::size_t receivedLimit = 500;

    /// A new window; the first one is the active one.
    FakeWindow& addWindow(const QString& title);
    /// A field of the active window, which is made when there is none.
    FakeTextField& addField(const QString& text = {});
    FakeTextField* focusedField() const { return activeWindow ? activeWindow->focusedField : nullptr; }
    FakeWindow* windowOf(const FakeTextField& field) const;
    void closeWindow(FakeWindow& window);

    State state() const { return state_; }
    bool isRunning() const { return state_ != State::dead; }
    void hang();
    void resume();
    void quit();

    /// A key comes in. It takes effect after the latency, never before an earlier key.
    void receive(FakeKeyStroke stroke);
    /// Key-downs that have not taken effect.
    std::size_t waitingKeys() const { return queue_.size(); }
    /// Presses of a key that reached the program, repeats left out, and releases of it.
    int pressesOf(qint64 keyCode) const;
    int releasesOf(qint64 keyCode) const;

private:
    struct Waiting {
        FakeKeyStroke stroke;
        FakeWindow* window;
        double readyAt;
    };
    void work();
    void perform(const FakeKeyStroke& stroke, FakeWindow* window);
    void performCommand(const FakeKeyStroke& stroke, FakeTextField& field);
    int countReceived(KeyEventType type, qint64 keyCode) const;

    FakeRunLoop& loop_;
    FakePasteboard& pasteboard_;
    FakeEventLog& log_;
    State state_ = State::running;
    std::deque<Waiting> queue_;
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

}  // namespace veltrin
