// SPDX-License-Identifier: Apache-2.0
#include "ipmi/Poller.hpp"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <utility>

namespace IpmiPlugin {

namespace {

// A thread inherits the signals that are blocked where it is made.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

Poller::Poller(std::unique_ptr<Reader> reader, std::shared_ptr<Mailbox> mailbox,
               std::chrono::milliseconds interval, Clock clock)
    : reader_(std::move(reader)),
      mailbox_(std::move(mailbox)),
      interval_(interval),
      clock_(std::move(clock)),
      process_(::getpid()) {
  const SignalsBlocked blocked;
  thread_ = std::thread(&Poller::run, this);
}

Poller::~Poller() {
  if (process_ != ::getpid()) {
    thread_.detach();
    return;
  }
  stop_.request();
  thread_.join();
}

void Poller::run() {
  do {
    look();
  } while (!stop_.waitFor(interval_));
}

void Poller::look() {
  try {
    const TimePoint begun = clock_();
    mailbox_->put(reader_->read(stop_), begun);
  } catch (const std::exception& error) {
    mailbox_->putFailure(error.what());
  }
}

}  // namespace IpmiPlugin
