// SPDX-License-Identifier: Apache-2.0
#include "Utils/Host.hpp"

#include <gmock/gmock.h>

#include "test/support/Host.hpp"

namespace {

using Doubles::host;
using testing::ElementsAre;

void tick(void* context) { ++*static_cast<int*>(context); }

TEST(HostServices, ReachTheHost) {
  int ticks = 0;
  const pl_timer_handle timer = Utils::timerAdd(tick, &ticks);
  EXPECT_TRUE(Utils::timerSet(timer, 1000));
  host().fire(host().timer());
  Utils::timerDelete(timer);
  EXPECT_EQ(ticks, 1);
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u));
  EXPECT_TRUE(host().timer().deleted);
}

TEST(HostServices, TraceWithALevel) {
  TRACE(6, "%s(%u)", "poll", 3u);
  EXPECT_THAT(host().traces, ElementsAre(Doubles::Trace{6, "poll(3)"}));
}

TEST(HostServices, FailAsTheHostDoes) {
  const pl_timer_handle timer = Utils::timerAdd(tick, nullptr);
  host().timerSetStatus = 1;
  EXPECT_FALSE(Utils::timerSet(timer, 1000));
}

}  // namespace
