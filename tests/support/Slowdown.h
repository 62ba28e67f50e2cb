#pragma once

namespace veltrin {

/// How much smaller a test of speed makes its material where sanitizers slow everything down.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int slowdown = 50;
/// By how much a bound on time is widened there, where the material cannot shrink.
inline constexpr double patience = 5;
#else
inline constexpr int slowdown = 1;
inline constexpr double patience = 1;
#endif

}  // namespace veltrin
