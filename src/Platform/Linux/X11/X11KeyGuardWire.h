#pragma once

namespace veltrin::KeyGuardWire {

// What the key guard and the program say to each other, one byte each.
inline constexpr char question = '?';      ///< guard: are you there?
inline constexpr char answer = '.';        ///< program: yes
inline constexpr char watchClosely = '+';  ///< program: keys without a modifier may be claimed from now on
inline constexpr char relax = '-';         ///< program: no more

/// The property of the program's window that the guard knows it by.
inline constexpr char tokenProperty[] = "_VELTRIN_KEY_TOKEN";

}  // namespace veltrin::KeyGuardWire
