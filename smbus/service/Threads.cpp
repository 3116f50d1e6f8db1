// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Threads.hpp"

#include <system_error>
#include <thread>

namespace SmbusService {

bool Threads::start(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    ++running_;
  }
  try {
    std::thread([this, work = std::move(work)]() mutable {
      work();
      work = nullptr;  // what it holds is let go before anybody stops waiting
      ended();
    }).detach();
    return true;
  } catch (const std::system_error&) {
    ended();
    return false;
  }
}

void Threads::ended() {
  const std::lock_guard lock(mutex_);
  --running_;
  changed_.notify_all();
}

bool Threads::waitForAll(TimePoint deadline) {
  std::unique_lock lock(mutex_);
  while (running_ > 0 && clock_.now() < deadline) {
    clock_.waitUntil(changed_, lock, deadline);
  }
  return running_ == 0;
}

}  // namespace SmbusService
