// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Clock.hpp"

#include <thread>

namespace SmbusService {

TimePoint SystemClock::now() { return std::chrono::steady_clock::now(); }

void SystemClock::sleep(Duration duration) { std::this_thread::sleep_for(duration); }

void SystemClock::waitUntil(std::condition_variable& wake, std::unique_lock<std::mutex>& lock,
                            TimePoint deadline) {
  wake.wait_until(lock, deadline);
}

}  // namespace SmbusService
