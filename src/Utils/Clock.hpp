// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace Utils {

using TimePoint = std::chrono::steady_clock::time_point;

// The monotonic clock by which the library measures ages; tests put their own in its place.
extern TimePoint (*monotonicNow)();

}  // namespace Utils
