// SPDX-License-Identifier: Apache-2.0
//
// The virtual board's time: the service's clock, counted from the moment the board was switched on.
// Chips move on by it and buses wait by it, so a board runs in real time, or through weeks of
// simulated time in a moment.
#pragma once

#include "smbus/service/Clock.hpp"

namespace SmbusService::Board {

using Time = std::chrono::nanoseconds;

// Any thread may use it.
class BoardClock {
 public:
  explicit BoardClock(Clock& clock) : clock_(clock), start_(clock.now()) {}

  [[nodiscard]] Time now() { return clock_.now() - start_; }
  void wait(Time duration) { clock_.sleep(duration); }

 private:
  Clock& clock_;
  TimePoint start_;
};

}  // namespace SmbusService::Board
