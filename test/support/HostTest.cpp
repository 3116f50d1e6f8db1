// SPDX-License-Identifier: Apache-2.0
#include "test/support/Host.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include "Utils/Check.hpp"
#include "test/support/Check.hpp"

namespace Doubles {
namespace {

using testing::ElementsAre;
using testing::Not;

void count(void* context) { ++*static_cast<int*>(context); }

TEST(HostDouble, KeepsTracesWithTheirLevels) {
  pl_trace(0, "driver %s not found", "X");
  pl_trace(5, "%d", 7);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "driver X not found"}, Trace{5, "7"}));
  EXPECT_THAT(host().texts(5), ElementsAre("7"));
}

TEST(HostDouble, FiresATimerOncePerSetting) {
  int fired = 0;
  const pl_timer_handle timer = pl_timer_add(count, &fired);
  ASSERT_EQ(pl_timer_set(timer, 1000), 0);
  host().fire(host().timer());
  EXPECT_EQ(fired, 1);
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u));
  EXPECT_NONFATAL_FAILURE(host().fire(host().timer()), "the timer is not armed");
}

TEST(HostDouble, RefusesTimersOnOrder) {
  host().refusesTimers = true;
  EXPECT_EQ(pl_timer_add(count, nullptr), 0u);
}

TEST(HostDouble, FailsToSetATimerOnOrder) {
  const pl_timer_handle timer = pl_timer_add(count, nullptr);
  host().timerSetStatus = 5;
  EXPECT_EQ(pl_timer_set(timer, 1000), 5);
  EXPECT_FALSE(host().timer().armed);
}

TEST(CheckMatcher, WantsTextAndUnitOnOneLine) {
  const std::string output = "p: Drivers/Helpers.cpp:7: int f(): Assertion `a ( b )' failed.\n";
  EXPECT_THAT(output, IsCheckOf("Drivers/Helpers", "a ( b )"));
  EXPECT_THAT(output, Not(IsCheckOf("Drivers/Helpers", "a (b)")));
  EXPECT_THAT(output, Not(IsCheckOf("Drivers/Drivers", "a ( b )")));
  EXPECT_THAT("Drivers/Helpers.cpp\n: Assertion `a' failed.\n",
              Not(IsCheckOf("Drivers/Helpers", "a")));
}

TEST(CheckMatcher, SeesTheTraceBeforeACheck) {
  EXPECT_CHECK_AFTER(
      {
        pl_trace(0, "because");
        CHECK_TEXT(false, "never");
      },
      (Trace{0, "because"}), "test/support/HostTest", "never");
}

}  // namespace
}  // namespace Doubles
