// SPDX-License-Identifier: Apache-2.0
//
// The threads that serve connections: nobody joins one, since one may be stuck in a bus for good,
// but their end can be waited for.
#pragma once

#include <functional>

#include "smbus/service/Clock.hpp"

namespace SmbusService {

class Threads {
 public:
  explicit Threads(Clock& clock) : clock_(clock) {}

  // Runs `work` on a thread of its own. False: the system gives no further thread.
  [[nodiscard]] bool start(std::function<void()> work);

  // Waits until every thread has ended. False: some had not at `deadline`; what they use must stay.
  [[nodiscard]] bool waitForAll(TimePoint deadline);

 private:
  void ended();

  Clock& clock_;
  std::mutex mutex_;
  std::condition_variable changed_;
  size_t running_ = 0;
};

}  // namespace SmbusService
