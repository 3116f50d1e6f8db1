// SPDX-License-Identifier: Apache-2.0
//
// The host's one event loop: timers (one timerfd each) on an epoll set, and a clean end on SIGINT
// and SIGTERM. One thread; callbacks run inside the run functions and may add, set and delete
// timers.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>

namespace Nimbo {

// A file descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor();

  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }

 private:
  int fd_;
};

class EventLoop {
 public:
  using TimerId = uint64_t;  // never 0
  using Callback = void (*)(void* context);

  // How a run ended: by itself, or by a signal. Signals are taken by the loop while it runs and
  // have their ordinary effect at all other times, so that a call that hangs can be broken.
  enum class End { kDone, kInterrupted };

  // Throws std::system_error when the kernel gives no epoll set.
  EventLoop();

  // A timer that is not armed. 0 when the kernel gives none.
  TimerId addTimer(Callback callback, void* context);

  // Arms the timer to fire once; false for a timer that does not exist. 0 ms counts as 1.
  bool setTimer(TimerId timer, uint32_t milliseconds);

  void deleteTimer(TimerId timer);

  // Runs for this long.
  End runFor(std::chrono::milliseconds duration);

  // Runs until every timer that is armed now has fired at least once since it was made, or is gone.
  End runUntilArmedTimersFired();

 private:
  struct Timer {
    Descriptor fd;
    Callback callback;
    void* context;
    bool armed = false;
    bool fired = false;
  };

  End run(const std::function<bool()>& done, std::chrono::steady_clock::time_point deadline);
  void fire(TimerId timer);

  Descriptor epoll_;
  std::map<TimerId, Timer> timers_;
  TimerId nextTimer_ = 1;
};

}  // namespace Nimbo
