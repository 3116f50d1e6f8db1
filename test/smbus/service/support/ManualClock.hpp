// SPDX-License-Identifier: Apache-2.0
//
// A clock that moves when somebody sleeps or waits by it, and at once.
#pragma once

#include <mutex>

#include "smbus/service/Clock.hpp"

namespace SmbusService {

class ManualClock : public Clock {
 public:
  TimePoint now() override {
    const std::lock_guard lock(mutex_);
    return now_;
  }
  void sleep(Duration duration) override {
    const std::lock_guard lock(mutex_);
    now_ += duration;
    slept_ += duration;
  }
  void waitUntil(std::condition_variable&, std::unique_lock<std::mutex>&,
                 TimePoint deadline) override {
    const std::lock_guard lock(mutex_);
    now_ = std::max(now_, deadline);
  }

  Duration slept() {
    const std::lock_guard lock(mutex_);
    return slept_;
  }

 private:
  std::mutex mutex_;
  TimePoint now_{std::chrono::hours(1)};
  Duration slept_{0};
};

}  // namespace SmbusService
