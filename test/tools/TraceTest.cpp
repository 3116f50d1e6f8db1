// SPDX-License-Identifier: Apache-2.0
#include "tools/Trace.hpp"

#include <string>

#include <gtest/gtest.h>

#include "pl/pl_host.h"
#include "tools/HostServices.hpp"

namespace {

using Nimbo::Trace;

TEST(Trace, PrintsNothingUnlessAsked) {
  Trace trace;
  testing::internal::CaptureStderr();
  trace.take(0, "failed");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Trace, PrintsLinesUpToItsLevel) {
  Trace trace;
  trace.printUpTo(3);
  testing::internal::CaptureStderr();
  trace.take(0, "zero");
  trace.take(3, "three\n");
  trace.take(4, "four");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "[0] zero\n[3] three\n");
}

TEST(Trace, ReasonWithoutAFailureIsTheLastLinesOfLevelZero) {
  Trace trace;
  trace.take(0, "one");
  trace.take(0, "two");
  trace.take(0, "three");
  EXPECT_EQ(trace.reason(), "two; three");
}

TEST(Trace, ReasonIsTheLastFailuresOfLevelZero) {
  Trace trace;
  trace.take(0, "failed long ago");
  trace.take(0, "driver X not found");
  trace.take(5, "data");
  trace.take(0, "creating timer");
  trace.take(0, "DeviceBase::create() failed");
  EXPECT_EQ(trace.reason(), "driver X not found; DeviceBase::create() failed");
}

TEST(Trace, FailedAccessIsTheBetterReason) {
  Trace trace;
  trace.take(3, "execute: failure in response request 0: no device at 0x4e");
  trace.take(3, "ham initialisation");
  trace.take(0, "Error: failed to read from fan 0 speed register 64");
  EXPECT_EQ(trace.reason(), "execute: failure in response request 0: no device at 0x4e");
}

TEST(Trace, ReasonsBelongToOneCall) {
  Trace trace;
  trace.take(0, "old");
  trace.forget();
  EXPECT_EQ(trace.reason(), "");
}

TEST(Trace, CountsWarningsOfLevelZero) {
  Trace trace;
  trace.take(0, "creating timer");
  trace.take(0, "WARNING: Simulated Driver");
  trace.take(0, "Error status 4");
  trace.take(0, "HalvorsaPsoc init: failed to write configuration");
  trace.take(3, "error");
  EXPECT_EQ(trace.warnings(), 3U);
}

TEST(HostServices, TraceLinesOfAnyLengthArrive) {
  const std::string text(5000, 'x');
  Nimbo::trace().forget();
  pl_trace(0, "%s %d", text.c_str(), 7);
  EXPECT_EQ(Nimbo::trace().reason(), text + " 7");
}

TEST(HostServices, TimersAreTheEventLoops) {
  static int fired = 0;
  const pl_timer_handle timer = pl_timer_add([](void*) { ++fired; }, nullptr);
  ASSERT_NE(timer, 0U);
  EXPECT_EQ(pl_timer_set(timer, 1), 0);
  Nimbo::eventLoop().runUntilArmedTimersFired();
  EXPECT_EQ(fired, 1);
  pl_timer_delete(timer);
  EXPECT_NE(pl_timer_set(timer, 1), 0);
}

}  // namespace
