// SPDX-License-Identifier: Apache-2.0
//
// The library's monotonic clock, moved by hand.
#pragma once

#include <chrono>

#include "Utils/Clock.hpp"

namespace Doubles {

// In place of the real clock while it lives; one at a time. It starts an hour after the clock's 0,
// as on a board that has been up for a while.
class LibraryClock {
 public:
  LibraryClock() {
    now_ = Utils::TimePoint(std::chrono::hours(1));
    Utils::monotonicNow = [] { return now_; };
  }
  ~LibraryClock() { Utils::monotonicNow = std::chrono::steady_clock::now; }
  LibraryClock(const LibraryClock&) = delete;
  LibraryClock& operator=(const LibraryClock&) = delete;

  void advance(std::chrono::nanoseconds time) { now_ += time; }
  // So long after the clock's 0.
  void set(std::chrono::nanoseconds time) { now_ = Utils::TimePoint(time); }

 private:
  static inline Utils::TimePoint now_;
};

}  // namespace Doubles
