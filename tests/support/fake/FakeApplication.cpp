#include "support/fake/FakeApplication.h"

#include "support/fake/FakeKeyCodes.h"

#include <algorithm>

namespace veltrin {
namespace {

/// Identifiers of windows and fields: unique over all simulated desktops, so that no element of one is ever
/// taken for one of another.
quint64 nextId() {
    static quint64 last = 0x1000;
    return ++last;
}

}  // namespace

FakeTextField& FakeWindow::addField(const QString& text) {
    fields.push_back(std::make_unique<FakeTextField>(nextId(), text));
    if (!focusedField) focusedField = fields.back().get();
    return *fields.back();
}

FakeTextField* FakeWindow::field(quint64 fieldId) const {
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [fieldId](const auto& candidate) { return candidate->id == fieldId; });
    return found == fields.end() ? nullptr : found->get();
}

FakeApplication::FakeApplication(FakeRunLoop& loop, FakePasteboard& pasteboard, FakeEventLog& log,
                                 qint32 process)
    : pid(process), loop_(loop), pasteboard_(pasteboard), log_(log) {
}

FakeWindow& FakeApplication::addWindow(const QString& title) {
    windows.push_back(std::make_unique<FakeWindow>(nextId(), title));
    if (!activeWindow) activeWindow = windows.back().get();
    return *windows.back();
}

FakeTextField& FakeApplication::addField(const QString& text) {
    if (!activeWindow) addWindow(name.value_or(QStringLiteral("Untitled")));
    return activeWindow->addField(text);
}

FakeWindow* FakeApplication::windowOf(const FakeTextField& field) const {
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [&](const auto& window) { return window->field(field.id) != nullptr; });
    return found == windows.end() ? nullptr : found->get();
}

void FakeApplication::closeWindow(FakeWindow& window) {
    window.open = false;
    window.focusedField = nullptr;
    for (const auto& field : window.fields)
        field->exists = false;
    if (activeWindow != &window) return;
    const auto next =
        std::find_if(windows.begin(), windows.end(), [](const auto& other) { return other->open; });
    activeWindow = next == windows.end() ? nullptr : next->get();
}

void FakeApplication::hang() {
    if (state_ == State::running) state_ = State::hung;
}

void FakeApplication::resume() {
    if (state_ != State::hung) return;
    state_ = State::running;
    work();
}

void FakeApplication::quit() {
    state_ = State::dead;
    queue_.clear();
    for (const auto& window : windows)
        closeWindow(*window);
    pasteboard_.ownerDied(pid);
}

void FakeApplication::receive(FakeKeyStroke stroke) {
    if (!isRunning()) return;
    stroke.pasteboardChange = pasteboard_.changeCount();
    received.push_back(stroke);
    if (received.size() > receivedLimit) received.pop_front();
    if (stroke.event.type != KeyEventType::keyDown) return;
    double readyAt = loop_.now() + (stroke.posted ? postedKeyLatency : physicalKeyLatency);
    if (!queue_.empty()) readyAt = std::max(readyAt, queue_.back().readyAt);
    queue_.push_back({std::move(stroke), activeWindow, readyAt});
    work();
}

void FakeApplication::work() {
    while (state_ == State::running && !queue_.empty()) {
        if (const double wait = queue_.front().readyAt - loop_.now(); wait > 1e-9) {
            loop_.inWorld(wait, [this, alive = std::weak_ptr<char>(alive_)] {
                if (!alive.expired()) work();
            });
            return;
        }
        const Waiting next = std::move(queue_.front());
        queue_.pop_front();
        perform(next.stroke, next.window);
    }
}

void FakeApplication::perform(const FakeKeyStroke& stroke, FakeWindow* window) {
    FakeTextField* field = window && window->open ? window->focusedField : nullptr;
    if (!field) return;
    const KeyEvent& event = stroke.event;
    const quint64 modifiers = event.flags & ~KeyFlags::shift & KeyFlags::all;
    if (modifiers == KeyFlags::command) return performCommand(stroke, *field);
    if (modifiers != 0) return;
    switch (event.keyCode) {
        case KeyCode::backspace:
            field->deleteBackward();
            return;
        case FakeKeyCode::left:
            field->moveCaret(-1);
            return;
        case FakeKeyCode::right:
            field->moveCaret(1);
            return;
        case KeyCode::returnKey:
            if (field->multiline) field->insert(QStringLiteral("\n"));
            return;
        default:
            if (!stroke.text.isEmpty()) field->insert(stroke.text);
    }
}

void FakeApplication::performCommand(const FakeKeyStroke& stroke, FakeTextField& field) {
    const qint64 keyCode = stroke.event.keyCode;
    switch (keyCode) {
        case KeyCode::a:
            field.selectAll();
            return;
        case KeyCode::c:
        case FakeKeyCode::x:
            // A password field gives nothing away, and copying nothing leaves the pasteboard as it is.
            if (field.password || field.selection.length == 0) return;
            pasteboard_.copyFrom(pid, field.selectedText());
            if (keyCode == FakeKeyCode::x) field.deleteBackward();
            return;
        case KeyCode::v: {
            const auto text = pasteboard_.requestedBy(pid, stroke.pasteboardChange);
            if (!text || text->isEmpty()) {
                log_.add(loop_.now(), "pasted nothing", name.value_or(QString()));
                return;
            }
            if (field.insert(*text)) log_.add(loop_.now(), "pasted", *text);
            return;
        }
        case FakeKeyCode::z:
            field.undo();
            return;
        default:
            return;
    }
}

int FakeApplication::countReceived(KeyEventType type, qint64 keyCode) const {
    return static_cast<int>(std::count_if(received.begin(), received.end(), [&](const FakeKeyStroke& stroke) {
        return stroke.event.type == type && stroke.event.keyCode == keyCode && !stroke.event.isAutoRepeat;
    }));
}

int FakeApplication::pressesOf(qint64 keyCode) const {
    return countReceived(KeyEventType::keyDown, keyCode);
}
int FakeApplication::releasesOf(qint64 keyCode) const {
    return countReceived(KeyEventType::keyUp, keyCode);
}

}  // namespace veltrin
