#pragma once

#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace veltrin {

/// Nanoseconds on the monotonic clock.
inline std::uint64_t monotonicNow() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(time.tv_nsec);
}

/// A time stamp of the X server as nanoseconds on the monotonic clock, whose milliseconds the server counts
/// in 32 bits. A server with another clock (a remote one) gives the moment of arrival instead.
inline std::uint64_t monotonicTime(std::uint32_t serverTime) {
    constexpr std::uint64_t millisecond = 1'000'000;
    const std::uint64_t now = monotonicNow();
    const std::uint64_t nowMs = now / millisecond;
    const auto age = static_cast<std::int32_t>(static_cast<std::uint32_t>(nowMs) - serverTime);
    if (std::abs(static_cast<std::int64_t>(age)) > 60'000) return now;
    return (nowMs - static_cast<std::uint64_t>(static_cast<std::int64_t>(age))) * millisecond;
}

}  // namespace veltrin
