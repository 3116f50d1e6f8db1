// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <functional>

namespace IpmiPlugin {

using TimePoint = std::chrono::steady_clock::time_point;

// The monotonic clock, or a test's own. Called from the host's thread and from the reading one.
using Clock = std::function<TimePoint()>;

}  // namespace IpmiPlugin
