#pragma once

#include <functional>

namespace veltrin {

/// Seconds on CLOCK_MONOTONIC, the clock of the X server's time stamps and of the run loop.
double monotonicSeconds();

/// Runs this thread's Qt event loop until `condition` holds, looking after every event and at least every 5
/// ms. False when `seconds` went by first. For conditions that this process itself brings about.
bool eventually(double seconds, const std::function<bool()>& condition);

/// Looks every millisecond, without running an event loop, until `condition` holds; false when `seconds` went
/// by first. For conditions that other processes bring about, and for any thread.
bool waitUntil(double seconds, const std::function<bool()>& condition);

/// Runs this thread's Qt event loop for the time, for tests that something does not happen.
void runEventLoopFor(double seconds);

}  // namespace veltrin
