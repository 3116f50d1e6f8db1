// SPDX-License-Identifier: Apache-2.0
//
// The service's time. Everything that waits or looks at the time does it through this, so that a
// test can let weeks pass in a moment.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace SmbusService {

using Milliseconds = std::chrono::milliseconds;
using Duration = std::chrono::nanoseconds;
using TimePoint = std::chrono::steady_clock::time_point;

class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual TimePoint now() = 0;
  virtual void sleep(Duration duration) = 0;

  // Waits on `wake` until it is notified or `deadline` has come; may wake without a reason.
  virtual void waitUntil(std::condition_variable& wake, std::unique_lock<std::mutex>& lock,
                         TimePoint deadline) = 0;
};

// Real time. Any thread may use it.
class SystemClock : public Clock {
 public:
  [[nodiscard]] TimePoint now() override;
  void sleep(Duration duration) override;
  void waitUntil(std::condition_variable& wake, std::unique_lock<std::mutex>& lock,
                 TimePoint deadline) override;
};

}  // namespace SmbusService
