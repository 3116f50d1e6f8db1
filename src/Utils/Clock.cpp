// SPDX-License-Identifier: Apache-2.0
#include "Utils/Clock.hpp"

namespace Utils {

TimePoint (*monotonicNow)() = std::chrono::steady_clock::now;

}  // namespace Utils
