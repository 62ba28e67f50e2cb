#pragma once

#include <QtGlobal>

namespace veltrin {

/// Virtual key codes, the product's own numbering of the keys of a US keyboard. The adapter maps a real key
/// by the Latin letter or digit it has in the user's layout, else by its position.
namespace KeyCode {
inline constexpr qint64 a = 0;
inline constexpr qint64 c = 8;
inline constexpr qint64 v = 9;
inline constexpr qint64 q = 12;
// Of the number row; the keypad's digits have codes of their own.
inline constexpr qint64 one = 18;
inline constexpr qint64 two = 19;
inline constexpr qint64 three = 20;
inline constexpr qint64 four = 21;
inline constexpr qint64 returnKey = 36;
inline constexpr qint64 slash = 44;
inline constexpr qint64 tab = 48;
inline constexpr qint64 space = 49;
inline constexpr qint64 backspace = 51;
inline constexpr qint64 escape = 53;
inline constexpr qint64 insert = 114;
/// A key that has no code in the product's numbering; still an event, so that it ends a tap sequence.
inline constexpr qint64 unknown = 0xFFFF;
}  // namespace KeyCode

/// Modifier bits of a key event. On X11 Command is Control, Option is Alt, Control is Super.
namespace KeyFlags {
inline constexpr quint64 shift = 0x20000;
inline constexpr quint64 control = 0x40000;
inline constexpr quint64 option = 0x80000;
inline constexpr quint64 command = 0x100000;
inline constexpr quint64 all = shift | control | option | command;
}  // namespace KeyFlags

}  // namespace veltrin
