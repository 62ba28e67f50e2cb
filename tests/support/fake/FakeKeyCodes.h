#pragma once

#include "Platform/KeyCodes.h"

#include <QChar>

#include <optional>

namespace veltrin {

/// Codes of a US keyboard that only the simulated one needs.
namespace FakeKeyCode {
inline constexpr qint64 x = 7;
inline constexpr qint64 z = 6;
inline constexpr qint64 k = 40;
inline constexpr qint64 left = 123;
inline constexpr qint64 right = 124;
}  // namespace FakeKeyCode

struct FakeKeyOfCharacter {
    qint64 keyCode;
    quint64 flags;
};
/// The key, with Shift where it is needed, that types a character on a US keyboard.
std::optional<FakeKeyOfCharacter> fakeKeyOf(QChar character);
/// What a key types with these flags; a null character for a key that types nothing.
QChar fakeCharacterOf(qint64 keyCode, quint64 flags);

}  // namespace veltrin
