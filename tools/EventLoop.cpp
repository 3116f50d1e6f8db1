// SPDX-License-Identifier: Apache-2.0
#include "tools/EventLoop.hpp"

#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <vector>

namespace Nimbo {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr EventLoop::TimerId kSignal = 0;  // the signals' mark among the timers' numbers
constexpr milliseconds kLongestWait{60000};

bool watch(const Descriptor& epoll, int fd, uint64_t mark) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.u64 = mark;
  return ::epoll_ctl(epoll.get(), EPOLL_CTL_ADD, fd, &event) == 0;
}

// Turns SIGINT and SIGTERM into readiness of a descriptor for as long as it lives.
class SignalScope {
 public:
  explicit SignalScope(const Descriptor& epoll) : fd_(block()) { watch(epoll, fd_.get(), kSignal); }
  ~SignalScope() {
    // What came in the meantime has been acted on by ending the run; it must not kill as well.
    signalfd_siginfo info;
    while (::read(fd_.get(), &info, sizeof info) > 0) {
    }
    ::sigprocmask(SIG_SETMASK, &before_, nullptr);
  }
  SignalScope(const SignalScope&) = delete;
  SignalScope& operator=(const SignalScope&) = delete;

 private:
  int block() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &signals, &before_);
    return ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  }

  sigset_t before_{};
  Descriptor fd_;
};

int waitTime(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
  return static_cast<int>(std::clamp(left, milliseconds{0}, kLongestWait).count());
}

}  // namespace

Descriptor::~Descriptor() {
  if (valid()) {
    ::close(fd_);
  }
}

EventLoop::EventLoop() : epoll_(::epoll_create1(EPOLL_CLOEXEC)) {
  if (!epoll_.valid()) {
    throw std::system_error(errno, std::generic_category(), "epoll");
  }
}

EventLoop::TimerId EventLoop::addTimer(Callback callback, void* context) {
  Descriptor fd(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
  if (!fd.valid() || !watch(epoll_, fd.get(), nextTimer_)) {
    return 0;
  }
  timers_.emplace(nextTimer_, Timer{std::move(fd), callback, context});
  return nextTimer_++;
}

bool EventLoop::setTimer(TimerId timer, uint32_t milliseconds) {
  const auto found = timers_.find(timer);
  if (found == timers_.end()) {
    return false;
  }
  const uint32_t time = std::max(milliseconds, 1U);
  itimerspec when{};
  when.it_value.tv_sec = time / 1000;
  when.it_value.tv_nsec = static_cast<long>(time % 1000) * 1000000;
  found->second.armed = true;
  return ::timerfd_settime(found->second.fd.get(), 0, &when, nullptr) == 0;
}

void EventLoop::deleteTimer(TimerId timer) { timers_.erase(timer); }

EventLoop::End EventLoop::runFor(milliseconds duration) {
  return run([] { return false; }, Clock::now() + duration);
}

EventLoop::End EventLoop::runUntilArmedTimersFired() {
  std::vector<TimerId> awaited;
  for (const auto& [id, timer] : timers_) {
    if (timer.armed && !timer.fired) {
      awaited.push_back(id);
    }
  }
  const auto fired = [this](TimerId id) {
    const auto found = timers_.find(id);
    return found == timers_.end() || found->second.fired;
  };
  return run([&] { return std::all_of(awaited.begin(), awaited.end(), fired); },
             Clock::time_point::max());
}

EventLoop::End EventLoop::run(const std::function<bool()>& done, Clock::time_point deadline) {
  const SignalScope signals(epoll_);
  while (!done()) {
    if (Clock::now() >= deadline) {
      return End::kDone;
    }
    std::array<epoll_event, 16> events;
    const int count = ::epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()),
                                   waitTime(deadline));
    for (int i = 0; i < count; ++i) {
      const uint64_t mark = events[static_cast<size_t>(i)].data.u64;
      if (mark == kSignal) {
        return End::kInterrupted;
      }
      fire(mark);
    }
  }
  return End::kDone;
}

void EventLoop::fire(TimerId id) {
  const auto found = timers_.find(id);
  uint64_t expirations = 0;
  // A callback before this one may have deleted the timer, or set it anew.
  if (found == timers_.end() ||
      ::read(found->second.fd.get(), &expirations, sizeof expirations) <= 0) {
    return;
  }
  Timer& timer = found->second;
  timer.armed = false;
  timer.fired = true;
  timer.callback(timer.context);
}

}  // namespace Nimbo
