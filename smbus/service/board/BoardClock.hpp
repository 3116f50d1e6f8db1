// SPDX-License-Identifier: Apache-2.0
//
// The virtual board's time: the service's clock, counted from the moment the board was switched on.
// Chips move on by it and buses wait by it, so a board runs in real time, or through weeks of
// simulated time in a moment.
#pragma once

#include <algorithm>

#include "smbus/service/Clock.hpp"

namespace SmbusService::Board {

using Time = std::chrono::nanoseconds;

// Later than any time of the board.
inline constexpr Time kNever = Time::max();

// Any thread may use it.
class BoardClock {
 public:
  explicit BoardClock(Clock& clock) : clock_(clock), start_(clock.now()) {}

  [[nodiscard]] Time now() { return clock_.now() - start_; }
  void wait(Time duration) { clock_.sleep(duration); }

  // Waits on `wake` until it is notified or `deadline` has come; may wake without a reason.
  void waitUntil(std::condition_variable& wake, std::unique_lock<std::mutex>& lock, Time deadline) {
    const Time soon = now() + std::chrono::hours(1);  // kNever is beyond what a clock can count
    clock_.waitUntil(wake, lock, start_ + std::min(deadline, soon));
  }

 private:
  Clock& clock_;
  TimePoint start_;
};

}  // namespace SmbusService::Board
