#include "support/fake/FakeKeyboard.h"

#include "Foundation/Characters.h"
#include "support/fake/FakeKeyCodes.h"

#include <algorithm>
#include <cmath>

namespace veltrin {

void FakeKeyboard::send(KeyEventType type, qint64 keyCode, quint64 flags, bool isAutoRepeat,
                        const QString& text) {
    KeyEvent event;
    event.type = type;
    event.keyCode = keyCode;
    event.flags = flags | heldModifiers;
    event.isAutoRepeat = isAutoRepeat;
    event.timestamp = static_cast<quint64>(std::llround(loop_.now() * 1e9));
    if (type == KeyEventType::keyUp)
        down.erase(keyCode);
    else
        down.insert(keyCode);

    FakeKeyStroke stroke;
    stroke.event = event;
    if (const QChar character = fakeCharacterOf(keyCode, event.flags); !character.isNull())
        stroke.text = character;
    else
        stroke.text = text;
    taps_.send(event, [this, stroke = std::move(stroke)] {
        if (FakeApplication* application = workspace_.front()) application->receive(stroke);
    });
}

void FakeKeyboard::stroke(qint64 keyCode, quint64 flags, const QString& text) {
    send(KeyEventType::keyDown, keyCode, flags, false, text);
    loop_.advance(keyHold);
    send(KeyEventType::keyUp, keyCode, flags, false, {});
    loop_.advance(keyGap);
}

void FakeKeyboard::type(const QString& text) {
    for (qsizetype i = 0; i < text.size();) {
        const QString character = Characters::containing(text, i);
        i += character.size();
        const auto key = character.size() == 1 ? fakeKeyOf(character.front()) : std::nullopt;
        if (key)
            stroke(key->keyCode, key->flags, {});
        else
            stroke(KeyCode::unknown, 0, character);
    }
}

void FakeKeyboard::chord(qint64 keyCode, quint64 flags) {
    stroke(keyCode, flags, {});
}

void FakeKeyboard::tapSpace(double holdSeconds) {
    press(KeyCode::space);
    loop_.advance(holdSeconds);
    release(KeyCode::space);
}

void FakeKeyboard::tapSpaces(int taps, double interval, double holdSeconds) {
    for (int i = 0; i < taps; ++i) {
        if (i > 0) loop_.advance(interval - holdSeconds);
        tapSpace(holdSeconds);
    }
}

void FakeKeyboard::hold(qint64 keyCode, double seconds, quint64 flags) {
    press(keyCode, flags);
    double held = std::min(seconds, repeatDelay);
    loop_.advance(held);
    while (seconds - held > 1e-9) {
        repeat(keyCode, flags);
        const double step = std::min(repeatInterval, seconds - held);
        loop_.advance(step);
        held += step;
    }
    release(keyCode, flags);
}

}  // namespace veltrin
