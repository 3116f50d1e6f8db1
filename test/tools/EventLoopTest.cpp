// SPDX-License-Identifier: Apache-2.0
#include "tools/EventLoop.hpp"

#include <csignal>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Nimbo::EventLoop;
using std::chrono::milliseconds;

void count(void* context) { ++*static_cast<int*>(context); }

TEST(EventLoop, TimerFiresOnceForEachTimeItIsSet) {
  EventLoop loop;
  int fired = 0;
  const EventLoop::TimerId timer = loop.addTimer(count, &fired);
  ASSERT_NE(timer, 0U);
  ASSERT_TRUE(loop.setTimer(timer, 1));
  EXPECT_EQ(loop.runFor(milliseconds{30}), EventLoop::End::kDone);
  EXPECT_EQ(fired, 1);
  ASSERT_TRUE(loop.setTimer(timer, 1));
  loop.runFor(milliseconds{30});
  EXPECT_EQ(fired, 2);
}

TEST(EventLoop, TimerThatIsNotSetStaysIdle) {
  EventLoop loop;
  int fired = 0;
  loop.addTimer(count, &fired);
  EXPECT_EQ(loop.runUntilArmedTimersFired(), EventLoop::End::kDone);
  EXPECT_EQ(fired, 0);
}

TEST(EventLoop, WaitsUntilEachArmedTimerHasFired) {
  EventLoop loop;
  int fired = 0;
  for (const uint32_t time : {20U, 1U, 10U}) {
    loop.setTimer(loop.addTimer(count, &fired), time);
  }
  loop.runUntilArmedTimersFired();
  EXPECT_EQ(fired, 3);
}

// Re-arms itself, as a device that polls does.
struct Poller {
  EventLoop loop;
  EventLoop::TimerId timer = loop.addTimer(poll, this);
  int polls = 0;

  static void poll(void* context) {
    auto* self = static_cast<Poller*>(context);
    ++self->polls;
    self->loop.setTimer(self->timer, 1);
  }
};

TEST(EventLoop, TimerThatRearmsItselfIsAwaitedOnce) {
  Poller poller;
  poller.loop.setTimer(poller.timer, 1);
  poller.loop.runUntilArmedTimersFired();
  EXPECT_EQ(poller.polls, 1);
  poller.loop.runUntilArmedTimersFired();
  EXPECT_EQ(poller.polls, 1);
}

TEST(EventLoop, SettingATimerAgainMovesItsTime) {
  EventLoop loop;
  int late = 0;
  int early = 0;
  const EventLoop::TimerId moved = loop.addTimer(count, &late);
  loop.setTimer(moved, 1);
  loop.setTimer(moved, 60000);
  loop.setTimer(loop.addTimer(count, &early), 5);
  loop.runFor(milliseconds{20});
  EXPECT_EQ(early, 1);
  EXPECT_EQ(late, 0);
}

TEST(EventLoop, ZeroMillisecondsFireAtOnce) {
  EventLoop loop;
  int fired = 0;
  loop.setTimer(loop.addTimer(count, &fired), 0);
  loop.runUntilArmedTimersFired();
  EXPECT_EQ(fired, 1);
}

TEST(EventLoop, DeletedTimerNeitherFiresNorIsAwaited) {
  EventLoop loop;
  int fired = 0;
  const EventLoop::TimerId timer = loop.addTimer(count, &fired);
  loop.setTimer(timer, 1);
  loop.deleteTimer(timer);
  EXPECT_FALSE(loop.setTimer(timer, 1));
  EXPECT_EQ(loop.runUntilArmedTimersFired(), EventLoop::End::kDone);
  EXPECT_EQ(fired, 0);
}

// Deletes both timers when the first of them fires.
struct Pair {
  EventLoop loop;
  EventLoop::TimerId first = loop.addTimer(end, this);
  EventLoop::TimerId second = loop.addTimer(end, this);
  int fired = 0;

  static void end(void* context) {
    auto* self = static_cast<Pair*>(context);
    ++self->fired;
    self->loop.deleteTimer(self->first);
    self->loop.deleteTimer(self->second);
  }
};

TEST(EventLoop, CallbackMayDeleteTimersThatAreDueWithItsOwn) {
  Pair pair;
  pair.loop.setTimer(pair.first, 1);
  pair.loop.setTimer(pair.second, 1);
  pair.loop.runUntilArmedTimersFired();
  pair.loop.runFor(milliseconds{10});
  EXPECT_EQ(pair.fired, 1);
}

TEST(EventLoop, HandlesAreNotUsedAgain) {
  EventLoop loop;
  const EventLoop::TimerId first = loop.addTimer(count, nullptr);
  loop.deleteTimer(first);
  EXPECT_NE(loop.addTimer(count, nullptr), first);
}

void interrupt(void*) { std::raise(SIGINT); }

TEST(EventLoop, SignalEndsARunAndNotTheProcess) {
  EventLoop loop;
  loop.setTimer(loop.addTimer(interrupt, nullptr), 1);
  EXPECT_EQ(loop.runFor(milliseconds{60000}), EventLoop::End::kInterrupted);
}

TEST(EventLoop, LoopRunsOnAfterASignal) {
  EventLoop loop;
  int fired = 0;
  loop.setTimer(loop.addTimer(interrupt, nullptr), 1);
  ASSERT_EQ(loop.runFor(milliseconds{60000}), EventLoop::End::kInterrupted);
  loop.setTimer(loop.addTimer(count, &fired), 1);
  EXPECT_EQ(loop.runUntilArmedTimersFired(), EventLoop::End::kDone);
  EXPECT_EQ(fired, 1);
}

TEST(EventLoop, SignalsHaveTheirOrdinaryEffectOutsideARun) {
  EventLoop loop;
  loop.runFor(milliseconds{1});
  EXPECT_EXIT(std::raise(SIGTERM), testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
