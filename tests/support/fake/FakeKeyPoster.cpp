#include "support/fake/FakeKeyPoster.h"

#include <cmath>

namespace veltrin {

QString FakeKeyPoster::refusalOf(const KeyPost& chord) const {
    if (refusal) return *refusal;
    const FakeApplication* front = workspace_.front();
    if (!front) return QStringLiteral("nothing has the keyboard");
    if (chord.target.processIdentifier && *chord.target.processIdentifier != front->pid)
        return QStringLiteral("another application has the keyboard");
    if (chord.target.window != 0 && (!front->activeWindow || front->activeWindow->id != chord.target.window))
        return QStringLiteral("another window has the keyboard");
    if (front->state() == FakeApplication::State::hung) {
        loop_.sleepFor(pingWait);
        return QStringLiteral("the application does not answer");
    }
    const bool pastes = chord.keyCode == KeyCode::v && chord.flags == KeyFlags::command;
    const FakeTextField* field = front->focusedField();
    if (const auto& element = chord.target.element) {
        if (!accessibility_.trusted || !front->accessible) return QStringLiteral("the field does not answer");
        const AXElementRef focused = field ? accessibility_.elementOf(*field) : nullptr;
        if (focused && !focused->isEqual(*element)) return QStringLiteral("another field has the focus");
    }
    // What a program keeps from accessibility the poster cannot know either.
    if (field && front->accessible) {
        if (field->password) return QStringLiteral("a password field has the focus");
        if (pastes && !field->editable) return QStringLiteral("the focused element cannot be edited");
    }
    if (front->terminal) {
        const bool selectsAll = chord.keyCode == KeyCode::a && chord.flags == KeyFlags::command;
        if (selectsAll) return QStringLiteral("select-all is a command key of a terminal");
        if (pastes && chord.textHasLineBreak) return QStringLiteral("a terminal would run the text");
    }
    return {};
}

void FakeKeyPoster::waitForModifiers(quint64 ownFlags) {
    const double deadline = loop_.now() + modifierWait;
    while ((keyboard_.heldModifiers & ~ownFlags) != 0 && loop_.now() < deadline)
        loop_.sleepFor(0.01);
}

PostResult FakeKeyPoster::post(const KeyPost& chord) {
    const FakeApplication* asked = workspace_.front();
    const bool inHaste = asked && asked->waitingKeys() > 0;
    waitForModifiers(chord.flags);
    Record record;
    record.time = loop_.now();
    record.chord = chord;
    record.result.refusal = refusalOf(chord);
    record.result.posted = record.result.refusal.isEmpty();
    if (record.result.posted) {
        FakeApplication& front = *workspace_.front();
        record.receiver = front.pid;
        record.inHaste = inHaste || front.waitingKeys() > 0;
        if (onPosted) onPosted(record);
        FakeKeyStroke stroke;
        stroke.posted = true;
        stroke.event.keyCode = chord.keyCode;
        stroke.event.flags = chord.flags;
        stroke.event.timestamp = static_cast<quint64>(std::llround(loop_.now() * 1e9));
        front.receive(stroke);
        record.pasteboardChange = front.received.back().pasteboardChange;
        stroke.event.type = KeyEventType::keyUp;
        front.receive(stroke);
        ++postedCount;
        log_.add(loop_.now(), "posted", QString::number(chord.keyCode));
    } else {
        ++refusedCount;
        log_.add(loop_.now(), "refused to post", record.result.refusal);
    }
    records.push_back(record);
    if (records.size() > capacity) records.pop_front();
    return record.result;
}

}  // namespace veltrin
