// SPDX-License-Identifier: Apache-2.0
//
// The virtual board's time. Chips move on by it and buses wait by it, so that a board runs in
// real time, or through weeks of simulated time in a moment.
#pragma once

#include <atomic>
#include <chrono>

namespace SmbusService::Board {

// Since the board was switched on.
using Time = std::chrono::nanoseconds;

class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual Time now() = 0;
  virtual void wait(Time duration) = 0;
};

// Real time, from its construction on. Any thread may use it.
class RealClock : public Clock {
 public:
  [[nodiscard]] Time now() override;
  void wait(Time duration) override;

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Time that stands still until somebody waits. Any thread may use it.
class SimulatedClock : public Clock {
 public:
  [[nodiscard]] Time now() override { return Time(now_.load(std::memory_order_relaxed)); }
  void wait(Time duration) override { now_.fetch_add(duration.count()); }

 private:
  std::atomic<Time::rep> now_{0};
};

}  // namespace SmbusService::Board
