// SPDX-License-Identifier: Apache-2.0
#include "ipmi/Poller.hpp"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "ipmi/CachedHam.hpp"
#include "pl/pl_status.h"
#include "test/support/Host.hpp"

namespace IpmiPlugin {

namespace {

using namespace std::chrono_literals;
using Doubles::host;

constexpr auto kNever = 1h;
constexpr auto kPatience = 60s;

class ReaderOf : public Reader {
 public:
  using Look = std::function<Reading(const Stop&)>;
  explicit ReaderOf(Look look) : look_(std::move(look)) {}
  Reading read(const Stop& stop) override { return look_(stop); }

 private:
  Look look_;
};

// Waits for a condition that another thread brings about.
void await(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    ASSERT_LT(std::chrono::steady_clock::now(), end);
    std::this_thread::sleep_for(1ms);
  }
}

Reading numbered(int number) { return {{{"FAN1", std::to_string(number)}}, {}}; }

class Polling : public testing::Test {
 protected:
  Polling() { EXPECT_TRUE(ham.start()); }

  std::unique_ptr<Poller> poll(ReaderOf::Look look, std::chrono::milliseconds interval) {
    return std::make_unique<Poller>(std::make_unique<ReaderOf>(std::move(look)), mailbox, interval,
                                    std::chrono::steady_clock::now);
  }

  int rpm() {
    host().fire(host().timer());
    int value = -1;
    ham.getSensorVal("FAN1", &value);
    return value;
  }

  std::shared_ptr<Mailbox> mailbox = std::make_shared<Mailbox>();
  CachedHam ham{"bmc", mailbox, kNever, std::chrono::steady_clock::now};
};

TEST_F(Polling, LooksAtOnceAndThenAgainAndAgain) {
  const auto poller = poll([n = 0](const Stop&) mutable { return numbered(++n); }, 1ms);
  await([&] { return rpm() >= 5; });
}

TEST_F(Polling, FailureIsToldAndTheNextLookIsMade) {
  const auto poller = poll(
      [n = 0](const Stop&) mutable {
        return ++n == 1 ? throw ReadError("no answer") : numbered(n);
      },
      1ms);
  await([&] { return rpm() >= 2; });
}

TEST_F(Polling, LookThatHangsHoldsNoLookUp) {
  std::atomic<bool> hangs = false;
  const auto poller = poll(
      [&, n = 0](const Stop& stop) mutable {
        if (++n == 2) {
          hangs = true;
          (void)stop.waitFor(kNever);
        }
        return numbered(n);
      },
      1ms);
  await([&] { return hangs.load(); });
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(rpm(), 1);
  }
}

TEST_F(Polling, EndStopsALookThatHangs) {
  std::atomic<bool> hangs = false;
  bool stopped = false;
  auto poller = poll(
      [&](const Stop& stop) -> Reading {
        hangs = true;
        stopped = stop.waitFor(kNever);
        throw ReadError("stopped");
      },
      1ms);
  await([&] { return hangs.load(); });
  poller.reset();
  EXPECT_TRUE(stopped);
}

TEST_F(Polling, EndDoesNotWaitForTheNextLook) {
  std::atomic<int> looks = 0;
  auto poller = poll([&](const Stop&) { return numbered(++looks); }, kNever);
  await([&] { return looks == 1; });
  poller.reset();
  EXPECT_EQ(looks, 1);
}

TEST_F(Polling, ThreadTakesNoSignals) {
  sigset_t blocked;
  ::sigemptyset(&blocked);
  std::atomic<bool> looked = false;
  const auto poller = poll(
      [&](const Stop&) {
        ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        looked = true;
        return numbered(1);
      },
      kNever);
  await([&] { return looked.load(); });
  EXPECT_EQ(::sigismember(&blocked, SIGTERM), 1);
  sigset_t here;
  ::pthread_sigmask(SIG_SETMASK, nullptr, &here);
  EXPECT_EQ(::sigismember(&here, SIGTERM), 0);
}

TEST_F(Polling, ForkedProcessEndsWithoutTheThread) {
  auto poller = poll([](const Stop&) { return numbered(1); }, kNever);
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(60);
    poller.reset();
    ::_exit(0);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
}

}  // namespace

}  // namespace IpmiPlugin
