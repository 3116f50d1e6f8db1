// SPDX-License-Identifier: Apache-2.0
//
// A host without pl_trace: everything works, and nothing is printed.
#include <gtest/gtest.h>

#include "test/e2e/Library.hpp"
#include "test/e2e/Simulation.hpp"

namespace {

pl_timer_callback poll;
void* polled;

}  // namespace

pl_timer_handle pl_timer_add(pl_timer_callback callback, void* context) {
  poll = callback;
  polled = context;
  return 1;
}

int pl_timer_set(pl_timer_handle, uint32_t) { return 0; }

namespace E2e {

namespace {

using SilentHost = Board;

TEST_F(SilentHost, ReadsFansAndPrintsNothing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  pl_fan* first = LIB(pl_fan_add)(fan(1).c_str());
  ASSERT_NE(first, nullptr);
  poll(polled);
  int rpm = 0;
  EXPECT_EQ(first->ops->get_rpm(first, &rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 8190);
  EXPECT_EQ(LIB(pl_fan_add)("no description"), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace

}  // namespace E2e
